// The XML service on arbitrary bytes: a document that parses is walked by index over every
// child and attribute with their names, values and namespaces, written in both forms, edited,
// written again, and what it writes must parse again; one that does not parse must say why.
#include "HostXMLService.h"

#include "Any.h"
#include "Ref.h"
#include "XError.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

class CSink final : public IContenuXMLSortie {
public:
    std::string sText;
    int vbContenuXML(const char* pText, size_t nSize, CXError*) override {
        sText.assign(pText, nSize);
        return 1;
    }
};

void s_Check(const char* psz) {
    if (!psz)
        std::abort(); // texts are never null
}

// Depth first with a stack of its own: documents may nest deeper than a thread's stack.
size_t s_Walk(INoeudXML* piRoot) {
    size_t nNodes = 0;
    std::vector<std::pair<CRef<INoeudXML>, int>> tabStack;
    tabStack.emplace_back(CRef<INoeudXML>::Retain(piRoot), 0);
    while (!tabStack.empty()) {
        auto& [clNode, nNext] = tabStack.back();
        if (nNext == 0) {
            ++nNodes;
            s_Check(clNode->pszGetNom());
            s_Check(clNode->pszGetValeur());
            CRef<INamespaceXML> clNamespace = CRef<INamespaceXML>::Adopt(clNode->piGetNamespace());
            if (clNamespace) {
                s_Check(clNamespace->pszGetPrefixe());
                s_Check(clNamespace->pszGetURI());
            }
            for (int i = 0;; ++i) {
                CRef<INoeudXML> clAttribute = CRef<INoeudXML>::Adopt(clNode->piGetAttribut(i));
                if (!clAttribute)
                    break;
                if (clAttribute->eGetGenre() != NOEUDXML_ATTRIBUT)
                    std::abort();
                s_Check(clNode->pszGetAttribut(clAttribute->pszGetNom()));
                s_Check(clAttribute->pszGetValeur());
                CRef<INamespaceXML>::Adopt(clAttribute->piGetNamespace());
            }
        }
        CRef<INoeudXML> clChild = CRef<INoeudXML>::Adopt(clNode->piGetEnfant(nNext++));
        if (clChild)
            tabStack.emplace_back(std::move(clChild), 0);
        else
            tabStack.pop_back();
    }
    return nNodes;
}

std::string s_Write(IDocumentXML& clDocument, eFORMATXML eFormat) {
    CSink clSink;
    CXError clError;
    if (!clDocument.bEcrit(clSink, eFormat, &clError))
        std::abort(); // a parsed document has a root to write
    return clSink.sText;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
    static CHostXMLService* s_pclService = new CHostXMLService(1u << 20);
    CAny clBytes;
    if (clBytes.SetBinary(pData, nSize) != 0)
        return 0;
    CXError clError;
    CRef<IDocumentXML> clDocument =
        CRef<IDocumentXML>::Adopt(s_pclService->vpiAnalyse(clBytes, &clError));
    if (!clDocument) {
        if (clError.bEstPropre() || !*clError.pszGetUserMessage())
            std::abort();
        return 0;
    }
    CRef<INoeudXML> clRoot = CRef<INoeudXML>::Adopt(clDocument->piGetRacine(0));
    if (!clRoot)
        std::abort();
    s_Walk(clRoot.pGet());
    (void)s_Write(*clDocument, FORMATXML_SANS_DECLARATION);
    // Edits at the top: a child, an attribute, a text replaced, a node removed.
    INoeudXML* piAdded = nullptr;
    if (!clRoot->bAjouteEnfant("kvggl:added", &piAdded))
        std::abort();
    CRef<INoeudXML> clAdded = CRef<INoeudXML>::Adopt(piAdded);
    clAdded->bSetValeurAttribut("value", L"\u00e9&<\"'");
    if (CRef<INoeudXML> clFirst = CRef<INoeudXML>::Adopt(clRoot->piGetEnfant(0)))
        clFirst->bSetTexte(L"replaced <text> & more");
    if (CRef<INoeudXML> clSecond = CRef<INoeudXML>::Adopt(clRoot->piGetEnfant(1)))
        clSecond->SupprimeNoeud();
    if (CRef<INoeudXML> clAttribute = CRef<INoeudXML>::Adopt(clRoot->piGetAttribut(0)))
        clAttribute->SupprimeNoeud();
    s_Walk(clRoot.pGet());
    // What it writes, it reads. Latin-1 may refuse a character it cannot carry, saying so.
    for (const wchar_t* pszEncoding : {L"UTF-8", L"ISO-8859-1", L"UTF-16"}) {
        clDocument->SetEncodage(pszEncoding);
        CSink clSink;
        CXError clWriteError;
        if (!clDocument->bEcrit(clSink, FORMATXML_DOCUMENT, &clWriteError)) {
            if (pszEncoding[0] != L'I' || clWriteError.bEstPropre())
                std::abort();
            continue;
        }
        const std::string& sText = clSink.sText;
        CAny clAgain;
        if (clAgain.SetBinary(sText.data(), sText.size()) != 0)
            return 0;
        CXError clAgainError;
        CRef<IDocumentXML> clReread =
            CRef<IDocumentXML>::Adopt(s_pclService->vpiAnalyse(clAgain, &clAgainError));
        if (!clReread)
            std::abort();
    }
    return 0;
}
