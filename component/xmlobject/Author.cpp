#include "xmlobject/Author.h"

ITypeDescription* CAuthor::ms_piType = nullptr;

// The stubs that the rows of the class point at.
#include "frame/KllStubs.h"
#include "xmlobject/Author.def"
