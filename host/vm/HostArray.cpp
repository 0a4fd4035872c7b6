#include "HostArray.h"

#include "AnyTypes.h"
#include "HostBarrier.h"
#include "KVResult.h"
#include "VMErrors.h"
#include "XError.h"

#include <string>

std::atomic<int> CHostArray::ms_nLive{0};

CHostArray::CHostArray(uint16_t nElementType) : m_nElementType(nElementType) {
    ++ms_nLive;
}

CHostArray::~CHostArray() {
    --ms_nLive;
}

CHostArray* CHostArray::s_pclNew(uint16_t nElementType) {
    return new CHostArray(nElementType);
}

int CHostArray::vbInitialise(ITypeDescription* piTypeElement, int, int, IVM*, CXError*) {
    m_piElementClass = piTypeElement;
    return 1;
}

int CHostArray::vnGetNbElement() {
    return static_cast<int>(m_tabElements.size());
}

bool CHostArray::_bIndex(int nIndice, CXError* pclErreur) const {
    if (nIndice >= 0 && static_cast<size_t>(nIndice) < m_tabElements.size())
        return true;
    KVHostVM::SetError(pclErreur, VMERROR_ARRAY_INDEX,
                       "array index " + std::to_string(nIndice) + " is out of range (" +
                           std::to_string(m_tabElements.size()) + " elements)");
    return false;
}

int CHostArray::vbRedimensionne(int nNbElement, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, 0, [&] {
        if (nNbElement < 0) {
            KVHostVM::SetError(pclErreur, VMERROR_ARRAY_INDEX,
                               "an array cannot have a negative size");
            return 0;
        }
        size_t nAvant = m_tabElements.size();
        m_tabElements.resize(static_cast<size_t>(nNbElement));
        for (size_t i = nAvant; i < m_tabElements.size(); ++i)
            (void)m_tabElements[i].__SetType(m_nElementType, 0);
        return 1;
    });
}

int CHostArray::vbGetElement(int nIndice, CAny& clValeur, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, 0, [&] {
        if (!_bIndex(nIndice, pclErreur))
            return 0;
        clValeur = m_tabElements[static_cast<size_t>(nIndice)];
        return 1;
    });
}

bool CHostArray::_bConvert(const CAny& clValeur, CAny& clOut, CXError* pclErreur) const {
    if (m_nElementType == KVTYPE_KLDINO || m_nElementType == KVTYPE_KLOBJET_BASE) {
        IInterfaceObjetBase* pi = clValeur.piGetObjet();
        if (!pi) {
            if (clValeur.nGetType() != KVTYPE_NONE && clValeur.nGetType() != KVTYPE_KLDINO &&
                clValeur.nGetType() != KVTYPE_KLOBJET_BASE) {
                KVHostVM::SetError(pclErreur, VMERROR_ARRAY_TYPE,
                                   "an array of objects cannot hold that value");
                return false;
            }
            clOut.Vide();
            (void)clOut.__SetType(m_nElementType, 0);
            return true;
        }
        if (m_piElementClass) {
            auto* piBase = static_cast<IObjetBase*>(pi->vpiGetObjetBase());
            IObjetComposante* piObjet = piBase ? piBase->vpiGetIObjetComposante() : nullptr;
            if (!piObjet || !piObjet->vpGetSafeObjetC(m_piElementClass)) {
                KVHostVM::SetError(pclErreur, VMERROR_ARRAY_TYPE,
                                   "the object is not of the array's class");
                return false;
            }
        }
        return KV_bSucces(clOut.SetObjet(pi, m_nElementType));
    }
    clOut = clValeur;
    if (m_nElementType == KVTYPE_NONE || clOut.nGetType() == m_nElementType)
        return true;
    if (!KV_bSucces(clOut.__nCastTo(m_nElementType))) {
        KVHostVM::SetError(pclErreur, VMERROR_ARRAY_TYPE,
                           "the value cannot be converted to the array's element type " +
                               std::to_string(m_nElementType));
        return false;
    }
    return true;
}

int CHostArray::vbSetElement(int nIndice, const CAny& clValeur, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, 0, [&] {
        if (!_bIndex(nIndice, pclErreur))
            return 0;
        CAny cl;
        if (!_bConvert(clValeur, cl, pclErreur))
            return 0;
        m_tabElements[static_cast<size_t>(nIndice)].swap(cl);
        return 1;
    });
}

bool CHostArray::bAppend(const CAny& clValeur, CXError* pclErreur) {
    CAny cl;
    if (!_bConvert(clValeur, cl, pclErreur))
        return false;
    m_tabElements.push_back(std::move(cl));
    return true;
}

int CHostArray::vbCopie(IKLTableau* piSource, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, 0, [&] {
        if (!piSource) {
            KVHostVM::SetError(pclErreur, VMERROR_ARRAY_TYPE, "no array to copy");
            return 0;
        }
        if (piSource == this)
            return 1;
        std::vector<CAny> tab;
        int n = piSource->vnGetNbElement();
        for (int i = 0; i < n; ++i) {
            CAny clSource, cl;
            if (!piSource->vbGetElement(i, clSource, pclErreur) ||
                !_bConvert(clSource, cl, pclErreur))
                return 0;
            tab.push_back(std::move(cl));
        }
        m_tabElements.swap(tab);
        return 1;
    });
}
