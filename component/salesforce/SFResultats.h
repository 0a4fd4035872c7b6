// The Salesforce result classes: plain described classes whose table gives the XML of the
// reply and whose script properties read the leaves (the RF rows' Force setters write them
// without notice, as a reply's values are the component's to set). None has a server of its
// own: CXmlObjectAutonomeRacineSalesforce keeps every change in the object until a call sends
// it. CSFObject, the record, is in SFObject.h.
#pragma once
#include "updates/XmlObjectAutonome.h"
#include "xmlobject/XmlEnumerateur.h"
#include "xmlobject/XmlObjectScript.h"

#include "DateTime.h"

// A text, boolean or integer row shown under the property P, read with Get and forced with
// Force; SF_..._RW rows are written by scripts with Set.
#define SF_TEXTE(P, M)                                                                             \
    CXYString<wchar_t> Get##P(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_sGetTexte(this, M); } \
    void Force##P(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { SetPropriete(M, 0, s.pszGet()); }
#define SF_BOOLEEN(P, M)                                                                           \
    bool Get##P(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_nGetEntier(this, M) != 0; }  \
    void Force##P(CCtxInfo*, CXError*, int n) { SetPropriete(M, 0, n ? L"true" : L"false"); }
#define SF_ENTIER(P, M)                                                                            \
    int Get##P(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_nGetEntier(this, M); }        \
    void Force##P(CCtxInfo*, CXError*, int n) { SetPropriete(M, 0, std::to_wstring(n).c_str()); }
#define SF_TEXTE_RW(P, M)                                                                          \
    CXYString<wchar_t> Get##P(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_sGetTexte(this, M); } \
    void Set##P(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { CXmlProprietesScript::s_SetTexte(this, M, s); }
#define SF_BOOLEEN_RW(P, M)                                                                        \
    bool Get##P(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_nGetEntier(this, M) != 0; }  \
    void Set##P(CCtxInfo*, CXError*, int n) { CXmlProprietesScript::s_SetEntier(this, M, n != 0); }
// A row of objects shown as a collection.
#define SF_COLLECTION(N, T, M)                                                                     \
    IObjetCollection* Accesseur##N(CCtxInfo*, CXError*) { return new CTXmlEnumerateur<T>(this, M); }
// A joined row: its leaves as one text, a line each.
#define SF_JOINT(P, M)                                                                             \
    CXYString<wchar_t> Get##P(CCtxInfo*, CXError*) { return s_sJoint(this, M); }                    \
    void Force##P(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { s_SetJoint(this, M, s); }

// A date and time row, as the reply wrote it (its zone kept beside the value).
#define SF_DATEHEURE(P, M)                                                                         \
    CDateTime Get##P(CCtxInfo*, CXError*) { return s_dtDateHeure(this, M); }                       \
    void Force##P(CCtxInfo*, CXError*, CDateTime dt) { s_SetDateHeure(this, M, dt); }
#define SF_JOINT_RW(P, M)                                                                          \
    CXYString<wchar_t> Get##P(CCtxInfo*, CXError*) { return s_sJoint(this, M); }                    \
    void Set##P(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { s_SetJoint(this, M, s); }

#define SF_CLASSE(C)                                                                               \
    class C final : public CXmlObjectAutonomeRacineSalesforce, public CObjetComposanteBase {        \
    public:                                                                                        \
        XML_OBJET_DECLARE(C)                                                                       \
        XML_SCRIPT_DECLARE(C)

CXYString<wchar_t> s_sJoint(CXmlObjectMulti* pclObjet, const char* pszMembre);
void s_SetJoint(CXmlObjectMulti* pclObjet, const char* pszMembre, const CXYString<wchar_t>& s);
CDateTime s_dtDateHeure(CXmlObjectMulti* pclObjet, const char* pszMembre);
void s_SetDateHeure(CXmlObjectMulti* pclObjet, const char* pszMembre, const CDateTime& dt);

class CSFObject;

SF_CLASSE(CSFError)
    SF_JOINT(fields, "fields")
    SF_TEXTE(message, "message")
    SF_TEXTE(statusCode, "statusCode")
};

// The results that say success per record: an id, success and the errors.
#define SF_RESULTAT_ID(C)                                                                          \
    SF_CLASSE(C)                                                                                   \
        SF_TEXTE(id, "id")                                                                         \
        SF_BOOLEEN(success, "success")                                                             \
        SF_COLLECTION(errors, CSFError, "errors")
SF_RESULTAT_ID(CSFUpsertResult)
    SF_BOOLEEN(created, "created")
};
SF_RESULTAT_ID(CSFDeleteResult)
};
SF_RESULTAT_ID(CSFUndeleteResult)
};
SF_RESULTAT_ID(CSFEmptyRecycleBinResult)
};

SF_CLASSE(CSFInvalidateSessionsResult)
    SF_BOOLEEN(success, "success")
    SF_COLLECTION(errors, CSFError, "errors")
};

SF_CLASSE(CSFLeadConvert)
    SF_TEXTE_RW(accountId, "accountId")
    SF_TEXTE_RW(contactId, "contactId")
    SF_TEXTE_RW(convertedStatus, "convertedStatus")
    SF_BOOLEEN_RW(doNotCreateOpportunity, "doNotCreateOpportunity")
    SF_TEXTE_RW(leadId, "leadId")
    SF_TEXTE_RW(opportunityName, "opportunityName")
    SF_BOOLEEN_RW(overwriteLeadSource, "overwriteLeadSource")
    SF_TEXTE_RW(ownerId, "ownerId")
    SF_BOOLEEN_RW(sendNotificationEmail, "sendNotificationEmail")
};

SF_CLASSE(CSFLeadConvertResult)
    SF_TEXTE(accountId, "accountId")
    SF_TEXTE(contactId, "contactId")
    SF_TEXTE(leadId, "leadId")
    SF_TEXTE(opportunityId, "opportunityId")
    SF_BOOLEEN(success, "success")
    SF_COLLECTION(errors, CSFError, "errors")
};

SF_CLASSE(CSFGetUserInfoResult)
    SF_BOOLEEN(accessibilityMode, "accessibilityMode")
    SF_TEXTE(currencySymbol, "currencySymbol")
    SF_TEXTE(orgDefaultCurrencyIsoCode, "orgDefaultCurrencyIsoCode")
    SF_TEXTE(organizationId, "organizationId")
    SF_BOOLEEN(organizationMultiCurrency, "organizationMultiCurrency")
    SF_TEXTE(organizationName, "organizationName")
    SF_TEXTE(profileId, "profileId")
    SF_TEXTE(roleId, "roleId")
    SF_TEXTE(userDefaultCurrencyIsoCode, "userDefaultCurrencyIsoCode")
    SF_TEXTE(userEmail, "userEmail")
    SF_TEXTE(userFullName, "userFullName")
    SF_TEXTE(userId, "userId")
    SF_TEXTE(userLanguage, "userLanguage")
    SF_TEXTE(userLocale, "userLocale")
    SF_TEXTE(userName, "userName")
    SF_TEXTE(userTimeZone, "userTimeZone")
    SF_TEXTE(userType, "userType")
    SF_TEXTE(userUiSkin, "userUiSkin")
    CXYString<wchar_t> GetuserLocale_compat(CCtxInfo* c, CXError* e) { return GetuserLocale(c, e); }
};

SF_CLASSE(CSFLoginResult)
    SF_TEXTE(URLServeurMetadonnees, "metadataServerUrl")
    SF_BOOLEEN(MotDePasseExpire, "passwordExpired")
    SF_BOOLEEN(BacASable, "sandbox")
    SF_TEXTE(URLServeur, "serverUrl")
    SF_TEXTE(IdSession, "sessionId")
    SF_TEXTE(IdUtilisateur, "userId")
    IObjetBase* GetInfoUtilisateur(CCtxInfo*, CXError*);
};

SF_CLASSE(CSFQueryResult)
    SF_BOOLEEN(done, "done")
    SF_TEXTE(queryLocator, "queryLocator")
    SF_ENTIER(size, "size")
    IObjetCollection* AccesseursObjects(CCtxInfo*, CXError*);
};

SF_CLASSE(CSFSearchResult)
    IObjetCollection* AccesseursearchRecords(CCtxInfo*, CXError*);
};

SF_CLASSE(CSFDeletedRecord)
    SF_DATEHEURE(deletedDate, "deletedDate")
    SF_TEXTE(id, "id")
};

SF_CLASSE(CSFGetDeletedResult)
    SF_DATEHEURE(earliestDateAvailable, "earliestDateAvailable")
    SF_DATEHEURE(latestDateCovered, "latestDateCovered")
    SF_COLLECTION(deletedRecords, CSFDeletedRecord, "deletedRecords")
};

SF_CLASSE(CSFGetUpdatedResult)
    SF_JOINT(ids, "ids")
    SF_DATEHEURE(latestDateCovered, "latestDateCovered")
};

SF_CLASSE(CSFMergeRequest)
    IObjetBase* GetmasterRecord(CCtxInfo*, CXError*);
    SF_JOINT_RW(recordToMergeIds, "recordToMergeIds")
};

SF_CLASSE(CSFMergeResult)
    SF_TEXTE(id, "id")
    SF_JOINT(mergedRecordIds, "mergedRecordIds")
    SF_BOOLEEN(success, "success")
    SF_JOINT(updatedRelatedIds, "updatedRelatedIds")
    SF_COLLECTION(errors, CSFError, "errors")
};

SF_CLASSE(CSFProcessResult)
    SF_TEXTE(actorIds, "actorIds")
    SF_TEXTE(entityId, "entityId")
    SF_TEXTE(instanceId, "instanceId")
    SF_TEXTE(instanceStatus, "instanceStatus")
    SF_TEXTE(newWorkitemIds, "newWorkitemIds")
    SF_BOOLEEN(success, "success")
    SF_COLLECTION(errors, CSFError, "errors")
};

SF_CLASSE(CSFProcessSubmitRequest)
    SF_TEXTE_RW(objectId, "objectId")
    SF_TEXTE_RW(comments, "comments")
    SF_JOINT_RW(nextApproverIds, "nextApproverIds")
};

SF_CLASSE(CSFProcessWorkitemRequest)
    SF_TEXTE_RW(action, "action")
    SF_TEXTE_RW(workitemId, "workitemId")
    SF_TEXTE_RW(comments, "comments")
    SF_JOINT_RW(nextApproverIds, "nextApproverIds")
};

// The product list has no products: the type exists, with one row and no property.
class CSFProduit final : public CXmlObjectMulti, public CObjetComposanteBase {
public:
    XML_OBJET_DECLARE(CSFProduit)
    XML_SCRIPT_DECLARE(CSFProduit)
};
