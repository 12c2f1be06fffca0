#include "sim/etat.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "sim/cartes_demo.h"
#include "sim/depot.h"
#include "sim/fonctions.h"
#include "sim/jours.h"
#include "sim/pieces.h"
#include "sim/reponse.h"

namespace sv140::sim {

bool Initialiser_Etat_Demo(const std::string& dossier_zrsim, std::string& erreur) {
    const Depot depot(dossier_zrsim);
    if (!depot.preparer(erreur) || !depot.ecrire_cps(cps_demo(), erreur)) {
        return false;
    }
    for (const auto& [id, contexte] : cartes_demo()) {
        if (!depot.ecrire_carte(id, contexte, erreur)) {
            return false;
        }
    }
    depot.effacer_attentes();
    return depot.ecrire_factures(Registre{}, erreur) && depot.ecrire_pieces({}, erreur) &&
           depot.ecrire_decalage_jours(0, erreur) && depot.inserer("", erreur);
}

bool Ajouter_Factures(const std::string& dossier_zrsim, const std::vector<FactureSimulee>& factures,
                      std::vector<long long>& numeros, std::string& erreur) {
    const Depot depot(dossier_zrsim);
    Registre registre = depot.factures();
    std::unordered_set<long long> pris;
    for (const FactureSimulee& f : registre.factures) {
        pris.insert(f.numeroFacture);
    }
    numeros.clear();
    for (const FactureSimulee& donnee : factures) {
        FactureSimulee& f = registre.factures.emplace_back(donnee);
        if (f.numeroFacture == 0) {
            f.numeroFacture = ++registre.derniere_facture;
        }
        registre.derniere_facture = std::max(registre.derniere_facture, f.numeroFacture);
        if (f.numeroFacture < 0 || !pris.insert(f.numeroFacture).second) {
            erreur = "Numéro de facture déjà pris ou invalide : " + std::to_string(f.numeroFacture);
            numeros.clear();
            return false;
        }
        numeros.push_back(f.numeroFacture);
    }
    return depot.preparer(erreur) && depot.ecrire_factures(registre, erreur);
}

std::vector<FactureSimulee> Lire_Factures(const std::string& dossier_zrsim) {
    std::vector<FactureSimulee> factures = Depot(dossier_zrsim).factures().factures;
    std::sort(factures.begin(), factures.end(),
              [](const auto& x, const auto& y) { return x.numeroFacture < y.numeroFacture; });
    return factures;
}

std::vector<PieceEtStatut> Lire_Pieces(const std::string& dossier_zrsim) {
    const Depot depot(dossier_zrsim);
    const Registre registre = depot.factures();
    const auto aujourdhui = jour_simule(depot);
    std::vector<PieceEtStatut> pieces;
    for (PieceSimulee& p : depot.pieces()) {
        const int statut = statut_piece(p, registre, aujourdhui);
        pieces.push_back({std::move(p), statut});
    }
    return pieces;
}

bool Forcer_Statut_Piece(const std::string& dossier_zrsim, const std::string& nomPJ,
                         std::optional<int> code, std::string& erreur) {
    const Depot depot(dossier_zrsim);
    std::vector<PieceSimulee> pieces = depot.pieces();
    bool trouvee = false;
    for (PieceSimulee& p : pieces) {
        if (p.nomPJ == nomPJ) {
            p.statutForce = code;
            trouvee = true;
        }
    }
    if (!trouvee) {
        erreur = "Pièce jointe inconnue du middleware simulé : " + nomPJ;
        return false;
    }
    return depot.ecrire_pieces(pieces, erreur);
}

bool Inserer_Carte(const std::string& dossier_zrsim, const std::string& id_carte,
                   std::string& erreur) {
    return Depot(dossier_zrsim).inserer(id_carte, erreur);
}

std::vector<std::string> Cartes_Disponibles(const std::string& dossier_zrsim) {
    return Depot(dossier_zrsim).cartes();
}

bool Injecter_Erreur(const std::string& dossier_zrsim, const std::string& fonction, int code,
                     const std::string& libelle, std::string& erreur) {
    if (fonction.empty()) {
        erreur = "Fonction à faire échouer non précisée";
        return false;
    }
    return Depot(dossier_zrsim).planter_panne(Panne{fonction, 0, code, libelle}, erreur);
}

bool Injecter_Retour(const std::string& dossier_zrsim, const std::string& fonction, int retour,
                     std::string& erreur) {
    if (fonction.empty() || retour == 0) {
        erreur = "Fonction ou valeur de retour non précisée";
        return false;
    }
    return Depot(dossier_zrsim).planter_panne(Panne{fonction, retour, 0, {}}, erreur);
}

bool Avancer_Jours(const std::string& dossier_zrsim, int jours, int& decalage,
                   std::string& erreur) {
    const Depot depot(dossier_zrsim);
    decalage = depot.decalage_jours() + jours;
    return depot.ecrire_decalage_jours(decalage, erreur);
}

int Executer(const std::string& dossier_zrsim, const char* requete, char* reponse, int* taille) {
    if (requete == nullptr || reponse == nullptr || taille == nullptr || *taille <= 0) {
        return kRetourArgumentInvalide;
    }
    const Depot depot(dossier_zrsim);
    Sortie sortie = Repondre(depot, requete);
    if (sortie.retour != 0) {
        return sortie.retour;
    }
    const auto place = static_cast<std::size_t>(*taille);
    std::string octets = std::move(sortie.octets);
    if (octets.size() <= place) {
        if (sortie.message_rendu) {
            depot.oublier_message(sortie.cle_attente);
        }
    } else {
        depot.conserver_message(sortie.cle_attente, octets);
        const Reponse trop_long = reponse_erreur(sortie.operation, kTailleInsuffisante,
                                                 libelle_taille(octets.size(), *taille));
        octets = ecrire_reponse(trop_long, enveloppe_de(sortie.operation));
        if (octets.size() > place) {
            return kRetourTamponTropPetit;
        }
    }
    std::memcpy(reponse, octets.data(), octets.size());
    if (octets.size() < place) {
        reponse[octets.size()] = '\0';
    }
    return 0;
}

}  // namespace sv140::sim
