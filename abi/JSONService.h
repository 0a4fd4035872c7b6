// The host's JSON service, registry name "ContenuJSON": IContenuJSON parses UTF-8 text into a
// tree of IElementJSON, IObjetJSON and ITableauJSON. The host implements them; the component
// parses answers with them and walks the trees with its visitors. IVisiteurJSON is the
// component's side: the component implements it, the host calls it. Slot order is binding.
//
// Nodes are counted, and every node keeps its tree alive.
//
// The walk. Each veVisite... operation answers an eVISITEJSON:
//   IElementJSON::vAccepte(v)  a value: v.veVisiteValeur(value);
//                              an object: v.veVisiteObjet(object), then on VISITE_DESCEND
//                                the object's vAccepte(v);
//                              an array: v.veVisiteTableau(array), then on VISITE_DESCEND
//                                the array's vAccepte(v).
//   IObjetJSON::vAccepte(v)    for each member in document order: v.veVisiteMembre(name, value),
//                              then on VISITE_DESCEND the value's vAccepte(v).
//   ITableauJSON::vAccepte(v)  for each element from index 0: v.veVisiteElement(element), then on
//                              VISITE_DESCEND the element's vAccepte(v).
// VISITE_SUIVANT goes on with the next node; VISITE_ARRET ends the walk of that vAccepte call:
// nothing more is visited until it returns.
//
// Leaf values reach veVisiteValeur as: a string 16 (wide), an integer 9, any other number 12,
// true and false 1, null a value with no type (0).
#pragma once
#include "ObjectInterfaces.h"

#include <cstddef>
#include <string_view>

class CAny;
class CXError;
class IElementJSON;
class IObjetJSON;
class ITableauJSON;

inline constexpr wchar_t gszServiceJSON[] = L"ContenuJSON";

enum eVISITEJSON : int {
    VISITE_ARRET = 0,
    VISITE_SUIVANT = 1,
    VISITE_DESCEND = 2,
};

enum eGENREJSON : int {
    GENRE_JSON_NUL = 0,
    GENRE_JSON_BOOLEEN = 1,
    GENRE_JSON_NOMBRE = 2,
    GENRE_JSON_CHAINE = 3,
    GENRE_JSON_OBJET = 4,
    GENRE_JSON_TABLEAU = 5,
};

// A name as the host hands it over: a wide text ended by a zero, with its length, borrowed for
// the call.
class CNomStandard {
public:
    constexpr CNomStandard() = default;
    constexpr CNomStandard(const wchar_t* psz, size_t nLongueur)
        : m_psz(psz), m_nLongueur(nLongueur) {}

    const wchar_t* pszGet() const { return m_psz ? m_psz : L""; }
    size_t nLongueur() const { return m_nLongueur; }
    std::wstring_view sv() const { return {pszGet(), m_nLongueur}; }

private:
    const wchar_t* m_psz = nullptr;
    size_t m_nLongueur = 0;
};

// The component's visitor; lives on the component's side for the length of a walk, not counted.
class IVisiteurJSON {
public:
    virtual int vnGetVersionIVisiteurJSON() { return 1; }
    virtual eVISITEJSON veVisiteValeur(CAny& clValeur) = 0;
    virtual eVISITEJSON veVisiteObjet(IObjetJSON& clObjet) = 0;
    // A member, before its value.
    virtual eVISITEJSON veVisiteMembre(const CNomStandard& clNom, IElementJSON& clValeur) = 0;
    virtual eVISITEJSON veVisiteTableau(ITableauJSON& clTableau) = 0;
    // An element of an array.
    virtual eVISITEJSON veVisiteElement(IElementJSON& clElement) = 0;

protected:
    ~IVisiteurJSON() = default;
};

// Any node of the tree.
class IElementJSON : public IInterfaceObjetBase {
public:
    virtual eGENREJSON veGetGenre() = 0;
    // The value of a leaf, typed as for veVisiteValeur; false for an object or an array.
    virtual int vbGetValeur(CAny& clValeur) = 0;
    // Casts, borrowed; null for a node of another kind.
    virtual IObjetJSON* vpiGetIObjetJSON() = 0;
    virtual ITableauJSON* vpiGetITableauJSON() = 0;
    virtual void vAccepte(IVisiteurJSON& clVisiteur) = 0;

protected:
    ~IElementJSON() = default;
};

class IObjetJSON : public IInterfaceObjetBase {
public:
    virtual int vnGetNbMembre() = 0;
    // Walks the members, not the object itself.
    virtual void vAccepte(IVisiteurJSON& clVisiteur) = 0;

protected:
    ~IObjetJSON() = default;
};

class ITableauJSON : public IInterfaceObjetBase {
public:
    virtual int vnGetNbElement() = 0;
    // A new reference to the element; null past the end.
    virtual IElementJSON* vpiGetElement(int nIndice) = 0;
    // Walks the elements, not the array itself.
    virtual void vAccepte(IVisiteurJSON& clVisiteur) = 0;

protected:
    ~ITableauJSON() = default;
};

// The service.
class IContenuJSON : public IInterfaceObjetBase {
public:
    // The root of the tree of nTaille bytes of UTF-8 text, a new reference; null with the cause
    // in the error when the text is not JSON.
    virtual IElementJSON* vpiAnalyse(const char* pTexte, size_t nTaille, CXError* pclErreur) = 0;

protected:
    ~IContenuJSON() = default;
};
