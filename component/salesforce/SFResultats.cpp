#include "salesforce/SFResultats.h"

#include "frame/ComposanteGGL.h"
#include "salesforce/SFObject.h"
#include "xmlobject/Feuilles.h"

#include "foundation/DateTimeRFC3339.h"

CXYString<wchar_t> s_sJoint(CXmlObjectMulti* pclObjet, const char* pszMembre) {
    CXYString<wchar_t> s;
    if (CXmlObjectListe* pclListe = pclObjet->pclGetListe(pszMembre))
        CComposanteGGL::s_Liste2ChaineRC(pclListe, s);
    return s;
}

void s_SetJoint(CXmlObjectMulti* pclObjet, const char* pszMembre, const CXYString<wchar_t>& s) {
    CXmlObjectListe* pclListe = pclObjet->pclGetListe(pszMembre);
    if (!pclListe)
        pclListe = pclObjet->pclCreateListe(pszMembre);
    if (!pclListe)
        return;
    pclListe->SupprimeTout();
    CComposanteGGL::s_ChaineRC2Liste(s, pclListe, &XmlObject::Texte::s_pclCreate, XML_ELEMENT);
    pclObjet->vNotifieModif();
}

CDateTime s_dtDateHeure(CXmlObjectMulti* pclObjet, const char* pszMembre) {
    CCastor<XmlObject::DateHeure> cl(pclObjet->pclGetPropriete(pszMembre, 0));
    return cl ? static_cast<const CDateTime&>(cl->GetValeur()) : CDateTime();
}

void s_SetDateHeure(CXmlObjectMulti* pclObjet, const char* pszMembre, const CDateTime& dt) {
    CCastor<XmlObject::DateHeure> cl(pclObjet->pclGetCreatePropriete(pszMembre, 0));
    if (!cl)
        return;
    CDateTimeRFC3339 clValeur;
    static_cast<CDateTime&>(clValeur) = dt;
    cl->SetValeur(clValeur);
}

// The description tables, in the order of the replies.
#define SF_TABLE(C, ...)                                                                           \
    ITypeDescription* C::ms_piType = nullptr;                                                      \
    const stXmlPropriete C::s_m_stTabXmlDescription__[] = {__VA_ARGS__};                           \
    XML_OBJET_DEFINE(C, CXmlObjectAutonomeRacineSalesforce)                                        \
    XML_ACCEPTE_DEFINE(C, )

#define SF_ROW_TEXTE(N) XML_ROW(N, XmlObject::Texte, XML_ELEMENT)
#define SF_ROW_BOOLEEN(N) XML_ROW(N, XmlObject::Booleen, XML_ELEMENT)
#define SF_ROWS_RESULTAT_ID                                                                        \
    XML_ROW("errors", CSFError, XML_ELEMENT) SF_ROW_TEXTE("id") SF_ROW_BOOLEEN("success")

SF_TABLE(CSFError, SF_ROW_TEXTE("fields") SF_ROW_TEXTE("message") SF_ROW_TEXTE("statusCode"))
SF_TABLE(CSFUpsertResult, SF_ROW_BOOLEEN("created") SF_ROWS_RESULTAT_ID)
SF_TABLE(CSFDeleteResult, SF_ROWS_RESULTAT_ID)
SF_TABLE(CSFUndeleteResult, SF_ROWS_RESULTAT_ID)
SF_TABLE(CSFEmptyRecycleBinResult, SF_ROWS_RESULTAT_ID)
SF_TABLE(CSFInvalidateSessionsResult,
         XML_ROW("errors", CSFError, XML_ELEMENT) SF_ROW_BOOLEEN("success"))
SF_TABLE(CSFLeadConvert,
         SF_ROW_TEXTE("accountId") SF_ROW_TEXTE("contactId") SF_ROW_TEXTE("convertedStatus")
         SF_ROW_BOOLEEN("doNotCreateOpportunity") SF_ROW_TEXTE("leadId")
         SF_ROW_TEXTE("opportunityName") SF_ROW_BOOLEEN("overwriteLeadSource")
         SF_ROW_TEXTE("ownerId") SF_ROW_BOOLEEN("sendNotificationEmail"))
SF_TABLE(CSFLeadConvertResult,
         SF_ROW_TEXTE("accountId") SF_ROW_TEXTE("contactId") XML_ROW("errors", CSFError, XML_ELEMENT)
         SF_ROW_TEXTE("leadId") SF_ROW_TEXTE("opportunityId") SF_ROW_BOOLEEN("success"))
SF_TABLE(CSFGetUserInfoResult,
         SF_ROW_BOOLEEN("accessibilityMode") SF_ROW_TEXTE("currencySymbol")
         SF_ROW_TEXTE("orgDefaultCurrencyIsoCode") SF_ROW_BOOLEEN("orgHasPersonAccounts")
         SF_ROW_TEXTE("organizationId") SF_ROW_BOOLEEN("organizationMultiCurrency")
         SF_ROW_TEXTE("organizationName") SF_ROW_TEXTE("profileId") SF_ROW_TEXTE("roleId")
         SF_ROW_TEXTE("userDefaultCurrencyIsoCode") SF_ROW_TEXTE("userEmail")
         SF_ROW_TEXTE("userFullName") SF_ROW_TEXTE("userId") SF_ROW_TEXTE("userLanguage")
         SF_ROW_TEXTE("userLocale") SF_ROW_TEXTE("userName") SF_ROW_TEXTE("userTimeZone")
         SF_ROW_TEXTE("userType") SF_ROW_TEXTE("userUiSkin"))
SF_TABLE(CSFLoginResult,
         SF_ROW_TEXTE("metadataServerUrl") SF_ROW_BOOLEEN("passwordExpired")
         SF_ROW_BOOLEEN("sandbox") SF_ROW_TEXTE("serverUrl") SF_ROW_TEXTE("sessionId")
         SF_ROW_TEXTE("userId") XML_ROW("userInfo", CSFGetUserInfoResult, XML_ELEMENT))
SF_TABLE(CSFQueryResult,
         SF_ROW_BOOLEEN("done") XML_ROW("records", CSFObject, XML_ELEMENT) XML_ROW("size", XmlObject::Entier, XML_ELEMENT)
         SF_ROW_TEXTE("queryLocator"))
SF_TABLE(CSFDeletedRecord, XML_ROW("deletedDate", XmlObject::DateHeure, XML_ELEMENT) SF_ROW_TEXTE("id"))
SF_TABLE(CSFGetDeletedResult,
         XML_ROW("deletedRecords", CSFDeletedRecord, XML_ELEMENT)
         XML_ROW("earliestDateAvailable", XmlObject::DateHeure, XML_ELEMENT)
         XML_ROW("latestDateCovered", XmlObject::DateHeure, XML_ELEMENT))
SF_TABLE(CSFGetUpdatedResult,
         SF_ROW_TEXTE("ids") XML_ROW("latestDateCovered", XmlObject::DateHeure, XML_ELEMENT))
SF_TABLE(CSFMergeRequest,
         XML_ROW("masterRecord", CSFObject, XML_ELEMENT) SF_ROW_TEXTE("recordToMergeIds"))
SF_TABLE(CSFMergeResult,
         XML_ROW("errors", CSFError, XML_ELEMENT) SF_ROW_TEXTE("id") SF_ROW_TEXTE("mergedRecordIds")
         SF_ROW_BOOLEEN("success") SF_ROW_TEXTE("updatedRelatedIds"))
SF_TABLE(CSFProcessResult,
         SF_ROW_TEXTE("actorIds") SF_ROW_TEXTE("entityId") XML_ROW("errors", CSFError, XML_ELEMENT)
         SF_ROW_TEXTE("instanceId") SF_ROW_TEXTE("instanceStatus") SF_ROW_TEXTE("newWorkitemIds")
         SF_ROW_BOOLEEN("success"))
SF_TABLE(CSFProcessSubmitRequest,
         SF_ROW_TEXTE("objectId") SF_ROW_TEXTE("comments") SF_ROW_TEXTE("nextApproverIds"))
SF_TABLE(CSFProcessWorkitemRequest,
         SF_ROW_TEXTE("action") SF_ROW_TEXTE("workitemId") SF_ROW_TEXTE("comments")
         SF_ROW_TEXTE("nextApproverIds"))
SF_TABLE(CSFSearchResult, XML_ROW("searchRecords", CSFObject, XML_ELEMENT))

ITypeDescription* CSFProduit::ms_piType = nullptr;
const stXmlPropriete CSFProduit::s_m_stTabXmlDescription__[] = {SF_ROW_TEXTE("id")};
XML_OBJET_DEFINE(CSFProduit, CXmlObjectMulti)
XML_ACCEPTE_DEFINE(CSFProduit, )

IObjetBase* CSFLoginResult::GetInfoUtilisateur(CCtxInfo*, CXError*) {
    CXmlObject* pcl = pclGetPropriete("userInfo", 0);
    return pcl ? pcl->vpiGetObjetBaseScript() : nullptr;
}
// The master record, made empty at first read so that the script can fill it.
IObjetBase* CSFMergeRequest::GetmasterRecord(CCtxInfo*, CXError*) {
    CXmlObject* pcl = pclGetCreatePropriete("masterRecord", 0);
    return pcl ? pcl->vpiGetObjetBaseScript() : nullptr;
}
IObjetCollection* CSFQueryResult::AccesseursObjects(CCtxInfo*, CXError*) {
    return new CTXmlEnumerateur<CSFObject>(this, "records");
}
IObjetCollection* CSFSearchResult::AccesseursearchRecords(CCtxInfo*, CXError*) {
    return new CTXmlEnumerateur<CSFObject>(this, "searchRecords");
}

#include "frame/KllStubs.h"
#include "salesforce/SFError.def"
#include "frame/KllStubs.h"
#include "salesforce/SFUpsertResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFDeleteResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFUndeleteResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFEmptyRecycleBinResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFInvalidateSessionsResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFLeadConvert.def"
#include "frame/KllStubs.h"
#include "salesforce/SFLeadConvertResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFGetUserInfoResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFLoginResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFQueryResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFSearchResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFProduit.def"
#include "frame/KllStubs.h"
#include "salesforce/SFDeletedRecord.def"
#include "frame/KllStubs.h"
#include "salesforce/SFGetDeletedResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFGetUpdatedResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFMergeRequest.def"
#include "frame/KllStubs.h"
#include "salesforce/SFMergeResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFProcessResult.def"
#include "frame/KllStubs.h"
#include "salesforce/SFProcessSubmitRequest.def"
#include "frame/KllStubs.h"
#include "salesforce/SFProcessWorkitemRequest.def"
