// XML documents over MSXML 6 through COM.
//
// The DOM and XPath are MSXML's; the saved bytes are written here, node by node, in the
// form the libxml2 build writes (the middleware and the host have always received
// that form), rather than through MSXML's own save, whose declaration, line breaks
// and empty elements differ from one MSXML to the next.
#include "platform/windows_win32.h"

#include <msxml2.h>
#include <objbase.h>
#include <oleauto.h>

#include <algorithm>
#include <cctype>
#include <cwchar>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/encodage.h"
#include "platform/systeme.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

// MSXML 6's classes and the interfaces mingw's libraries do not name.
const CLSID kDomDocument60 = {
    0x88d96a05, 0xf192, 0x11d4, {0xa6, 0x5f, 0x00, 0x40, 0x96, 0x32, 0x51, 0xe5}};
const CLSID kSaxXmlReader60 = {
    0x88d96a0c, 0xf192, 0x11d4, {0xa6, 0x5f, 0x00, 0x40, 0x96, 0x32, 0x51, 0xe5}};
const IID kIXMLDOMDocument2 = {
    0x2933bf95, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};
const IID kISAXXMLReader = {
    0xa4f96ed0, 0xf829, 0x476e, {0x81, 0xc0, 0xcd, 0xc7, 0xbd, 0x2a, 0x08, 0x02}};
const IID kISAXErrorHandler = {
    0xa60511c4, 0xccf5, 0x479e, {0x98, 0xa3, 0xdc, 0x8d, 0xc5, 0x45, 0xb7, 0xd0}};

/// A COM interface pointer released on scope exit.
template <class T>
class Com {
  public:
    Com() = default;
    explicit Com(T* p) : p_(p) {}
    ~Com() { vider(); }
    Com(const Com&) = delete;
    Com& operator=(const Com&) = delete;
    Com(Com&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
    Com& operator=(Com&& o) noexcept {
        if (this != &o) {
            vider();
            p_ = std::exchange(o.p_, nullptr);
        }
        return *this;
    }

    T* get() const { return p_; }
    T* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }
    /// Where a call returns a new reference; the one held before is released.
    T** sortie() {
        vider();
        return &p_;
    }
    /// Gives the reference away; it is no longer released here.
    T* liberer() { return std::exchange(p_, nullptr); }

  private:
    void vider() {
        if (p_ != nullptr) {
            p_->Release();
            p_ = nullptr;
        }
    }
    T* p_ = nullptr;
};

/// A BSTR freed on scope exit.
class Bstr {
  public:
    Bstr() = default;
    explicit Bstr(std::u16string_view texte)
        : b_(::SysAllocStringLen(reinterpret_cast<const OLECHAR*>(texte.data()),
                                 static_cast<UINT>(texte.size()))) {}
    explicit Bstr(std::string_view utf8) : Bstr(std::u16string_view(utf8_vers_utf16(utf8))) {}
    ~Bstr() { ::SysFreeString(b_); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;

    BSTR get() const { return b_; }
    BSTR* sortie() {
        ::SysFreeString(b_);
        b_ = nullptr;
        return &b_;
    }
    std::u16string large() const {
        return std::u16string(reinterpret_cast<const char16_t*>(b_), ::SysStringLen(b_));
    }
    std::string utf8() const { return utf16_vers_utf8(large()); }

  private:
    BSTR b_ = nullptr;
};

/// A VARIANT cleared on scope exit.
struct Variant {
    Variant() { ::VariantInit(&v); }
    ~Variant() { ::VariantClear(&v); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    VARIANT v;
};

/// A document declared ISO-8859-1 recoded to UTF-8, its declaration saying so; nothing
/// for any other document. Wine's reader decodes single-byte documents so slowly that a
/// 20 MB order took two minutes, where the same text in UTF-8 takes under a second; the
/// characters are the same, byte for code point.
std::optional<std::string> latin1_en_utf8(std::string_view octets) {
    const std::size_t fin = octets.find("?>");
    if (!octets.starts_with("<?xml") || fin == std::string_view::npos || fin > 256) {
        return std::nullopt;
    }
    const std::string_view declaration = octets.substr(0, fin);
    std::size_t nom = declaration.find("encoding");
    if (nom == std::string_view::npos) {
        return std::nullopt;
    }
    nom = declaration.find_first_of("\"'", nom);
    const std::size_t fin_nom =
        nom == std::string_view::npos ? nom : declaration.find(declaration[nom], nom + 1);
    if (fin_nom == std::string_view::npos) {
        return std::nullopt;
    }
    std::string encodage(declaration.substr(nom + 1, fin_nom - nom - 1));
    std::transform(encodage.begin(), encodage.end(), encodage.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (encodage != "ISO-8859-1") {
        return std::nullopt;
    }
    std::string utf8;
    utf8.reserve(octets.size() + octets.size() / 16);
    utf8.append(declaration.substr(0, nom + 1)).append("UTF-8");
    for (const unsigned char c : octets.substr(fin_nom)) {
        if (c < 0x80) {
            utf8 += static_cast<char>(c);
        } else {
            utf8 += static_cast<char>(0xC0 | (c >> 6));
            utf8 += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return utf8;
}

/// A document's bytes as MSXML takes them, so that the parser reads the document's own
/// declaration. False when memory runs out.
bool en_octets(std::string_view octets, Variant& source) {
    SAFEARRAY* tableau = ::SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(octets.size()));
    void* donnees = nullptr;
    if (tableau == nullptr || FAILED(::SafeArrayAccessData(tableau, &donnees))) {
        if (tableau != nullptr) {
            ::SafeArrayDestroy(tableau);
        }
        return false;
    }
    std::copy(octets.begin(), octets.end(), static_cast<char*>(donnees));
    ::SafeArrayUnaccessData(tableau);
    V_VT(&source.v) = VT_ARRAY | VT_UI1;
    V_ARRAY(&source.v) = tableau;
    return true;
}

// COM is started once per thread and never stopped: the bridge has one thread, and the
// simulator's library may be unloaded before the thread that called it ends, so no
// per-thread cleanup may point into it. A thread the host already started in another
// apartment keeps it.
void initialiser_com() {
    thread_local bool fait = false;
    if (!fait) {
        ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        fait = true;
    }
}

/// A document and every node handed out of it: MSXML's nodes are counted objects,
/// the interface's nodes are plain handles valid while their document lives.
struct Document {
    Com<IXMLDOMDocument2> dom;
    std::vector<Com<IXMLDOMNode>> noeuds;
    void* racine = nullptr;  // asked for often: kept once

    void* garder(Com<IXMLDOMNode> n) {
        if (!n) {
            return nullptr;
        }
        noeuds.push_back(std::move(n));
        return noeuds.back().get();
    }
};

Document* D(void* p) {
    return static_cast<Document*>(p);
}
IXMLDOMNode* N(void* p) {
    return static_cast<IXMLDOMNode*>(p);
}

DOMNodeType type_de(IXMLDOMNode* n) {
    DOMNodeType t = NODE_INVALID;
    n->get_nodeType(&t);
    return t;
}

Com<IXMLDOMNode> premier_enfant(IXMLDOMNode* n) {
    Com<IXMLDOMNode> e;
    n->get_firstChild(e.sortie());
    return e;
}

Com<IXMLDOMNode> suivant(IXMLDOMNode* n) {
    Com<IXMLDOMNode> e;
    n->get_nextSibling(e.sortie());
    return e;
}

std::u16string valeur(IXMLDOMNode* n) {
    Variant v;
    if (n->get_nodeValue(&v.v) != S_OK || V_VT(&v.v) != VT_BSTR) {
        return {};
    }
    return std::u16string(reinterpret_cast<const char16_t*>(V_BSTR(&v.v)),
                          ::SysStringLen(V_BSTR(&v.v)));
}

std::u16string nom_noeud(IXMLDOMNode* n) {
    Bstr b;
    n->get_nodeName(b.sortie());
    return b.large();
}

// A text node holding `texte` exactly: the node's value is set apart, because Wine's
// MSXML turns carriage returns into line feeds in the text a node is created with.
Com<IXMLDOMNode> noeud_texte(IXMLDOMDocument2* dom, std::u16string_view texte) {
    Com<IXMLDOMText> t;
    Bstr vide(std::u16string_view{});
    if (FAILED(dom->createTextNode(vide.get(), t.sortie())) || !t) {
        return {};
    }
    Variant v;
    V_VT(&v.v) = VT_BSTR;
    V_BSTR(&v.v) = ::SysAllocStringLen(reinterpret_cast<const OLECHAR*>(texte.data()),
                                       static_cast<UINT>(texte.size()));
    t->put_nodeValue(v.v);
    return Com<IXMLDOMNode>(t.liberer());
}

/// The text of the node's text and CDATA descendants, in document order.
void concatener_texte(IXMLDOMNode* n, std::u16string& texte) {
    for (Com<IXMLDOMNode> e = premier_enfant(n); e; e = suivant(e.get())) {
        switch (type_de(e.get())) {
            case NODE_TEXT:
            case NODE_CDATA_SECTION:
                texte += valeur(e.get());
                break;
            case NODE_ELEMENT:
            case NODE_ENTITY_REFERENCE:
                concatener_texte(e.get(), texte);
                break;
            default:
                break;
        }
    }
}

std::string texte_noeud(IXMLDOMNode* n) {
    std::u16string texte;
    switch (type_de(n)) {
        case NODE_ELEMENT:
        case NODE_DOCUMENT:
        case NODE_DOCUMENT_FRAGMENT:
        case NODE_ENTITY_REFERENCE:
            concatener_texte(n, texte);
            break;
        default:
            texte = valeur(n);
            break;
    }
    return xml_commun::rogner(utf16_vers_utf8(texte));
}

// The libxml2 build reads CDATA sections as text, one node with the text around them:
// the same here, so that text() selects alike and the section is saved as text.
void cdata_en_texte(IXMLDOMDocument2* dom, IXMLDOMNode* n) {
    std::vector<Com<IXMLDOMNode>> suite;  // adjacent text and CDATA nodes
    bool cdata = false;
    auto fusionner = [&] {
        if (cdata) {
            std::u16string texte;
            for (const auto& t : suite) {
                texte += valeur(t.get());
            }
            Com<IXMLDOMNode> remplacant = noeud_texte(dom, texte);
            Com<IXMLDOMNode> ancien;
            if (remplacant && SUCCEEDED(n->replaceChild(remplacant.get(), suite.front().get(),
                                                        ancien.sortie()))) {
                for (std::size_t i = 1; i < suite.size(); ++i) {
                    n->removeChild(suite[i].get(), ancien.sortie());
                }
            }
        }
        suite.clear();
        cdata = false;
    };
    for (Com<IXMLDOMNode> e = premier_enfant(n); e;) {
        Com<IXMLDOMNode> apres = suivant(e.get());
        const DOMNodeType t = type_de(e.get());
        if (t == NODE_TEXT || t == NODE_CDATA_SECTION) {
            cdata = cdata || t == NODE_CDATA_SECTION;
            suite.push_back(std::move(e));
        } else {
            fusionner();
            if (t == NODE_ELEMENT) {
                cdata_en_texte(dom, e.get());
            }
        }
        e = std::move(apres);
    }
    fusionner();
}

std::vector<Com<IXMLDOMNode>> evaluer(IXMLDOMNode* contexte, std::string_view xpath) {
    std::vector<Com<IXMLDOMNode>> r;
    Bstr expression(xpath);
    Com<IXMLDOMNodeList> liste;
    if (contexte == nullptr || contexte->selectNodes(expression.get(), liste.sortie()) != S_OK ||
        !liste) {
        return r;
    }
    long n = 0;
    liste->get_length(&n);
    for (long i = 0; i < n; ++i) {
        Com<IXMLDOMNode> noeud;
        if (liste->get_item(i, noeud.sortie()) == S_OK && noeud) {
            r.push_back(std::move(noeud));
        }
    }
    return r;
}

Com<IXMLDOMNode> evaluer_un(IXMLDOMNode* contexte, std::string_view xpath) {
    Com<IXMLDOMNode> r;
    if (contexte != nullptr) {
        Bstr expression(xpath);
        if (contexte->selectSingleNode(expression.get(), r.sortie()) != S_OK) {
            r = Com<IXMLDOMNode>();
        }
    }
    return r;
}

Com<IXMLDOMDocument2> nouveau_dom(std::string& erreur) {
    initialiser_com();
    Com<IXMLDOMDocument2> dom;
    if (FAILED(::CoCreateInstance(kDomDocument60, nullptr, CLSCTX_INPROC_SERVER, kIXMLDOMDocument2,
                                  reinterpret_cast<void**>(dom.sortie()))) ||
        !dom) {
        erreur = "MSXML 6 indisponible";
        return Com<IXMLDOMDocument2>();
    }
    // Loaded at once, never validated nor completed from elsewhere, blanks kept as the
    // libxml2 build keeps them; the middleware's answers start with a DOCTYPE line,
    // which MSXML 6 refuses unless told otherwise.
    dom->put_async(VARIANT_FALSE);
    dom->put_validateOnParse(VARIANT_FALSE);
    dom->put_resolveExternals(VARIANT_FALSE);
    dom->put_preserveWhiteSpace(VARIANT_TRUE);
    Variant xpath;
    V_VT(&xpath.v) = VT_BSTR;
    V_BSTR(&xpath.v) = ::SysAllocString(L"XPath");
    Bstr langage(std::string_view("SelectionLanguage"));
    dom->setProperty(langage.get(), xpath.v);
    VARIANT faux;
    ::VariantInit(&faux);
    V_VT(&faux) = VT_BOOL;
    V_BOOL(&faux) = VARIANT_FALSE;
    Bstr dtd(std::string_view("ProhibitDTD"));
    dom->setProperty(dtd.get(), faux);  // unknown to parsers that take DTDs anyway
    return dom;
}

// The saved form, as libxml2 writes it: '<', '>', '&' and carriage returns escaped in
// text, quotes and the white space characters too in attribute values.
void echapper(std::u16string_view texte, bool attribut, std::u16string& sortie) {
    for (char16_t c : texte) {
        switch (c) {
            case u'<':
                sortie += u"&lt;";
                break;
            case u'>':
                sortie += u"&gt;";
                break;
            case u'&':
                sortie += u"&amp;";
                break;
            case u'\r':
                sortie += u"&#13;";
                break;
            case u'"':
                sortie += attribut ? u"&quot;" : u"\"";
                break;
            case u'\n':
                sortie += attribut ? u"&#10;" : u"\n";
                break;
            case u'\t':
                sortie += attribut ? u"&#9;" : u"\t";
                break;
            default:
                sortie += c;
        }
    }
}

void ecrire_noeud(IXMLDOMNode* n, std::u16string& sortie) {
    switch (type_de(n)) {
        case NODE_ELEMENT: {
            const std::u16string nom = nom_noeud(n);
            sortie += u'<';
            sortie += nom;
            Com<IXMLDOMNamedNodeMap> attributs;
            long nombre = 0;
            if (n->get_attributes(attributs.sortie()) == S_OK && attributs) {
                attributs->get_length(&nombre);
            }
            // Namespace declarations first, as libxml2 keeps them apart from attributes.
            for (bool declarations : {true, false}) {
                for (long i = 0; i < nombre; ++i) {
                    Com<IXMLDOMNode> a;
                    if (attributs->get_item(i, a.sortie()) != S_OK || !a) {
                        continue;
                    }
                    const std::u16string nom_a = nom_noeud(a.get());
                    if ((nom_a == u"xmlns" || nom_a.starts_with(u"xmlns:")) == declarations) {
                        sortie += u' ' + nom_a + u"=\"";
                        echapper(valeur(a.get()), true, sortie);
                        sortie += u'"';
                    }
                }
            }
            Com<IXMLDOMNode> e = premier_enfant(n);
            if (!e) {
                sortie += u"/>";
                break;
            }
            sortie += u'>';
            for (; e; e = suivant(e.get())) {
                ecrire_noeud(e.get(), sortie);
            }
            sortie += u"</";
            sortie += nom;
            sortie += u'>';
            break;
        }
        case NODE_TEXT:
        case NODE_CDATA_SECTION:
            echapper(valeur(n), false, sortie);
            break;
        case NODE_COMMENT:
            sortie += u"<!--" + valeur(n) + u"-->";
            break;
        case NODE_PROCESSING_INSTRUCTION: {
            const std::u16string donnees = valeur(n);
            sortie += u"<?" + nom_noeud(n) + (donnees.empty() ? u"" : u" " + donnees) + u"?>";
            break;
        }
        case NODE_ENTITY_REFERENCE:
            sortie += u'&' + nom_noeud(n) + u';';
            break;
        case NODE_DOCUMENT_TYPE: {
            // As the document wrote it; Wine's MSXML only knows its name.
            Bstr xml;
            n->get_xml(xml.sortie());
            const std::string ecrit = xml_commun::rogner(xml.utf8());
            sortie += ecrit.empty() ? u"<!DOCTYPE " + nom_noeud(n) + u">" : utf8_vers_utf16(ecrit);
            break;
        }
        default:
            break;
    }
}

/// ISO-8859-1 bytes; the characters it lacks as decimal character references, as
/// libxml2's encoder writes them.
std::string latin1(std::u16string_view texte) {
    std::string octets;
    octets.reserve(texte.size());
    for (std::size_t i = 0; i < texte.size(); ++i) {
        char32_t c = texte[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < texte.size() && texte[i + 1] >= 0xDC00 &&
            texte[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (texte[++i] - 0xDC00);
        }
        if (c < 0x100) {
            octets += static_cast<char>(c);
        } else {
            octets += "&#" + std::to_string(static_cast<unsigned long>(c)) + ";";
        }
    }
    return octets;
}

/// The first error a SAX parse reports, with its line.
class Diagnostic final : public ISAXErrorHandler {
  public:
    HRESULT WINAPI QueryInterface(REFIID iid, void** p) override {
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, kISAXErrorHandler)) {
            *p = this;
            return S_OK;
        }
        *p = nullptr;
        return E_NOINTERFACE;
    }
    // Lives on its caller's stack, longer than the reader it is given to.
    ULONG WINAPI AddRef() override { return 2; }
    ULONG WINAPI Release() override { return 1; }
    HRESULT WINAPI error(ISAXLocator* l, const wchar_t* message, HRESULT) override {
        return noter(l, message, false);
    }
    HRESULT WINAPI fatalError(ISAXLocator* l, const wchar_t* message, HRESULT) override {
        return noter(l, message, true);
    }
    HRESULT WINAPI ignorableWarning(ISAXLocator*, const wchar_t*, HRESULT) override { return S_OK; }

    std::string raison;
    int ligne = 0;

  private:
    // The error that stopped the parser, rather than any that came before it.
    HRESULT noter(ISAXLocator* l, const wchar_t* message, bool fatale) {
        if (l != nullptr && !fatale_ && (fatale || ligne == 0)) {
            l->getLineNumber(&ligne);
            raison = message != nullptr ? etroit(message, std::wcslen(message)) : "";
            fatale_ = fatale;
        }
        return S_OK;
    }
    bool fatale_ = false;
};

/// Why MSXML refused a document, and where. Wine's MSXML leaves the DOM's parse error
/// without reason nor line: its SAX reader, the same parser, then says it.
std::string refus(IXMLDOMDocument2* dom, std::string_view octets) {
    if (octets.empty()) {
        return xml_commun::refus("document vide", 1);
    }
    Com<IXMLDOMParseError> e;
    Bstr raison;
    long ligne = 0;
    if (dom->get_parseError(e.sortie()) == S_OK && e) {
        e->get_reason(raison.sortie());
        e->get_line(&ligne);
    }
    if (ligne > 0) {
        return xml_commun::refus(raison.utf8(), ligne);
    }
    Diagnostic diagnostic;
    {
        Com<ISAXXMLReader> lecteur;
        Variant source;
        if (SUCCEEDED(::CoCreateInstance(kSaxXmlReader60, nullptr, CLSCTX_INPROC_SERVER,
                                         kISAXXMLReader,
                                         reinterpret_cast<void**>(lecteur.sortie()))) &&
            lecteur && en_octets(octets, source)) {
            lecteur->putFeature(L"prohibit-dtd", VARIANT_FALSE);
            lecteur->putErrorHandler(&diagnostic);
            lecteur->parse(source.v);
            lecteur->putErrorHandler(nullptr);
        }
    }
    if (diagnostic.ligne > 0) {
        return xml_commun::refus(diagnostic.raison, diagnostic.ligne);
    }
    return xml_commun::refus(raison.utf8(), ligne);
}

}  // namespace

std::string XmlNoeud::nom() const {
    if (n_ == nullptr) {
        return {};
    }
    switch (type_de(N(n_))) {
        case NODE_TEXT:
        case NODE_CDATA_SECTION:
            return "text";
        case NODE_COMMENT:
            return "comment";
        case NODE_ELEMENT:
        case NODE_ATTRIBUTE: {
            // Without its prefix, as libxml2 names it.
            Bstr b;
            N(n_)->get_baseName(b.sortie());
            return b.utf8();
        }
        default:
            return utf16_vers_utf8(nom_noeud(N(n_)));
    }
}

std::string XmlNoeud::texte() const {
    return n_ != nullptr ? texte_noeud(N(n_)) : std::string();
}

std::string XmlNoeud::texte_de(std::string_view xpath) const {
    Com<IXMLDOMNode> n = evaluer_un(N(n_), xpath);
    return n ? texte_noeud(n.get()) : std::string();
}

std::vector<XmlNoeud> XmlNoeud::selectionner(std::string_view xpath) const {
    std::vector<XmlNoeud> r;
    for (Com<IXMLDOMNode>& n : evaluer(N(n_), xpath)) {
        r.push_back(XmlNoeud(D(doc_)->garder(std::move(n)), doc_));
    }
    return r;
}

XmlNoeud XmlNoeud::selectionner_un(std::string_view xpath) const {
    Com<IXMLDOMNode> n = evaluer_un(N(n_), xpath);
    return n ? XmlNoeud(D(doc_)->garder(std::move(n)), doc_) : XmlNoeud();
}

XmlNoeud XmlNoeud::ajouter(std::string_view nom, std::string_view texte) {
    if (n_ == nullptr) {
        return {};
    }
    Bstr b(nom);
    Com<IXMLDOMElement> element;
    Com<IXMLDOMNode> ajoute;
    if (FAILED(D(doc_)->dom->createElement(b.get(), element.sortie())) || !element ||
        FAILED(N(n_)->appendChild(element.get(), ajoute.sortie())) || !ajoute) {
        return {};
    }
    XmlNoeud r(D(doc_)->garder(std::move(ajoute)), doc_);
    if (!texte.empty()) {
        r.definir_texte(texte);
    }
    return r;
}

void XmlNoeud::definir_texte(std::string_view texte) {
    if (n_ == nullptr) {
        return;
    }
    Bstr t(xml_commun::texte_document(texte));
    if (type_de(N(n_)) != NODE_ELEMENT) {
        N(n_)->put_text(t.get());
        return;
    }
    // Taken as plain text, never as markup; an empty text leaves an empty element.
    while (Com<IXMLDOMNode> e = premier_enfant(N(n_))) {
        Com<IXMLDOMNode> ancien;
        if (FAILED(N(n_)->removeChild(e.get(), ancien.sortie()))) {
            break;
        }
    }
    if (::SysStringLen(t.get()) > 0) {
        Com<IXMLDOMNode> noeud = noeud_texte(D(doc_)->dom.get(), t.large());
        Com<IXMLDOMNode> ajoute;
        if (noeud) {
            N(n_)->appendChild(noeud.get(), ajoute.sortie());
        }
    }
}

XmlDocument::XmlDocument() {
    initialiser_com();
}

XmlDocument::~XmlDocument() {
    delete D(doc_);
}

XmlDocument::XmlDocument(XmlDocument&& o) noexcept
    : doc_(std::exchange(o.doc_, nullptr)), erreur_(std::move(o.erreur_)) {}

XmlDocument& XmlDocument::operator=(XmlDocument&& o) noexcept {
    if (this != &o) {
        delete D(doc_);
        doc_ = std::exchange(o.doc_, nullptr);
        erreur_ = std::move(o.erreur_);
    }
    return *this;
}

bool XmlDocument::charger_fichier(const std::string& chemin) {
    std::string octets;
    if (!lire_fichier(chemin, octets)) {
        erreur_ = "fichier absent ou illisible : " + chemin;
        delete D(doc_);
        doc_ = nullptr;
        return false;
    }
    return charger_texte(octets);
}

bool XmlDocument::charger_texte(std::string_view octets) {
    delete D(doc_);
    doc_ = nullptr;
    erreur_.clear();
    if (xml_commun::declare_des_entites(octets)) {
        erreur_ = xml_commun::kRefusEntites;
        return false;
    }
    Com<IXMLDOMDocument2> dom = nouveau_dom(erreur_);
    if (!dom) {
        return false;
    }
    const std::optional<std::string> recode = latin1_en_utf8(octets);
    Variant source;
    if (!en_octets(recode ? std::string_view(*recode) : octets, source)) {
        erreur_ = "mémoire insuffisante";
        return false;
    }
    VARIANT_BOOL reussi = VARIANT_FALSE;
    const HRESULT hr = dom->load(source.v, &reussi);
    Com<IXMLDOMElement> racine;
    if (hr != S_OK || reussi != VARIANT_TRUE || dom->get_documentElement(racine.sortie()) != S_OK ||
        !racine) {
        erreur_ = refus(dom.get(), recode ? std::string_view(*recode) : octets);
        return false;
    }
    // (The documents exchanged are single-byte or UTF-8: a section shows in their bytes.)
    if (octets.find("<![CDATA[") != std::string_view::npos) {
        cdata_en_texte(dom.get(), racine.get());
    }
    Document* d = new Document{std::move(dom), {}};
    d->racine = d->garder(Com<IXMLDOMNode>(racine.liberer()));
    doc_ = d;
    return true;
}

XmlNoeud XmlDocument::creer_racine(std::string_view nom) {
    delete D(doc_);
    doc_ = nullptr;
    Com<IXMLDOMDocument2> dom = nouveau_dom(erreur_);
    if (!dom) {
        return {};
    }
    Bstr b(nom);
    Com<IXMLDOMElement> element;
    Com<IXMLDOMNode> racine;
    if (FAILED(dom->createElement(b.get(), element.sortie())) || !element ||
        FAILED(dom->appendChild(element.get(), racine.sortie())) || !racine) {
        return {};
    }
    Document* d = new Document{std::move(dom), {}};
    d->racine = d->garder(std::move(racine));
    doc_ = d;
    return XmlNoeud(d->racine, doc_);
}

XmlNoeud XmlDocument::racine() const {
    return doc_ != nullptr ? XmlNoeud(D(doc_)->racine, doc_) : XmlNoeud();
}

std::vector<XmlNoeud> XmlDocument::selectionner(std::string_view xpath) const {
    std::vector<XmlNoeud> r;
    if (doc_ == nullptr) {
        return r;
    }
    for (Com<IXMLDOMNode>& n : evaluer(D(doc_)->dom.get(), xpath)) {
        r.push_back(XmlNoeud(D(doc_)->garder(std::move(n)), doc_));
    }
    return r;
}

XmlNoeud XmlDocument::selectionner_un(std::string_view xpath) const {
    if (doc_ == nullptr) {
        return {};
    }
    Com<IXMLDOMNode> n = evaluer_un(D(doc_)->dom.get(), xpath);
    return n ? XmlNoeud(D(doc_)->garder(std::move(n)), doc_) : XmlNoeud();
}

std::string XmlDocument::octets() const {
    if (doc_ == nullptr) {
        return {};
    }
    // The declaration is the one the middleware has always received, in its own
    // quoting; each top-level node then takes a line, as libxml2 writes them. The
    // declaration MSXML keeps as a node of a loaded document is not written twice.
    // Wine's MSXML has no sibling after a DOCTYPE: the document's children are listed.
    std::u16string corps;
    Com<IXMLDOMNodeList> enfants;
    long nombre = 0;
    if (D(doc_)->dom->get_childNodes(enfants.sortie()) == S_OK && enfants) {
        enfants->get_length(&nombre);
    }
    for (long i = 0; i < nombre; ++i) {
        Com<IXMLDOMNode> n;
        if (enfants->get_item(i, n.sortie()) != S_OK || !n) {
            continue;
        }
        const DOMNodeType t = type_de(n.get());
        if (t == NODE_TEXT || (t == NODE_PROCESSING_INSTRUCTION && nom_noeud(n.get()) == u"xml")) {
            continue;
        }
        ecrire_noeud(n.get(), corps);
        corps += u'\n';
    }
    return "<?xml version='1.0' encoding='ISO-8859-1'?>\n" + latin1(corps);
}

bool XmlDocument::enregistrer(const std::string& chemin) const {
    std::string s = octets();
    return !s.empty() && ecrire_fichier(chemin, s);
}

}  // namespace sv140
