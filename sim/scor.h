// The attachment functions of the simulated middleware: the bridge sends the PDF of a
// prescription or of a claim form for an invoice, follows its status, lists the sent
// invoices still missing one, and deletes one the fund does not have yet. Every
// request carries the professional block `PS`; the book they keep is pieces.h's.
//
//   f_TransfertPJ        cheminPJ (folder), nomPJ, formatPJ, mode. The file must exist,
//                        start with "%PDF-" and hold at most 1 MiB. Accepted: code 0;
//                        refused: code 170 "Pièce jointe refusée" with one `erreur` per
//                        reason in `donnees`. Both carry `accesService` 1 beside
//                        `codeErreur`. A name already held is accepted as a duplicate.
//   f_LireInfosRetourPJ  listeFacture/numeroFacture (one or more). Answers
//                        listeFacture/facture (numFact, then PJ with code and nomPJ for
//                        each attachment of the invoice, in the order received), each
//                        invoice once, in the request's order; an invoice without
//                        attachment gets one PJ with an empty nomPJ, code 2 when the
//                        invoice book knows it, 1 otherwise.
//   f_ControlePJ         Answers listeFacture/numeroFacture (nine digits, increasing):
//                        the sent invoices missing a claim form (FSNC, degraded invoices)
//                        or a prescription (ORDN, invoices with an LPP code).
//   f_SupprimerPJ        nomPJ. Code 0 once deleted (with its duplicates), 41 for a name
//                        not held, 42 when the fund has it.
#pragma once

#include "sim/appel.h"

namespace sv140::sim {

Reponse f_TransfertPJ(const Appel& a);
Reponse f_LireInfosRetourPJ(const Appel& a);
Reponse f_ControlePJ(const Appel& a);
Reponse f_SupprimerPJ(const Appel& a);

}  // namespace sv140::sim
