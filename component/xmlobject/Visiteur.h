// CVisiteur: the tree's downcast. A record of typed pointers, one per concrete class, all null
// before a visit; each concrete class's vAccepte stores `this` in its own field, so that no
// run-time type test is needed. CCastor<T> wraps one visit.
#pragma once
#include "xmlobject/XmlObject.h"

#define VISITEUR_NS(N, C)                                                                          \
    namespace N {                                                                                  \
    class C;                                                                                       \
    }
#define VISITEUR(C) class C;
#include "xmlobject/Visiteur.def"

class CVisiteur {
public:
#define VISITEUR_NS(N, C)                                                                          \
    N::C* p##N##_##C = nullptr;                                                                    \
    N::C*& rChamp(N::C**) { return p##N##_##C; }
#define VISITEUR(C)                                                                                \
    C* p##C = nullptr;                                                                             \
    C*& rChamp(C**) { return p##C; }
#include "xmlobject/Visiteur.def"

    template <class T> T*& rChampDe() { return rChamp(static_cast<T**>(nullptr)); }
};

// The object as a T, or null when it is null or of another class.
template <class T> class CCastor {
public:
    explicit CCastor(CXmlObject* pclObjet) {
        if (!pclObjet)
            return;
        CVisiteur clVisiteur;
        pclObjet->vAccepte(&clVisiteur);
        m_p = clVisiteur.rChampDe<T>();
    }
    T* operator->() const { return m_p; }
    T* pGet() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }

private:
    T* m_p = nullptr;
};
