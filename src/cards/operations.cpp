// The operations of the cards and of the professional's data.
#include "cards/cartes.h"
#include "exchange/requete.h"

namespace sv140 {

std::span<const Operation> Operations_Cartes() {
    static const Operation operations[] = {
        {"f_LireCVitale", Requete_f_LireCVitale, Suite::Envoyer, Stocker_Liste_Beneficiaires},
        {"f_LireCPS", Requete_f_LireCPS, Suite::Envoyer, Stocker_CPS},
        {"f_InitialisationPS", Requete_f_InitialisationPS, Suite::Envoyer, Rien},
        {"f_LireVersion", Requete_f_LireVersion, Suite::Envoyer, Stocker_Version},
        {"f_MaJVersion", Requete_f_MaJVersion, Suite::Envoyer, Rien},
        // The link reads the answer the card reading left: no middleware call.
        {"f_MettreAJourIdEtc", Stocker_Carte_Vitale, Suite::Verifier, Rien},
        {"f_LireInfosComplementaire", Requete_f_LireInfosComplementaire, Suite::Envoyer,
         Conserver_Echange_AMC},
        // Not in the response order: once the check passed, the optician is shown the
        // operation's name.
        {"f_MettreAJourCV", Requete_f_MettreAJourCV, Suite::Envoyer, nullptr},
    };
    return operations;
}

}  // namespace sv140
