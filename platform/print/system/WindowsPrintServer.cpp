#include "print/system/PrintServer.h"

// The spooler takes each page as it is painted: what it refuses, the painter knows.
bool printServerTookJob() { return true; }
