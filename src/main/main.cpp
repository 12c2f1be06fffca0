// sv140: one operation of the host per run.
#include <chrono>
#include <exception>
#include <iostream>

#include "exchange/echange.h"
#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "main/dispatch.h"
#include "platform/systeme.h"
#include "tools/outils.h"

int main(int argc, char** argv) {
    using namespace sv140;
    const std::string dossier = dossier_programme();

    // The exchange files have fixed names: one run at a time in a program folder.
    const std::string fichier_verrou = joindre(dossier, "sv140.lock");
    auto verrou = prendre_verrou(fichier_verrou, std::chrono::seconds(30));
    if (!verrou) {
        std::cerr << "sv140 : le verrou " << fichier_verrou
                  << " n'a pu être pris (une autre opération est en cours, ou le dossier du "
                     "programme n'est pas accessible en écriture) ; cette opération n'a pas été "
                     "lancée.\n";
        return 3;
    }

    // A run marks the lock file while it works: the mark still there when the next run
    // takes the lock says this one was killed, and only then is the month's archive,
    // thousands of files in a busy shop, searched for the partial copies it left.
    constexpr char kEnCours = '1', kTermine = '0';
    const bool interrompue = verrou->marque() == kEnCours;
    verrou->marquer(kEnCours);
    struct Fin {
        Verrou& v;
        ~Fin() { v.marquer(kTermine); }
    } fin{*verrou};

    Vider_Log(dossier);
    Run run = nouveau_run(dossier);
    run.precedente_interrompue = interrompue;
    try {
        if (!Executer_Run(run, ligne_de_commande(argc, argv))) {
            // Nothing more can be done for the host: the run ends here.
            run.log("Fin de l'opération : " + run.interruption.value_or(""));
            std::cerr << "sv140 : " << run.interruption.value_or("") << "\n";
            return 1;
        }
    } catch (const std::exception& e) {
        // The host still gets an answer that says the operation failed; what the run
        // had not committed is rolled back with its connections.
        std::string message = std::string("Erreur inattendue : ") + e.what();
        run.log(message);
        std::cerr << "sv140 : " << message << "\n";
        Reponse_Erreur(run, "99", message, run.F_Appel);
        Copier_Fichier(run.fichier(fichiers::kReponse), run.fichier(fichiers::kReponseHote), true);
        return 1;
    }
    return 0;
}
