// sv140: one operation of the host per run.
#include <chrono>
#include <exception>
#include <iostream>

#include "exchange/echange.h"
#include "main/dispatch.h"
#include "main/run.h"
#include "platform/systeme.h"
#include "tools/outils.h"

int main(int argc, char** argv) {
    using namespace sv140;
    const std::string dossier = dossier_programme();

    // The exchange files have fixed names: one run at a time in a program folder.
    auto verrou = prendre_verrou(joindre(dossier, "sv140.lock"), std::chrono::seconds(30));
    if (!verrou) {
        std::cerr << "sv140 : une autre opération est en cours dans " << dossier
                  << " ; cette opération n'a pas été lancée.\n";
        return 3;
    }

    Vider_Log(dossier);
    Run run = nouveau_run(dossier);
    try {
        Executer_Run(run, ligne_de_commande(argc, argv));
    } catch (const FinBrutale& fin) {
        // Nothing more can be done for the host: the run ends here, its writes dropped.
        run.log("Fin de l'opération : " + fin.raison);
        std::cerr << "sv140 : " << fin.raison << "\n";
        return 1;
    } catch (const std::exception& e) {
        run.log(std::string("Erreur inattendue : ") + e.what());
        std::cerr << "sv140 : erreur inattendue : " << e.what() << "\n";
        return 1;
    }
    return 0;
}
