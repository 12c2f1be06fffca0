#include "cards/cartes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "aide_test.h"
#include "main/run.h"
#include "platform/encodage.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

using test::Lignes;

// An element of a middleware answer (no text here needs XML escaping).
std::string e(const std::string& nom, const std::string& texte) {
    return "<" + nom + ">" + texte + "</" + nom + ">";
}

std::string beneficiaire(const std::string& nai_ben, const std::string& rang,
                         const std::string& prenom, const std::string& droits = "") {
    return "<Beneficiaire>" + e("NOM_USG", "Gascon") + e("PRM_USG", prenom) +
           e("NAI_BEN", nai_ben) + e("BEN_RNG", rang) + droits + "</Beneficiaire>";
}

std::string carte_vitale(const std::string& beneficiaires) {
    return "<contexteCVitale>" + e("VIT_NSER", "12345678") + e("NIR_ASS", "1500375123456") +
           e("CLE_ASS", "89") + e("RGG_COD", "01") + beneficiaires + "</contexteCVitale>";
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

    void client(const std::string& numero, const std::string& date, const std::string& rang,
                const std::string& divers) {
        executer(hote, "DELETE FROM T_Etat_Civil;");
        executer(hote,
                 "INSERT INTO T_Etat_Civil ( [N°], [Date Naissance], RangNaissance, Divers ) "
                 "VALUES ( " +
                     numero + ", '" + date + "', " + rang + ", " + divers + " );");
    }
};

TEST_F(Cartes, ListedNamesAndComplementaryNumber) {
    const std::string a60(60, 'A'), p40(40, 'p');
    std::string e50;
    for (int i = 0; i < 50; ++i) {
        e50 += "é";
    }
    const std::string e60 = e50 + "éééééééééé";
    // Usual names are cut to 50 characters, never inside one; first names go whole. A
    // complementary number on the card wins over the mutual number or the fixed number
    // of regimes 12, 13 and 14, and these win over the mutual number.
    const struct {
        std::string nom, prenom, cod_seb, mut_num, cpl_nu2, nom_ecrit, cod_commande;
    } cas[] = {{a60, p40, "12", "", "", a60.substr(0, 50), "11111119"},
               {"O'Brien \"Jo\"", "Zoé", "13", "123", "", "O'Brien \"\"Jo\"\"", "22222228"},
               {e60, "Ève", "13", "", "55555555", e50, "55555555"},
               {"Durand", "Léa", "14", "", "", "Durand", "33333337"},
               {"Petit", "Luc", "01", "0123", "", "Petit", "0123"},
               {"Martin", "Jean", "", "", "", "Martin", ""}};
    std::string carte = "<contexteCVitale>" + e("NIR_ASS", "15003751234567") + e("CLE_ASS", "89");
    for (const auto& c : cas) {
        carte += "<Beneficiaire>" + e("NOM_USG", c.nom) + e("PRM_USG", c.prenom) +
                 e("COD_SEB", c.cod_seb) + "<MUT>" + e("MUT_NUM", c.mut_num) + "</MUT><COMP>" +
                 e("CPL_NU2", c.cpl_nu2) + "</COMP></Beneficiaire>";
    }
    reponse(carte + "</contexteCVitale>");
    EXPECT_TRUE(lancer(Stocker_Liste_Beneficiaires));
    Lignes l =
        lignes(hote, "SELECT [Nom du Verre], Couleur, Cod_Commande FROM [Sélection Verres];");
    ASSERT_EQ(l.size(), std::size(cas));
    for (std::size_t i = 0; i < l.size(); ++i) {
        EXPECT_EQ(l[i],
                  (std::vector<std::string>{cas[i].nom_ecrit, cas[i].prenom, cas[i].cod_commande}))
            << i;
    }
}

TEST_F(Cartes, CardInsertedThenUpdated) {
    const char* carte =
        "SELECT Info_ETC_ID_FK, Info_CV_VIT_NSER, Info_CV_PRM_USG FROM "
        "T_InfosCarteVitale;";
    reponse(carte_vitale(beneficiaire("19500312", "1", "Charles")));
    client("42", "1950-03-12 00:00:00", "1", "NULL");
    EXPECT_TRUE(lancer(Stocker_Carte_Vitale));
    EXPECT_EQ(lignes(pont, carte), (Lignes{{"42", "12345678 ", "Charles"}}));
    // The same card linked to another client: the row is kept and the serial number is
    // written without the blank the insert left.
    client("43", "1950-03-12", "1", "''");
    EXPECT_TRUE(lancer(Stocker_Carte_Vitale));
    EXPECT_EQ(lignes(pont, carte), (Lignes{{"43", "12345678", "Charles"}}));
}

TEST_F(Cartes, BirthDateAfterAnExclamationMark) {
    reponse(carte_vitale(beneficiaire("19500312", "1", "Premier") +
                         beneficiaire("19501331", "1", "Calendrier")));
    // The card's own day and month, 31 and 13, that no calendar has, come from the
    // client's notes when they start with "!".
    const struct {
        std::string divers, prenom;  // "" when no beneficiary matches
    } cas[] = {{"'Divers !'", ""}, {"'!3113'", "Calendrier"}, {"'!3112'", ""}};
    for (const auto& c : cas) {
        executer(pont, "DELETE FROM T_InfosCarteVitale;");
        client("7", "1950-01-01", "1", c.divers);
        EXPECT_EQ(lancer(Stocker_Carte_Vitale), !c.prenom.empty()) << c.divers;
        Lignes l = lignes(pont, "SELECT Info_CV_PRM_USG FROM T_InfosCarteVitale;");
        EXPECT_EQ(l, c.prenom.empty() ? Lignes{} : Lignes{{c.prenom}}) << c.divers;
    }
}

TEST_F(Cartes, RightsInNineSlotsFromVersion3600) {
    std::string amo = "<DRT_AMO>" + e("NB_DRT_AMO", "11");
    for (int i = 1; i <= 11; ++i) {
        amo += e("DAMO_DEB", "D" + std::to_string(i)) + e("DAMO_FIN", "F" + std::to_string(i));
    }
    const std::string cc = "<DRT_CC>" + e("NB_DRT_CC", "0") + e("CC_DEB", "20200101") +
                           e("COD_SITU", "2") + "</DRT_CC>";
    reponse(carte_vitale(beneficiaire("19500312", "1", "Charles", amo + "</DRT_AMO>" + cc)));
    client("7", "1950-03-12", "1", "NULL");
    const char* droits =
        "SELECT Info_CV_NB_DRT_AMO, Info_CV_DAMO_DEB_1, Info_CV_DAMO_DEB_9, Info_CV_DAMO_FIN_9, "
        "Info_CV_NB_DRT_CC, Info_CV_CC_DEB_1, Info_CV_COD_SITU_1 FROM T_InfosCarteVitale;";
    // Older host databases have no rights columns to fill. Eleven periods go into nine
    // slots; a count of 0 leaves the slots empty even though the card holds periods.
    const struct {
        int version;
        std::vector<std::string> attendu;
    } cas[] = {{3599, {"", "", "", "", "", "", ""}}, {3600, {"11", "D1", "D9", "F9", "0", "", ""}}};
    for (const auto& c : cas) {
        executer(pont, "DELETE FROM T_InfosCarteVitale;");
        executer(hote, "UPDATE Version SET Version = " + std::to_string(c.version) + ";");
        EXPECT_TRUE(lancer(Stocker_Carte_Vitale));
        EXPECT_EQ(lignes(pont, droits), Lignes{c.attendu}) << c.version;
    }
}

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

TEST_F(Cartes, ComplementaryRequest) {
    executer(pont, "INSERT INTO T_InfosCPS ( Info_CPS_ID, Info_CPS_NUM_IDN ) VALUES ( 1, '999' );");
    executer(pont,
             "INSERT INTO T_InfosSituation_CPS ( InfoSituation_CPS_ID, InfoSituation_CPS_NUM_SIT, "
             "InfoSituation_NUM_IDFACPS, InfoSituation_CLE_IDFACPS ) VALUES ( 1, '1', '1234567', "
             "'8' );");
    const struct {
        std::string numeroMutuelle, numero;
    } cas[] = {{"099999997", "99999997"}, {"0999999970", "0999999970"}};
    for (const auto& c : cas) {
        // Two beneficiaries: the codes of the last one are sent.
        test::ecrire(
            programme + "/ZEMO_Request.xml",
            "<BelvaneClassicII><beneficiaire>" + e("codeRegime", "08") + e("codeCaisse", "111") +
                e("codeCentre", "1111") + "</beneficiaire><beneficiaire>" + e("codeRegime", "01") +
                e("codeCaisse", "751") + e("codeCentre", "0000") + "</beneficiaire><donneesTP>" +
                e("numeroMutuelle", c.numeroMutuelle) + "</donneesTP></BelvaneClassicII>");
        EXPECT_TRUE(lancer(Requete_f_LireInfosComplementaire));
        XmlDocument doc;
        ASSERT_TRUE(doc.charger_fichier(programme + "/ZEMO_SvRequest.xml"));
        const XmlNoeud d =
            doc.selectionner("//f_LireInfosComplementaire/donneesComplementaire").at(0);
        EXPECT_EQ(d.texte_de("numeroComplementaire") + " " + d.texte_de("codeRegime") + " " +
                      d.texte_de("codeCaisse") + " " + d.texte_de("codeCentre"),
                  c.numero + " 01 751 0000");
    }
}

}  // namespace
}  // namespace sv140
