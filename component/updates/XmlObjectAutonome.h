// Entries that a server knows on their own, with their own URLs. Setters and collections call
// the notifications, which queue work and send nothing; a save runs the queue.
//
// CXmlObjectAutonome: an entry inside another entry (a photo in an album); its deletion goes
// on the queue of its logical parent. CXmlObjectAutonomeRacine: an entry at the top (a contact,
// an album); every operation goes on its own queue. CXmlObjectAutonomeRacineSalesforce: records
// sent by explicit calls, with the queue turned off.
#pragma once
#include "xmlobject/XmlObjectMulti.h"

class CXmlObjectAutonome : public CXmlObjectMulti {
public:
    // The object on whose queue this entry's deletion is placed.
    virtual CXmlObjectMulti* vpclGetParentLogique() = 0;

    void vNotifieAjout(CXmlObjectMulti* pclFils) override;
    void vNotifieModif() override;
    void vNotifieSuppr() override;
    // With 201 (200 for a change), the object takes what the server sent: all members replaced
    // by the answer's, unbound, the "id" among them.
    void vPostAjout(CHTTPResponse& clReponse, CXError* pclErreur, CGoogleConnexion* pclConnexion,
                    IVM* piVM) override;
    void vPostModif(CHTTPResponse& clReponse, CXError* pclErreur, IVM* piVM) override;
    void vPostSuppr(CHTTPResponse&, CXError*, CGoogleConnexion*, IVM*) override {}
    bool vbEstObjetAutonome() override { return true; }

protected:
    using CXmlObjectMulti::CXmlObjectMulti;

    // The answer's entry, read by this class's creation function and assigned onto this object.
    void _RemplaceParReponse(CHTTPResponse& clReponse, CXError* pclErreur, int eAttendu);
};

class CXmlObjectAutonomeRacine : public CXmlObjectAutonome {
public:
    CXmlObjectMulti* vpclGetParentLogique() override { return nullptr; }
    void vNotifieModif() override;
    void vNotifieSuppr() override;
    virtual void vNotifieAjoutMoiMeme();
    // The feed to which a new entry of the class is posted.
    virtual const wchar_t* vpszGetURLAjoutMoiMeme() = 0;

protected:
    using CXmlObjectAutonome::CXmlObjectAutonome;
};

class CXmlObjectAutonomeRacineSalesforce : public CXmlObjectAutonomeRacine {
public:
    void vNotifieAjoutMoiMeme() override {}
    void vNotifieModif() override {}
    const wchar_t* vpszGetURLAjoutMoiMeme() override { return L""; }

protected:
    using CXmlObjectAutonomeRacine::CXmlObjectAutonomeRacine;
};
