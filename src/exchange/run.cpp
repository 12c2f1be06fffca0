#include "exchange/run.h"

#include "tools/outils.h"

namespace sv140 {

std::string Run::fichier(std::string_view nom) const {
    return joindre(dossier_programme, nom);
}

void Run::log(std::string_view message) const {
    Ecrire_Log(dossier_programme, message);
}

Connexions& Run::bases() {
    Ouvrir_Connexions(*cnx, DB_DONNEES, DB_temporaire, DB_sv);
    return *cnx;
}

Scanner& Run::numeriseur() {
    if (!scanner) {
        scanner = creer_scanner();
    }
    return *scanner;
}

ConvertisseurImage& Run::convertisseur() {
    if (!images) {
        images = creer_convertisseur_image();
    }
    return *images;
}

Run nouveau_run(const std::string& dossier, std::unique_ptr<Ui> ui) {
    Run run;
    run.dossier_programme = dossier;
    Journal journal = [dossier](std::string_view m) { Ecrire_Log(dossier, m); };
    run.ui = ui ? std::move(ui) : creer_ui(journal);
    run.cnx = std::make_unique<Connexions>(journal);
    return run;
}

}  // namespace sv140
