// CXmlObjectMulti: a described object. Its class's static table says which elements and
// attributes it holds and which class builds each; all occurrences of a name go into one list,
// and the lists live in the property map, the only copy of the values. A class's table is a
// .def beside it (XML_ROW rows), turned into the two statics by XML_DESCRIPTION.
#pragma once
#include "xmlobject/MapProprietes.h"
#include "xmlobject/XmlObject.h"
#include "xmlobject/XmlObjectListe.h"

#include "xmlobject/UpdatesManager.h"

#include <cstdint>

class CHTTPResponse;
class CGoogleConnexion;
class IVM;

class CXmlObjectMulti : public virtual CXmlObject {
public:
    void vInit(CXError& clErreur) override;
    CXmlObject* pclGetPropriete(const char* pszNom, int nIndice) override;
    virtual CXmlObject* pclGetCreatePropriete(const char* pszNom, int nIndice);
    CXmlObject* vpclGetXmlObject() override { return this; }
    CXmlObjectMulti* vpclGetXmlObjectMulti() override { return this; }
    bool vbApplyToXml(CXError& clErreur) override;
    bool vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur) override;
    // Members replaced by clones of the source's, all unbound; this object's node is dropped.
    virtual void vAssign(CXmlObjectMulti* pclSource);
    bool vbEstObjetTemporaire() override;
    virtual PFNXMLCREATION vpfnGetFctCreation() = 0;
    // A new object of the class, made by its creation function for pclParent and assigned from
    // this one: every member cloned and unbound.
    CXmlObject* vpclClone(CXmlObjectMulti* pclParent) override;
    // A change inside a nested element belongs to the enclosing entry: all three report a
    // change to the parent.
    virtual void vNotifieAjout(CXmlObjectMulti* pclFils);
    virtual void vNotifieModif();
    virtual void vNotifieSuppr();
    virtual bool vbPreAjout(CXError&) { return true; }
    virtual bool vbPreModif(CXError&) { return true; }
    virtual void vPostAjout(CHTTPResponse&, CXError*, CGoogleConnexion*, IVM*) {}
    virtual void vPostModif(CHTTPResponse&, CXError*, IVM*) {}
    virtual void vPostSuppr(CHTTPResponse&, CXError*, CGoogleConnexion*, IVM*) {}
    virtual bool vbEstObjetAutonome() { return false; }
    void _vRAZ(CCtxInfo* pclCtx, CXError* pclErreur) override;

    CXmlObjectListe* pclGetListe(const char* pszNom) const { return m_mapProprietes.pclCherche(pszNom); }
    // A new list of that name, entered in the map with a reference.
    CXmlObjectListe* pclCreateListe(const char* pszNom);
    // The list of the same name replaced by this one, its members now this object's; the
    // caller keeps its reference.
    void RemplaceListe(CXmlObjectListe* pclListe);
    // The row's type, or 0 when the name has no row.
    eTypePropXML eGetXmlType(const char* pszNom) const;
    void SetPropriete(const char* pszNom, int nIndice, const wchar_t* pszValeur);
    void SetPropriete(const char* pszNom, int nIndice, CXmlObject* pclSource, CXError& clErreur);

    const CMapProprietes& mapGetProprietes() const { return m_mapProprietes; }
    CUpdatesManager& clGetUpdates() { return m_clUpdates; }
    const stXmlPropriete* pstGetDescription() const { return m_pstDescription; }
    uint32_t nGetNbDescription() const { return m_nNbDescription; }

    // The row of "prefix:name", ignoring case; without a match and with a prefix, the row of
    // the name alone. A prefix is matched as text, never by namespace URI.
    const stXmlPropriete* _pclFindInDescription(const char* pszPrefixe, const char* pszNom) const;

protected:
    CXmlObjectMulti(const stXmlPropriete* pstDescription, uint32_t nNbDescription)
        : m_pstDescription(pstDescription), m_nNbDescription(nNbDescription) {}
    ~CXmlObjectMulti() override = default;

    // Appends to the list of that name, made at need; the list takes over the reference.
    virtual void _vAjoutePropriete(const char* pszNom, CXmlObject* pclObjet);
    // A new member of a row with no prefix. Its parent is this object's parent, not this
    // object: callers rely on that.
    virtual CXmlObject* _vpclAjouteNouveau(const char* pszNom);

private:
    void _LitAttributs(INoeudXML* piNoeud);

    // Destroyed in reverse: the queue first, then the map.
    CMapProprietes m_mapProprietes;
    const stXmlPropriete* m_pstDescription;
    uint32_t m_nNbDescription;
    CUpdatesManager m_clUpdates;
};

// A row of a description table, as the .def beside each class writes it:
//     XML_ROW("gd:email", CEmail, XML_ELEMENT)
// and the class's source defines its statics:
//     const stXmlPropriete CEmail::s_m_stTabXmlDescription__[] = {
//     #include "xmlobject/EmailXml.def"
//     };
//     XML_DESCRIPTION_NB(CEmail)
#define XML_ROW(pszNom, Classe, eType) {pszNom, &Classe::s_pclCreate, eType},
#define XML_DESCRIPTION_NB(C)                                                                      \
    const uint32_t C::s_stTabXmlDescriptionNbElt__ =                                               \
        sizeof(C::s_m_stTabXmlDescription__) / sizeof(stXmlPropriete);
