// The Vitale card, the professional card and versions, and the complementary query.
#pragma once

#include <string>

namespace sv140 {

struct Run;

/// f_LireCVitale: the card's beneficiaries into the host's [Sélection Verres].
bool Stocker_Liste_Beneficiaires(Run& run);
/// f_MettreAJourIdEtc: the beneficiary matching the host's T_Etat_Civil client into
/// T_InfosCarteVitale, with its rights periods.
bool Stocker_Carte_Vitale(Run& run);
/// The usual name and first name stored for a card holder; both left unchanged when
/// no row matches.
void Lire_Nom_Porteur(Run& run, const std::string& nir, const std::string& cle,
                      const std::string& date_naissance, const std::string& rang, std::string& nom,
                      std::string& prenom);

/// f_LireCPS: T_InfosCPS and T_InfosSituation_CPS.
bool Stocker_CPS(Run& run);
/// f_LireVersion: T_InfosVersion.
bool Stocker_Version(Run& run);

/// f_LireInfosComplementaire: the request from ZEMO_Request.xml. False when no request
/// may be sent: the host's document or the professional data could not be read, and
/// the code 99 answer saying so is written instead.
bool Requete_f_LireInfosComplementaire(Run& run);
/// After a successful complementary query: the AMC copies of the exchange.
void Conserver_Echange_AMC(Run& run);

}  // namespace sv140
