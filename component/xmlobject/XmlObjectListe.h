// CXmlObjectListe: all the members of one name in a described object, in document order. The
// list owns one reference on each child. Its own count begins at 0: whoever creates it takes
// the first reference.
#pragma once
#include "xmlobject/XmlObject.h"

#include <cstddef>
#include <cstdint>

namespace FctFind {
class IFinder;
}

class CXmlObjectListe : public CKVUnknown {
public:
    explicit CXmlObjectListe(const char* pszNom);
    explicit CXmlObjectListe(const CXYString<char>& czNom);

    virtual void vSetParent(CXmlObjectMulti* pclParent);
    virtual void vAddRef() { dwAddRef(); }
    virtual void vRelease() { dwRelease(); }
    // New children are written under piNoeud, the others apply their changes; true when
    // anything changed (the OR of the children).
    virtual bool vbApplyToXml(INoeudXML* piNoeud, CXError& clErreur);
    // One element (or attribute) per child under piNoeud. False at once for a list with no
    // name; otherwise true for an empty list, else the OR of the children, so that a child
    // written hides a child that failed.
    virtual bool vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur);
    // A new list of the same name, each child cloned for pclParent; one reference held.
    virtual CXmlObjectListe* vpclClone(CXmlObjectMulti* pclParent);
    // Empty, or every child temporary.
    virtual bool vbEstObjetTemporaire();

    const char* pszGetNom() const { return m_czNom.pszGet(); }
    const CXYString<char>& czGetNom() const { return m_czNom; }
    int nGetNbElement() const { return static_cast<int>(m_nNb); }
    // Null out of range.
    CXmlObject* pclGetElement(int i) const {
        return i >= 0 && i < nGetNbElement() ? pDebut()[i] : nullptr;
    }
    // Take over the caller's reference.
    void Ajoute(CXmlObject* pclFils);
    void Insere(int i, CXmlObject* pclFils);
    void Deplace(int nDepuis, int nVers);
    void Reserve(size_t n);
    // Release the children.
    void SupprimeTout();
    void Supprime(int i);
    // The child at that occurrence among those the finder accepts, 0 the first; null when
    // there is none or no finder.
    CXmlObject* pclFind(FctFind::IFinder* pclFinder, unsigned nOccurrence) const;
    CXmlObject* const* begin() const { return pDebut(); }
    CXmlObject* const* end() const { return pFin(); }
    // The index of the child, -1 when it is not in the list.
    int nCompareXmlObjectPtr(const CXmlObject* pclFils) const;

protected:
    ~CXmlObjectListe() override;

private:
    // Writes one child: nothing for a temporary one, else an element named after the list (or
    // the parent's node itself for an attribute), removed again when the child fails.
    bool __bCreateXmlPourFils(CXmlObject* pclFils, INoeudXML* piNoeud, int bLie, CXError& clErreur);

    // Most lists hold one member: it stands in the list itself, and more go to the heap.
    CXmlObject* const* pDebut() const { return m_nCapacite == 1 ? &m_pclUn : m_ptab; }
    CXmlObject** pDebut() { return m_nCapacite == 1 ? &m_pclUn : m_ptab; }
    CXmlObject* const* pFin() const { return pDebut() + m_nNb; }

    CXYString<char> m_czNom;
    union {
        CXmlObject* m_pclUn = nullptr;
        CXmlObject** m_ptab;
    };
    uint32_t m_nNb = 0;
    uint32_t m_nCapacite = 1;
};
