#include "sim/depot.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>

#include "platform/systeme.h"
#include "sim/pieces.h"

namespace sv140::sim {

namespace {

constexpr const char* kCps = "cps.xml";
constexpr const char* kCartes = "cartes";
constexpr const char* kLecteur = "lecteur.txt";
constexpr const char* kFactures = "factures.txt";
constexpr const char* kPieces = "pieces.txt";
constexpr const char* kPanne = "panne.xml";
constexpr const char* kJour = "jour.txt";
constexpr const char* kAttente = "attente";
constexpr const char* kExtension = ".xml";

std::string rogner(std::string s) {
    const char* blancs = " \t\r\n";
    const auto debut = s.find_first_not_of(blancs);
    if (debut == std::string::npos) {
        return {};
    }
    return s.substr(debut, s.find_last_not_of(blancs) - debut + 1);
}

int entier(const std::string& texte) {
    int valeur = 0;
    const std::string t = rogner(texte);
    std::from_chars(t.data(), t.data() + t.size(), valeur);
    return valeur;
}

// std::filesystem takes UTF-8 only through char8_t; the state folder's paths are
// UTF-8 like every path of the bridge.
std::filesystem::path chemin_fs(const std::string& utf8) {
    return std::filesystem::path(
        std::u8string(reinterpret_cast<const char8_t*>(utf8.data()), utf8.size()));
}

std::string texte_fs(const std::filesystem::path& p) {
    const std::u8string u = p.u8string();
    return std::string(reinterpret_cast<const char*>(u.data()), u.size());
}

/// Names (without extension) of the `.xml` files of a folder.
std::vector<std::string> lister(const std::string& dossier) {
    std::vector<std::string> noms;
    std::error_code ec;
    for (std::filesystem::directory_iterator it(chemin_fs(dossier), ec), fin; !ec && it != fin;
         it.increment(ec)) {
        const std::filesystem::path& p = it->path();
        if (texte_fs(p.extension()) == kExtension && it->is_regular_file(ec)) {
            const std::string nom = texte_fs(p.stem());
            if (nom_sur(nom)) {
                noms.push_back(nom);
            }
        }
    }
    std::sort(noms.begin(), noms.end());
    return noms;
}

bool ecrire(const std::string& chemin, const std::string& octets, std::string& erreur) {
    if (!ecrire_fichier(chemin, octets)) {
        erreur = "Écriture impossible : " + chemin;
        return false;
    }
    return true;
}

}  // namespace

bool nom_sur(const std::string& nom) {
    if (nom.empty() || nom.size() > 64) {
        return false;
    }
    return std::all_of(nom.begin(), nom.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '-';
    });
}

std::string Depot::chemin(const std::string& nom) const {
    return joindre(dossier_, nom);
}

std::string Depot::chemin_carte(const std::string& id) const {
    return joindre(chemin(kCartes), id + kExtension);
}

std::string Depot::chemin_message(const std::string& operation) const {
    return joindre(chemin(kAttente), operation + kExtension);
}

bool Depot::preparer(std::string& erreur) const {
    for (const std::string& d : {dossier_, chemin(kCartes), chemin(kAttente)}) {
        if (!creer_dossier(d)) {
            erreur = "Création du dossier impossible : " + d;
            return false;
        }
    }
    return true;
}

std::optional<Element> Depot::cps() const {
    Element contexte;
    std::string erreur;
    if (!charger_element(chemin(kCps), contexte, erreur)) {
        return std::nullopt;
    }
    return contexte;
}

bool Depot::ecrire_cps(const Element& contextePS, std::string& erreur) const {
    return ecrire(chemin(kCps), texte_etat(contextePS), erreur);
}

std::vector<std::string> Depot::cartes() const {
    return lister(chemin(kCartes));
}

bool Depot::carte_existe(const std::string& id) const {
    return nom_sur(id) && fichier_existe(chemin_carte(id));
}

bool Depot::carte(const std::string& id, Element& contexte, std::string& erreur) const {
    if (!nom_sur(id)) {
        erreur = "identifiant de carte invalide : " + id;
        return false;
    }
    return charger_element(chemin_carte(id), contexte, erreur);
}

bool Depot::ecrire_carte(const std::string& id, const Element& contexte,
                         std::string& erreur) const {
    if (!nom_sur(id)) {
        erreur = "Identifiant de carte invalide : " + id;
        return false;
    }
    return ecrire(chemin_carte(id), texte_etat(contexte), erreur);
}

std::string Depot::carte_lecteur() const {
    std::string contenu;
    if (!lire_fichier(chemin(kLecteur), contenu)) {
        return {};
    }
    return rogner(contenu);
}

bool Depot::inserer(const std::string& id, std::string& erreur) const {
    if (!id.empty() && !carte_existe(id)) {
        erreur = "Carte inconnue : " + id;
        return false;
    }
    return ecrire(chemin(kLecteur), id.empty() ? std::string() : id + "\n", erreur);
}

Registre Depot::factures() const {
    std::string contenu;
    return lire_fichier(chemin(kFactures), contenu) ? lire_registre(contenu) : Registre{};
}

bool Depot::ecrire_factures(const Registre& registre, std::string& erreur) const {
    return ecrire(chemin(kFactures), texte_registre(registre), erreur);
}

std::vector<PieceSimulee> Depot::pieces() const {
    std::string contenu;
    return lire_fichier(chemin(kPieces), contenu) ? lire_pieces(contenu)
                                                  : std::vector<PieceSimulee>{};
}

bool Depot::ecrire_pieces(const std::vector<PieceSimulee>& pieces, std::string& erreur) const {
    return ecrire(chemin(kPieces), texte_pieces(pieces), erreur);
}

std::optional<Panne> Depot::prendre_panne(const std::string& fonction) const {
    Element e;
    std::string erreur;
    if (!charger_element(chemin(kPanne), e, erreur) || e.texte_de("fonction") != fonction) {
        return std::nullopt;
    }
    supprimer_fichier(chemin(kPanne));
    Panne p;
    p.fonction = fonction;
    p.retour = entier(e.texte_de("retour"));
    p.code = entier(e.texte_de("codeErreur"));
    p.libelle = e.texte_de("libelleErreur");
    return p;
}

bool Depot::planter_panne(const Panne& panne, std::string& erreur) const {
    Element e("panne");
    e.ajouter("fonction", panne.fonction);
    if (panne.retour != 0) {
        e.ajouter("retour", std::to_string(panne.retour));
    } else {
        e.ajouter("codeErreur", std::to_string(panne.code));
        e.ajouter("libelleErreur", panne.libelle);
    }
    return ecrire(chemin(kPanne), texte_etat(e), erreur);
}

bool Depot::conserver_message(const std::string& operation, const std::string& octets) const {
    std::string erreur;
    return nom_sur(operation) && preparer(erreur) &&
           ecrire_fichier(chemin_message(operation), octets);
}

std::optional<std::string> Depot::message_conserve(const std::string& operation) const {
    std::string octets;
    if (!nom_sur(operation) || !lire_fichier(chemin_message(operation), octets)) {
        return std::nullopt;
    }
    return octets;
}

void Depot::oublier_message(const std::string& operation) const {
    if (nom_sur(operation)) {
        supprimer_fichier(chemin_message(operation));
    }
}

int Depot::decalage_jours() const {
    std::string contenu;
    return lire_fichier(chemin(kJour), contenu) ? entier(contenu) : 0;
}

bool Depot::ecrire_decalage_jours(int jours, std::string& erreur) const {
    return ecrire(chemin(kJour), std::to_string(jours) + "\n", erreur);
}

void Depot::effacer_attentes() const {
    for (const std::string& operation : lister(chemin(kAttente))) {
        oublier_message(operation);
    }
    supprimer_fichier(chemin(kPanne));
}

}  // namespace sv140::sim
