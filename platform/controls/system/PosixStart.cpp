#include "controls/system/Start.h"

void prepareStart() {}
