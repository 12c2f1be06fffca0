// The command line: the words the host passes (the input cut at each NUL) joined as
// the entry point joins them, then split into the operation, the data folder and the
// third word, and the invoice number a request takes from the host's number.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "exchange/run.h"
#include "invoicing/factures.h"
#include "main/dispatch.h"
#include "platform/systeme.h"
#include "platform/ui_console.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t taille) {
    using namespace sv140;
    // A program folder that does not exist: the run's log lines are made, and written
    // nowhere.
    static const std::string dossier =
        (std::filesystem::temp_directory_path() / "sv140-fuzz-absent" / "SV140").string();
    std::vector<std::string> mots(1, "sv140");
    mots.emplace_back();
    for (std::size_t i = 0; i < taille; ++i) {
        if (octets[i] == '\0') {
            mots.emplace_back();
        } else {
            mots.back() += static_cast<char>(octets[i]);
        }
    }
    std::vector<char*> argv;
    for (std::string& m : mots) {
        argv.push_back(m.data());
    }
    argv.push_back(nullptr);
    const std::string ligne = ligne_de_commande(static_cast<int>(mots.size()), argv.data());

    static std::istringstream entree;
    static std::ostream sortie(nullptr);
    Run run = nouveau_run(dossier, creer_ui_console(nullptr, entree, sortie));
    Decouper_Ligne_Commande(run, ligne);
    Decomposition(ligne);
    Trouver_Operation(run.F_Appel);
    Numero_Requete(run.troisieme_mot);
    return 0;
}
