// CXmlObject: the root of the tree that maps a feed's XML onto objects. An object keeps the
// node it was read from, so that a change is applied to the retained tree and elements that no
// table describes go back to the server as they came; an object without a node is new.
//
// Every class of the tree derives from CXmlObject virtually, so that an object that is both a
// described object and a leaf (a title with attributes and text) has one node, one parent and
// one name. The most derived class therefore constructs CXmlObject itself.
#pragma once
#include "XError.h"
#include "XYString.h"

#include <cstdint>

class CCtxInfo;
class CVisiteur;
class CXmlObject;
class CXmlObjectMulti;
class INoeudXML;
class IObjetBase;

// How a member is stored in XML.
enum eTypePropXML : int32_t {
    XML_ELEMENT = 0, // a child element of the parent's node
    XML_ATTRIBUT = 1, // an attribute on the parent's node
};

using PFNXMLCREATION = CXmlObject* (*)(INoeudXML* piNoeud, eTypePropXML eType,
                                       CXmlObjectMulti* pclParent, const char* pszNom);

// One row of a description table: the name as written in XML, prefix included ("gd:email"),
// the creation function of the class that holds the member, and where the member lives.
struct stXmlPropriete {
    const char* pszNom;
    PFNXMLCREATION pfnCreation;
    eTypePropXML eType;
};

class CXmlObject : public CKVUnknown {
public:
    CXmlObject(const CXmlObject&) = delete;
    CXmlObject& operator=(const CXmlObject&) = delete;

    virtual void vInit(CXError& clErreur) = 0;
    virtual void vSetParent(CXmlObjectMulti* pclParent) { m_pclParent = pclParent; }
    virtual void vAddRef() { dwAddRef(); }
    virtual void vRelease() { dwRelease(); }
    virtual int veGetFamille() { return 0; }
    virtual CXmlObject* vpclGetXmlObject() = 0;
    virtual CXmlObjectMulti* vpclGetXmlObjectMulti() { return nullptr; }
    // The eSERVICESGOOGLE value of the class's service; 0 for none.
    virtual int veGetService() { return 0; }
    virtual void vAccepte(CVisiteur* pclVisiteur) = 0;
    virtual CXmlObject* pclGetPropriete(const char*, int) { return nullptr; }
    virtual bool vbSet(const wchar_t*, CXError&) { return false; }
    virtual bool vbGet(CXYString<wchar_t>&, CXError&) const { return false; }
    // True when something changed in the retained XML.
    virtual bool vbApplyToXml(CXError& clErreur) = 0;
    // Writes the object into piNoeud; with bLie the object is bound to it afterwards.
    virtual bool vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur) = 0;
    virtual bool vbIsNouvelObjet() { return m_piNoeud == nullptr; }
    virtual CXmlObject* vpclClone(CXmlObjectMulti* pclParent) = 0;
    // The object holds nothing worth writing.
    virtual bool vbEstObjetTemporaire() = 0;
    virtual void _vRAZ(CCtxInfo* pclCtx, CXError* pclErreur) = 0;
    // The script side of a script-visible object, borrowed; null for the others.
    virtual IObjetBase* vpiGetObjetBaseScript() { return nullptr; }

    INoeudXML* piGetNoeud() const { return m_piNoeud; }
    CXmlObjectMulti* pclGetParent() const { return m_pclParent; }
    eTypePropXML eGetType() const { return m_eType; }
    const CXYString<char>& czGetNom() const { return m_czNom; }

protected:
    // For the intermediate classes only: the most derived class constructs the virtual base,
    // so this one never runs for a real object.
    CXmlObject() : CXmlObject(nullptr, XML_ELEMENT, nullptr, nullptr) {}
    CXmlObject(INoeudXML* piNoeud, eTypePropXML eType, CXmlObjectMulti* pclParent,
               const char* pszNom, long nRefInitial = 1);
    ~CXmlObject() override;

    // Called before the object's node is replaced or dropped.
    virtual void vAvantChangementNoeud() {}
    // Binds the object to piNoeud: a reference is taken, the former node released.
    void _Lie(INoeudXML* piNoeud);
    void _Delie() { _Lie(nullptr); }
    void _SetType(eTypePropXML eType) { m_eType = eType; }

private:
    INoeudXML* m_piNoeud;
    CXmlObjectMulti* m_pclParent; // not counted: a child does not keep its parent alive
    eTypePropXML m_eType;
    CXYString<char> m_czNom;
};

// The name of a row as a shared counted string: members made from one row share one block,
// so that a feed of many entries does not copy the same names again and again.
CXYString<char> czNomPartage(const char* pszNom);
