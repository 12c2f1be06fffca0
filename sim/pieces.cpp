#include "sim/pieces.h"

#include <algorithm>
#include <cctype>

#include "sim/appel.h"
#include "sim/champs.h"
#include "sim/jours.h"

namespace sv140::sim {

namespace {

using champs::Champ;

const Champ<PieceSimulee> kChampsPiece[] = {
    {"nomPJ", &PieceSimulee::nomPJ},         {"numeroFacture", &PieceSimulee::numeroFacture},
    {"nature", &PieceSimulee::nature},       {"jourReception", &PieceSimulee::jourReception},
    {"taille", &PieceSimulee::taille},       {"doublon", &PieceSimulee::doublon},
    {"supprimee", &PieceSimulee::supprimee}, {"statutForce", &PieceSimulee::statutForce}};

bool lettres(const std::string& t, std::size_t n) {
    return t.size() == n && std::all_of(t.begin(), t.end(), [](char c) {
               return std::isalpha(static_cast<unsigned char>(c)) != 0;
           });
}

}  // namespace

std::string texte_pieces(const std::vector<PieceSimulee>& pieces) {
    std::string sortie =
        "# Attachments received by the simulated middleware, in the order received: one "
        "per line, tab-separated name=value fields.\n";
    for (const PieceSimulee& p : pieces) {
        champs::ecrire_ligne(sortie, "piece", p, kChampsPiece);
    }
    return sortie;
}

std::vector<PieceSimulee> lire_pieces(std::string_view texte) {
    std::vector<PieceSimulee> pieces;
    champs::pour_chaque_ligne(texte, [&](std::string_view genre, std::string_view ligne) {
        if (genre == "piece") {
            PieceSimulee& p = pieces.emplace_back();
            champs::pour_chaque_champ(ligne, [&](std::string_view nom, std::string_view valeur) {
                champs::lire_champ(nom, valeur, p, kChampsPiece);
            });
        }
    });
    return pieces;
}

PieceSimulee piece_nommee(const std::string& nomPJ) {
    PieceSimulee p;
    p.nomPJ = nomPJ;
    std::vector<std::string> parties;
    for (std::size_t debut = 0;;) {
        const auto fin = nomPJ.find('_', debut);
        parties.push_back(nomPJ.substr(debut, fin - debut));
        if (fin == std::string::npos) {
            break;
        }
        debut = fin + 1;
    }
    if (parties.size() == 5 && chiffres(parties[0], 14) && chiffres(parties[1], 9) &&
        lettres(parties[2], 4) && !parties[3].empty() && parties[4].size() == 13 &&
        chiffres(parties[4].substr(0, 9), 9) && parties[4].ends_with(".pdf")) {
        p.numeroFacture = *nombre(parties[1]);
        p.nature = parties[2];
    }
    return p;
}

int statut_piece(const PieceSimulee& piece, const Registre& registre,
                 std::chrono::sys_days aujourdhui) {
    if (piece.statutForce) {
        return *piece.statutForce;
    }
    if (piece.doublon) {
        return kPieceEnDouble;
    }
    if (piece.supprimee) {
        return kPieceSupprimee;
    }
    const FactureSimulee* f =
        piece.numeroFacture > 0 ? registre.trouver(piece.numeroFacture) : nullptr;
    if (f == nullptr) {
        return kFactureInexistante;
    }
    if (f->numeroLot.empty()) {
        return kAttenteDeLaFacture;
    }
    // The claim form stands for the card's signature: an invoice the card signed needs
    // none, and a form sent for it is left to the fund's staff.
    if (piece.nature == "FSNC" && f->typeCertification != kDegrade) {
        return kATraiterALaMain;
    }
    // The attachment travels with its invoice's claim: it waits for both, then reaches
    // the fund the next day and is accepted the day after.
    std::chrono::sys_days jour = lire_jour(f->jourEnvoi).value_or(aujourdhui);
    if (const auto recue = lire_jour(piece.jourReception)) {
        jour = std::max(jour, *recue);
    }
    const auto attente = aujourdhui - jour;
    if (attente < std::chrono::days{1}) {
        return kJointeALaFacture;
    }
    return attente == std::chrono::days{1} ? kTransmiseALaCaisse : kPieceAcceptee;
}

bool transmise(int statut) {
    return statut == kPieceAcceptee || statut == kTransmiseALaCaisse || statut == 11 ||
           statut >= 5000;
}

}  // namespace sv140::sim
