#include "exchange/document.h"
#include "exchange/run.h"
#include "invoicing/factures.h"

namespace sv140 {

Statut Lire_Liste_Factures(Run& run) {
    // The list shares its error answer with the lot sending.
    auto doc = Charger_Reponse(run, "f_EnvoyerToutesFactures");
    if (!doc) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    auto numeros = doc->selectionner("/ZRMESSAGE/resultat/donnees/listeFacture/numeroFacture");
    run.log("Factures listées : " + std::to_string(numeros.size()));
    return {};
}

}  // namespace sv140
