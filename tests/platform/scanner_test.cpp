// The SANE scanner against SANE's own test device, set up in a folder of the test's
// (SANE_CONFIG_DIR), never the machine's. Each page is compared, pixel for pixel, by
// ImageMagick with the page SANE's own scanimage gets with the same settings.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/scanner.h"
#include "platform/systeme.h"
#include "sortie_commande.h"

namespace sv140 {
namespace {

namespace fs = std::filesystem;

using test::sortie_de;

class ScannerSaneTest : public ::testing::Test {
  protected:
    void SetUp() override {
        dossier_ = fs::temp_directory_path() /
                   ("sv140-sane-" + std::to_string(::getpid()) + "-" +
                    ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dossier_);
        fs::create_directories(dossier_);
        configurer("test", "");
        ::setenv("SANE_CONFIG_DIR", dossier_.c_str(), 1);
        ::unsetenv("SANE_DEFAULT_DEVICE");
        bmp_ = (dossier_ / "monfichier.bmp").string();
    }
    void TearDown() override { fs::remove_all(dossier_); }

    /// The backends SANE loads, and lines added to the test device's settings (a
    /// later line wins).
    void configurer(const std::string& backends, const std::string& reglages) {
        std::ofstream(dossier_ / "dll.conf") << backends << "\n";
        std::ofstream(dossier_ / "test.conf") << "number_of_devices 2\n"
                                              << "test-picture \"Color pattern\"\n"
                                              << reglages;
    }

    fs::path dossier_;
    std::string bmp_;
};

struct CasPage {
    const char* nom;
    ReglagesScan reglages;
    const char* options_scanimage;
    const char* reglages_test;
    const char* taille;
};

TEST_F(ScannerSaneTest, ThePageIsTheOneScanimageGets) {
    const CasPage cas[] = {
        {"gris", {200, 1, 0, 0}, "--mode Gray --resolution 200", "", "629 787 8"},
        {"couleur", {100, 2, 0, 0}, "--mode Color --resolution 100", "", "314 393 8"},
        {"trait", {100, 0, 0, 0}, "--mode Gray --depth 1 --resolution 100", "", "314 393 8"},
        // A hand-held scanner gives no length before the end of the page.
        {"longueur inconnue",
         {50, 1, 0, 0},
         "--mode Gray --resolution 50",
         "hand-scanner true\n",
         "216 334 8"},
    };
    for (const CasPage& c : cas) {
        SCOPED_TRACE(c.nom);
        configurer("test", c.reglages_test);
        auto scanner = creer_scanner();
        const ResultatScan r = scanner->numeriser(c.reglages, bmp_);
        ASSERT_EQ(r.etat, EtatScan::Reussi) << r.raison;
        EXPECT_EQ(sortie_de("identify -format '%w %h %z' " + bmp_), c.taille);
        const std::string reference = (dossier_ / "reference.pnm").string();
        ASSERT_EQ(std::system(("scanimage -d test:0 " + std::string(c.options_scanimage) + " > " +
                               reference + " 2>/dev/null")
                                  .c_str()),
                  0);
        EXPECT_EQ(sortie_de("compare -metric AE " + reference + " " + bmp_ + " null: 2>&1"), "0");
        EXPECT_FALSE(fichier_existe(bmp_ + ".partiel"));
    }
}

struct CasEchec {
    const char* nom;
    const char* backends;
    const char* reglages_test;
    const char* appareil;
    int type_pixel;
    EtatScan attendu;
    const char* dans_raison;
};

TEST_F(ScannerSaneTest, AFailureLeavesTheEarlierPageAlone) {
    const CasEchec cas[] = {
        {"aucun scanner", "", "", "", 1, EtatScan::SourceIndisponible, "aucun scanner"},
        {"scanner inconnu", "test", "", "test:9", 1, EtatScan::SourceIndisponible, "test:9"},
        {"erreur de lecture", "test", "read-status-code \"SANE_STATUS_IO_ERROR\"\n", "", 1,
         EtatScan::Echec, "lecture interrompue"},
        {"page vide", "test", "read-status-code \"SANE_STATUS_EOF\"\n", "", 1, EtatScan::Echec,
         "page incomplète"},
        {"type de pixel inconnu", "test", "", "", 3, EtatScan::Echec, "type de pixel"},
    };
    for (const CasEchec& c : cas) {
        SCOPED_TRACE(c.nom);
        configurer(c.backends, c.reglages_test);
        ::setenv("SANE_DEFAULT_DEVICE", c.appareil, 1);
        if (!*c.appareil) {
            ::unsetenv("SANE_DEFAULT_DEVICE");
        }
        ASSERT_TRUE(ecrire_fichier(bmp_, "page précédente"));
        const ResultatScan r = creer_scanner()->numeriser({100, c.type_pixel, 0, 0}, bmp_);
        EXPECT_EQ(r.etat, c.attendu);
        EXPECT_NE(r.raison.find(c.dans_raison), std::string::npos) << r.raison;
        std::string contenu;
        EXPECT_TRUE(lire_fichier(bmp_, contenu));
        EXPECT_EQ(contenu, "page précédente");
        EXPECT_FALSE(fichier_existe(bmp_ + ".partiel"));
    }
}

class UiChoix : public Ui {
  public:
    explicit UiChoix(std::optional<std::size_t> choix) : choix_(choix) {}
    void MsgBox(std::string_view, std::string_view, Icone) override {}
    Reponse Question(std::string_view, std::string_view, Icone) override {
        return Reponse::Annuler;
    }
    void Montrer(const Formulaire&, const std::function<void(int)>&) override {}
    std::optional<std::size_t> Choisir(std::string_view titre,
                                       const std::vector<EntreeChoix>& entrees) override {
        titre_ = titre;
        entrees_ = entrees;
        return choix_;
    }
    void Ouvrir(const std::string&) override {}

    std::optional<std::size_t> choix_;
    std::string titre_;
    std::vector<EntreeChoix> entrees_;
};

TEST_F(ScannerSaneTest, TheChosenSourceServesTheNextScans) {
    // The default names no device: only the chosen one can scan.
    ::setenv("SANE_DEFAULT_DEVICE", "test:9", 1);
    auto scanner = creer_scanner();
    UiChoix ferme(std::nullopt);
    EXPECT_FALSE(scanner->choisir_source(ferme));
    EXPECT_EQ(ferme.titre_, kTitreChoixSource);
    ASSERT_EQ(ferme.entrees_.size(), 2u);
    EXPECT_EQ(ferme.entrees_[1].code, "test:1");
    EXPECT_EQ(scanner->numeriser({50, 1, 0, 0}, bmp_).etat, EtatScan::SourceIndisponible);

    UiChoix second(1);
    ASSERT_TRUE(scanner->choisir_source(second));
    EXPECT_EQ(scanner->numeriser({50, 1, 0, 0}, bmp_).etat, EtatScan::Reussi);

    configurer("", "");
    UiChoix rien(0);
    EXPECT_FALSE(creer_scanner()->choisir_source(rien));
    EXPECT_TRUE(rien.entrees_.empty());
}

}  // namespace
}  // namespace sv140
