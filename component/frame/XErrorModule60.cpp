#include "XErrorModule60.h"

#include "ModuleInfo.h"

_CXErrorModule60::_CXErrorModule60() : CXError(&gstMyModuleInfo60) {}
