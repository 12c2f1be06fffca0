#include "data/parametres.h"

#include <gtest/gtest.h>

#include "aide_test.h"
#include "main/run.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

class Parametres : public test::Magasin {
  protected:
    std::string erreur_ecrite() {
        XmlDocument doc;
        EXPECT_TRUE(doc.charger_fichier(programme + "/ZEMO_SvResponse.xml"));
        return doc.racine().texte_de("appelant") + ": " +
               doc.racine().texte_de("resultat/libelleErreur");
    }
};

TEST_F(Parametres, DataVersionSwitchAndBuffer) {
    executer(hote, "DELETE FROM Version;");
    executer(pont, "DELETE FROM T_InfoParam;");
    {
        sv140::Run vide = nouveau();
        EXPECT_EQ(Lire_Version_Base(vide), 2000);
        EXPECT_FALSE(Lire_SCORActif(vide));
        EXPECT_EQ(Lire_Taille_Buffer(vide), 102400);
    }
    executer(hote, "INSERT INTO Version ( Version ) VALUES ( 3400 ), ( 3500 );");
    executer(pont,
             "INSERT INTO T_InfoParam ( Info_Param_ID, SCORActif, Taille_Buffer ) VALUES ( 1, "
             "-1, 2048 );");
    sv140::Run run = nouveau();
    EXPECT_EQ(Lire_Version_Base(run), 3500);
    EXPECT_TRUE(Lire_SCORActif(run));
    EXPECT_EQ(Lire_Taille_Buffer(run), 2048);
}

TEST_F(Parametres, SituationNumber) {
    std::string idNat, idFac, numSitu;
    {
        sv140::Run run = nouveau();
        EXPECT_FALSE(Lire_Identifiants_PS(run, idNat, idFac, numSitu));
    }
    EXPECT_EQ(erreur_ecrite(), "f_InitialisationPS: Les données de la CPS n'ont pu être lues");
    executer(pont, "INSERT INTO T_InfosCPS ( Info_CPS_ID, Info_CPS_NUM_IDN ) VALUES ( 1, '81' );");
    {
        sv140::Run run = nouveau();
        EXPECT_FALSE(Lire_Identifiants_PS(run, idNat, idFac, numSitu));
    }
    EXPECT_EQ(erreur_ecrite(),
              "f_InitialisationPS: Les données de situation de la CPS n'ont pu être lues");
    // A Null Num_Situ means the first situation; the pieces of the billing number are
    // trimmed.
    executer(pont,
             "INSERT INTO T_InfosSituation_CPS ( InfoSituation_CPS_ID, InfoSituation_CPS_NUM_SIT, "
             "InfoSituation_NUM_IDFACPS, InfoSituation_CLE_IDFACPS ) VALUES ( 1, '1', "
             "' 12345678 ', ' 9 ' ), ( 2, '2', '22222222', '3' );");
    for (const char* num_situ : {"NULL", "' 2 '"}) {
        executer(pont, std::string("UPDATE T_InfoParam SET Num_Situ = ") + num_situ + ";");
        sv140::Run run = nouveau();
        EXPECT_TRUE(Lire_Identifiants_PS(run, idNat, idFac, numSitu));
        EXPECT_EQ(numSitu + " " + idNat + " " + idFac,
                  *num_situ == 'N' ? "1 81 123456789" : "2 81 222222223");
    }
}

}  // namespace
}  // namespace sv140
