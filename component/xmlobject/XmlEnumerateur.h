// CTXmlEnumerateur<T>: the script's collection over one list of an XML object (a contact's
// e-mails, an album's photos). A stub builds one on the fly for each access; it holds the
// owner and the list, so it stays valid however long the host keeps it, but a list that the
// owner replaces later is not seen. Changes notify the owner, which queues the work.
//
// T: a script-visible class of the tree, with ms_piType.
#pragma once
#include "frame/ObjetComposante.h"
#include "xmlobject/XmlObjectMulti.h"

#include <algorithm>

// The answer to an index out of range.
inline const eRESULTATOBJET gkeIndiceInvalide =
    static_cast<eRESULTATOBJET>(static_cast<int>(0x80000001u));

template <class T>
class CTXmlEnumerateur final : public CImplInterfaceAddRefRelease<IObjetCollectionModifiable> {
public:
    CTXmlEnumerateur(CXmlObjectMulti* pclOwner, const char* pszNom)
        : m_pclOwner(pclOwner), m_czNom(czNomPartage(pszNom)) {
        m_pclOwner->vAddRef();
        m_pclListe = m_pclOwner->pclGetListe(m_czNom.pszGet());
        if (m_pclListe)
            m_pclListe->vAddRef();
    }
    ~CTXmlEnumerateur() override {
        if (m_pclListe)
            m_pclListe->vRelease();
        m_pclOwner->vRelease();
    }

    IObjetCollectionModifiable* vpiGetIObjetCollectionModifiable() override { return this; }

    int vnGetNbElementCollection(CCtxInfo*, CXError*) override { return nNb(); }
    IObjetBase* vpiGetElementCollection(int i, CCtxInfo*, CXError*) override {
        CXmlObject* pcl = m_pclListe ? m_pclListe->pclGetElement(i) : nullptr;
        return pcl ? pcl->vpiGetObjetBaseScript() : nullptr;
    }

    eRESULTATOBJET veAjouteElementCollection(IObjetComposante* piElement, int* pnIndice, CCtxInfo*,
                                             CXError* pclErreur) override {
        T* pcl = pclElementDe(piElement, pclErreur);
        if (!pcl)
            return RESULTAT_OBJET_ERREUR;
        _AssureListe();
        _Ajoute(pcl, nNb());
        if (pnIndice)
            *pnIndice = nNb() - 1;
        m_pclOwner->vNotifieAjout(pcl);
        return RESULTAT_OBJET_OK;
    }
    // Insertion at the end is refused; the list is made before that test.
    eRESULTATOBJET veInsereElementCollection(int i, IObjetComposante* piElement, CCtxInfo*,
                                             CXError* pclErreur) override {
        _AssureListe();
        if (i < 0 || i >= nNb())
            return gkeIndiceInvalide;
        T* pcl = pclElementDe(piElement, pclErreur);
        if (!pcl)
            return RESULTAT_OBJET_ERREUR;
        _Ajoute(pcl, i);
        m_pclOwner->vNotifieAjout(pcl);
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veAjouteElementCollectionVide(int* pnIndice, CCtxInfo* pclCtx, CXError* pclErreur) override {
        CRefXml cl(T::s_pclCreeObjet(pclCtx, pclErreur));
        return veAjouteElementCollection(cl.pGet(), pnIndice, pclCtx, pclErreur);
    }
    eRESULTATOBJET veInsereElementCollectionVide(int i, CCtxInfo* pclCtx, CXError* pclErreur) override {
        CRefXml cl(T::s_pclCreeObjet(pclCtx, pclErreur));
        return veInsereElementCollection(i, cl.pGet(), pclCtx, pclErreur);
    }
    eRESULTATOBJET veAjouteElementCollectionParametre(int*, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    eRESULTATOBJET veInsereElementCollectionParametre(int, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    eRESULTATOBJET veSupprimeElementCollection(int i, CCtxInfo*, CXError*) override {
        if (!m_pclListe)
            return RESULTAT_OBJET_OK;
        if (i < 0 || i >= nNb())
            return gkeIndiceInvalide;
        // A nested element's removal is a change of its entry; an entry's queues its deletion.
        if (CXmlObjectMulti* pcl = m_pclListe->pclGetElement(i)->vpclGetXmlObjectMulti())
            pcl->vNotifieSuppr();
        m_pclListe->Supprime(i);
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veSupprimeToutElementCollection(CCtxInfo*, CXError*) override {
        if (m_pclListe) {
            for (int i = 0; i < nNb(); ++i)
                if (CXmlObjectMulti* pcl = m_pclListe->pclGetElement(i)->vpclGetXmlObjectMulti())
                    pcl->vNotifieSuppr();
            m_pclListe->SupprimeTout();
        }
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veDeplaceElementCollection(int nDepuis, int nVers, CCtxInfo*, CXError*) override {
        if (!m_pclListe)
            return RESULTAT_OBJET_OK;
        if (std::max(nDepuis, nVers) >= nNb() || std::min(nDepuis, nVers) < 0)
            return gkeIndiceInvalide;
        m_pclListe->Deplace(nDepuis, nVers);
        m_pclOwner->vNotifieModif();
        return RESULTAT_OBJET_OK;
    }
    // The smaller index moves to the larger, then the one before the larger to the smaller.
    eRESULTATOBJET veEchangeElementCollection(int a, int b, CCtxInfo*, CXError*) override {
        if (!m_pclListe)
            return RESULTAT_OBJET_OK;
        if (std::max(a, b) >= nNb() || std::min(a, b) < 0)
            return gkeIndiceInvalide;
        const int nPetit = std::min(a, b), nGrand = std::max(a, b);
        m_pclListe->Deplace(nPetit, nGrand);
        m_pclListe->Deplace(nGrand - 1, nPetit);
        m_pclOwner->vNotifieModif();
        return RESULTAT_OBJET_OK;
    }

    CXmlObjectListe* pclGetListe() const { return m_pclListe; }

private:
    // Holds a new script object across a call: a new one has count 0.
    class CRefXml {
    public:
        explicit CRefXml(T* p) : m_p(p) {
            if (m_p)
                m_p->vAddRef();
        }
        ~CRefXml() {
            if (m_p)
                m_p->vRelease();
        }
        IObjetComposante* pGet() const { return m_p; }

    private:
        T* m_p;
    };

    int nNb() const { return m_pclListe ? m_pclListe->nGetNbElement() : 0; }
    void _AssureListe() {
        if (m_pclListe)
            return;
        m_pclListe = m_pclOwner->pclCreateListe(m_czNom.pszGet());
        if (m_pclListe)
            m_pclListe->vAddRef();
    }
    void _Ajoute(T* pcl, int i) {
        if (!m_pclListe)
            return;
        pcl->vSetParent(m_pclOwner);
        pcl->vAddRef();
        m_pclListe->Insere(i, pcl->vpclGetXmlObject());
    }
    static T* pclElementDe(IObjetComposante* piElement, CXError* pclErreur) {
        void* p = nullptr;
        if (!piElement || !piElement->vbGetObjetC(p, T::ms_piType, 0, pclErreur) || !p)
            return nullptr;
        return static_cast<T*>(p);
    }

    CXmlObjectListe* m_pclListe = nullptr;
    CXmlObjectMulti* m_pclOwner;
    CXYString<char> m_czNom;
};
