// CMapProprietes: a described object's members, name to list. Cells are taken in rising order
// and walked in that order, and the map only ever empties as a whole, so iteration gives the
// names in the order they first appeared: the order in which members are written back, each
// group where its name was first added. The map holds one reference on each list; a key is
// the list's own name, so key and value live and die together.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

class CXmlObjectListe;

class CMapProprietes {
public:
    // The bucket counts, each about twice the last; a table starts at 17 with 8 cells.
    static const uint32_t g__ToutPretToutChaud[];

    CMapProprietes() = default;
    CMapProprietes(const CMapProprietes&) = delete;
    CMapProprietes& operator=(const CMapProprietes&) = delete;
    ~CMapProprietes() { Vide(0); }

    // Exact comparison: the rows' lookup ignores case, this one does not.
    CXmlObjectListe* pclCherche(const char* pszNom) const;
    // Takes over one reference on the list, under the list's own name; false when the memory
    // for it cannot be had (the reference is then the caller's still).
    bool bInsere(CXmlObjectListe* pclListe);
    // Room for n names before the first growth.
    void Reserve(size_t n) { m_tabCellules.reserve(n); }
    // Takes over one reference on the list, in place of the list of the same name (released),
    // or after the others when there is none.
    bool bRemplace(CXmlObjectListe* pclListe);
    // Releases every list and empties the map; with bGarde the buckets are kept for reuse.
    void Vide(int bGarde);

    size_t nGetNbElement() const { return m_tabCellules.size(); }
    bool bEstVide() const { return m_tabCellules.empty(); }
    // Iteration in first-appearance order.
    CXmlObjectListe* pclGetElement(size_t i) const { return m_tabCellules[i].pclListe; }

    static uint32_t s_nHache(const char* psz);

private:
    struct STCellule {
        const char* pszCle;
        CXmlObjectListe* pclListe;
        int32_t nSuivante; // next cell of the bucket, -1 at the end
        uint32_t nHache;
    };
    void _Redimensionne(size_t nPalier);

    std::vector<STCellule> m_tabCellules;
    std::vector<int32_t> m_tabSeaux; // first cell of each bucket, -1 for none
    size_t m_nPalier = 0;            // index in g__ToutPretToutChaud
};
