// The demo drives the built bridge and simulator found beside this test program, as the
// host drives them on the optician's machine.
#include "shop/demo.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <sstream>
#include <string>

#include "data/connexion.h"
#include "platform/intergiciel.h"
#include "platform/systeme.h"
#include "shop/installation.h"
#include "shop/schema.h"
#include "sim/etat.h"

namespace sv140::shop {
namespace {

namespace fs = std::filesystem;

class DemoTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string source = dossier_programme();
        if (!fichier_existe(joindre(source, kNomPont)) ||
            !fichier_existe(joindre(source, kNomIntergiciel))) {
            GTEST_SKIP() << "bridge or middleware not built in " << source;
        }
        std::random_device alea;
        dossier_ = fs::temp_directory_path() / ("sv140-shop-demo-" + std::to_string(alea()));
        std::string erreur;
        ASSERT_EQ(Installer(dossier_.string(), source, erreur), Issue::Faite) << erreur;
        inst_ = Disposition(dossier_.string());
    }
    void TearDown() override {
        if (!dossier_.empty()) {
            fs::remove_all(dossier_);
        }
    }

    fs::path dossier_;
    Installation inst_;
};

TEST_F(DemoTest, LinksTheChosenBeneficiaryToTheHostsClient) {
    std::ostringstream compte;
    EXPECT_TRUE(Derouler_Demo(inst_, compte)) << compte.str();
    const std::string texte = compte.str();
    EXPECT_NE(texte.find("T_InfosSituation_CPS : 2 situation(s)"), std::string::npos) << texte;
    EXPECT_NE(texte.find("[Sélection Verres] : 4 bénéficiaire(s)"), std::string::npos) << texte;
    EXPECT_EQ(texte.find("ÉCHEC"), std::string::npos) << texte;

    // The client the demo wrote as the host does is the one the bridge linked the card to.
    Connexion hote;
    ASSERT_TRUE(hote.ouvrir(joindre(inst_.magasin, kBaseHote)));
    auto client = hote.Ouvrir(
        "SELECT T_Etat_Civil.N°, T_Etat_Civil.[Sécurité sociale], T_Etat_Civil.[Date "
        "Naissance], T_Etat_Civil.RangNaissance FROM T_Etat_Civil;");
    ASSERT_TRUE(client.has_value());
    ASSERT_EQ(client->RecordCount(), 1u);
    Connexion pont;
    ASSERT_TRUE(pont.ouvrir(joindre(inst_.magasin, kBasePont)));
    auto carte = pont.Ouvrir("SELECT T_InfosCarteVitale.* FROM T_InfosCarteVitale;");
    ASSERT_TRUE(carte.has_value());
    ASSERT_EQ(carte->RecordCount(), 1u);
    EXPECT_EQ(carte->champ("Info_ETC_ID_FK").str(), client->champ("N°").str());
    EXPECT_EQ(carte->champ("Info_CV_NIR_ASS").str() + carte->champ("Info_CV_CLE_ASS").str(),
              client->champ("Sécurité sociale").str());
    EXPECT_EQ(carte->champ("Info_CV_BEN_RNG").str(), client->champ("RangNaissance").str());
    const std::string naissance = carte->champ("Info_CV_NAI_BEN").str();
    ASSERT_EQ(naissance.size(), 8u);
    EXPECT_EQ(client->champ("Date Naissance").str().substr(0, 10),
              naissance.substr(0, 4) + "-" + naissance.substr(4, 2) + "-" + naissance.substr(6, 2));

    // The complementary query went through and its exchange was kept for the host.
    EXPECT_TRUE(fichier_existe(joindre(inst_.programme, "ZEMO_SvRequestAMC.xml")));
    EXPECT_TRUE(fichier_existe(joindre(inst_.programme, "ZEMO_SvResponseAMC.xml")));
}

TEST_F(DemoTest, AnOperationAnsweringAnErrorFailsTheDemo) {
    std::string erreur;
    ASSERT_TRUE(sim::Injecter_Erreur(inst_.zrsim, "f_LireCPS", 12, "Carte absente", erreur))
        << erreur;
    std::ostringstream compte;
    EXPECT_FALSE(Derouler_Demo(inst_, compte));
    const std::string texte = compte.str();
    EXPECT_NE(texte.find("réponse : code 12 - Carte absente"), std::string::npos) << texte;
    EXPECT_NE(texte.find("ÉCHEC : f_LireCPS"), std::string::npos) << texte;
}

}  // namespace
}  // namespace sv140::shop
