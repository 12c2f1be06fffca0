// What the bridge does with files and databases that are missing or damaged: the host
// still finds an answer, the databases stay as they were, and the log says why.
#include <filesystem>

#include "harnais.h"

namespace bb {
namespace {

const std::string kClient = "57, '150017512345642', '1975-05-12 00:00:00', 1, NULL";

using EntreesInvalides = BoiteNoire;

TEST_F(EntreesInvalides, AnUnreadableAnswerStoresNothing) {
    const std::string abime =
        "<!DOCTYPE ZRMESSAGE><ZRMESSAGE><appelant>x</appelant><resultat>"
        "<codeErreur>0</codeErreur></resultat><donnees>";
    // Well-formed, but its reading would depend on what it declares.
    const std::string entite =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
        "<!DOCTYPE ZRMESSAGE [ <!ENTITY nom \"NOUVEAU\"> ]><ZRMESSAGE><appelant>f_LireCPS"
        "</appelant><resultat><codeErreur>0</codeErreur><libelleErreur/><donnees><contextePS>"
        "<NUM_IDN>10009999999</NUM_IDN><NOM_PRAT>&nom;</NOM_PRAT></contextePS></donnees>"
        "</resultat></ZRMESSAGE>";
    struct Cas {
        std::string operation;
        std::optional<std::string> reponse;  // the answer file the link finds
        std::string appelant;                // the version store reports as the card read
    };
    professionnel();
    client(kClient);
    for (const Cas& c :
         std::vector<Cas>{{"f_MettreAJourIdEtc", std::nullopt, "f_LireCVitale"},
                          {"f_MettreAJourIdEtc", "", "f_LireCVitale"},
                          {"f_MettreAJourIdEtc", "<?xml version=\"1.0\"?><ZRMESSAGE><resultat>",
                           "f_LireCVitale"},
                          {"f_MettreAJourIdEtc", "Erreur interne du lecteur", "f_LireCVitale"},
                          {"f_LireCVitale", abime, "f_LireCVitale"},
                          {"f_LireCPS", abime, "f_LireCPS"},
                          {"f_LireCPS", entite, "f_LireCPS"},
                          {"f_LireVersion", abime, "f_LireCPS"}}) {
        SCOPED_TRACE(c.operation + " " + c.reponse.value_or("(no answer)"));
        const bool lien = c.operation == "f_MettreAJourIdEtc";  // no middleware call
        utiliser_script();
        std::remove(fichier("ZEMO_SvResponse.xml").c_str());
        if (c.reponse) {
            lien ? ecrire(fichier("ZEMO_SvResponse.xml"), *c.reponse) : scripter(1, *c.reponse);
        }
        sql(hote(), "INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('earlier')");
        const Lignes avant = instantane({pont(), hote()});
        Execution e = operation(c.operation);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(instantane({pont(), hote()}), avant);
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
                  (Textes{c.appelant, "99", "Impossible de lire ZEMO_SvResponse.xml"}));
        EXPECT_EQ(appels(), lien ? 0 : 1);
        if (lien) {
            EXPECT_EQ(e.boites(), Textes{"Erreur dans f_MettreAJourIdEtc : Erreur N° 99 | "
                                         " | Impossible de lire ZEMO_SvResponse.xml"})
                << e.erreurs;
            EXPECT_TRUE(log_finit_par("Code Erreur Reponse : 99")) << log();
        }
    }
}

TEST_F(EntreesInvalides, AnUnreadableHostRequestSendsNothing) {
    // One entity of 10 000 characters used 10 000 times: 100 MB once expanded.
    std::string bombe = "<?xml version=\"1.0\"?><!DOCTYPE BelvaneClassicII [ <!ENTITY x \"" +
                        std::string(10000, 'x') +
                        "\"> ]><BelvaneClassicII><beneficiaire><codeRegime>";
    for (int i = 0; i < 10000; ++i) {
        bombe += "&x;";
    }
    bombe += "</codeRegime></beneficiaire></BelvaneClassicII>";
    professionnel();
    utiliser_script();
    for (const auto& [nom, contenu] :
         std::vector<std::pair<std::string, std::optional<std::string>>>{
             {"missing", std::nullopt},
             {"cut short", "<BelvaneClassicII><beneficiaire><codeRegime>01"},
             {"declaring an entity", bombe}}) {
        SCOPED_TRACE(nom);
        std::remove(fichier("ZEMO_Request.xml").c_str());
        std::remove(fichier("ZEMO_SvRequest.xml").c_str());
        if (contenu) {
            ecrire(fichier("ZEMO_Request.xml"), *contenu);
        }
        ASSERT_TRUE(fin_propre(operation("f_LireInfosComplementaire")));
        EXPECT_EQ(appels(), 0);
        EXPECT_FALSE(existe(fichier("ZEMO_SvRequestAMC.xml")));
        EXPECT_FALSE(existe(fichier("ZEMO_SvResponseAMC.xml")));
        EXPECT_EQ(
            resultat(fichier("ZEMO_Response.xml")),
            (Textes{"f_LireInfosComplementaire", "99", "Impossible de lire ZEMO_Request.xml"}));
    }
}

TEST_F(EntreesInvalides, AnEarlierAnswerNeverStandsForThisRun) {
    // The bridge database is gone, so the complementary query cannot be built; the
    // successful answer of the run before must not reach the host as this one's.
    utiliser_script();
    ecrire(fichier("ZEMO_SvResponse.xml"),
           "<?xml version=\"1.0\"?><ZRMESSAGE><appelant>f_LireVersion</appelant><resultat>"
           "<codeErreur>0</codeErreur><libelleErreur/></resultat></ZRMESSAGE>");
    ecrire(fichier("ZEMO_Request.xml"),
           "<BelvaneClassicII><beneficiaire><codeRegime>01</codeRegime></beneficiaire>"
           "</BelvaneClassicII>");
    std::filesystem::rename(pont(), pont() + ".cache");
    EXPECT_TRUE(fin_propre(operation("f_LireInfosComplementaire")));
    std::filesystem::rename(pont() + ".cache", pont());
    EXPECT_EQ(appels(), 0);
    EXPECT_FALSE(existe(fichier("ZEMO_SvResponseAMC.xml")));
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
              (Textes{"f_InitialisationPS", "99", "Les données de la CPS n'ont pu être lues"}));
}

TEST_F(EntreesInvalides, AMissingTableFailsTheOperationAndIsLogged) {
    struct Cas {
        std::string operation, base, table;
    };
    const std::string carte = reponse_carte({beneficiaire("DUPONT", "Jean", "19750512", "1")});
    client(kClient);
    for (const Cas& c : std::vector<Cas>{{"f_LireVersion", pont(), "T_InfosVersion"},
                                         {"f_LireCVitale", hote(), "Sélection Verres"},
                                         {"f_MettreAJourIdEtc", pont(), "T_InfosCarteVitale"},
                                         {"f_MettreAJourIdEtc", hote(), "T_Etat_Civil"}}) {
        SCOPED_TRACE(c.operation + " without " + c.table);
        utiliser_script();
        scripter(1, c.operation == "f_LireVersion" ? reponse_version("1.0") : carte);
        ecrire(fichier("ZEMO_SvResponse.xml"), carte);
        std::remove(fichier("LogsSV.txt").c_str());
        sql(c.base, "ALTER TABLE [" + c.table + "] RENAME TO cachee");
        const Lignes avant = instantane({pont(), hote()});
        ASSERT_TRUE(fin_propre(operation(c.operation)));
        EXPECT_EQ(instantane({pont(), hote()}), avant);
        sql(c.base, "ALTER TABLE cachee RENAME TO [" + c.table + "]");
        const Textes r = resultat(fichier("ZEMO_Response.xml"));
        ASSERT_EQ(r.size(), 3u) << "no well-formed answer";
        EXPECT_EQ(r[0] + " " + r[1], c.operation + " 99");
        EXPECT_NE(r[2].find(chemin_du_pont(c.base)), std::string::npos) << r[2];
        EXPECT_NE(log().find(c.table), std::string::npos) << log();
    }
}

}  // namespace
}  // namespace bb
