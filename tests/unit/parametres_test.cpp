#include "data/parametres.h"

#include <gtest/gtest.h>

#include "aide_test.h"
#include "exchange/run.h"

namespace sv140 {
namespace {

using Parametres = test::Magasin;

TEST_F(Parametres, DataVersionSwitchAndBuffer) {
    executer(hote, "DELETE FROM Version;");
    executer(pont, "DELETE FROM T_InfoParam;");
    {
        sv140::Run vide = nouveau();
        EXPECT_EQ(Lire_Version_Base(vide.bases()), 2000);
        EXPECT_FALSE(Lire_SCORActif(vide.bases()));
        EXPECT_EQ(Lire_Taille_Buffer(vide.bases()), 102400);
    }
    executer(hote, "INSERT INTO Version ( Version ) VALUES ( 3400 ), ( 3500 );");
    executer(pont,
             "INSERT INTO T_InfoParam ( Info_Param_ID, SCORActif, Taille_Buffer ) VALUES ( 1, "
             "-1, 2048 );");
    sv140::Run run = nouveau();
    EXPECT_EQ(Lire_Version_Base(run.bases()), 3500);
    EXPECT_TRUE(Lire_SCORActif(run.bases()));
    EXPECT_EQ(Lire_Taille_Buffer(run.bases()), 2048);
}

TEST_F(Parametres, SituationNumber) {
    IdentifiantsPS ps;
    auto lire = [&] {
        sv140::Run run = nouveau();
        Statut s = Lire_Identifiants_PS(run.bases(), ps);
        return s ? std::string() : s.raison();
    };
    EXPECT_EQ(lire(), "Les données de la CPS n'ont pu être lues");
    executer(pont, "INSERT INTO T_InfosCPS ( Info_CPS_ID, Info_CPS_NUM_IDN ) VALUES ( 1, '81' );");
    EXPECT_EQ(lire(), "Les données de situation de la CPS n'ont pu être lues");
    // A Null Num_Situ means the first situation; the pieces of the billing number are
    // trimmed.
    executer(pont,
             "INSERT INTO T_InfosSituation_CPS ( InfoSituation_CPS_ID, InfoSituation_CPS_NUM_SIT, "
             "InfoSituation_NUM_IDFACPS, InfoSituation_CLE_IDFACPS ) VALUES ( 1, '1', "
             "' 12345678 ', ' 9 ' ), ( 2, '2', '22222222', '3' );");
    for (const char* num_situ : {"NULL", "' 2 '"}) {
        executer(pont, std::string("UPDATE T_InfoParam SET Num_Situ = ") + num_situ + ";");
        EXPECT_EQ(lire(), "");
        EXPECT_EQ(ps.numSitu + " " + ps.idNat + " " + ps.idFac,
                  *num_situ == 'N' ? "1 81 123456789" : "2 81 222222223");
    }
}

}  // namespace
}  // namespace sv140
