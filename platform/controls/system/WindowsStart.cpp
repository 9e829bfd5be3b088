#include "controls/system/Start.h"

#include <qglobal.h>

// A thread that ends gives back what a compiled expression has used, after the compiler's library
// has given back where that was noted, and takes the program with it. So they aren't compiled.
void prepareStart() { qputenv("QT_ENABLE_REGEXP_JIT", "0"); }
