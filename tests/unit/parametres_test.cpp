#include <gtest/gtest.h>

#include "aide_test.h"
#include "data/parametres.h"
#include "main/run.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

// A shop reduced to the tables the parameters come from.
class ParametresTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string erreur;
        ASSERT_TRUE(Connexion::creer_sqlite(dossier_ / "Donnees_32.accdb", erreur)) << erreur;
        ASSERT_TRUE(Connexion::creer_sqlite(dossier_ / "SV140.accdb", erreur)) << erreur;
        executer(dossier_ / "Donnees_32.accdb", {"CREATE TABLE Version (Version REAL)"});
        executer(dossier_ / "SV140.accdb",
                 {"CREATE TABLE T_InfoParam (Info_Param_ID INTEGER PRIMARY KEY, SCORActif "
                  "INTEGER, Num_Situ TEXT, Taille_Buffer REAL)",
                  "CREATE TABLE T_InfosCPS (Info_CPS_ID INTEGER PRIMARY KEY, Info_CPS_NUM_IDN "
                  "TEXT)",
                  "CREATE TABLE T_InfosSituation_CPS (InfoSituation_CPS_ID INTEGER PRIMARY KEY, "
                  "InfoSituation_CPS_NUM_SIT INTEGER, InfoSituation_NUM_IDFACPS TEXT, "
                  "InfoSituation_CLE_IDFACPS TEXT)"});
    }
    void executer(const std::string& base, std::initializer_list<std::string> sql) {
        Connexion c;
        ASSERT_TRUE(c.ouvrir(base));
        for (const std::string& s : sql) {
            ASSERT_TRUE(c.Execute(s)) << s << " : " << c.derniere_erreur();
        }
        ASSERT_TRUE(c.valider());
    }
    sv140::Run nouveau() {
        sv140::Run run = nouveau_run(dossier_.chemin(), std::make_unique<test::UiEnregistree>());
        run.DB_DONNEES = dossier_ / "Donnees_32.accdb";
        run.DB_sv = dossier_ / "SV140.accdb";
        run.DB_temporaire = dossier_ / "Temporaire.accdb";
        return run;
    }
    test::DossierTemporaire dossier_;
};

TEST_F(ParametresTest, VersionDesDonnees) {
    {
        // A run keeps its databases open until it ends: let it end before the host writes.
        sv140::Run vide = nouveau();
        EXPECT_EQ(Lire_Version_Base(vide), 2000);
        EXPECT_FALSE(Lire_SCORActif(vide));
    }
    executer(dossier_ / "Donnees_32.accdb",
             {"INSERT INTO Version (Version) VALUES (3400)", "INSERT INTO Version VALUES (3500)"});
    executer(dossier_ / "SV140.accdb", {"INSERT INTO T_InfoParam VALUES (1, -1, '2', 2048)"});
    sv140::Run run = nouveau();
    EXPECT_EQ(Lire_Version_Base(run), 3500);
    EXPECT_TRUE(Lire_SCORActif(run));
    EXPECT_EQ(Lire_Taille_Buffer(run), 2048);
}

TEST_F(ParametresTest, TailleDuTamponParDefaut) {
    sv140::Run run = nouveau();
    EXPECT_EQ(Lire_Taille_Buffer(run), 102400);
}

TEST_F(ParametresTest, NumeroDeSituation) {
    executer(dossier_ / "SV140.accdb",
             {"INSERT INTO T_InfosCPS VALUES (1, '810001234567')",
              "INSERT INTO T_InfosSituation_CPS VALUES (1, 1, ' 12345678 ', ' 9 ')",
              "INSERT INTO T_InfosSituation_CPS VALUES (2, 2, '22222222', '3')"});
    struct Cas {
        const char* version;   // nullptr: no Version row
        const char* num_situ;  // nullptr: Null
        const char* attendu;
        const char* idFac;
    } cas[] = {
        {"3600", " 2 ", "2", "222222223"},   {"3600", "0", "1", "123456789"},
        {"3600", nullptr, "1", "123456789"}, {"3499", "2", "1", "123456789"},
        {nullptr, "2", "1", "123456789"},
    };
    for (const Cas& c : cas) {
        executer(dossier_ / "Donnees_32.accdb", {"DELETE FROM Version"});
        executer(dossier_ / "SV140.accdb", {"DELETE FROM T_InfoParam"});
        if (c.version) {
            executer(dossier_ / "Donnees_32.accdb",
                     {std::string("INSERT INTO Version VALUES (") + c.version + ")"});
        }
        executer(dossier_ / "SV140.accdb",
                 {std::string("INSERT INTO T_InfoParam (Info_Param_ID, Num_Situ) VALUES (1, ") +
                  (c.num_situ ? "'" + std::string(c.num_situ) + "'" : "NULL") + ")"});
        sv140::Run run = nouveau();
        std::string idNat, idFac, numSitu;
        EXPECT_TRUE(Lire_Identifiants_PS(run, idNat, idFac, numSitu));
        EXPECT_EQ(numSitu, c.attendu);
        EXPECT_EQ(idNat, "810001234567");
        EXPECT_EQ(idFac, c.idFac);
    }
}

TEST_F(ParametresTest, DonneesDeLaCarteAbsentes) {
    std::string idNat, idFac, numSitu;
    XmlDocument doc;
    {
        sv140::Run run = nouveau();
        EXPECT_FALSE(Lire_Identifiants_PS(run, idNat, idFac, numSitu));
        ASSERT_TRUE(doc.charger_fichier(run.fichier("ZEMO_SvResponse.xml")));
        EXPECT_EQ(doc.racine().texte_de("resultat/libelleErreur"),
                  "Les données de la CPS n'ont pu être lues");
        EXPECT_EQ(doc.racine().texte_de("appelant"), "f_InitialisationPS");
    }

    executer(dossier_ / "SV140.accdb", {"INSERT INTO T_InfosCPS VALUES (1, '810001234567')"});
    sv140::Run run2 = nouveau();
    EXPECT_FALSE(Lire_Identifiants_PS(run2, idNat, idFac, numSitu));
    ASSERT_TRUE(doc.charger_fichier(run2.fichier("ZEMO_SvResponse.xml")));
    EXPECT_EQ(doc.racine().texte_de("resultat/libelleErreur"),
              "Les données de situation de la CPS n'ont pu être lues");
    EXPECT_EQ(idNat, "810001234567");
}

}  // namespace
}  // namespace sv140
