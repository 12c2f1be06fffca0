// XML documents: the request and response documents exchanged with the middleware
// and the host's input document.
//
// Text going in and out of this interface is UTF-8. Documents are saved in
// ISO-8859-1 with the declaration the middleware expects; loading honours the
// document's own declaration. Node text is the concatenated text of the node and its
// descendants (CDATA included) with leading and trailing white space removed, as the
// host's developers see it in their own DOM.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sv140 {

class XmlNoeud {
  public:
    XmlNoeud() = default;
    explicit operator bool() const { return n_ != nullptr; }

    std::string nom() const;
    /// Text of the node and its descendants, trimmed; "" for a null node.
    std::string texte() const;
    /// Text of the first node `xpath` selects from here; "" when none is found.
    std::string texte_de(std::string_view xpath) const;
    /// Nodes `xpath` selects from here, in document order; empty on a bad expression.
    std::vector<XmlNoeud> selectionner(std::string_view xpath) const;
    /// First node `xpath` selects from here, or a null node.
    XmlNoeud selectionner_un(std::string_view xpath) const;

    /// Appends a child element (with its text when not empty) and returns it.
    XmlNoeud ajouter(std::string_view nom, std::string_view texte = {});
    void definir_texte(std::string_view texte);

  private:
    friend class XmlDocument;
    explicit XmlNoeud(void* n, void* doc) : n_(n), doc_(doc) {}
    void* n_ = nullptr;
    void* doc_ = nullptr;
};

class XmlDocument {
  public:
    XmlDocument();
    ~XmlDocument();
    XmlDocument(const XmlDocument&) = delete;
    XmlDocument& operator=(const XmlDocument&) = delete;
    XmlDocument(XmlDocument&&) noexcept;
    XmlDocument& operator=(XmlDocument&&) noexcept;

    /// Loads a file synchronously without validation. False when the file is missing,
    /// not well-formed or declares entities; `erreur()` then says why.
    bool charger_fichier(const std::string& chemin);
    /// Loads a document from its bytes (encoding per its declaration, UTF-8 without).
    bool charger_texte(std::string_view octets);

    /// Starts an empty document with the declaration version='1.0'
    /// encoding='ISO-8859-1' and a root element of this name.
    XmlNoeud creer_racine(std::string_view nom);

    XmlNoeud racine() const;
    std::vector<XmlNoeud> selectionner(std::string_view xpath) const;
    XmlNoeud selectionner_un(std::string_view xpath) const;

    /// Saves in ISO-8859-1 with the declaration version='1.0' encoding='ISO-8859-1',
    /// replacing the file. False on failure. Text that is not UTF-8 is read as
    /// Windows-1252; control characters a document cannot hold are dropped.
    bool enregistrer(const std::string& chemin) const;
    /// The document as saved, in bytes.
    std::string octets() const;

    const std::string& erreur() const { return erreur_; }

  private:
    void* doc_ = nullptr;
    std::string erreur_;
};

/// An XPath string literal holding `valeur` exactly, whatever quotes it holds
/// ('...', "..." or concat(...)), so that no value breaks out of its literal.
std::string xpath_litteral(std::string_view valeur);

// What the libxml2 and the MSXML implementations share (xml.cpp); not for the core.
namespace xml_commun {

/// `texte` without the blanks (" \t\r\n") at either end.
std::string rogner(std::string_view texte);
/// A text as a document may hold it, in UTF-16: bytes that are not UTF-8 are the
/// host's Windows-1252 characters, and the control characters XML forbids are gone.
std::u16string texte_document(std::string_view texte);
/// `erreur()` of a document refused by the parser, from the parser's own reason.
std::string refus(std::string_view raison, long ligne);
/// Whether a document's type declaration declares entities. Such a document is never
/// read, whatever the parser would do with it: a few kilobytes of entities can expand
/// to gigabytes.
bool declare_des_entites(std::string_view octets);
/// `erreur()` of a document refused for its entities.
inline constexpr const char* kRefusEntites = "document refusé : il déclare des entités";

}  // namespace xml_commun

}  // namespace sv140
