#include "shell/Programa.h"

int main(int argc, char** argv) { return executarPrograma(argc, argv); }
