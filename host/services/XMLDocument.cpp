#include "XMLDocument.h"

#include "HostBarrier.h"
#include "DataServiceErrors.h"
#include "Ref.h"
#include "Utf8.h"
#include "XMLNode.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <new>

namespace {

// How documents are read: comments and instructions are kept so that a document goes out as
// it came in; whitespace between elements is dropped, but an element whose only content is
// blanks keeps them.
constexpr unsigned knParseOptions =
    pugi::parse_default | pugi::parse_comments | pugi::parse_pi | pugi::parse_ws_pcdata_single;

// The writer's output gathered in one string.
class CStringWriter final : public pugi::xml_writer {
public:
    explicit CStringWriter(std::string& sOut) : m_sOut(sOut) {}
    void write(const void* pData, size_t nSize) override {
        m_sOut.append(static_cast<const char*>(pData), nSize);
    }

private:
    std::string& m_sOut;
};

bool s_bNameStart(unsigned char c) {
    return std::isalpha(c) || c == '_' || c >= 0x80;
}
bool s_bNameChar(unsigned char c) {
    return s_bNameStart(c) || std::isdigit(c) || c == '-' || c == '.';
}

// The line and column (from 1) of a byte offset in UTF-8 text, a column counting characters.
void s_Position(const char* pText, size_t nSize, size_t nOffset, size_t& nLine, size_t& nColumn) {
    nLine = 1;
    nColumn = 1;
    nOffset = std::min(nOffset, nSize);
    for (size_t i = 0; i < nOffset; ++i) {
        unsigned char c = static_cast<unsigned char>(pText[i]);
        if (c == '\n') {
            ++nLine;
            nColumn = 1;
        } else if ((c & 0xC0) != 0x80) {
            ++nColumn;
        }
    }
}

void s_Append16(std::string& s, char32_t c, bool bBigEndian) {
    auto put = [&](uint16_t u) {
        char a = static_cast<char>(u & 0xFF), b = static_cast<char>(u >> 8);
        s += bBigEndian ? b : a;
        s += bBigEndian ? a : b;
    };
    if (c >= 0x10000) {
        c -= 0x10000;
        put(static_cast<uint16_t>(0xD800 + (c >> 10)));
        put(static_cast<uint16_t>(0xDC00 + (c & 0x3FF)));
    } else {
        put(static_cast<uint16_t>(c));
    }
}

void s_Append32(std::string& s, char32_t c, bool bBigEndian) {
    for (int i = 0; i < 4; ++i) {
        int nShift = bBigEndian ? 24 - 8 * i : 8 * i;
        s += static_cast<char>((c >> nShift) & 0xFF);
    }
}

} // namespace

CXMLDocument::CXMLDocument() = default;
CXMLDocument::~CXMLDocument() = default;

CXMLDocument* CXMLDocument::s_pclParse(const void* pBytes, size_t nBytes,
                                       pugi::xml_encoding eEncoding, size_t nMaxSize,
                                       CXError* pclErreur) {
    if (!pBytes && nBytes > 0) {
        KVDataService::Fail(pclErreur, DATASERVICE_XML_ARGUMENT, L"No XML text was given.");
        return nullptr;
    }
    if (nBytes > nMaxSize) {
        KVDataService::Fail(pclErreur, DATASERVICE_XML_TOO_LARGE,
                            L"The XML text is " + std::to_wstring(nBytes) +
                                L" bytes long, more than the limit of " +
                                std::to_wstring(nMaxSize) + L" bytes.");
        return nullptr;
    }
    CRef<CXMLDocument> clDocument = CRef<CXMLDocument>::Adopt(new (std::nothrow) CXMLDocument());
    if (!clDocument) {
        if (pclErreur)
            pclErreur->SetErrorNoMemory();
        return nullptr;
    }
    pugi::xml_parse_result stResult =
        clDocument->m_clTree.load_buffer(pBytes ? pBytes : "", nBytes, knParseOptions, eEncoding);
    if (!stResult) {
        if (stResult.status == pugi::status_out_of_memory) {
            if (pclErreur)
                pclErreur->SetErrorNoMemory();
            return nullptr;
        }
        std::wstring sMessage = L"The text is not well-formed XML: " +
                                KVUtf8::VersWide(stResult.description()) + L" at offset " +
                                std::to_wstring(stResult.offset);
        // The offset counts in the parsed buffer, which is the text itself when it is UTF-8.
        if (stResult.encoding == pugi::encoding_utf8 && stResult.offset >= 0) {
            size_t nLine, nColumn;
            s_Position(static_cast<const char*>(pBytes), nBytes,
                       static_cast<size_t>(stResult.offset), nLine, nColumn);
            sMessage += L" (line " + std::to_wstring(nLine) + L", column " +
                        std::to_wstring(nColumn) + L")";
        }
        KVDataService::Fail(pclErreur, DATASERVICE_XML_SYNTAX, sMessage + L".",
                            L"pugixml status " + std::to_wstring(stResult.status));
        return nullptr;
    }
    return clDocument.pDetach();
}

bool CXMLDocument::s_bValidName(const char* pszName) {
    if (!pszName || !s_bNameStart(static_cast<unsigned char>(*pszName)))
        return false;
    int nColons = 0;
    const char* p = pszName + 1;
    for (; *p; ++p) {
        unsigned char c = static_cast<unsigned char>(*p);
        if (c == ':') {
            if (++nColons > 1 || !s_bNameStart(static_cast<unsigned char>(p[1])))
                return false;
        } else if (!s_bNameChar(c)) {
            return false;
        }
    }
    return true;
}

const char* CXMLDocument::s_pszLocalName(const char* pszName) {
    const char* pszColon = std::strchr(pszName, ':');
    return pszColon ? pszColon + 1 : pszName;
}

pugi::xml_node CXMLDocument::root() const {
    for (pugi::xml_node node = m_clTree.first_child(); node; node = node.next_sibling())
        if (node.type() == pugi::node_element && node != m_detachedHolder)
            return node;
    return {};
}

void CXMLDocument::Detach(pugi::xml_node node) {
    if (!m_detachedHolder) {
        m_detachedHolder = m_clTree.append_child(pugi::node_element);
        if (!m_detachedHolder)
            return; // out of memory: the node stays where it is rather than be lost
        m_detachedHolder.set_name("kvggl-detached");
    }
    if (m_detachedHolder.append_move(node))
        Change();
}

bool CXMLDocument::bAttached(pugi::xml_node node) const {
    pugi::xml_node parent = node.parent();
    return parent && parent != m_detachedHolder;
}

void CXMLDocument::SetEncodage(const wchar_t* pszEncodage) {
    KVHost::Guard(nullptr, [&] {
        std::wstring sName = pszEncodage && *pszEncodage ? pszEncodage : L"UTF-8";
        std::wstring sKey;
        for (wchar_t c : sName)
            if (c != L'-' && c != L'_')
                sKey += static_cast<wchar_t>(std::towupper(c));
        static const struct {
            const wchar_t* pszKey;
            eENCODING eEncoding;
        } s_tabNames[] = {
            {L"UTF8", ENCODING_UTF8},       {L"ISO88591", ENCODING_LATIN1},
            {L"LATIN1", ENCODING_LATIN1},   {L"L1", ENCODING_LATIN1},
            {L"UTF16", ENCODING_UTF16LE},   {L"UTF16LE", ENCODING_UTF16LE},
            {L"UTF16BE", ENCODING_UTF16BE}, {L"UTF32", ENCODING_UTF32LE},
            {L"UTF32LE", ENCODING_UTF32LE}, {L"UTF32BE", ENCODING_UTF32BE},
        };
        m_eEncoding = ENCODING_UNKNOWN;
        for (const auto& st : s_tabNames)
            if (sKey == st.pszKey)
                m_eEncoding = st.eEncoding;
        m_sEncoding = KVUtf8::VersUtf8(sName);
    });
}

int CXMLDocument::bCreeRacine(const char* pszNom, INoeudXML** ppiRacine) {
    return KVHost::Guard(nullptr, 0, [&]() -> int {
        if (ppiRacine)
            *ppiRacine = nullptr;
        if (!s_bValidName(pszNom))
            return 0;
        pugi::xml_node former = root();
        pugi::xml_node created = former ? m_clTree.insert_child_after(pszNom, former)
                                 : m_detachedHolder
                                     ? m_clTree.insert_child_before(pszNom, m_detachedHolder)
                                     : m_clTree.append_child(pszNom);
        if (!created)
            return 0;
        Change();
        if (former)
            Detach(former);
        if (ppiRacine)
            *ppiRacine = new CXMLNode(this, created);
        return 1;
    });
}

INoeudXML* CXMLDocument::piGetRacine(int nIndice) {
    return KVHost::Guard(nullptr, static_cast<INoeudXML*>(nullptr), [&]() -> INoeudXML* {
        if (nIndice < 0)
            return nullptr;
        pugi::xml_node rootNode = root();
        if (nIndice == 0)
            return rootNode ? new CXMLNode(this, rootNode) : nullptr;
        // The other nodes at the top, comments and instructions, in document order.
        int nRank = 0;
        for (pugi::xml_node node = m_clTree.first_child(); node; node = node.next_sibling()) {
            if (node == rootNode || node == m_detachedHolder ||
                node.type() == pugi::node_declaration || node.type() == pugi::node_doctype)
                continue;
            if (++nRank == nIndice)
                return new CXMLNode(this, node);
        }
        return nullptr;
    });
}

int CXMLDocument::bImporteRacine(INoeudXML* piNoeud, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, 0, [&]() -> int {
        // Every node this host hands out is one of its own; anything else cannot be copied.
        CXMLNode* pclSource = dynamic_cast<CXMLNode*>(piNoeud);
        if (!pclSource || pclSource->node().type() != pugi::node_element) {
            KVDataService::Fail(pclErreur, DATASERVICE_XML_ARGUMENT,
                                L"Only an element of an XML document of this host can become a "
                                L"root.");
            return 0;
        }
        pugi::xml_node source = pclSource->node();
        pugi::xml_node former = root();
        pugi::xml_node copy = former ? m_clTree.insert_copy_after(source, former)
                              : m_detachedHolder
                                  ? m_clTree.insert_copy_before(source, m_detachedHolder)
                                  : m_clTree.append_copy(source);
        if (!copy) {
            if (pclErreur)
                pclErreur->SetErrorNoMemory();
            return 0;
        }
        Change();
        if (former)
            Detach(former);
        // The copy leaves the declarations of the source's ancestors behind: bring along those of
        // the names in scope there, the nearest first, so the copy reads the same on its own.
        for (pugi::xml_node ancestor = source.parent(); ancestor; ancestor = ancestor.parent()) {
            for (pugi::xml_attribute attribute : ancestor.attributes()) {
                const char* pszName = attribute.name();
                if (std::strncmp(pszName, "xmlns", 5) != 0 || (pszName[5] && pszName[5] != ':'))
                    continue;
                if (!copy.attribute(pszName))
                    copy.append_attribute(pszName).set_value(attribute.value());
            }
        }
        return 1;
    });
}

bool CXMLDocument::bEncode(const std::string& sUtf8, std::string& sOut, CXError* pclErreur) const {
    if (m_eEncoding == ENCODING_UTF8) {
        sOut.append(sUtf8);
        return true;
    }
    std::wstring sWide = KVUtf8::VersWide(sUtf8);
    if (m_eEncoding != ENCODING_LATIN1) {
        bool bBigEndian = m_eEncoding == ENCODING_UTF16BE || m_eEncoding == ENCODING_UTF32BE;
        bool b16 = m_eEncoding == ENCODING_UTF16LE || m_eEncoding == ENCODING_UTF16BE;
        for (wchar_t w : sWide) {
            if (b16)
                s_Append16(sOut, static_cast<char32_t>(w), bBigEndian);
            else
                s_Append32(sOut, static_cast<char32_t>(w), bBigEndian);
        }
        return true;
    }
    // Latin-1: a character past U+00FF becomes a character reference in text and in attribute
    // values; in a name, a comment, an instruction or a CDATA section nothing may stand for
    // it. The text is the writer's own, so its markup is regular: values in double quotes.
    static const struct {
        const wchar_t* pszStart;
        const wchar_t* pszEnd;
    } s_tabOther[] = {{L"<!--", L"-->"}, {L"<![CDATA[", L"]]>"}, {L"<?", L"?>"}, {L"<!", L">"}};
    enum { TEXT, TAG, VALUE, OTHER } eWhere = TEXT;
    const wchar_t* pszOtherEnd = L"";
    for (size_t i = 0; i < sWide.size(); ++i) {
        wchar_t w = sWide[i];
        std::wstring_view sRest(sWide.data() + i, sWide.size() - i);
        switch (eWhere) {
        case TEXT:
            if (w == L'<') {
                eWhere = TAG;
                for (const auto& st : s_tabOther) {
                    if (sRest.substr(0, std::wcslen(st.pszStart)) == st.pszStart) {
                        eWhere = OTHER;
                        pszOtherEnd = st.pszEnd;
                        break;
                    }
                }
            }
            break;
        case TAG:
            if (w == L'"')
                eWhere = VALUE;
            else if (w == L'>')
                eWhere = TEXT;
            break;
        case VALUE:
            if (w == L'"')
                eWhere = TAG;
            break;
        case OTHER:
            if (sRest.substr(0, std::wcslen(pszOtherEnd)) == pszOtherEnd) {
                size_t nEnd = std::wcslen(pszOtherEnd);
                for (size_t k = 0; k < nEnd; ++k)
                    sOut += static_cast<char>(sWide[i + k]);
                i += nEnd - 1;
                eWhere = TEXT;
                continue;
            }
            break;
        }
        if (w < 0x100) {
            sOut += static_cast<char>(w);
        } else if (eWhere == TEXT || eWhere == VALUE) {
            sOut += "&#" + std::to_string(static_cast<unsigned long>(w)) + ";";
        } else {
            char szCode[16];
            std::snprintf(szCode, sizeof szCode, "U+%04lX", static_cast<unsigned long>(w));
            KVDataService::Fail(pclErreur, DATASERVICE_XML_ENCODING,
                                L"The character " + KVUtf8::VersWide(szCode) +
                                    L" stands in a name, a comment, an instruction or a CDATA "
                                    L"section, where \"" +
                                    KVUtf8::VersWide(m_sEncoding) + L"\" cannot carry it.");
            return false;
        }
    }
    return true;
}

int CXMLDocument::bEcrit(IContenuXMLSortie& clSortie, eFORMATXML eFormat, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, 0, [&]() -> int {
        if (m_eEncoding == ENCODING_UNKNOWN) {
            KVDataService::Fail(pclErreur, DATASERVICE_XML_ENCODING,
                                L"The encoding \"" + KVUtf8::VersWide(m_sEncoding) +
                                    L"\" cannot be written; UTF-8, ISO-8859-1, UTF-16 and UTF-32 "
                                    L"can.");
            return 0;
        }
        if (eFormat != FORMATXML_DOCUMENT && eFormat != FORMATXML_SANS_DECLARATION) {
            KVDataService::Fail(pclErreur, DATASERVICE_XML_ARGUMENT,
                                L"Unknown XML output format " +
                                    std::to_wstring(static_cast<int>(eFormat)) + L".");
            return 0;
        }
        pugi::xml_node rootNode = root();
        if (!rootNode) {
            KVDataService::Fail(pclErreur, DATASERVICE_XML_WRITE,
                                L"The XML document has no root element to write.");
            return 0;
        }
        constexpr unsigned knFormat = pugi::format_raw | pugi::format_no_declaration;
        std::string sUtf8;
        CStringWriter clWriter(sUtf8);
        std::string sOut;
        if (eFormat == FORMATXML_DOCUMENT) {
            switch (m_eEncoding) {
            case ENCODING_UTF16LE:
                sOut = "\xFF\xFE";
                break;
            case ENCODING_UTF16BE:
                sOut = "\xFE\xFF";
                break;
            case ENCODING_UTF32LE:
                sOut.assign("\xFF\xFE\0\0", 4);
                break;
            case ENCODING_UTF32BE:
                sOut.assign("\0\0\xFE\xFF", 4);
                break;
            default:
                break;
            }
            sUtf8 = "<?xml version=\"1.0\" encoding=\"" + m_sEncoding + "\"?>";
            for (pugi::xml_node node = m_clTree.first_child(); node; node = node.next_sibling())
                if (node != m_detachedHolder && node.type() != pugi::node_declaration)
                    node.print(clWriter, "", knFormat, pugi::encoding_utf8);
        } else {
            rootNode.print(clWriter, "", knFormat, pugi::encoding_utf8);
        }
        if (!bEncode(sUtf8, sOut, pclErreur))
            return 0;
        CXError clErreurSortie;
        CXError* pclErreurSortie = pclErreur ? pclErreur : &clErreurSortie;
        if (!clSortie.vbContenuXML(sOut.data(), sOut.size(), pclErreurSortie)) {
            if (pclErreurSortie->bEstPropre())
                KVDataService::Fail(pclErreurSortie, DATASERVICE_XML_WRITE,
                                    L"The receiver of the XML text refused it.");
            return 0;
        }
        return 1;
    });
}
