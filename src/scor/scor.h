// SCOR attachments: capture sessions, the attachment store, transfer, status, control
// and deletion.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "exchange/operation.h"
#include "tools/statut.h"

namespace sv140 {

/// The operations of this subsystem.
std::span<const Operation> Operations_Scor();

/// What a capture session holds for one kind of document.
struct PieceScor {
    std::string Dossier;  // the host's kind of dossier
    long long Id = 0;     // the host's dossier; 0: this kind is not wanted
    /// The invoice as the session holds it: the prescription's as the host wrote it,
    /// the others' as the text of the number read.
    std::string Facture;
    long long Compteur = 0;
    std::string mode;  // "M": the paper was collected instead of scanned
    std::string pdf;   // the PDF's file name, once its order is written
};

/// The values of a capture session.
struct SessionScor {
    std::string idFac;  // the professional's invoicing number
    PieceScor ordonnance, cerfa, autre;
    std::string natureAutre = "AUTP";
};

/// The f_Scor session run for the shop folder `chemin`: reads the host's order, scans,
/// has the PDFs made, lets the optician review them, stores them, and answers.
Statut ExecuterSessionScor(Run& run, const std::string& chemin);
/// Writes dctsScorPDF.xml for the kinds whose image is in the program folder, naming
/// each kind's PDF (in `session`) at the moment its group is written.
Statut GenererDctsScorPDF(Run& run, SessionScor& session);

/// Moves the program folder's file `nom` into the shop's month folder of the
/// attachment archive, which `dossier_mois` receives (with its trailing separator).
/// The archived path, or "" when the file was not in the program folder.
std::string ArchiverFichierScor(Run& run, const std::string& chemin, const std::string& nom,
                                std::string& dossier_mois);
/// Archives the PDF of each kind whose image is still in the program folder and
/// records it in T_InfosSCor, each kind its own unit of work. A failure names the
/// kinds that were not recorded.
Statut InsererPiecesSCor(Run& run, const std::string& chemin, const SessionScor& session);
/// Marks an attachment's row as deleted.
Statut MarquerPieceSupprimee(Run& run, long long id);
/// A stored archive folder re-rooted on the folder of the host database `base_hote`,
/// so that attachments stay reachable when the shop folder has moved. Either separator
/// is recognised. "" when either is unusable.
std::string RebaserCheminScor(std::string_view base_hote, std::string_view chemin);
/// The client behind an invoice number: "Nom Prénom" (a Null name as "?"), or
/// "Facture inconnue".
Resultat<std::string> NomClientFacture(Run& run, std::string_view facture);

/// f_TransfertPJ: sends every attachment marked for sending and not yet sent, in
/// invoice order, each exchange recorded in its row as soon as it is answered.
Statut TransfererPiecesEnAttente(Run& run);
/// f_TransfertPJ_unique: sends the documents the host's order lists.
Statut TransfererPiecesOrdre(Run& run);

/// The scheme's label of an attachment status; "" for a code it does not list.
std::string LibelleStatutPJ(long long code);
/// Whether a status is final (accepted, to be handled by hand, or refused): the
/// attachment's acknowledgement.
bool AccuseReceptionPJ(long long code);
/// The date literal (m/d/yyyy, without leading zeros) of a yyyymmdd start of period;
/// no start ("" or "00000000") takes every attachment. Nothing when it is no date.
std::optional<std::string> DebutStatuts(std::string_view aaaammjj);
/// Reads the middleware's status answer into the attachments' rows.
Statut LireStatutsPJ(Run& run);
/// f_LireInfosRetourPJ: the status of the attachments the host's order names.
Statut LireInfosRetourPJ(Run& run);
/// f_mettreajourStatut: the status of every invoice whose attachments are still
/// moving or were refused since the order's start date.
Statut MettreAJourStatuts(Run& run);
/// f_ControlePJ: fills SCOR_Erreurs with the attachments the invoices the middleware
/// lists still need.
Statut ControlerPJ(Run& run);
/// f_deldctsSCOR: withdraws the attachments the host's order names.
Statut SupprimerPiecesOrdre(Run& run);

}  // namespace sv140
