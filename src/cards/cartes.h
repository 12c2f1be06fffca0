// The Vitale card, the professional card and versions, and the complementary query.
#pragma once

#include <span>
#include <string>

#include "exchange/operation.h"
#include "tools/statut.h"

namespace sv140 {

struct Run;

/// The operations of this subsystem.
std::span<const Operation> Operations_Cartes();

/// f_LireCVitale: the card's beneficiaries into the host's [Sélection Verres].
Statut Stocker_Liste_Beneficiaires(Run& run);
/// f_MettreAJourIdEtc: the beneficiary matching the host's T_Etat_Civil client into
/// T_InfosCarteVitale, with its rights periods. Nothing is stored, and it is no
/// failure, when no beneficiary of the card matches the client.
Statut Stocker_Carte_Vitale(Run& run);
/// The usual name and first name stored for a card holder; both left unchanged when
/// no row matches.
Statut Lire_Nom_Porteur(Run& run, const std::string& nir, const std::string& cle,
                        const std::string& date_naissance, const std::string& rang,
                        std::string& nom, std::string& prenom);

/// f_LireCPS: T_InfosCPS and T_InfosSituation_CPS.
Statut Stocker_CPS(Run& run);
/// f_LireVersion: T_InfosVersion.
Statut Stocker_Version(Run& run);

/// f_LireInfosComplementaire: the request from ZEMO_Request.xml. When no request may be
/// sent (the host's document or the professional data could not be read), a failure
/// whose code 99 answer is already written.
Statut Requete_f_LireInfosComplementaire(Run& run);
/// After a successful complementary query: the AMC copies of the exchange.
Statut Conserver_Echange_AMC(Run& run);

}  // namespace sv140
