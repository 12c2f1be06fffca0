// The SCOR operations do their own work in the request phase, calling the middleware
// themselves where they need it. Those not performed yet answer "Fonction non
// disponible" without calling it.
#include "exchange/echange.h"
#include "exchange/run.h"
#include "scor/scor.h"

namespace sv140 {
namespace {

Statut Session_Scor(Run& run) {
    run.log("Lancement SCOR");
    return Fonction_Non_Disponible(run);
}

}  // namespace

std::span<const Operation> Operations_Scor() {
    static const Operation operations[] = {
        {"f_Scor", Session_Scor, Suite::Verifier, Fonction_Non_Disponible},
        {"f_deldctsSCOR", Fonction_Non_Disponible, Suite::Verifier, Rien},
        {"f_TransfertPJ", Fonction_Non_Disponible, Suite::Verifier, Rien},
        {"f_TransfertPJ_unique", Fonction_Non_Disponible, Suite::Verifier, Rien},
        {"f_LireInfosRetourPJ", Fonction_Non_Disponible, Suite::Verifier, Rien},
        {"f_mettreajourStatut", Fonction_Non_Disponible, Suite::Verifier, Rien},
        {"f_Ordo", Fonction_Non_Disponible, Suite::Verifier, Rien},
        {"f_ControlePJ", Fonction_Non_Disponible, Suite::Verifier, Rien},
    };
    return operations;
}

}  // namespace sv140
