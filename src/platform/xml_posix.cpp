// XML documents over libxml2.
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>
#include <libxml/xpath.h>

#include <cstring>

#include "platform/encodage.h"
#include "platform/systeme.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

xmlDocPtr D(void* p) {
    return static_cast<xmlDocPtr>(p);
}
xmlNodePtr N(void* p) {
    return static_cast<xmlNodePtr>(p);
}
const xmlChar* X(const std::string& s) {
    return reinterpret_cast<const xmlChar*>(s.c_str());
}

std::vector<void*> evaluer(void* doc, void* contexte, std::string_view xpath) {
    std::vector<void*> noeuds;
    if (doc == nullptr) {
        return noeuds;
    }
    xmlXPathContextPtr ctx = xmlXPathNewContext(D(doc));
    if (ctx == nullptr) {
        return noeuds;
    }
    if (contexte != nullptr) {
        ctx->node = N(contexte);
    }
    std::string expr(xpath);
    xmlXPathObjectPtr res = xmlXPathEvalExpression(X(expr), ctx);
    if (res != nullptr && res->type == XPATH_NODESET && res->nodesetval != nullptr) {
        for (int i = 0; i < res->nodesetval->nodeNr; ++i) {
            noeuds.push_back(res->nodesetval->nodeTab[i]);
        }
    }
    xmlXPathFreeObject(res);
    xmlXPathFreeContext(ctx);
    return noeuds;
}

// libxml2 reports parse errors through a global handler; the bridge reports them in
// its own words, so the library stays silent.
void silence(void*, const char*, ...) {}

struct Initialisation {
    Initialisation() {
        xmlInitParser();
        xmlSetGenericErrorFunc(nullptr, silence);
    }
};
void initialiser() {
    static Initialisation init;
}

}  // namespace

std::string XmlNoeud::nom() const {
    return n_ ? reinterpret_cast<const char*>(N(n_)->name) : std::string();
}

std::string XmlNoeud::texte() const {
    if (n_ == nullptr) {
        return {};
    }
    xmlChar* contenu = xmlNodeGetContent(N(n_));
    std::string s = contenu ? reinterpret_cast<const char*>(contenu) : "";
    xmlFree(contenu);
    return xml_commun::rogner(s);
}

namespace {

// The path is only element names ("a/b"): the fields of a group are read so.
bool chemin_simple(std::string_view xpath) {
    if (xpath.empty() || xpath.front() == '/' || xpath.back() == '/') {
        return false;
    }
    for (std::size_t i = 0; i < xpath.size(); ++i) {
        const char c = xpath[i];
        const bool lettre = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
        const bool suite = (c >= '0' && c <= '9') || c == '-' || c == '.';
        const bool separateur = c == '/' && xpath[i - 1] != '/';
        if (!lettre && !(suite && i > 0 && xpath[i - 1] != '/') && !separateur) {
            return false;
        }
    }
    return true;
}

// The first node of a simple path below `n` in document order, as XPath would select
// it, found by walking the children: a group's fields are read thousands of times in a
// lot, and an XPath evaluation each costs far more.
xmlNodePtr premier(xmlNodePtr n, std::string_view chemin) {
    const std::size_t barre = chemin.find('/');
    const std::string_view nom = chemin.substr(0, barre);
    for (xmlNodePtr c = n->children; c != nullptr; c = c->next) {
        if (c->type != XML_ELEMENT_NODE || c->ns != nullptr ||
            std::string_view(reinterpret_cast<const char*>(c->name)) != nom) {
            continue;
        }
        if (barre == std::string_view::npos) {
            return c;
        }
        if (xmlNodePtr r = premier(c, chemin.substr(barre + 1))) {
            return r;
        }
    }
    return nullptr;
}

}  // namespace

std::string XmlNoeud::texte_de(std::string_view xpath) const {
    if (n_ != nullptr && chemin_simple(xpath)) {
        return XmlNoeud(premier(N(n_), xpath), doc_).texte();
    }
    return selectionner_un(xpath).texte();
}

std::vector<XmlNoeud> XmlNoeud::selectionner(std::string_view xpath) const {
    std::vector<XmlNoeud> r;
    if (n_ == nullptr) {
        return r;
    }
    for (void* p : evaluer(doc_, n_, xpath)) {
        r.push_back(XmlNoeud(p, doc_));
    }
    return r;
}

XmlNoeud XmlNoeud::selectionner_un(std::string_view xpath) const {
    auto r = selectionner(xpath);
    return r.empty() ? XmlNoeud() : r.front();
}

XmlNoeud XmlNoeud::ajouter(std::string_view nom, std::string_view texte) {
    if (n_ == nullptr) {
        return {};
    }
    std::string n(nom);
    xmlNodePtr enfant = xmlNewDocNode(D(doc_), nullptr, X(n), nullptr);
    xmlAddChild(N(n_), enfant);
    XmlNoeud r(enfant, doc_);
    if (!texte.empty()) {
        r.definir_texte(texte);
    }
    return r;
}

void XmlNoeud::definir_texte(std::string_view texte) {
    if (n_ == nullptr) {
        return;
    }
    xmlNodeSetContent(N(n_), nullptr);
    std::string t = utf16_vers_utf8(xml_commun::texte_document(texte));
    xmlNodeAddContent(N(n_), X(t));  // taken as plain text, never as markup
}

XmlDocument::XmlDocument() {
    initialiser();
}

XmlDocument::~XmlDocument() {
    if (doc_ != nullptr) {
        xmlFreeDoc(D(doc_));
    }
}

XmlDocument::XmlDocument(XmlDocument&& o) noexcept : doc_(o.doc_), erreur_(std::move(o.erreur_)) {
    o.doc_ = nullptr;
}

XmlDocument& XmlDocument::operator=(XmlDocument&& o) noexcept {
    if (this != &o) {
        if (doc_ != nullptr) {
            xmlFreeDoc(D(doc_));
        }
        doc_ = o.doc_;
        o.doc_ = nullptr;
        erreur_ = std::move(o.erreur_);
    }
    return *this;
}

bool XmlDocument::charger_fichier(const std::string& chemin) {
    std::string octets;
    if (!lire_fichier(chemin, octets)) {
        erreur_ = "fichier absent ou illisible : " + chemin;
        if (doc_ != nullptr) {
            xmlFreeDoc(D(doc_));
            doc_ = nullptr;
        }
        return false;
    }
    return charger_texte(octets);
}

bool XmlDocument::charger_texte(std::string_view octets) {
    if (doc_ != nullptr) {
        xmlFreeDoc(D(doc_));
        doc_ = nullptr;
    }
    erreur_.clear();
    if (xml_commun::declare_des_entites(octets)) {
        erreur_ = xml_commun::kRefusEntites;
        return false;
    }
    xmlResetLastError();
    // A document of a busy shop may be large; what a large document could make the
    // parser expand (entities) is refused above and below.
    xmlDocPtr doc = xmlReadMemory(octets.data(), static_cast<int>(octets.size()), nullptr, nullptr,
                                  XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                                      XML_PARSE_NOCDATA | XML_PARSE_HUGE);
    if (doc == nullptr || xmlDocGetRootElement(doc) == nullptr) {
        const xmlError* e = xmlGetLastError();
        // An empty input is refused before any parsing, without a word from libxml2.
        erreur_ = e != nullptr ? xml_commun::refus(e->message ? e->message : "", e->line)
                               : xml_commun::refus("document vide", 1);
        xmlFreeDoc(doc);
        return false;
    }
    // A declaration the scan above could not see (an encoding it does not read) is
    // still refused here: entity references are expanded when the text is read.
    if (doc->intSubset != nullptr &&
        (doc->intSubset->entities != nullptr || doc->intSubset->pentities != nullptr)) {
        erreur_ = xml_commun::kRefusEntites;
        xmlFreeDoc(doc);
        return false;
    }
    doc_ = doc;
    return true;
}

XmlNoeud XmlDocument::creer_racine(std::string_view nom) {
    if (doc_ != nullptr) {
        xmlFreeDoc(D(doc_));
    }
    xmlDocPtr doc = xmlNewDoc(reinterpret_cast<const xmlChar*>("1.0"));
    doc_ = doc;
    std::string n(nom);
    xmlNodePtr racine = xmlNewDocNode(doc, nullptr, X(n), nullptr);
    xmlDocSetRootElement(doc, racine);
    return XmlNoeud(racine, doc_);
}

XmlNoeud XmlDocument::racine() const {
    return doc_ ? XmlNoeud(xmlDocGetRootElement(D(doc_)), doc_) : XmlNoeud();
}

std::vector<XmlNoeud> XmlDocument::selectionner(std::string_view xpath) const {
    std::vector<XmlNoeud> r;
    for (void* p : evaluer(doc_, nullptr, xpath)) {
        r.push_back(XmlNoeud(p, doc_));
    }
    return r;
}

XmlNoeud XmlDocument::selectionner_un(std::string_view xpath) const {
    auto r = selectionner(xpath);
    return r.empty() ? XmlNoeud() : r.front();
}

std::string XmlDocument::octets() const {
    if (doc_ == nullptr) {
        return {};
    }
    // The declaration is the one the middleware has always received, in its own
    // quoting; the library writes the rest.
    xmlBufferPtr tampon = xmlBufferCreate();
    xmlSaveCtxtPtr sortie = xmlSaveToBuffer(tampon, "ISO-8859-1", XML_SAVE_NO_DECL);
    bool ok = sortie != nullptr && xmlSaveDoc(sortie, D(doc_)) >= 0;
    ok = sortie != nullptr && xmlSaveClose(sortie) >= 0 && ok;
    std::string s;
    if (ok) {
        s = "<?xml version='1.0' encoding='ISO-8859-1'?>\n";
        s.append(reinterpret_cast<const char*>(xmlBufferContent(tampon)),
                 static_cast<std::size_t>(xmlBufferLength(tampon)));
    }
    xmlBufferFree(tampon);
    return s;
}

bool XmlDocument::enregistrer(const std::string& chemin) const {
    std::string s = octets();
    return !s.empty() && ecrire_fichier(chemin, s);
}

}  // namespace sv140
