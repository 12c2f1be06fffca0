#include <gtest/gtest.h>

#include "aide_test.h"
#include "data/connexion.h"
#include "platform/systeme.h"

namespace sv140 {
namespace {

class ConnexionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string erreur;
        ASSERT_TRUE(Connexion::creer_sqlite(base_, erreur)) << erreur;
        Connexion c;
        ASSERT_TRUE(c.ouvrir(base_));
        ASSERT_TRUE(
            c.Execute("CREATE TABLE [Sélection Verres] ([N°] INTEGER PRIMARY KEY "
                      "AUTOINCREMENT, [Nom du Verre] TEXT, Actif INTEGER, Prix REAL)"));
        ASSERT_TRUE(c.valider());
    }
    long compter(Connexion& c) {
        auto rs = c.Ouvrir("SELECT Count(*) AS N FROM [Sélection Verres];");
        rs->MoveFirst();
        return static_cast<long>(rs->champ("N").nombre());
    }
    test::DossierTemporaire dossier_;
    std::string base_ = dossier_ / "SV140.accdb";
    std::vector<std::string> journal_;
    Connexion::Journal ecouter() {
        return [this](std::string_view l) { journal_.emplace_back(l); };
    }
};

TEST_F(ConnexionTest, UneBaseAbsenteNestJamaisCreee) {
    Connexion c(ecouter());
    std::string absente = dossier_ / "Donnees_32.accdb";
    EXPECT_FALSE(c.ouvrir(absente));
    EXPECT_FALSE(fichier_existe(absente));
    ASSERT_EQ(journal_.size(), 1u);
    EXPECT_NE(journal_[0].find(absente), std::string::npos);
    EXPECT_FALSE(c.Execute("DELETE * FROM T;"));
}

TEST_F(ConnexionTest, LeMoteurSeLitDansLEnTete) {
    test::ecrire(dossier_ / "acces.accdb", std::string("\0\1\0\0Standard ACE DB", 20));
    EXPECT_EQ(Connexion::moteur_du_fichier(base_), Moteur::SQLite);
    EXPECT_EQ(Connexion::moteur_du_fichier(dossier_ / "acces.accdb"), Moteur::Access);
    EXPECT_EQ(Connexion::moteur_du_fichier(dossier_ / "absent.accdb"), Moteur::Aucun);
}

TEST_F(ConnexionTest, RienNestEcritAvantLaValidation) {
    {
        Connexion c;
        ASSERT_TRUE(c.ouvrir(base_));
        ASSERT_TRUE(
            c.Execute("INSERT INTO [Sélection Verres] ( [Nom du Verre] ) SELECT 'a' AS NA;"));
        EXPECT_EQ(compter(c), 1);
    }  // dropped without validation, as a run stopped half-way
    Connexion c;
    ASSERT_TRUE(c.ouvrir(base_));
    EXPECT_EQ(compter(c), 0);
}

TEST_F(ConnexionTest, UneInstructionQuiEchoueNeDefaitPasLesAutres) {
    Connexion c(ecouter());
    ASSERT_TRUE(c.ouvrir(base_));
    ASSERT_TRUE(c.Execute("INSERT INTO [Sélection Verres] ( [Nom du Verre] ) SELECT 'a' AS NA;"));
    EXPECT_FALSE(c.Execute("INSERT INTO [Table Absente] ( x ) SELECT 1 AS x;"));
    EXPECT_FALSE(c.derniere_erreur().empty());
    ASSERT_TRUE(c.point_de_sauvegarde("facture"));
    ASSERT_TRUE(c.Execute("INSERT INTO [Sélection Verres] ( [Nom du Verre] ) SELECT 'b' AS NA;"));
    ASSERT_TRUE(c.revenir("facture"));
    ASSERT_TRUE(c.liberer("facture"));
    ASSERT_TRUE(c.valider());
    EXPECT_EQ(compter(c), 1);
    EXPECT_FALSE(journal_.empty());
}

TEST_F(ConnexionTest, ValeursLuesCommeLesLitLHote) {
    Connexion c;
    ASSERT_TRUE(c.ouvrir(base_));
    ASSERT_TRUE(c.Execute(
        "INSERT INTO [Sélection Verres] ( [Nom du Verre], Actif, Prix ) SELECT 'Zoé \"Zaza\" "
        "d''Artagnan' AS NA, True AS A, 12.5 AS P;"));
    ASSERT_TRUE(c.Execute("INSERT INTO [Sélection Verres] ( [Nom du Verre] ) SELECT Null AS NA;"));
    auto rs = c.Ouvrir(
        "SELECT [Sélection Verres].[N°], [Sélection Verres].[Nom du Verre], "
        "[Sélection Verres].Actif, [Sélection Verres].Prix FROM [Sélection Verres] "
        "ORDER BY [Sélection Verres].[N°];");
    ASSERT_TRUE(rs);
    ASSERT_EQ(rs->RecordCount(), 2u);
    rs->MoveFirst();
    EXPECT_EQ(rs->champ("nom du verre").str(), "Zoé \"Zaza\" d'Artagnan");
    EXPECT_EQ(rs->champ("[Sélection Verres].N°").nombre(), 1);
    EXPECT_TRUE(rs->champ("Actif").booleen());
    EXPECT_DOUBLE_EQ(rs->champ("Prix").nombre(), 12.5);
    rs->MoveNext();
    EXPECT_TRUE(rs->champ("Nom du Verre").nul());
    EXPECT_FALSE(rs->champ("Actif").booleen());
    EXPECT_TRUE(rs->champ("Colonne inconnue").nul());
    rs->MoveNext();
    EXPECT_TRUE(rs->EOF_());
}

TEST_F(ConnexionTest, UnTexteLongRevientEntier) {
    Connexion c;
    ASSERT_TRUE(c.ouvrir(base_));
    std::string long_texte;
    for (int i = 0; i < 3000; ++i) {
        long_texte += "é" + std::to_string(i % 10);
    }
    ASSERT_TRUE(c.Execute("INSERT INTO [Sélection Verres] ( [Nom du Verre] ) SELECT '" +
                          long_texte + "' AS NA;"));
    auto rs = c.Ouvrir("SELECT [Nom du Verre] FROM [Sélection Verres];");
    rs->MoveFirst();
    EXPECT_EQ(rs->champ("Nom du Verre").str(), long_texte);
}

}  // namespace
}  // namespace sv140
