// CTypeDescription: the host's description of one class of the component, handed to the
// class's type handler (KLL_<Class>_T) when the tables are read. One per class, kept until the
// component ends; two objects are of the same class exactly when their descriptions are the
// same pointer, so the host finds an object's class from vpiGetTypeReel().
#pragma once
#include "ObjectInterfaces.h"

#include <string>

class CTypeDescription final : public ITypeDescription {
public:
    CTypeDescription(int nClass, int nIdentifiant, std::wstring sNom)
        : m_nClass(nClass), m_nIdentifiant(nIdentifiant), m_sNom(std::move(sNom)) {}
    CTypeDescription(const CTypeDescription&) = delete;
    CTypeDescription& operator=(const CTypeDescription&) = delete;
    ~CTypeDescription() = default;

    const wchar_t* vpszGetNom() override { return m_sNom.c_str(); }
    int vnGetIdentifiant() override { return m_nIdentifiant; }

    // The class's position in the component's class table.
    int nClass() const { return m_nClass; }

private:
    int m_nClass;
    int m_nIdentifiant;
    std::wstring m_sNom;
};
