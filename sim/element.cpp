#include "sim/element.h"

#include "platform/encodage.h"

namespace sv140::sim {

Element& Element::ajouter(std::string n, std::string t) {
    enfants.emplace_back(std::move(n), std::move(t));
    return enfants.back();
}

Element& Element::ajouter_arbre(const Element& e) {
    enfants.push_back(e);
    return enfants.back();
}

const Element* Element::trouver(std::string_view chemin) const {
    const Element* courant = this;
    while (courant != nullptr && !chemin.empty()) {
        const auto barre = chemin.find('/');
        const std::string_view nom_cherche = chemin.substr(0, barre);
        chemin = barre == std::string_view::npos ? std::string_view() : chemin.substr(barre + 1);
        const Element* suivant = nullptr;
        for (const Element& e : courant->enfants) {
            if (e.nom == nom_cherche) {
                suivant = &e;
                break;
            }
        }
        courant = suivant;
    }
    return courant;
}

std::string Element::texte_de(std::string_view chemin) const {
    const Element* e = trouver(chemin);
    return e ? e->texte : std::string();
}

std::vector<const Element*> Element::tous(std::string_view n) const {
    std::vector<const Element*> r;
    for (const Element& e : enfants) {
        if (e.nom == n) {
            r.push_back(&e);
        }
    }
    return r;
}

Element depuis_noeud(const XmlNoeud& noeud) {
    Element e(noeud.nom());
    for (const XmlNoeud& enfant : noeud.selectionner("*")) {
        e.enfants.push_back(depuis_noeud(enfant));
    }
    if (e.enfants.empty()) {
        e.texte = noeud.texte();
    }
    return e;
}

bool charger_element(const std::string& chemin, Element& racine, std::string& erreur) {
    XmlDocument doc;
    if (!doc.charger_fichier(chemin)) {
        erreur = doc.erreur();
        return false;
    }
    racine = depuis_noeud(doc.racine());
    return true;
}

namespace {

void ecrire_code(std::string& sortie, unsigned code) {
    sortie += "&#" + std::to_string(code) + ";";
}

// Markup characters become entities; a carriage return becomes a character reference
// so that the bridge's removal of line ends between elements cannot eat it.
bool echapper_balisage(std::string& sortie, unsigned code) {
    switch (code) {
        case '&':
            sortie += "&amp;";
            return true;
        case '<':
            sortie += "&lt;";
            return true;
        case '>':
            sortie += "&gt;";
            return true;
        case '\r':
            ecrire_code(sortie, code);
            return true;
        default:
            return false;
    }
}

void echapper(std::string& sortie, std::string_view texte, bool latin1) {
    if (!latin1) {
        for (char c : texte) {
            if (!echapper_balisage(sortie, static_cast<unsigned char>(c))) {
                sortie += c;
            }
        }
        return;
    }
    const std::u16string unites = utf8_vers_utf16(texte);
    for (std::size_t i = 0; i < unites.size(); ++i) {
        unsigned code = unites[i];
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < unites.size()) {
            code = 0x10000 + ((code - 0xD800) << 10) + (unites[i + 1] - 0xDC00u);
            ++i;
        }
        if (echapper_balisage(sortie, code)) {
            continue;
        }
        if (code <= 0xFF) {
            sortie += static_cast<char>(code);
        } else {
            ecrire_code(sortie, code);
        }
    }
}

void ecrire(std::string& sortie, const Element& e, const Forme& forme, int niveau) {
    const std::string marge(static_cast<std::size_t>(forme.indentation * niveau), ' ');
    sortie += marge + "<" + e.nom + ">";
    if (e.enfants.empty()) {
        echapper(sortie, e.texte, forme.latin1);
    } else {
        sortie += forme.fin_de_ligne;
        for (const Element& enfant : e.enfants) {
            ecrire(sortie, enfant, forme, niveau + 1);
        }
        sortie += marge;
    }
    sortie += "</" + e.nom + ">" + forme.fin_de_ligne;
}

}  // namespace

std::string serialiser(const Element& racine, const Forme& forme) {
    std::string sortie;
    ecrire(sortie, racine, forme, 0);
    return sortie;
}

std::string texte_etat(const Element& racine) {
    Forme forme;
    forme.fin_de_ligne = "\n";
    forme.indentation = 2;
    forme.latin1 = false;
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + serialiser(racine, forme);
}

}  // namespace sv140::sim
