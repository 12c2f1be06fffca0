// The floor a run of the bridge cannot go below: open the three databases of a shop
// over ODBC, as every run does, and write one file. Run from a program folder like the
// bridge: sv140-plancher OPERATION DATAFOLDER.
#include <iostream>

#include "data/connexion.h"
#include "platform/systeme.h"

int main(int argc, char** argv) {
    using namespace sv140;
    if (argc < 3) {
        std::cerr << "usage : sv140-plancher OPERATION DOSSIER_DONNEES\n";
        return 2;
    }
    const std::string programme = dossier_programme();
    const std::string donnees = argv[2];
    Connexion hote, temporaire, pont;
    bool ok = hote.ouvrir(joindre(donnees, "Donnees_32.accdb")) &&
              temporaire.ouvrir(joindre(dossier_parent(programme), "Temporaire.accdb")) &&
              pont.ouvrir(joindre(donnees, "SV140.accdb"));
    ok = ecrire_fichier(joindre(programme, "ZEMO_Response.xml"), "<ZRMESSAGE/>\r\n") && ok;
    return ok ? 0 : 1;
}
