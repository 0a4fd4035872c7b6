// The host's image service, registry name "MainIMG": IMainIMG gives the factory, IImageFactory
// reads an image from bytes or from a file, IImage tells its kind and size. The host implements
// them; the component uses them to give uploads their MIME type. Slot order is binding.
#pragma once
#include "ObjectInterfaces.h"

#include <cstddef>

class CXError;
class IImage;

inline constexpr wchar_t gszServiceImage[] = L"MainIMG";

class IImageFactory : public IInterfaceObjetBase {
public:
    // Kinds of image; other numbers are kinds that have no name here.
    enum TYPEIMAGE : int {
        TYPEIMAGE_INCONNU = 0,
        TYPEIMAGE_BMP = 1,
        TYPEIMAGE_JPEG = 2,
        TYPEIMAGE_GIF = 3,
        TYPEIMAGE_PNG = 8,
    };

    // A new image over a copy of the bytes. The bytes tell the kind; pszNomFichier (may be
    // null) is only a hint for bytes that do not. Null with the cause in the error.
    virtual IImage* vpiCreeImage(const void* pOctets, size_t nTaille, const wchar_t* pszNomFichier,
                                 CXError* pclErreur) = 0;
    // A new image read from the file.
    virtual IImage* vpiChargeImage(const wchar_t* pszChemin, CXError* pclErreur) = 0;

protected:
    ~IImageFactory() = default;
};

class IImage : public IInterfaceObjetBase {
public:
    virtual IImageFactory::TYPEIMAGE veGetTypeImage() = 0;
    // In pixels; false when the bytes do not tell.
    virtual int vbGetTaille(int& nLargeur, int& nHauteur) = 0;

protected:
    ~IImage() = default;
};

// The service. vRelease (from the base) gives back the registry's reference.
class IMainIMG : public IInterfaceObjetBase {
public:
    // A new reference to the factory.
    virtual IImageFactory* vpiGetImageFactory(CXError* pclErreur) = 0;

protected:
    ~IMainIMG() = default;
};
