// The attachment book of the simulated middleware (`pieces.txt` in its state folder)
// and the status it answers for each attachment.
//
// One line per attachment received, in the order received, in the books' line format
// (champs.h; the line is wrapped here); a line starting with '#' is a comment:
//
//   piece <TAB> nomPJ=20261124101500_000000001_ORDN_991001231_000000001.pdf
//         <TAB> numeroFacture=1 <TAB> nature=ORDN <TAB> jourReception=20261124
//         <TAB> taille=20480 <TAB> doublon=N <TAB> supprimee=N <TAB> statutForce=
//
// `doublon` and `supprimee` are O or N; an empty `statutForce` leaves the status to the
// rules below.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "sim/registre.h"

namespace sv140::sim {

/// Statuses of an attachment (and of an invoice without one) as f_LireInfosRetourPJ
/// answers them. Only a forced status gives 11 or 5000 and above: both, like 0 and 10,
/// mean the fund has it.
enum StatutPiece : int {
    kPieceAcceptee = 0,
    kFactureInexistante = 1,
    kPasDePiece = 2,
    kAttenteDeLaFacture = 8,
    kJointeALaFacture = 9,
    kTransmiseALaCaisse = 10,
    kATraiterALaMain = 12,
    kPieceSupprimee = 13,
    kPieceEnDouble = 1070,
};

std::string texte_pieces(const std::vector<PieceSimulee>& pieces);
std::vector<PieceSimulee> lire_pieces(std::string_view texte);

/// A new entry for the name: the bridge names an attachment
/// YYYYMMDDHHMMSS_<invoice, 9 digits>_<nature, 4 letters>_<idFac>_<counter, 9 digits>.pdf,
/// from which the invoice and nature are read. Any other name holds no invoice.
PieceSimulee piece_nommee(const std::string& nomPJ);

/// The status of one attachment on the day `aujourdhui`, the first rule that applies:
/// its forced status; 1070 for a duplicate, 13 once deleted; 1 when the invoice book
/// does not know its invoice; 8 while the invoice waits to be sent; 12 for a claim form
/// of an invoice signed with the card (not degraded), to be handled by hand; then,
/// from the later of the day it came and the day its invoice was sent, 9 that day, 10
/// the next (passed to the fund), 0 from the day after (accepted).
int statut_piece(const PieceSimulee& piece, const Registre& registre,
                 std::chrono::sys_days aujourdhui);

/// Whether the fund has the attachment of that status: it can no longer be deleted.
bool transmise(int statut);

}  // namespace sv140::sim
