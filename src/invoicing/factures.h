// Invoicing: electronic claims created from the host's claim document, read and deleted
// one by one, sent in lots to the paying organisations, and reconciled with what the
// insurers paid.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "exchange/operation.h"
#include "tools/statut.h"

namespace sv140 {

struct Run;
class XmlDocument;

/// The operations of this subsystem.
std::span<const Operation> Operations_Facturation();

// Creation (creation.cpp).

/// The f_CreerFacture request, built from the host's claim document ZEMO_Request.xml.
Statut Requete_f_CreerFacture(Run& run);
/// Stores the created invoice and its act lines (T_InfosFacture, T_InfosDetailFacture).
Statut Stocker_Facture(Run& run);

/// The complementary insurer's flat allowance, spent line after line.
struct Forfait {
    double total = 0;    // forfaitMutuelle, for the whole invoice
    double restant = 0;  // what the earlier lines have left
};
/// A line's complementary share ("0.00"), taken from the allowance left in `forfait`:
/// the gap between the line's total and its compulsory part when the host gives no
/// complementary total (`total_amc_nul`), else the line's complementary amount topped up
/// by the allowance, else that amount alone.
std::string Part_Complementaire(double total_ligne, bool total_amc_nul, double part_amo,
                                double montant_amc, Forfait& forfait);

// One invoice (une_facture.cpp).

Statut Requete_f_SupprimerFacture(Run& run);
Statut Requete_f_LireFacture(Run& run);
/// After the middleware deleted the invoice: its rows in the invoice, line, slip and
/// attachment tables.
Statut Supprimer_Facture(Run& run);
/// The invoice number the middleware's requests carry: the host's number without its
/// one-letter prefix, on nine digits ("X123" gives "000000123").
std::string Numero_Requete(std::string_view numero_hote);

// Lots (lots.cpp).

Statut Requete_f_EnvoyerToutesFactures(Run& run);
/// Records every invoice of the lots the middleware sent, each as its own unit.
Statut Stocker_Lots(Run& run);
/// Records again the lots of an answer already on disk (first message only).
Statut Stocker_Lots_Test(Run& run);
/// f_ListerFactures: checks the list of invoices the middleware knows. Nothing is
/// stored: the host reads the list from ZEMO_Response.xml.
Statut Lire_Liste_Factures(Run& run);

/// Whether the middleware reports an error in any result of its answer (logged): then
/// nothing of the answer is stored, and the host reads the error in it.
bool Erreur_Intergiciel(Run& run, const XmlDocument& doc);

/// One invoice of a lot, as the middleware reports it.
struct FactureLot {
    std::string numeroFacture, numeroLot, lotInterne;
    std::string codeRegime, codeCaisse, codeCentre;
    std::string libelle, adresse, codePostal, commune, cedex, telephone, fax;
};
/// Writes the invoice's lot, paying organisation and regime onto its slip row (and the
/// lot number onto the invoice). An invoice without a slip row is left alone.
Statut Enregistrer_Lot_Facture(Run& run, const FactureLot& f);
/// The label of a regime code ("01" gives "Régime Général"; unknown codes "Autres").
std::string_view Libelle_Regime(std::string_view code);

// Returns and payments (retours.cpp).

Statut Requete_f_LireInfosRetourFacture(Run& run);
/// Writes each returned invoice's state and payments onto the host's slips, each
/// invoice as its own unit, then stamps the generic tiers-payant slips' edition date.
Statut Stocker_Retours(Run& run);
Statut Marquer_Etat_Facture(Run& run, std::string_view numero, std::string_view etat,
                            double paiement_amo, double paiement_amc);
Statut Pointer_Paiements(Run& run, std::string_view numero, double paiement_amo,
                         double paiement_amc);
Statut Dater_Edition_TPGEN(Run& run);

}  // namespace sv140
