#include <gtest/gtest.h>

#include <filesystem>

#include "aide_test.h"
#include "data/connexions.h"
#include "platform/systeme.h"

namespace sv140 {
namespace {

class ConnexionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Statut s = Connexion::creer_sqlite(base_);
        ASSERT_TRUE(s) << s.raison();
        Ouvrir_Connexions(bases_, dossier_ / "absente.accdb", dossier_ / "absente.accdb", base_);
        ASSERT_TRUE(bases_.pont.Execute(
            "CREATE TABLE [Sélection Verres] ([N°] INTEGER PRIMARY KEY "
            "AUTOINCREMENT, [Nom du Verre] TEXT UNIQUE, Actif INTEGER, Prix REAL)"));
        ASSERT_TRUE(bases_.pont.valider());
    }
    Statut inserer(Connexion& c, const std::string& nom) {
        return c.Execute("INSERT INTO [Sélection Verres] ( [Nom du Verre] ) SELECT " + nom +
                         " AS NA;");
    }
    /// The names committed, as another program sees them.
    std::vector<std::string> valides() {
        Connexion autre;
        EXPECT_TRUE(autre.ouvrir(base_));
        auto rs = autre.Ouvrir("SELECT [Nom du Verre] FROM [Sélection Verres] ORDER BY [N°];");
        std::vector<std::string> noms;
        for (rs->MoveFirst(); rs && !rs->EOF_(); rs->MoveNext()) {
            noms.push_back(rs->champ("Nom du Verre").str());
        }
        return noms;
    }
    test::DossierTemporaire dossier_;
    std::string base_ = dossier_ / "SV140.accdb";
    std::vector<std::string> journal_;
    Connexions bases_{[this](std::string_view l) { journal_.emplace_back(l); }};
};

// The driver reads the path from a string that ';' splits: such a folder would open, or
// create, another file. It is refused, and nothing is created.
TEST_F(ConnexionTest, APathTheDriverWouldSplitIsRefused) {
    Connexion c;
    std::filesystem::create_directory(dossier_ / "a;b");
    EXPECT_FALSE(Connexion::creer_sqlite(dossier_ / "a;b/SV140.accdb"));
    EXPECT_FALSE(c.ouvrir(dossier_ / "a;b/SV140.accdb"));
    EXPECT_FALSE(fichier_existe(dossier_ / "a"));
    EXPECT_FALSE(fichier_existe(dossier_ / "a;b/SV140.accdb"));
}

TEST_F(ConnexionTest, AUnitIsCommittedWholeOrNotAtAll) {
    {
        UniteDeTravail unite(bases_);
        ASSERT_TRUE(inserer(bases_.pont, "'a'"));
        EXPECT_EQ(valides(), std::vector<std::string>{}) << "visible before its commit";
    }  // left without validation, as a run stopped half-way
    EXPECT_EQ(valides(), std::vector<std::string>{});
    {
        UniteDeTravail unite(bases_);
        ASSERT_TRUE(inserer(bases_.pont, "'b'"));
        // A failed statement changes nothing and leaves the unit usable.
        EXPECT_FALSE(bases_.pont.Execute("INSERT INTO [Table Absente] ( x ) SELECT 1 AS x;"));
        ASSERT_TRUE(inserer(bases_.pont, "'c'"));
        ASSERT_TRUE(unite.valider());
    }
    EXPECT_EQ(valides(), (std::vector<std::string>{"b", "c"}));
    EXPECT_NE(journal_.back().find("Table Absente"), std::string::npos) << "statement not logged";
    // Every commit survives a killed process, and stays cheap.
    auto mode = bases_.pont.Ouvrir("PRAGMA journal_mode;");
    ASSERT_TRUE(mode);
    EXPECT_EQ(mode->champ("journal_mode").str(), "wal");
}

TEST_F(ConnexionTest, ValuesReadAsTheHostReadsThem) {
    Connexion& c = bases_.pont;
    std::string long_texte;
    for (int i = 0; i < 3000; ++i) {
        long_texte += "é" + std::to_string(i % 10);
    }
    ASSERT_TRUE(c.Execute(
        "INSERT INTO [Sélection Verres] ( [Nom du Verre], Actif, Prix ) SELECT 'Zoé \"Zaza\" "
        "d''Artagnan' AS NA, True AS A, 12.5 AS P;"));
    ASSERT_TRUE(inserer(c, "Null"));
    ASSERT_TRUE(inserer(c, "'" + long_texte + "'"));
    auto rs = c.Ouvrir(
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
