#include "KLLExport.h"

// The version figure the host checks before anything else.
KLL_EXPORT int CheckVersion() { return 22; }
