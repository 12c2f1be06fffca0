// A new shop: the databases accept the bridge's and the host's statements as they send
// them and start with the values their flows rely on; nothing already there is replaced.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "data/connexion.h"
#include "platform/intergiciel.h"
#include "shop/installation.h"
#include "shop/schema.h"

namespace sv140::shop {
namespace {

namespace fs = std::filesystem;

std::string contenu(const fs::path& chemin) {
    std::ostringstream texte;
    texte << std::ifstream(chemin, std::ios::binary).rdbuf();
    return texte.str();
}

/// A fresh folder for each test.
class Magasin : public ::testing::Test {
  protected:
    void SetUp() override { fs::create_directories(dossier_); }
    void TearDown() override { fs::remove_all(dossier_); }

    const fs::path dossier_ =
        fs::temp_directory_path() / ("sv140-shop-" + std::to_string(std::random_device{}()));
};

using Schema = Magasin;
using Installation = Magasin;

struct Instruction {
    const char* base;
    std::string sql;
    // A query's first row, as "column=text ..."; "" for a query that finds no row, null
    // for a statement that returns none.
    const char* premiere_ligne = nullptr;
};

TEST_F(Schema, LesBasesAcceptentLesInstructionsDuPontEtDeLHote) {
    std::string erreur;
    ASSERT_TRUE(Creer_Bases(dossier_.string(), (dossier_ / kBaseTemporaire).string(), erreur))
        << erreur;
    for (const char* nom : {kBasePont, kBaseHote, kBaseTemporaire}) {
        EXPECT_EQ(Connexion::moteur_du_fichier((dossier_ / nom).string()), Moteur::SQLite) << nom;
    }
    Connexion pont;
    Connexion hote;
    for (auto [cnx, nom] : {std::pair{&pont, kBasePont}, std::pair{&hote, kBaseHote}}) {
        Statut s = cnx->ouvrir((dossier_ / nom).string());
        ASSERT_TRUE(s) << s.raison();
    }

    const char* P = kBasePont;
    const char* H = kBaseHote;
    const std::string facture =
        "INSERT INTO T_InfosFacture ( Info_Facture_NUMFAC, Info_Facture_dteCreate, "
        "Info_Facture_TOTALFAC ) SELECT '123' AS v1, #03/05/2024# as v1d, 123.45 AS v12;";
    // The card tables answer the bridge in every black-box run; these are the defaults
    // and the invoicing table it does not reach yet. In order: each statement finds the
    // rows the earlier ones wrote.
    const Instruction instructions[] = {
        {P, "SELECT T_InfoParam.* From T_InfoParam WHERE (((T_InfoParam.Info_Param_ID)=1));",
         "Num_Situ=1 SCORActif=0"},
        // A deleted row's key is never handed out again: the bridge reads a new row's key
        // back as the largest one.
        {P, facture},
        {P, "DELETE * FROM T_InfosFacture;"},
        {P, facture},
        {P, "SELECT Max(T_InfosFacture.Info_Facture_ID) AS ID_FAC FROM T_InfosFacture;",
         "ID_FAC=2"},
        {H, "SELECT Max(Version.Version) AS Num_Version FROM Version;", "Num_Version=3600"},
    };
    for (const Instruction& i : instructions) {
        SCOPED_TRACE(i.sql);
        Connexion& cnx = std::string(i.base) == kBasePont ? pont : hote;
        if (i.premiere_ligne == nullptr) {
            Statut s = cnx.Execute(i.sql);
            EXPECT_TRUE(s) << s.raison();
            continue;
        }
        auto rs = cnx.Ouvrir(i.sql);
        ASSERT_TRUE(rs) << rs.statut().raison();
        EXPECT_EQ(rs->EOF_(), *i.premiere_ligne == '\0');
        std::istringstream valeurs(i.premiere_ligne);
        for (std::string v; valeurs >> v;) {
            EXPECT_EQ(v, v.substr(0, v.find('=') + 1) + rs->champ(v.substr(0, v.find('='))).str());
        }
    }
}

TEST_F(Schema, UnFichierExistantArreteTouteLaCreation) {
    std::ofstream(dossier_ / kBaseTemporaire) << "host work file";
    std::string erreur;
    EXPECT_FALSE(Creer_Bases(dossier_.string(), (dossier_ / kBaseTemporaire).string(), erreur));
    EXPECT_NE(erreur.find(kBaseTemporaire), std::string::npos) << erreur;
    EXPECT_EQ(contenu(dossier_ / kBaseTemporaire), "host work file");
    EXPECT_FALSE(fs::exists(dossier_ / kBasePont));
    EXPECT_FALSE(fs::exists(dossier_ / kBaseHote));
}

// The layout itself is what every black-box test starts from.
TEST_F(Installation, UneInstallationExistanteNestJamaisRemplacee) {
    std::ofstream(dossier_ / kNomPont) << "bridge";
    std::ofstream(dossier_ / kNomIntergiciel) << "middleware";
    const fs::path magasin = dossier_ / "magasin";
    std::string erreur;
    ASSERT_EQ(Installer(magasin.string(), dossier_.string(), erreur), Issue::Faite) << erreur;
    const fs::path pont = magasin / "Belvane_Classic" / "SV140" / kNomPont;
    std::ofstream(pont) << "the optician's own copy";
    EXPECT_EQ(Installer(magasin.string(), dossier_.string(), erreur), Issue::Existe);
    EXPECT_EQ(contenu(pont), "the optician's own copy");
}

}  // namespace
}  // namespace sv140::shop
