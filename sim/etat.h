// The simulated health-card middleware, as the shop tool and the tests drive it: its
// state folder (the cards in their readers, the invoices it knows, planted failures)
// and its entry point.
//
// The state folder is `zrsim/` beside the loaded library; every call of ZR_Executer
// reads it afresh, so a developer may change it between two runs of the bridge.
//
// The demo state written by Initialiser_Etat_Demo holds:
//   - a professional card (national identifier "991234567", password the same text)
//     with situation 1 ("OPTIQUE DU CENTRE", invoicing number "99100123" key "1") and
//     situation 2 ("LUNETTERIE DE L'HÔTEL DE VILLE - ANNEXE", "99100456" key "5");
//   - the Vitale cards, by id:
//       famille   an insured, a spouse and twins born the same day (ranks 1 and 2)
//       ald       an insured with two long-term-illness periods (DRT_CC, COD_ALD)
//       periodes  one beneficiary with eleven AMO rights periods (NB_DRT_AMO 11)
//       accents   three beneficiaries whose names and addresses hold accents,
//                 apostrophes, double quotes, ';', ']' and '#'
//       vide      a card without beneficiary
//       douze     twelve beneficiaries
//       mutuelle  one beneficiary with COD_SEB 13, a mutual number and no CPL_NU2,
//                 another with CPL_NU2 filled
//   - an empty reader, no invoice (numbering starts again at 1), no attachment, the
//     simulated day on the system clock's, nothing pending.
//
// Invoices. f_CreerFacture prices each act line from the simulator's own LPP tariffs
// (an act without LPP code, or with a code the table lacks, is based on its whole fee)
// at the rate of the beneficiary found on a card of the library (same insured NIR and
// birth date, same first name or rank): 60, or 100 with exoneration code 4 during a
// long-term illness period. A beneficiary found on no card is priced at 60 and deemed
// covered; one found but without AMO rights on the care date is priced at 60 too, and
// the insurer rejects the invoice later. The invoice is "Degrade" when no Vitale card is
// in the reader, "Sesam-Vitale" otherwise. f_EnvoyerToutesFactures puts every waiting
// invoice in a lot of its paying organisation (lot "000001"..., degraded lots
// "D00002"...); two simulated days after that, f_LireInfosRetourFacture reports it paid
// (or rejected, for want of rights) with the payments in euros.
//
// Attachments. f_TransfertPJ records each PDF it accepts (not the file itself) with the
// invoice and nature its name holds; f_LireInfosRetourPJ answers the status of each as
// the simulated days go by (rules in pieces.h): 8 while its invoice waits, 9 once the
// invoice is sent too, 10 a day later, 0 the day after. f_ControlePJ lists the sent
// invoices still missing one; f_SupprimerPJ deletes one until the fund has it (scor.h).
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace sv140::sim {

/// The certification of an invoice made without a Vitale card in the reader.
inline constexpr const char* kDegrade = "Degrade";

/// One act line of a simulated invoice. Amounts are in cents.
struct ActeSimule {
    std::string dateSoins;
    std::string codeActeNGAP;
    std::string codeLPP;  ///< answered as codeAffine/codeAffineDetaille
    std::string typePrestation;
    int quantite = 1;
    int tauxRemboursement = 60;
    long long montantHonoraires = 0, baseRemboursement = 0, montantAMO = 0, montantAMC = 0;
    std::string qualifDepense;
    std::string codeExo = "0";
};

/// An invoice the simulated middleware knows. Amounts are in cents; the patient's share
/// is always the fee less the two insurers' shares.
struct FactureSimulee {
    long long numeroFacture = 0;  ///< 0 when seeding: the next number of the sequence
    std::string dateFacture;      ///< as the host wrote it (yyyymmdd, dd/mm/yyyy, yyyy-mm-dd)
    std::string natureAssurance = "MAL";
    std::string codeRegime, codeCaisse, codeCentre;  ///< the paying organisation
    std::string numeroMutuelle, typeTP;
    std::string typeCertification = "Sesam-Vitale";  ///< or kDegrade
    std::string nir, nom, prenom, dateNaissance;     ///< the beneficiary
    std::string numeroPrescripteur, datePrescription;
    /// False: the beneficiary had no AMO rights on the care date; the insurer rejects it.
    bool droitsAMO = true;
    long long montantHonoraires = 0, montantAMO = 0, montantAMC = 0;
    std::vector<ActeSimule> actes;  ///< may be empty: the totals above are kept as given
    /// Set when the invoice is sent; empty while it waits. A lot number that starts with
    /// a letter is a lot of degraded invoices.
    std::string numeroLot;
    std::string jourEnvoi;  ///< simulated day of the sending, yyyymmdd
};

/// An attachment the simulated middleware received: a line of its attachment book.
struct PieceSimulee {
    std::string nomPJ;
    long long numeroFacture = 0;  ///< read from the name; 0 when the name holds none
    std::string nature;           ///< read from the name ("ORDN", "FSNC"...); "" when none
    std::string jourReception;    ///< simulated day it was received, yyyymmdd
    long long taille = 0;         ///< bytes
    /// Received again while an attachment of the same name was held: status 1070.
    bool doublon = false;
    bool supprimee = false;  ///< by f_SupprimerPJ
    /// Set by hand: answered instead of the status the rules give.
    std::optional<int> statutForce;
};

/// An attachment and the status f_LireInfosRetourPJ answers for it on the simulated day.
struct PieceEtStatut {
    PieceSimulee piece;
    int statut = 0;
};

/// Ids of the cards the demo state holds.
inline constexpr const char* kCartesDemo[] = {"famille", "ald",   "periodes", "accents",
                                              "vide",    "douze", "mutuelle"};

/// Return values of Executer (and ZR_Executer) when the call itself fails. A
/// function that fails answers an error document and returns 0 instead.
inline constexpr int kRetourArgumentInvalide = 1;  ///< null request, buffer or size
inline constexpr int kRetourTamponTropPetit = 2;   ///< even the size error does not fit
inline constexpr int kRetourErreurInterne = 3;     ///< unexpected failure inside

/// Writes the demo state into `dossier_zrsim` (created when missing; its parent must
/// exist): professional card, card library, empty reader, no invoice, no pending answer
/// or planted failure. Cards of other ids already there are kept. False with `erreur`
/// filled when a file cannot be written.
bool Initialiser_Etat_Demo(const std::string& dossier_zrsim, std::string& erreur);

/// Adds invoices to the state as they are given, without pricing them, for a shop or a
/// benchmark that needs many of them at once. An invoice numbered 0 takes the next
/// number of the sequence; a given number moves the sequence on past it. Leave
/// `numeroLot` empty for a waiting invoice. `numeros` receives the number of each
/// invoice, in order. False with `erreur` filled, and nothing added, when a number is
/// already in use (or given twice) or the state cannot be written.
bool Ajouter_Factures(const std::string& dossier_zrsim, const std::vector<FactureSimulee>& factures,
                      std::vector<long long>& numeros, std::string& erreur);

/// Every invoice of the state, by increasing number; empty when none.
std::vector<FactureSimulee> Lire_Factures(const std::string& dossier_zrsim);

/// Every attachment received, in the order received, with its status on the simulated
/// day; empty when none.
std::vector<PieceEtStatut> Lire_Pieces(const std::string& dossier_zrsim);

/// Makes f_LireInfosRetourPJ answer `code` for the attachment `nomPJ` (each entry of
/// that name, duplicates and deleted ones included), whatever its state, so that every
/// status the host may meet can be shown; nothing gives back the status the rules
/// give. False with `erreur` filled when the simulator received no attachment of that
/// name or the state cannot be written.
bool Forcer_Statut_Piece(const std::string& dossier_zrsim, const std::string& nomPJ,
                         std::optional<int> code, std::string& erreur);

/// Puts a card of the library in the reader; "" empties the reader. False with `erreur`
/// filled for an unknown id or when the reader file cannot be written.
bool Inserer_Carte(const std::string& dossier_zrsim, const std::string& id_carte,
                   std::string& erreur);

/// Ids of the cards of the library, sorted; empty when the folder is missing.
std::vector<std::string> Cartes_Disponibles(const std::string& dossier_zrsim);

/// Makes the next call of `fonction` answer this error code and label (once). A new
/// planted failure replaces the previous one. False with `erreur` filled when
/// `fonction` is empty or the file cannot be written.
bool Injecter_Erreur(const std::string& dossier_zrsim, const std::string& fonction, int code,
                     const std::string& libelle, std::string& erreur);

/// Makes the next call of `fonction` fail as a call: ZR_Executer returns `retour`
/// (non-zero) and writes nothing. False when `retour` is 0 or `fonction` empty.
bool Injecter_Retour(const std::string& dossier_zrsim, const std::string& fonction, int retour,
                     std::string& erreur);

/// Moves the simulated day `jours` days on (back when negative) from where it stands,
/// so that what an insurer answers days later can be seen now. The new offset from the
/// system clock is returned in `decalage`. False with `erreur` filled when the state
/// cannot be written.
bool Avancer_Jours(const std::string& dossier_zrsim, int jours, int& decalage, std::string& erreur);
/// The middleware's entry point over a given state folder. `requete`: Windows-1252
/// text, NUL-terminated; `reponse`: `*taille` bytes, filled with the answer in
/// ISO-8859-1 followed by a NUL when room is left. An answer longer than `*taille`
/// is kept for f_RecupMessage and replaced by the code 271 answer. Returns 0 when an
/// answer was written (a function's error included), otherwise one of the kRetour
/// values above or a planted return value. `*taille` is not changed.
int Executer(const std::string& dossier_zrsim, const char* requete, char* reponse, int* taille);

}  // namespace sv140::sim
