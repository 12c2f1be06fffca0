// The TWAIN scanner against the test tree's data source (tests/win32/source_twain,
// installed in the Wine prefix as C:\windows\twain_32\sane.ds), then the whole capture:
// the scanned page converted to the attachment's JPEG. Windows build only.
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

#include "aide_test.h"
#include "platform/image.h"
#include "platform/scanner.h"
#include "platform/systeme.h"
#include "platform/ui_console.h"
#include "platform/windows_win32.h"

namespace sv140 {
namespace {

class ScannerTwain : public ::testing::Test {
  protected:
    void SetUp() override {
        ::SetEnvironmentVariableW(L"SV140_UI", L"console");  // the sources listed to choose from
        journal = d / "journal.txt";
        ::SetEnvironmentVariableW(L"SV140_TWAIN_JOURNAL", large(journal).c_str());
        essai("");
    }
    void TearDown() override {
        ::SetEnvironmentVariableW(L"SV140_TWAIN_JOURNAL", nullptr);
        ::SetEnvironmentVariableW(L"SV140_TWAIN_TEST", nullptr);
    }
    static void essai(const char* mode) {
        ::SetEnvironmentVariableW(L"SV140_TWAIN_TEST", *mode ? large(mode).c_str() : nullptr);
    }

    test::DossierTemporaire d;
    std::string journal;
};

std::uint32_t champ(const std::string& bmp, std::size_t position, int octets) {
    std::uint32_t v = 0;
    for (int i = octets - 1; i >= 0; --i) {
        v = v << 8 | static_cast<unsigned char>(bmp.at(position + i));
    }
    return v;
}

TEST_F(ScannerTwain, ScansWithTheSettingsInOrderOrSaysWhy) {
    const struct {
        ReglagesScan reglages;
        const char* essai;
        EtatScan etat;
        int largeur = 0, hauteur = 0, bits = 0;
    } cas[] = {
        {{100, 1, 200, 0}, "", EtatScan::Reussi, 827, 1169, 8},
        {{150, 2, -20, 30}, "", EtatScan::Reussi, 1241, 1754, 24},
        // Lineart comes as one bit per pixel and is written with eight.
        {{100, 0, 0, 0}, "", EtatScan::Reussi, 827, 1169, 8},
        {{100, 1, 0, 0}, "indisponible", EtatScan::SourceIndisponible},
        {{100, 1, 0, 0}, "echec", EtatScan::Echec},
        {{100, 7, 0, 0}, "", EtatScan::Echec},
    };
    for (const auto& c : cas) {
        const ReglagesScan& r = c.reglages;
        SCOPED_TRACE(testing::Message()
                     << r.resolution << " dpi, type " << r.type_pixel << " " << c.essai);
        essai(c.essai);
        supprimer_fichier(journal);
        const std::string bmp = d / "monfichier.bmp";
        supprimer_fichier(bmp);
        const ResultatScan resultat = creer_scanner()->numeriser(r, bmp);
        EXPECT_EQ(resultat.etat, c.etat) << resultat.raison;
        if (c.etat != EtatScan::Reussi) {
            EXPECT_FALSE(resultat.raison.empty());
            EXPECT_FALSE(fichier_existe(bmp));
            EXPECT_FALSE(fichier_existe(bmp + ".tmp"));
            continue;
        }
        const std::string page = test::lire(bmp);
        ASSERT_GT(page.size(), 54u);
        EXPECT_EQ(page.substr(0, 2), "BM");
        EXPECT_EQ(champ(page, 2, 4), page.size());
        EXPECT_EQ(champ(page, 18, 4), static_cast<std::uint32_t>(c.largeur));
        EXPECT_EQ(champ(page, 22, 4), static_cast<std::uint32_t>(c.hauteur));
        EXPECT_EQ(champ(page, 28, 2), static_cast<std::uint32_t>(c.bits));
        const std::string dpi = std::to_string(r.resolution);
        EXPECT_EQ(test::lire(journal),
                  "ICAP_UNITS=0\nICAP_XRESOLUTION=" + dpi + "\nICAP_YRESOLUTION=" + dpi +
                      "\nICAP_BRIGHTNESS=" + std::to_string(r.luminosite) +
                      "\nICAP_CONTRAST=" + std::to_string(r.contraste) +
                      "\nICAP_PIXELTYPE=" + std::to_string(r.type_pixel) + "\n");
    }
}

TEST_F(ScannerTwain, TheConsoleChoosesTheSourceByNumber) {
    std::istringstream entree("1\n");
    std::ostringstream sortie;
    auto ui = creer_ui_console(nullptr, entree, sortie);
    auto scanner = creer_scanner();
    ASSERT_TRUE(scanner->choisir_source(*ui));
    EXPECT_NE(sortie.str().find("1) SV140 Source de test"), std::string::npos) << sortie.str();
    EXPECT_EQ(scanner->numeriser({100, 1, 0, 0}, d / "page.bmp").etat, EtatScan::Reussi);

    std::istringstream aucune("\n");
    auto ui_fermee = creer_ui_console(nullptr, aucune, sortie);
    EXPECT_FALSE(creer_scanner()->choisir_source(*ui_fermee));
}

// A lineart page, widened to eight bits by the scanner, is a BMP the converter reads
// (the captures' sizes against the limit are the black-box tests').
TEST_F(ScannerTwain, ALineartPageConvertsToJpeg) {
    ASSERT_EQ(creer_scanner()->numeriser({100, 0, 0, 0}, d / "monfichier.bmp").etat,
              EtatScan::Reussi);
    std::string raison;
    EXPECT_TRUE(creer_convertisseur_image()->bmp_vers_jpeg(d / "monfichier.bmp",
                                                           d / "Ordo_SCOR.jpg", 60, raison))
        << raison;
}

}  // namespace
}  // namespace sv140
