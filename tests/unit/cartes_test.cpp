#include "cards/cartes.h"

#include <gtest/gtest.h>

#include <string>

#include "aide_test.h"
#include "main/run.h"
#include "platform/encodage.h"

namespace sv140 {
namespace {

using test::Lignes;

// An element of a middleware answer (no text here needs XML escaping).
std::string e(const std::string& nom, const std::string& texte) {
    return "<" + nom + ">" + texte + "</" + nom + ">";
}

class Cartes : public test::Magasin {
  protected:
    // The middleware's cleaned answer, in its own encoding.
    void reponse(const std::string& donnees_utf8) {
        test::ecrire(programme + "/ZEMO_SvResponse.xml",
                     utf8_vers_cp1252("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                                      "<ZRMESSAGE><appelant>f</appelant><resultat>"
                                      "<codeErreur>0</codeErreur><libelleErreur/><donnees>" +
                                      donnees_utf8 + "</donnees></resultat></ZRMESSAGE>"));
    }
};

// The card list, the link, its rights and the complementary request are pinned end to end
// by the black-box suite; this rule is not reached there.
TEST_F(Cartes, SituationNameWithoutApostrophesCutTo30) {
    std::string cps = "<contextePS>" + e("NUM_IDN", "99900012345");
    const char* raisons[] = {"L'Optique d'Élise, au coin de la rue du Marché", "Été'"};
    for (int i = 0; i < 2; ++i) {
        cps += "<situation>" + e("NUM_SIT", std::to_string(i + 1)) + e("RAIS_STR", raisons[i]) +
               "</situation>";
    }
    reponse(cps + "</contextePS>");
    EXPECT_TRUE(lancer(Stocker_CPS));
    EXPECT_EQ(lignes(pont, "SELECT InfoSituation_RAIS_STR FROM T_InfosSituation_CPS;"),
              (Lignes{{"L Optique d Élise, au coin de "}, {"Été "}}));
}

}  // namespace
}  // namespace sv140
