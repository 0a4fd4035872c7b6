// The finders that pick one child out of a list (CXmlObjectListe::pclFind): small function
// objects on their caller's stack. FctFind::Texte compares a text member of the child loosely
// (case and accents ignored, spaces around trimmed, the whole text); the Link finders pick a
// link by its "rel".
#pragma once
#include "XYString.h"

class CXmlObject;

namespace FctFind {

class IFinder {
public:
    virtual bool operator()(CXmlObject* pclObjet) = 0;

protected:
    ~IFinder() = default;
};

class Texte : public IFinder {
public:
    Texte(const char* pszPropriete, const wchar_t* pszValeur)
        : m_pszPropriete(pszPropriete), m_pszValeur(pszValeur) {}
    bool operator()(CXmlObject* pclObjet) override;

private:
    const char* m_pszPropriete;
    const wchar_t* m_pszValeur;
};

class Link : public Texte {
public:
    explicit Link(const wchar_t* pszRel) : Texte("rel", pszRel) {}
};
class LinkSelf final : public Link {
public:
    LinkSelf() : Link(L"self") {}
};
class LinkEdit final : public Link {
public:
    LinkEdit() : Link(L"edit") {}
};
class LinkAlternate final : public Link {
public:
    LinkAlternate() : Link(L"alternate") {}
};

} // namespace FctFind
