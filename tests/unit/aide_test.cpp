#include "aide_test.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "data/connexion.h"
#include "platform/ui.h"
#include "shop/schema.h"

namespace sv140::test {
namespace {

// The tests' paths are UTF-8, as the bridge's are: never the Windows ANSI code page
// that narrow paths mean to the C++ library there.
std::filesystem::path chemin_fs(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

}  // namespace

DossierTemporaire::DossierTemporaire() {
    std::random_device alea;
    auto base = std::filesystem::temp_directory_path();
    for (;;) {
        auto p = base / ("sv140-test-" + std::to_string(alea()));
        if (std::filesystem::create_directory(p)) {
            const std::u8string utf8 = p.u8string();
            chemin_.assign(utf8.begin(), utf8.end());
            return;
        }
    }
}

DossierTemporaire::~DossierTemporaire() {
    std::error_code ec;
    std::filesystem::remove_all(chemin_fs(chemin_), ec);
}

std::tm date(int annee, int mois, int jour, int h, int m, int s) {
    std::tm t{};
    t.tm_year = annee - 1900;
    t.tm_mon = mois - 1;
    t.tm_mday = jour;
    t.tm_hour = h;
    t.tm_min = m;
    t.tm_sec = s;
    return t;
}

std::string lire(const std::string& chemin) {
    std::ifstream f(chemin_fs(chemin), std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

void ecrire(const std::string& chemin, const std::string& octets) {
    std::ofstream(chemin_fs(chemin), std::ios::binary) << octets;
}

void Magasin::SetUp() {
    std::filesystem::create_directories(chemin_fs(programme));
    std::filesystem::create_directories(chemin_fs(donnees));
    std::string erreur;
    ASSERT_TRUE(shop::Creer_Bases(donnees, racine + "/Temporaire.accdb", erreur)) << erreur;
}

sv140::Run Magasin::nouveau() {
    sv140::Run run = nouveau_run(programme, creer_ui_console(nullptr));
    run.Chemin = donnees;
    run.DB_DONNEES = hote;
    run.DB_sv = pont;
    run.DB_temporaire = racine + "/Temporaire.accdb";
    return run;
}

void Magasin::executer(const std::string& base, const std::string& sql) {
    Connexion c;
    Statut s = c.ouvrir(base);
    if (s) {
        s = c.Execute(sql);
    }
    if (s) {
        s = c.valider();
    }
    ASSERT_TRUE(s) << s.raison() << "\n" << sql;
}

}  // namespace sv140::test
