// A shop installation must look like the optician's machine, and must never replace
// one that is already there.
#include "shop/installation.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "platform/intergiciel.h"
#include "shop/demo.h"
#include "shop/schema.h"

namespace sv140::shop {
namespace {

namespace fs = std::filesystem;

std::string contenu(const fs::path& chemin) {
    std::ifstream fichier(chemin, std::ios::binary);
    std::ostringstream texte;
    texte << fichier.rdbuf();
    return texte.str();
}

class InstallationTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::random_device alea;
        base_ = fs::temp_directory_path() / ("sv140-shop-init-" + std::to_string(alea()));
        source_ = base_ / "build";
        fs::create_directories(source_);
        // Stand-ins for the built bridge and middleware: init only copies them.
        std::ofstream(source_ / kNomPont, std::ios::binary) << "bridge";
        std::ofstream(source_ / kNomIntergiciel, std::ios::binary) << "middleware";
    }
    void TearDown() override { fs::remove_all(base_); }

    Issue installer(const fs::path& dossier, std::string& erreur) const {
        return Installer(dossier.string(), source_.string(), erreur);
    }

    fs::path base_;
    fs::path source_;
};

TEST_F(InstallationTest, LaysOutTheShopLikeTheOpticiansMachine) {
    const fs::path dossier = base_ / "magasin";
    std::string erreur;
    ASSERT_EQ(installer(dossier, erreur), Issue::Faite) << erreur;

    const fs::path racine = dossier / "Belvane_Classic";
    const fs::path programme = racine / "SV140";
    EXPECT_EQ(contenu(programme / kNomPont), "bridge");
    EXPECT_EQ(contenu(programme / kNomIntergiciel), "middleware");
    const auto droits = fs::status(programme / kNomPont).permissions();
    EXPECT_NE(droits & fs::perms::owner_exec, fs::perms::none);
    EXPECT_TRUE(fs::is_directory(programme / "zrsim"));
    EXPECT_TRUE(fs::is_regular_file(racine / "_Magasin" / kBasePont));
    EXPECT_TRUE(fs::is_regular_file(racine / "_Magasin" / kBaseHote));
    // The bridge looks for the temporary database in the parent of its own folder.
    EXPECT_TRUE(fs::is_regular_file(racine / kBaseTemporaire));

    const Installation inst = Disposition(dossier.string());
    EXPECT_EQ(fs::path(inst.pont()), programme / kNomPont);
    EXPECT_EQ(fs::path(inst.temporaire), racine / kBaseTemporaire);
}

TEST_F(InstallationTest, RefusesToReplaceAnExistingInstallation) {
    const fs::path dossier = base_ / "magasin";
    std::string erreur;
    ASSERT_EQ(installer(dossier, erreur), Issue::Faite) << erreur;
    const fs::path pont = dossier / "Belvane_Classic" / "SV140" / kNomPont;
    std::ofstream(pont, std::ios::binary) << "the optician's own copy";

    EXPECT_EQ(installer(dossier, erreur), Issue::Existe);
    EXPECT_NE(erreur.find("Belvane_Classic"), std::string::npos) << erreur;
    EXPECT_EQ(contenu(pont), "the optician's own copy");
}

TEST_F(InstallationTest, WithoutTheBuiltProgramsNothingIsCreated) {
    fs::remove(source_ / kNomIntergiciel);
    const fs::path dossier = base_ / "magasin";
    std::string erreur;
    EXPECT_EQ(installer(dossier, erreur), Issue::Echec);
    EXPECT_NE(erreur.find(kNomIntergiciel), std::string::npos) << erreur;
    EXPECT_FALSE(fs::exists(dossier / "Belvane_Classic"));
}

TEST(DateNaissanceHote, StoresTheCardDateAsTheHostDoes) {
    struct Cas {
        const char* carte;
        bool lisible;
        const char* litteral;
        const char* divers;
    };
    const Cas cas[] = {
        {"19800315", true, "#03/15/1980#", ""},
        {"20000229", true, "#02/29/2000#", ""},
        // Dates no calendar has keep the card's day and month in Divers.
        {"19501331", true, "#01/01/1950#", "!3113"},
        {"19000229", true, "#01/01/1900#", "!2902"},
        {"19800400", true, "#01/01/1980#", "!0004"},
        {"1980031", false, "", ""},
        {"1980-03-15", false, "", ""},
        {"", false, "", ""},
    };
    for (const Cas& c : cas) {
        std::string litteral;
        std::string divers;
        EXPECT_EQ(Date_Naissance_Hote(c.carte, litteral, divers), c.lisible) << c.carte;
        if (c.lisible) {
            EXPECT_EQ(litteral, c.litteral) << c.carte;
            EXPECT_EQ(divers, c.divers) << c.carte;
        }
    }
}

}  // namespace
}  // namespace sv140::shop
