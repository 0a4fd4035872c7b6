// CPersistanceConnexion: the process-wide table of saved connections, keyed by each
// connection's own key, mirrored to one value of the host's store (section "KVGGL", key
// "KV_GGL_ACCOUNTS"): one record per connection, each ended by "\r\n", in table order.
//
// The table owns clones of the connections it holds. Only the kind of host runtime without a
// login dialogue keeps connections: in the other, loading and saving do nothing and the table
// answers no. The loader makes its connections through the factory its caller gives, so the
// table knows no connector.
#pragma once
#include "XYString.h"

#include <cstdint>
#include <vector>

class CConnexionOAuthBase;
class CXError;
class IPersistance;
class IVM;

class CPersistanceConnexion {
public:
    using PFNNouvelleConnexion = CConnexionOAuthBase* (*)();

    static CPersistanceConnexion* s_pclGetInstance();
    // At the component's end.
    static void Cleanup();

    bool bAddConnexion(CConnexionOAuthBase* pclConnexion);
    // Copies the stored connection's data into pclConnexion, found by its key.
    bool bRetrieveConnexion(CConnexionOAuthBase* pclConnexion);
    bool bDeleteConnexion(CConnexionOAuthBase* pclConnexion);

    // Reads the stored value once per process; a record that its connection cannot read is
    // skipped. pfnNouvelle makes an empty connection of the kind stored.
    bool bLoadData(IVM* piVM, CXError* pclErreur, PFNNouvelleConnexion pfnNouvelle);
    bool bSaveData(IVM* piVM, CXError* pclErreur);

    int nGetNbConnexion() const { return static_cast<int>(m_nNbElement); }
    ~CPersistanceConnexion();

private:
    CPersistanceConnexion();
    static bool s_bStockageActif();
    static IPersistance* __piGetIPersistanceSTD(IVM* piVM, CXError* pclErreur);

    // The hash table: buckets of 1-based element indices, chains through nSuivant, free
    // elements chained the same way; half as many elements as buckets.
    struct STElement {
        uint32_t nSuivant = 0;
        bool bOccupe = false;
        CXYString<wchar_t> sCle;
        CConnexionOAuthBase* pclConnexion = nullptr;
    };
    static uint32_t s_nHash(const wchar_t* pszCle);
    uint32_t _nTrouve(const wchar_t* pszCle) const;
    bool _bInsere(const CXYString<wchar_t>& sCle, CConnexionOAuthBase* pclConnexion);
    void _Supprime(uint32_t nElement);
    bool _bRedimensionne(size_t nIndiceTaille);
    void _ReduitSiBesoin();

    std::vector<uint32_t> m_tabSeaux;
    std::vector<STElement> m_tabElements;
    uint32_t m_nLibre = 0;
    uint32_t m_nNbElement = 0;
    size_t m_nIndiceTaille = 0;
    int m_bCharge = 0;

    static CPersistanceConnexion* ms_pclInstance;
};
