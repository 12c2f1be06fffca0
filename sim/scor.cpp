#include "sim/scor.h"

#include <algorithm>
#include <set>

#include "platform/systeme.h"
#include "sim/fonctions.h"
#include "sim/jours.h"
#include "sim/pieces.h"

namespace sv140::sim {

namespace {

/// The largest attachment the scheme takes, as this simulator sets it.
constexpr std::size_t kTailleMaxPJ = 1024 * 1024;

Erreur enregistrer(const Appel& a, const std::vector<PieceSimulee>& pieces) {
    std::string raison;
    if (!a.depot.ecrire_pieces(pieces, raison)) {
        return erreur(a, kEtatNonEnregistre,
                      "Enregistrement des pièces jointes impossible : " + raison);
    }
    return std::nullopt;
}

/// The host gives the folder with its separator at the end, but not always.
std::string dossier_pj(std::string dossier) {
    if (!dossier.empty() && dossier.back() != separateur() && dossier.back() != '/') {
        dossier += separateur();
    }
    return dossier;
}

/// Why the attachment is refused; nothing when it is fit to send.
std::vector<std::string> raisons_du_refus(const std::string& nomPJ, const std::string& chemin,
                                          std::string& octets) {
    if (nomPJ.empty()) {
        return {"Nom de la pièce jointe absent"};
    }
    if (!fichier_existe(chemin) || !lire_fichier(chemin, octets)) {
        return {"Fichier introuvable : " + chemin};
    }
    std::vector<std::string> raisons;
    if (!octets.starts_with("%PDF-")) {
        raisons.push_back("Le fichier n'est pas un PDF");
    }
    if (octets.size() > kTailleMaxPJ) {
        raisons.push_back("Fichier trop volumineux : " + std::to_string(octets.size()) +
                          " octets pour " + std::to_string(kTailleMaxPJ) + " autorisés");
    }
    return raisons;
}

}  // namespace

Reponse f_TransfertPJ(const Appel& a) {
    if (Erreur e = verifier_PS(a, {})) {
        return *e;
    }
    const std::string nomPJ = a.requete.texte_de("nomPJ");
    const std::string chemin = dossier_pj(a.requete.texte_de("cheminPJ")) + nomPJ;
    std::string octets;
    const std::vector<std::string> raisons = raisons_du_refus(nomPJ, chemin, octets);
    Reponse r = reponse_succes(a.operation);
    if (!raisons.empty()) {
        r = erreur(a, kPieceJointeRefusee, "Pièce jointe refusée");
        r.donnees_en_erreur = true;
        for (const std::string& raison : raisons) {
            r.donnees.ajouter("erreur", raison);
        }
    } else {
        std::vector<PieceSimulee> pieces = a.depot.pieces();
        PieceSimulee p = piece_nommee(nomPJ);
        p.jourReception = texte_jour(jour_simule(a.depot));
        p.taille = static_cast<long long>(octets.size());
        p.doublon = std::any_of(pieces.begin(), pieces.end(), [&](const PieceSimulee& q) {
            return q.nomPJ == nomPJ && !q.supprimee;
        });
        pieces.push_back(std::move(p));
        if (Erreur e = enregistrer(a, pieces)) {
            r = *e;
        }
    }
    // The attachment service was reached, whatever it made of the file.
    r.complements.emplace_back("accesService", "1");
    return r;
}

Reponse f_LireInfosRetourPJ(const Appel& a) {
    if (Erreur e = verifier_PS(a, {})) {
        return *e;
    }
    const Registre registre = a.depot.factures();
    const std::vector<PieceSimulee> pieces = a.depot.pieces();
    const auto aujourdhui = jour_simule(a.depot);
    Reponse r = reponse_succes(a.operation);
    Element& liste = r.donnees.ajouter("listeFacture");
    std::set<std::string> vues;
    for (const XmlNoeud& demande : a.requete.selectionner("listeFacture/numeroFacture")) {
        const std::string numero = demande.texte();
        // Nine digits from the bridge, compared as numbers.
        if (!vues.insert(sans_zeros(numero)).second) {
            continue;
        }
        const long long n = nombre(numero).value_or(0);
        Element& facture = liste.ajouter("facture");
        facture.ajouter("numFact", numero);
        for (const PieceSimulee& p : pieces) {
            if (n > 0 && p.numeroFacture == n) {
                Element& pj = facture.ajouter("PJ");
                pj.ajouter("code", std::to_string(statut_piece(p, registre, aujourdhui)));
                pj.ajouter("nomPJ", p.nomPJ);
            }
        }
        if (facture.tous("PJ").empty()) {
            Element& pj = facture.ajouter("PJ");
            const bool connue = n > 0 && registre.trouver(n) != nullptr;
            pj.ajouter("code", std::to_string(connue ? kPasDePiece : kFactureInexistante));
            pj.ajouter("nomPJ");
        }
    }
    return r;
}

Reponse f_ControlePJ(const Appel& a) {
    if (Erreur e = verifier_PS(a, {})) {
        return *e;
    }
    const std::vector<PieceSimulee> pieces = a.depot.pieces();
    std::set<long long> manquantes;
    for (const FactureSimulee& f : a.depot.factures().factures) {
        const auto a_la_piece = [&](const char* nature) {
            return std::any_of(pieces.begin(), pieces.end(), [&](const PieceSimulee& p) {
                return p.numeroFacture == f.numeroFacture && p.nature == nature && !p.supprimee &&
                       !p.doublon;
            });
        };
        // A degraded invoice has no card's signature: the claim form stands for it. An
        // optical device (LPP code) is paid on its prescription.
        const bool lpp = std::any_of(f.actes.begin(), f.actes.end(),
                                     [](const ActeSimule& l) { return !l.codeLPP.empty(); });
        if (!f.numeroLot.empty() && ((f.typeCertification == kDegrade && !a_la_piece("FSNC")) ||
                                     (lpp && !a_la_piece("ORDN")))) {
            manquantes.insert(f.numeroFacture);
        }
    }
    Reponse r = reponse_succes(a.operation);
    Element& liste = r.donnees.ajouter("listeFacture");
    for (long long n : manquantes) {
        liste.ajouter("numeroFacture", avec_zeros(n, 9));
    }
    return r;
}

Reponse f_SupprimerPJ(const Appel& a) {
    if (Erreur e = verifier_PS(a, {})) {
        return *e;
    }
    const std::string nomPJ = a.requete.texte_de("nomPJ");
    std::vector<PieceSimulee> pieces = a.depot.pieces();
    const auto tenue = std::find_if(pieces.begin(), pieces.end(), [&](const PieceSimulee& p) {
        return p.nomPJ == nomPJ && !p.supprimee;
    });
    if (tenue == pieces.end()) {
        return erreur(a, kPieceJointeInconnue, "Pièce jointe inconnue");
    }
    if (transmise(statut_piece(*tenue, a.depot.factures(), jour_simule(a.depot)))) {
        return erreur(a, kPieceJointeDejaTransmise, "Pièce jointe déjà transmise");
    }
    for (PieceSimulee& p : pieces) {
        if (p.nomPJ == nomPJ) {
            p.supprimee = true;
        }
    }
    if (Erreur e = enregistrer(a, pieces)) {
        return *e;
    }
    return reponse_succes(a.operation);
}

}  // namespace sv140::sim
