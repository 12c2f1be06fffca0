// The functions of the simulated middleware: one request text in, one answer out.
#pragma once

#include <string>
#include <string_view>

#include "sim/depot.h"

namespace sv140::sim {

/// Error codes the simulated middleware answers (each with a French label).
enum CodeErreur : int {
    kPieceJointeInconnue = 41,
    kPieceJointeDejaTransmise = 42,
    kRequeteIllisible = 101,
    kFonctionAbsente = 102,
    kFonctionInconnue = 103,
    kVersionMessageAbsente = 104,
    kDateLectureInvalide = 105,
    kBlocPSAbsent = 110,
    kIdNatInconnu = 111,
    kIdFacInconnu = 112,
    kSituationInconnue = 113,
    kCodePorteurErrone = 114,
    kCPSAbsente = 120,
    kCarteVitaleAbsente = 130,
    kCarteVitaleIllisible = 131,
    kAucunMessage = 140,
    kComplementaireIncomplet = 150,
    kDonneesFactureAbsentes = 160,
    kBeneficiaireAbsent = 161,
    kAucunActe = 162,
    kMontantInvalide = 163,
    kFactureInconnue = 164,
    kFactureDejaEnvoyee = 165,
    kPeriodeInvalide = 166,
    kEtatNonEnregistre = 169,
    kPieceJointeRefusee = 170,
    kTailleInsuffisante = 271,
};

/// What one call produces before it meets the caller's buffer.
struct Sortie {
    /// Non-zero: the call itself fails with this number (a planted failure).
    int retour = 0;
    /// The function named by the request ("" when the request has none).
    std::string operation;
    /// The whole answer document.
    std::string octets;
    /// The function whose answer is kept when this one does not fit the buffer.
    std::string cle_attente;
    /// The answer is a kept one being delivered again.
    bool message_rendu = false;
};

/// Answers one request (Windows-1252 text). Never fails: a request that cannot be used
/// gets an error answer. A planted failure for the function is consumed here.
Sortie Repondre(const Depot& depot, std::string_view requete);

/// The label of the answer that reports a buffer too small.
std::string libelle_taille(std::size_t attendue, long trouvee);

}  // namespace sv140::sim
