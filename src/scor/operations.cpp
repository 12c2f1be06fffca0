// The SCOR operations do their own work in the request phase, calling the middleware
// themselves where they need it.
#include "exchange/echange.h"
#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "platform/systeme.h"
#include "platform/xml.h"
#include "scan/scan.h"
#include "scor/scor.h"

namespace sv140 {
namespace {

Statut Session_Scor(Run& run) {
    run.log("Lancement SCOR");
    return ExecuterSessionScor(run, run.Chemin);
}

/// The end of a session the host was told of: its last answer.
Statut Sortie_Scor(Run& run) {
    Reponse_Erreur(run, "0", "Sortie Scor", "f_Scor");
    return {};
}

/// A prescription-only capture: scanned and reviewed, neither turned into a PDF nor
/// stored.
Statut Scan_Ordonnance(Run& run) {
    XmlDocument doc;
    if (!doc.charger_fichier(run.fichier(fichiers::kOrdreScor))) {
        run.log("dctsScor.xml : " + doc.erreur());
        Reponse_Erreur(run, "99", "Impossible de lire dctsScor.xml", "f_Scor");
    }
    supprimer_fichiers(run.dossier_programme, "20*.pdf");
    const std::string image = run.fichier(fichiers::kImageOrdonnance);
    supprimer_fichier(image);
    std::string mode;
    Numeriser(run, kOrdo, mode);
    if (!fichier_existe(image)) {
        Reponse_Erreur(run, "99", "Aucun documents Scannés", "f_Scor");
        return {};
    }
    Document_Ordo2(run, mode);
    Reponse_Erreur(run, "0", "Documents Générés", "f_Ordo");
    return {};
}

}  // namespace

std::span<const Operation> Operations_Scor() {
    static const Operation operations[] = {
        {"f_Scor", Session_Scor, Suite::Verifier, Sortie_Scor},
        {"f_deldctsSCOR", SupprimerPiecesOrdre, Suite::Verifier, Rien},
        {"f_TransfertPJ", TransfererPiecesEnAttente, Suite::Verifier, Rien},
        {"f_TransfertPJ_unique", TransfererPiecesOrdre, Suite::Verifier, Rien},
        {"f_LireInfosRetourPJ", LireInfosRetourPJ, Suite::Verifier, Rien},
        {"f_mettreajourStatut", MettreAJourStatuts, Suite::Verifier, Rien},
        {"f_Ordo", Scan_Ordonnance, Suite::Verifier, Rien},
        {"f_ControlePJ", ControlerPJ, Suite::Verifier, Rien},
    };
    return operations;
}

}  // namespace sv140
