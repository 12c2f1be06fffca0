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
//   - an empty reader, no invoice, nothing pending.
#pragma once

#include <string>
#include <vector>

namespace sv140::sim {

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
