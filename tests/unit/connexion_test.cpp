#include <gtest/gtest.h>

#include <filesystem>

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
        ASSERT_TRUE(c_.ouvrir(base_));
        ASSERT_TRUE(
            c_.Execute("CREATE TABLE [Sélection Verres] ([N°] INTEGER PRIMARY KEY "
                       "AUTOINCREMENT, [Nom du Verre] TEXT, Actif INTEGER, Prix REAL)"));
        ASSERT_TRUE(c_.valider());
    }
    bool inserer(Connexion& c, const std::string& nom) {
        return c.Execute("INSERT INTO [Sélection Verres] ( [Nom du Verre] ) SELECT " + nom +
                         " AS NA;");
    }
    long compter(Connexion& c) {
        auto rs = c.Ouvrir("SELECT Count(*) AS N FROM [Sélection Verres];");
        rs->MoveFirst();
        return static_cast<long>(rs->champ("N").nombre());
    }
    test::DossierTemporaire dossier_;
    std::string base_ = dossier_ / "SV140.accdb";
    std::vector<std::string> journal_;
    Connexion c_{[this](std::string_view l) { journal_.emplace_back(l); }};
};

// The driver reads the path from a string that ';' splits: such a folder would open, or
// create, another file. It is refused, and nothing is created.
TEST_F(ConnexionTest, APathTheDriverWouldSplitIsRefused) {
    Connexion c;
    std::filesystem::create_directory(dossier_ / "a;b");
    std::string erreur;
    EXPECT_FALSE(Connexion::creer_sqlite(dossier_ / "a;b/SV140.accdb", erreur));
    EXPECT_FALSE(c.ouvrir(dossier_ / "a;b/SV140.accdb"));
    EXPECT_FALSE(fichier_existe(dossier_ / "a"));
    EXPECT_FALSE(fichier_existe(dossier_ / "a;b/SV140.accdb"));
}

TEST_F(ConnexionTest, NothingIsWrittenBeforeValidation) {
    {
        Connexion c;
        ASSERT_TRUE(c.ouvrir(base_));
        ASSERT_TRUE(inserer(c, "'a'"));
        EXPECT_EQ(compter(c), 1);
    }  // dropped without validation, as a run stopped half-way
    Connexion c;
    ASSERT_TRUE(c.ouvrir(base_));
    EXPECT_EQ(compter(c), 0);
}

TEST_F(ConnexionTest, AFailedStatementUndoesNoOther) {
    journal_.clear();
    ASSERT_TRUE(inserer(c_, "'a'"));
    EXPECT_FALSE(c_.Execute("INSERT INTO [Table Absente] ( x ) SELECT 1 AS x;"));
    EXPECT_FALSE(c_.derniere_erreur().empty());
    EXPECT_FALSE(journal_.empty());
    ASSERT_TRUE(c_.point_de_sauvegarde("facture"));
    ASSERT_TRUE(inserer(c_, "'b'"));
    ASSERT_TRUE(c_.revenir("facture"));
    ASSERT_TRUE(c_.liberer("facture"));
    ASSERT_TRUE(c_.valider());
    EXPECT_EQ(compter(c_), 1);
}

TEST_F(ConnexionTest, ValuesReadAsTheHostReadsThem) {
    std::string long_texte;
    for (int i = 0; i < 3000; ++i) {
        long_texte += "é" + std::to_string(i % 10);
    }
    ASSERT_TRUE(c_.Execute(
        "INSERT INTO [Sélection Verres] ( [Nom du Verre], Actif, Prix ) SELECT 'Zoé \"Zaza\" "
        "d''Artagnan' AS NA, True AS A, 12.5 AS P;"));
    ASSERT_TRUE(inserer(c_, "Null"));
    ASSERT_TRUE(inserer(c_, "'" + long_texte + "'"));
    auto rs = c_.Ouvrir(
        "SELECT [Sélection Verres].[N°], [Sélection Verres].[Nom du Verre], [Sélection "
        "Verres].Actif, [Sélection Verres].Prix FROM [Sélection Verres] ORDER BY [N°];");
    ASSERT_TRUE(rs);
    ASSERT_EQ(rs->RecordCount(), 3u);
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
    EXPECT_EQ(rs->champ("Nom du Verre").str(), long_texte);
    rs->MoveNext();
    EXPECT_TRUE(rs->EOF_());
}

}  // namespace
}  // namespace sv140
