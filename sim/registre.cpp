#include "sim/registre.h"

#include <algorithm>
#include <utility>

#include "sim/champs.h"

namespace sv140::sim {

namespace {

using champs::Champ;

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

}  // namespace

FactureSimulee* Registre::trouver(long long numero) {
    return const_cast<FactureSimulee*>(std::as_const(*this).trouver(numero));
}

const FactureSimulee* Registre::trouver(long long numero) const {
    for (const FactureSimulee& f : factures) {
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
        champs::ecrire_ligne(sortie, "facture", f, kChampsFacture);
        for (const ActeSimule& a : f.actes) {
            champs::ecrire_ligne(sortie, "acte", a, kChampsActe);
        }
    }
    return sortie;
}

Registre lire_registre(std::string_view texte) {
    Registre r;
    champs::pour_chaque_ligne(texte, [&](std::string_view genre, std::string_view ligne) {
        if (genre == "numerotation") {
            champs::pour_chaque_champ(ligne, [&](std::string_view nom, std::string_view valeur) {
                if (nom == "derniereFacture") {
                    champs::lire_nombre(valeur, r.derniere_facture);
                } else if (nom == "dernierLot") {
                    champs::lire_nombre(valeur, r.dernier_lot);
                }
            });
        } else if (genre == "facture") {
            FactureSimulee& f = r.factures.emplace_back();
            champs::pour_chaque_champ(ligne, [&](std::string_view nom, std::string_view valeur) {
                champs::lire_champ(nom, valeur, f, kChampsFacture);
            });
        } else if (genre == "acte" && !r.factures.empty()) {
            ActeSimule& a = r.factures.back().actes.emplace_back();
            champs::pour_chaque_champ(ligne, [&](std::string_view nom, std::string_view valeur) {
                champs::lire_champ(nom, valeur, a, kChampsActe);
            });
        }
    });
    // An invoice added by hand never makes the sequence give its number again.
    for (const FactureSimulee& f : r.factures) {
        r.derniere_facture = std::max(r.derniere_facture, f.numeroFacture);
    }
    return r;
}

}  // namespace sv140::sim
