// The invoicing operations. Those not performed yet answer "Fonction non disponible"
// without calling the middleware.
#include "exchange/echange.h"
#include "exchange/requete.h"
#include "invoicing/factures.h"

namespace sv140 {
std::span<const Operation> Operations_Facturation() {
    static const Operation operations[] = {
        {"f_CreerFacture", Fonction_Non_Disponible, Suite::Verifier, Fonction_Non_Disponible},
        {"f_SupprimerFacture", Fonction_Non_Disponible, Suite::Verifier, Fonction_Non_Disponible},
        {"f_LireFacture", Fonction_Non_Disponible, Suite::Verifier, Rien},
        {"f_EnvoyerToutesFactures", Fonction_Non_Disponible, Suite::Verifier,
         Fonction_Non_Disponible},
        {"f_LireInfosRetourFacture", Fonction_Non_Disponible, Suite::Verifier,
         Fonction_Non_Disponible},
        {"f_ListerFactures", Requete_f_ListerFactures, Suite::Envoyer, Lire_Liste_Factures},
        // Records again a lot whose answer is already on disk.
        {"retour_f_EnvoyerToutesFacturestest", Rien, Suite::Verifier, Fonction_Non_Disponible},
    };
    return operations;
}

}  // namespace sv140
