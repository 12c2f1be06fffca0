#include "exchange/requete.h"
#include "invoicing/factures.h"

namespace sv140 {

std::span<const Operation> Operations_Facturation() {
    static const Operation operations[] = {
        {"f_CreerFacture", Requete_f_CreerFacture, Suite::Envoyer, Stocker_Facture},
        {"f_SupprimerFacture", Requete_f_SupprimerFacture, Suite::Envoyer, Supprimer_Facture},
        // The host reads the invoice from ZEMO_Response.xml.
        {"f_LireFacture", Requete_f_LireFacture, Suite::Envoyer, Rien},
        {"f_EnvoyerToutesFactures", Requete_f_EnvoyerToutesFactures, Suite::Envoyer, Stocker_Lots},
        {"f_LireInfosRetourFacture", Requete_f_LireInfosRetourFacture, Suite::Envoyer,
         Stocker_Retours},
        {"f_ListerFactures", Requete_f_ListerFactures, Suite::Envoyer, Lire_Liste_Factures},
        // Records again a lot whose answer is already on disk.
        {"retour_f_EnvoyerToutesFacturestest", Rien, Suite::Verifier, Stocker_Lots_Test},
    };
    return operations;
}

}  // namespace sv140
