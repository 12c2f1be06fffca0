#include <gtest/gtest.h>

#include "aide_test.h"
#include "data/parametres.h"
#include "main/run.h"
#include "platform/ui.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

// A shop reduced to the tables the parameters come from.
class ParametresTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string erreur;
        ASSERT_TRUE(Connexion::creer_sqlite(hote_, erreur)) << erreur;
        ASSERT_TRUE(Connexion::creer_sqlite(pont_, erreur)) << erreur;
        executer(hote_, "CREATE TABLE Version (Version REAL)");
        executer(pont_,
                 "CREATE TABLE T_InfoParam (Info_Param_ID INTEGER PRIMARY KEY, SCORActif INTEGER, "
                 "Num_Situ TEXT, Taille_Buffer REAL); CREATE TABLE T_InfosCPS (Info_CPS_ID "
                 "INTEGER PRIMARY KEY, Info_CPS_NUM_IDN TEXT); CREATE TABLE T_InfosSituation_CPS "
                 "(InfoSituation_CPS_ID INTEGER PRIMARY KEY, InfoSituation_CPS_NUM_SIT INTEGER, "
                 "InfoSituation_NUM_IDFACPS TEXT, InfoSituation_CLE_IDFACPS TEXT)");
    }
    void executer(const std::string& base, const std::string& sql) {
        Connexion c;
        ASSERT_TRUE(c.ouvrir(base));
        for (std::size_t debut = 0, fin; debut < sql.size(); debut = fin + 1) {
            fin = std::min(sql.find(';', debut), sql.size());
            ASSERT_TRUE(c.Execute(sql.substr(debut, fin - debut))) << c.derniere_erreur();
        }
        ASSERT_TRUE(c.valider());
    }
    // A run keeps its databases open until it ends: let it end before the host writes.
    sv140::Run nouveau() {
        sv140::Run run = nouveau_run(dossier_.chemin(), creer_ui_console(nullptr));
        run.DB_DONNEES = hote_;
        run.DB_sv = pont_;
        run.DB_temporaire = dossier_ / "Temporaire.accdb";
        return run;
    }
    std::string erreur_ecrite(sv140::Run& run) {
        XmlDocument doc;
        EXPECT_TRUE(doc.charger_fichier(run.fichier("ZEMO_SvResponse.xml")));
        return doc.racine().texte_de("appelant") + ": " +
               doc.racine().texte_de("resultat/libelleErreur");
    }
    test::DossierTemporaire dossier_;
    std::string hote_ = dossier_ / "Donnees_32.accdb", pont_ = dossier_ / "SV140.accdb";
};

TEST_F(ParametresTest, DataVersionSwitchAndBuffer) {
    {
        sv140::Run vide = nouveau();
        EXPECT_EQ(Lire_Version_Base(vide), 2000);
        EXPECT_FALSE(Lire_SCORActif(vide));
        EXPECT_EQ(Lire_Taille_Buffer(vide), 102400);
    }
    executer(hote_, "INSERT INTO Version VALUES (3400); INSERT INTO Version VALUES (3500)");
    executer(pont_, "INSERT INTO T_InfoParam VALUES (1, -1, '2', 2048)");
    sv140::Run run = nouveau();
    EXPECT_EQ(Lire_Version_Base(run), 3500);
    EXPECT_TRUE(Lire_SCORActif(run));
    EXPECT_EQ(Lire_Taille_Buffer(run), 2048);
}

TEST_F(ParametresTest, SituationNumber) {
    std::string idNat, idFac, numSitu;
    {
        sv140::Run run = nouveau();
        EXPECT_FALSE(Lire_Identifiants_PS(run, idNat, idFac, numSitu));
        EXPECT_EQ(erreur_ecrite(run),
                  "f_InitialisationPS: Les données de la CPS n'ont pu être lues");
    }
    executer(pont_, "INSERT INTO T_InfosCPS VALUES (1, '810001234567')");
    {
        sv140::Run run = nouveau();
        EXPECT_FALSE(Lire_Identifiants_PS(run, idNat, idFac, numSitu));
        EXPECT_EQ(erreur_ecrite(run),
                  "f_InitialisationPS: Les données de situation de la CPS n'ont pu être lues");
    }
    // A Null Num_Situ means the first situation; the pieces of the billing number are
    // trimmed.
    executer(hote_, "INSERT INTO Version VALUES (3600)");
    executer(pont_,
             "INSERT INTO T_InfosSituation_CPS VALUES (1, 1, ' 12345678 ', ' 9 ');"
             "INSERT INTO T_InfosSituation_CPS VALUES (2, 2, '22222222', '3');"
             "INSERT INTO T_InfoParam (Info_Param_ID, Num_Situ) VALUES (1, NULL)");
    {
        sv140::Run run = nouveau();
        EXPECT_TRUE(Lire_Identifiants_PS(run, idNat, idFac, numSitu));
        EXPECT_EQ(numSitu + " " + idNat + " " + idFac, "1 810001234567 123456789");
    }
    executer(pont_, "UPDATE T_InfoParam SET Num_Situ = ' 2 '");
    sv140::Run run = nouveau();
    EXPECT_TRUE(Lire_Identifiants_PS(run, idNat, idFac, numSitu));
    EXPECT_EQ(numSitu + " " + idNat + " " + idFac, "2 810001234567 222222223");
}

}  // namespace
}  // namespace sv140
