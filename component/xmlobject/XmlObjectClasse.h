// The members every concrete class of the tree has, written once:
//   in the class        XML_OBJET_DECLARE(CEmail)
//   in its source       XML_OBJET_DEFINE(CEmail, CXmlObjectMulti)  (with a description table)
//                       XML_FEUILLE_DEFINE(Texte, CXmlObjectSimple<...>)  (a leaf, no table)
// The creation function builds the object, reads it with an error of its own and drops that
// error: a member that cannot be read never fails the load of its parent.
#pragma once
#include "xmlobject/Visiteur.h"
#include "xmlobject/XmlObjectMulti.h"

#define XML_OBJET_CREATION(C)                                                                      \
    C(INoeudXML* piNoeud, eTypePropXML eType, CXmlObjectMulti* pclParent, const char* pszNom,      \
      long nRefInitial = 1);                                                                       \
    static CXmlObject* s_pclCreate(INoeudXML* piNoeud, eTypePropXML eType,                         \
                                   CXmlObjectMulti* pclParent, const char* pszNom);                \
    void vAccepte(CVisiteur* pclVisiteur) override;

#define XML_OBJET_DECLARE(C)                                                                       \
    static const stXmlPropriete s_m_stTabXmlDescription__[];                                       \
    static const uint32_t s_stTabXmlDescriptionNbElt__;                                            \
    XML_OBJET_CREATION(C)                                                                          \
    PFNXMLCREATION vpfnGetFctCreation() override { return &C::s_pclCreate; }

#define _XML_CREATE_DEFINE(C)                                                                      \
    CXmlObject* C::s_pclCreate(INoeudXML* piNoeud, eTypePropXML eType, CXmlObjectMulti* pclParent, \
                               const char* pszNom) {                                               \
        C* pcl = new C(piNoeud, eType, pclParent, pszNom);                                         \
        CXError clErreur;                                                                          \
        pcl->vInit(clErreur);                                                                      \
        return pcl->vpclGetXmlObject();                                                            \
    }

// vAccepte fills the class's own field; Extra is a further statement (the text part's field).
#define XML_ACCEPTE_DEFINE(C, Extra)                                                               \
    void C::vAccepte(CVisiteur* pclVisiteur) {                                                     \
        pclVisiteur->rChampDe<C>() = this;                                                         \
        Extra;                                                                                     \
    }

#define XML_OBJET_DEFINE(C, Base)                                                                  \
    C::C(INoeudXML* piNoeud, eTypePropXML eType, CXmlObjectMulti* pclParent, const char* pszNom,   \
         long nRefInitial)                                                                         \
        : CXmlObject(piNoeud, eType, pclParent, pszNom, nRefInitial),                              \
          Base(s_m_stTabXmlDescription__, s_stTabXmlDescriptionNbElt__) {}                         \
    _XML_CREATE_DEFINE(C)                                                                          \
    XML_DESCRIPTION_NB(C)

// A leaf: no table; its clone has the source's type and name, its value, and is set.
#define XML_FEUILLE_DECLARE(C)                                                                     \
    XML_OBJET_CREATION(C)                                                                          \
    CXmlObject* vpclClone(CXmlObjectMulti* pclParent) override;

#define XML_FEUILLE_DEFINE(C, BaseInit)                                                            \
    C::C(INoeudXML* piNoeud, eTypePropXML eType, CXmlObjectMulti* pclParent, const char* pszNom,   \
         long nRefInitial)                                                                         \
        : CXmlObject(piNoeud, eType, pclParent, pszNom, nRefInitial), BaseInit {}                  \
    _XML_CREATE_DEFINE(C)                                                                          \
    CXmlObject* C::vpclClone(CXmlObjectMulti* pclParent) {                                         \
        C* pcl = new C(nullptr, eGetType(), pclParent, czGetNom().pszGet());                       \
        pcl->_CopieDe(*this);                                                                      \
        return pcl;                                                                                \
    }

// A class with no field in CVisiteur, such as a table written for a test: a visit finds
// nothing.
#define XML_OBJET_DEFINE_SANS_VISITE(C, Base)                                                      \
    XML_OBJET_DEFINE(C, Base)                                                                      \
    void C::vAccepte(CVisiteur*) {}
