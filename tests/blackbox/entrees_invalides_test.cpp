// What the bridge does with files and databases that are missing or damaged: the host
// still finds an answer, the databases stay as they were, and the log says why.
#include <filesystem>

#include "harnais.h"

namespace bb {
namespace {

const std::string kClient = "57, '150017512345642', '1975-05-12 00:00:00', 1, NULL";

class EntreesInvalides : public BoiteNoire {
  protected:
    /// Every row of every table of both databases.
    Lignes instantane() {
        Lignes tout;
        for (const auto& base : {pont(), hote()}) {
            for (const auto& t : sql(base, "SELECT name FROM sqlite_master WHERE type = 'table'")) {
                tout.push_back(t);
                for (const auto& ligne : sql(base, "SELECT * FROM [" + t[0] + "]")) {
                    tout.push_back(ligne);
                }
            }
        }
        return tout;
    }
};

TEST_F(EntreesInvalides, AnUnreadableAnswerStoresNothing) {
    const std::string abime =
        "<!DOCTYPE ZRMESSAGE><ZRMESSAGE><appelant>x</appelant><resultat>"
        "<codeErreur>0</codeErreur></resultat><donnees>";
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
                          {"f_LireVersion", abime, "f_LireCPS"}}) {
        SCOPED_TRACE(c.operation + " " + c.reponse.value_or("(no answer)"));
        const bool lien = c.operation == "f_MettreAJourIdEtc";  // no middleware call
        utiliser_script();
        std::remove(fichier("ZEMO_SvResponse.xml").c_str());
        if (c.reponse) {
            lien ? ecrire(fichier("ZEMO_SvResponse.xml"), *c.reponse) : scripter(1, *c.reponse);
        }
        sql(hote(), "INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('earlier')");
        const Lignes avant = instantane();
        Execution e = operation(c.operation);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(instantane(), avant);
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
    professionnel();
    utiliser_script();
    for (const auto& contenu : std::vector<std::optional<std::string>>{
             std::nullopt, "<BelvaneClassicII><beneficiaire><codeRegime>01"}) {
        SCOPED_TRACE(contenu.value_or("missing"));
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

TEST_F(EntreesInvalides, AMissingDatabaseIsNeverCreatedAndIsLogged) {
    struct Cas {
        std::string chemin;
        bool version_stockee;  // the run still stores what the middleware said
    };
    for (const Cas& c : {Cas{pont(), false}, Cas{hote(), true},
                         Cas{racine + "/Belvane_Classic/Temporaire.accdb", true}}) {
        SCOPED_TRACE(c.chemin);
        std::filesystem::rename(c.chemin, c.chemin + ".cache");
        utiliser_script();
        scripter(1, reponse_version("4.4"));
        EXPECT_TRUE(fin_propre(operation("f_LireVersion")));
        EXPECT_FALSE(existe(c.chemin)) << "the bridge created it";
        std::filesystem::remove(c.chemin);
        std::filesystem::rename(c.chemin + ".cache", c.chemin);
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")).size(), 3u) << "no well-formed answer";
        EXPECT_EQ(versions(), c.version_stockee ? Lignes{version_stockee("4.4")} : Lignes{});
        sql(pont(), "DELETE FROM T_InfosVersion");
        bool signale = false;  // a line that names it, besides those giving the paths
        for (const auto& l : lignes(log())) {
            signale |= l.find(chemin_du_pont(c.chemin)) != std::string::npos &&
                       l.find("DB_") == std::string::npos;
        }
        EXPECT_TRUE(signale) << log();
    }
}

TEST_F(EntreesInvalides, AMissingTableIsLoggedAndTheRestLeftAlone) {
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
        const Lignes avant = instantane();
        ASSERT_TRUE(fin_propre(operation(c.operation)));
        EXPECT_EQ(instantane(), avant);
        sql(c.base, "ALTER TABLE cachee RENAME TO [" + c.table + "]");
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")).size(), 3u) << "no well-formed answer";
        EXPECT_NE(log().find(c.table), std::string::npos) << log();
    }
}

}  // namespace
}  // namespace bb
