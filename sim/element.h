// A small element tree: what the simulated middleware keeps in its state files and
// what it writes back to the bridge. The tree is built in code, read from the state
// files through the XML layer, and written out by hand so that the answer's bytes
// (prolog, line ends, ISO-8859-1) are exactly the ones chosen.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/xml.h"

namespace sv140::sim {

/// An element with either a text (leaf) or children. Text is UTF-8.
struct Element {
    std::string nom;
    std::string texte;
    std::vector<Element> enfants;

    Element() = default;
    explicit Element(std::string n, std::string t = {}) : nom(std::move(n)), texte(std::move(t)) {}

    /// Appends a child and returns it (the reference is valid until the next append).
    Element& ajouter(std::string n, std::string t = {});
    /// Appends a copy of a whole subtree.
    Element& ajouter_arbre(const Element& e);
    /// First child reached by a path of names separated by '/'; null when absent.
    const Element* trouver(std::string_view chemin) const;
    /// Text of the element at `chemin`; "" when absent.
    std::string texte_de(std::string_view chemin) const;
    /// Every direct child of that name, in order.
    std::vector<const Element*> tous(std::string_view n) const;
};

/// Copies a DOM node and its element descendants. A node with child elements keeps
/// only them; a leaf keeps its trimmed text.
Element depuis_noeud(const XmlNoeud& noeud);

/// Loads the root element of an XML file. False with `erreur` filled when the file is
/// missing or not well-formed.
bool charger_element(const std::string& chemin, Element& racine, std::string& erreur);

/// How an element tree is written out.
struct Forme {
    std::string fin_de_ligne = "\r\n";
    /// Blanks per level; 0 writes every element at the start of its line.
    int indentation = 0;
    /// ISO-8859-1 bytes (characters beyond it as character references) instead of UTF-8.
    bool latin1 = true;
};

/// The element and its descendants as text, each element on its own line. Empty
/// elements are written with a start and an end tag.
std::string serialiser(const Element& racine, const Forme& forme);

/// A state file: UTF-8 declaration, two-blank indentation, LF line ends.
std::string texte_etat(const Element& racine);

}  // namespace sv140::sim
