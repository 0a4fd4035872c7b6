// CContenuXMLSortie<T>: the sink a document is written into. The host gives the whole text in
// one call; each call assigns, so the last one is what the string holds.
#pragma once
#include "KVResult.h"
#include "XMLService.h"

template <class T> class CContenuXMLSortie final : public IContenuXMLSortie {
public:
    explicit CContenuXMLSortie(T& clSortie) : m_clSortie(clSortie) {}
    int vbContenuXML(const char* pTexte, size_t nTaille, CXError*) override {
        return m_clSortie.nAffecte(pTexte, nTaille) == KV_OK;
    }

private:
    T& m_clSortie;
};
