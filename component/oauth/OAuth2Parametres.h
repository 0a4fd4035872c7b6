// COAuth2Parametres: what a script says of an OAuth 2 provider, its client and the access it
// asks, held inside the component and by every token that came from it.
#pragma once
#include "frame/ObjetComposante.h"

#include "XYString.h"

class CKVBuffer;

// The seven texts, in their saved order: X(field, script property).
#define KV_OAUTH2_CHAMPS(X)                                                                        \
    X(ClientID, ClientID)                                                                          \
    X(ClientSecret, ClientSecret)                                                                  \
    X(URLAuth, URLAuth)                                                                            \
    X(URLToken, URLToken)                                                                          \
    X(Scope, Scope)                                                                                \
    X(ParamEnPlus, ParametresSupplementaires)                                                      \
    X(URLRedirection, URLRedirection)

class IOAuth2Parametres {
public:
    virtual void vAddRef() = 0;
    virtual void vRelease() = 0;
    virtual int vnGetVersion_IOAuth2Parametres() const = 0;
    // A new object with the same texts, at count 0.
    virtual IOAuth2Parametres* vpiClone() const = 0;
#define KV_OAUTH2_ACCES(Champ, Propriete)                                                          \
    virtual const CXYString<wchar_t>& vczGet##Champ() const = 0;                                   \
    virtual void vSet##Champ(const CXYString<wchar_t>& s) = 0;
    KV_OAUTH2_CHAMPS(KV_OAUTH2_ACCES)
#undef KV_OAUTH2_ACCES
    virtual bool vToBuffer(CKVBuffer& clBuffer) const = 0;
    // False, and the texts left as they were, when the saved form is cut short or altered; a
    // form of a later version is passed over whole.
    virtual bool vFromBuffer(CKVBuffer& clBuffer) = 0;

protected:
    virtual ~IOAuth2Parametres() = default;
};

class COAuth2Parametres final
    : public CImplInterfaceAddRefRelease<IOAuth2Parametres, CAddRefRelease> {
public:
    int vnGetVersion_IOAuth2Parametres() const override { return 1; }
    IOAuth2Parametres* vpiClone() const override { return new COAuth2Parametres(*this); }
#define KV_OAUTH2_ACCES(Champ, Propriete)                                                          \
    const CXYString<wchar_t>& vczGet##Champ() const override {                                     \
        return m_s##Champ;                                                                         \
    }                                                                                              \
    void vSet##Champ(const CXYString<wchar_t>& s) override {                                       \
        m_s##Champ = s;                                                                            \
    }
    KV_OAUTH2_CHAMPS(KV_OAUTH2_ACCES)
#undef KV_OAUTH2_ACCES
    bool vToBuffer(CKVBuffer& clBuffer) const override;
    bool vFromBuffer(CKVBuffer& clBuffer) override;

    COAuth2Parametres() = default;
    COAuth2Parametres(const COAuth2Parametres& o);
    ~COAuth2Parametres() override = default;

private:
#define KV_OAUTH2_MEMBRE(Champ, Propriete) CXYString<wchar_t> m_s##Champ;
    KV_OAUTH2_CHAMPS(KV_OAUTH2_MEMBRE)
#undef KV_OAUTH2_MEMBRE
};
