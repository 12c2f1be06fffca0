#include "sim/registre.h"

#include <algorithm>
#include <charconv>
#include <variant>

namespace sv140::sim {

namespace {

template <class T>
using Membre = std::variant<std::string T::*, long long T::*, int T::*, bool T::*>;

template <class T>
struct Champ {
    std::string_view nom;
    Membre<T> membre;
};

const Champ<FactureSimulee> kChampsFacture[] = {
    {"numeroFacture", &FactureSimulee::numeroFacture},
    {"dateFacture", &FactureSimulee::dateFacture},
    {"natureAssurance", &FactureSimulee::natureAssurance},
    {"codeRegime", &FactureSimulee::codeRegime},
    {"codeCaisse", &FactureSimulee::codeCaisse},
    {"codeCentre", &FactureSimulee::codeCentre},
    {"numeroMutuelle", &FactureSimulee::numeroMutuelle},
    {"typeTP", &FactureSimulee::typeTP},
    {"typeCertification", &FactureSimulee::typeCertification},
    {"NIR", &FactureSimulee::nir},
    {"nom", &FactureSimulee::nom},
    {"prenom", &FactureSimulee::prenom},
    {"dateNaissance", &FactureSimulee::dateNaissance},
    {"numeroPrescripteur", &FactureSimulee::numeroPrescripteur},
    {"datePrescription", &FactureSimulee::datePrescription},
    {"droitsAMO", &FactureSimulee::droitsAMO},
    {"montantHonoraires", &FactureSimulee::montantHonoraires},
    {"montantAMO", &FactureSimulee::montantAMO},
    {"montantAMC", &FactureSimulee::montantAMC},
    {"numeroLot", &FactureSimulee::numeroLot},
    {"jourEnvoi", &FactureSimulee::jourEnvoi},
};

const Champ<ActeSimule> kChampsActe[] = {
    {"dateSoins", &ActeSimule::dateSoins},
    {"codeActeNGAP", &ActeSimule::codeActeNGAP},
    {"codeAffineDetaille", &ActeSimule::codeLPP},
    {"typePrestation", &ActeSimule::typePrestation},
    {"quantite", &ActeSimule::quantite},
    {"tauxRemboursement", &ActeSimule::tauxRemboursement},
    {"montantHonoraires", &ActeSimule::montantHonoraires},
    {"baseRemboursement", &ActeSimule::baseRemboursement},
    {"montantAMO", &ActeSimule::montantAMO},
    {"montantAMC", &ActeSimule::montantAMC},
    {"qualifDepense", &ActeSimule::qualifDepense},
    {"codeExo", &ActeSimule::codeExo},
};

template <class... F>
struct Selon : F... {
    using F::operator()...;
};

void ajouter_valeur(std::string& sortie, std::string_view valeur) {
    for (char c : valeur) {
        sortie += (c == '\t' || c == '\n' || c == '\r') ? ' ' : c;
    }
}

template <class T, std::size_t N>
void ecrire_ligne(std::string& sortie, std::string_view genre, const T& objet,
                  const Champ<T> (&champs)[N]) {
    sortie += genre;
    for (const Champ<T>& c : champs) {
        sortie += '\t';
        sortie += c.nom;
        sortie += '=';
        std::visit(Selon{
                       [&](std::string T::*m) { ajouter_valeur(sortie, objet.*m); },
                       [&](long long T::*m) { sortie += std::to_string(objet.*m); },
                       [&](int T::*m) { sortie += std::to_string(objet.*m); },
                       [&](bool T::*m) { sortie += objet.*m ? 'O' : 'N'; },
                   },
                   c.membre);
    }
    sortie += '\n';
}

template <class N>
void lire_nombre(std::string_view texte, N& valeur) {
    N lu = 0;
    if (std::from_chars(texte.data(), texte.data() + texte.size(), lu).ec == std::errc()) {
        valeur = lu;
    }
}

template <class T, std::size_t N>
void lire_champ(std::string_view nom, std::string_view valeur, T& objet,
                const Champ<T> (&champs)[N]) {
    for (const Champ<T>& c : champs) {
        if (c.nom == nom) {
            std::visit(Selon{
                           [&](std::string T::*m) { objet.*m = std::string(valeur); },
                           [&](long long T::*m) { lire_nombre(valeur, objet.*m); },
                           [&](int T::*m) { lire_nombre(valeur, objet.*m); },
                           [&](bool T::*m) { objet.*m = valeur != "N"; },
                       },
                       c.membre);
            return;
        }
    }
}

/// Calls `f(nom, valeur)` for every name=value field of a line after its first field.
template <class F>
void pour_chaque_champ(std::string_view ligne, F&& f) {
    while (!ligne.empty()) {
        const auto tab = ligne.find('\t');
        const std::string_view champ = ligne.substr(0, tab);
        ligne = tab == std::string_view::npos ? std::string_view() : ligne.substr(tab + 1);
        const auto egal = champ.find('=');
        if (egal != std::string_view::npos) {
            f(champ.substr(0, egal), champ.substr(egal + 1));
        }
    }
}

}  // namespace

FactureSimulee* Registre::trouver(long long numero) {
    for (FactureSimulee& f : factures) {
        if (f.numeroFacture == numero) {
            return &f;
        }
    }
    return nullptr;
}

std::string texte_registre(const Registre& registre) {
    std::string sortie =
        "# Invoices of the simulated middleware: one record per line, tab-separated "
        "name=value fields; an acte line belongs to the facture line above it.\n";
    sortie += "numerotation\tderniereFacture=" + std::to_string(registre.derniere_facture) +
              "\tdernierLot=" + std::to_string(registre.dernier_lot) + "\n";
    for (const FactureSimulee& f : registre.factures) {
        ecrire_ligne(sortie, "facture", f, kChampsFacture);
        for (const ActeSimule& a : f.actes) {
            ecrire_ligne(sortie, "acte", a, kChampsActe);
        }
    }
    return sortie;
}

Registre lire_registre(std::string_view texte) {
    Registre r;
    while (!texte.empty()) {
        const auto fin = texte.find('\n');
        std::string_view ligne = texte.substr(0, fin);
        texte = fin == std::string_view::npos ? std::string_view() : texte.substr(fin + 1);
        if (ligne.ends_with('\r')) {
            ligne.remove_suffix(1);
        }
        const std::string_view genre = ligne.substr(0, ligne.find('\t'));
        const std::string_view champs = ligne.substr(genre.size());
        if (genre == "numerotation") {
            pour_chaque_champ(champs, [&](std::string_view nom, std::string_view valeur) {
                if (nom == "derniereFacture") {
                    lire_nombre(valeur, r.derniere_facture);
                } else if (nom == "dernierLot") {
                    lire_nombre(valeur, r.dernier_lot);
                }
            });
        } else if (genre == "facture") {
            FactureSimulee& f = r.factures.emplace_back();
            pour_chaque_champ(champs, [&](std::string_view nom, std::string_view valeur) {
                lire_champ(nom, valeur, f, kChampsFacture);
            });
        } else if (genre == "acte" && !r.factures.empty()) {
            ActeSimule& a = r.factures.back().actes.emplace_back();
            pour_chaque_champ(champs, [&](std::string_view nom, std::string_view valeur) {
                lire_champ(nom, valeur, a, kChampsActe);
            });
        }
    }
    // An invoice added by hand never makes the sequence give its number again.
    for (const FactureSimulee& f : r.factures) {
        r.derniere_facture = std::max(r.derniere_facture, f.numeroFacture);
    }
    return r;
}

}  // namespace sv140::sim
