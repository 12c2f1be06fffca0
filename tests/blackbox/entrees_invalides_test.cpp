// What the bridge does with files and databases that are missing or damaged: the host
// still finds an answer, the databases stay as they were, and the log says why.
#include <filesystem>

#include "harnais.h"

namespace bb {
namespace {

class EntreesInvalides : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        b.utiliser_script();
    }

    /// A log line that names `quoi`, other than the lines that only give the paths.
    bool log_signale(const std::string& quoi) {
        for (const auto& l : lignes(b.log())) {
            if ((l.find(quoi) != std::string::npos || l.find(latin1(quoi)) != std::string::npos) &&
                l.find("DB_DONNEES : ") == std::string::npos &&
                l.find("DB_sv : ") == std::string::npos) {
                return true;
            }
        }
        return false;
    }

    std::string instantanes() {
        Base pont(b.base_pont());
        Base hote(b.base_hote());
        return pont.instantane() + hote.instantane();
    }
};

TEST_F(EntreesInvalides, AnUnreadableCardAnswerIsReportedWhenLinking) {
    const std::vector<std::pair<std::string, std::optional<std::string>>> cas{
        {"missing", std::nullopt},
        {"empty", ""},
        {"cut short", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><ZRMESSAGE><resultat>"},
        {"not XML", "Erreur interne du lecteur"},
    };
    for (const auto& [nom, contenu] : cas) {
        SCOPED_TRACE(nom);
        std::remove(b.fichier("ZEMO_SvResponse.xml").c_str());
        if (contenu) {
            ecrire(b.fichier("ZEMO_SvResponse.xml"), *contenu);
        }
        {
            Base hote(b.base_hote());
            hote.executer(
                "DELETE FROM T_Etat_Civil; INSERT INTO T_Etat_Civil ([N°],"
                " [Sécurité sociale], [Date Naissance], RangNaissance) VALUES"
                " (57, '150017512345642', '1975-05-12 00:00:00', 1)");
        }
        const std::string avant = instantanes();
        Execution e = b.operation("f_MettreAJourIdEtc");
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(instantanes(), avant);
        auto r = resultat(b.fichier("ZEMO_Response.xml"));
        ASSERT_TRUE(r) << "no well-formed answer for the host";
        EXPECT_EQ(r->appelant, "f_LireCVitale");
        EXPECT_EQ(r->code, "99");
        EXPECT_EQ(r->libelle, "Impossible de lire ZEMO_SvResponse.xml");
        EXPECT_EQ(e.boites(),
                  std::vector<std::string>{"Erreur dans f_MettreAJourIdEtc : Erreur N° 99 | "
                                           " | Impossible de lire ZEMO_SvResponse.xml"})
            << e.erreurs;
        EXPECT_TRUE(b.log_finit_par("Code Erreur Reponse : 99")) << b.log();
        EXPECT_EQ(b.appels(), 0);
    }
}

TEST_F(EntreesInvalides, AMalformedMiddlewareAnswerStoresNothing) {
    const std::string abime =
        "<!DOCTYPE ZRMESSAGE><ZRMESSAGE><appelant>x</appelant><resultat>"
        "<codeErreur>0</codeErreur></resultat><donnees>";
    struct Cas {
        std::string operation, appelant;
    };
    // The version store reports under the professional card's name: the host knows it so.
    for (const Cas& c : {Cas{"f_LireCVitale", "f_LireCVitale"}, Cas{"f_LireCPS", "f_LireCPS"},
                         Cas{"f_LireVersion", "f_LireCPS"}}) {
        SCOPED_TRACE(c.operation);
        {
            Base hote(b.base_hote());
            hote.executer(
                "DELETE FROM [Sélection Verres];"
                "INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('earlier')");
        }
        b.professionnel();
        std::remove(b.script("compteur").c_str());
        b.scripter_reponse(1, abime);
        const std::string avant = instantanes();
        Execution e = b.operation(c.operation);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(instantanes(), avant);
        auto r = resultat(b.fichier("ZEMO_Response.xml"));
        ASSERT_TRUE(r) << "no well-formed answer for the host";
        EXPECT_EQ(r->appelant, c.appelant);
        EXPECT_EQ(r->code, "99");
        EXPECT_EQ(r->libelle, "Impossible de lire ZEMO_SvResponse.xml");
    }
}

TEST_F(EntreesInvalides, AnUnreadableHostRequestSendsNothing) {
    b.professionnel();
    for (const auto& contenu : std::vector<std::optional<std::string>>{
             std::nullopt, "<BelvaneClassicII><beneficiaire><codeRegime>01"}) {
        SCOPED_TRACE(contenu ? "malformed" : "missing");
        std::remove(b.fichier("ZEMO_Request.xml").c_str());
        std::remove(b.fichier("ZEMO_SvRequest.xml").c_str());
        if (contenu) {
            ecrire(b.fichier("ZEMO_Request.xml"), *contenu);
        }
        Execution e = b.operation("f_LireInfosComplementaire");
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(b.appels(), 0);
        EXPECT_FALSE(existe(b.fichier("ZEMO_SvRequestAMC.xml")));
        EXPECT_FALSE(existe(b.fichier("ZEMO_SvResponseAMC.xml")));
        // Either the bridge's own word on the host's document, or the missing request
        // that ends the run before the answer is copied for the host.
        auto r = resultat(b.fichier("ZEMO_SvResponse.xml"));
        ASSERT_TRUE(r) << "no well-formed answer";
        if (r->code == "99") {
            EXPECT_EQ(r->libelle, "Impossible de lire ZEMO_Request.xml");
            EXPECT_EQ(r->appelant, "f_LireInfosComplementaire");
        } else {
            EXPECT_EQ(r->code, "1");
            EXPECT_EQ(r->libelle, "Requete XML Non trouvée");
        }
        EXPECT_FALSE(b.log().empty());
    }
}

TEST_F(EntreesInvalides, AMissingDatabaseIsNeverCreated) {
    struct Cas {
        std::string nom, chemin;
        bool version_stockee;  // the run still stores what the middleware said
    };
    const std::vector<Cas> cas{
        {"bridge database", b.base_pont(), false},
        {"host database", b.base_hote(), false},
        {"temporary database", b.temporaire, true},
    };
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.nom);
        const std::string cache = c.chemin + ".cache";
        std::filesystem::rename(c.chemin, cache);
        std::remove(b.script("compteur").c_str());
        b.scripter_reponse(1, reponse_version("4.4"));
        Execution e = b.operation("f_LireVersion");
        EXPECT_TRUE(fin_propre(e));
        EXPECT_FALSE(existe(c.chemin)) << "the bridge created " << c.chemin;
        std::filesystem::remove(c.chemin);
        std::filesystem::rename(cache, c.chemin);

        EXPECT_TRUE(resultat(b.fichier("ZEMO_Response.xml"))) << "no well-formed answer";
        if (c.version_stockee) {
            Base pont(b.base_pont());
            EXPECT_EQ(pont.valeur("SELECT Info_Version_VersionDLL FROM T_InfosVersion"), "4.4");
            pont.executer("DELETE FROM T_InfosVersion");
        }
        EXPECT_TRUE(log_signale(c.chemin)) << b.log();
    }
}

TEST_F(EntreesInvalides, AMissingTableIsLoggedAndTheRestLeftAlone) {
    struct Cas {
        std::string operation, base, table;
    };
    const std::vector<Cas> cas{
        {"f_LireVersion", "pont", "T_InfosVersion"},
        {"f_LireCVitale", "hote", "Sélection Verres"},
        {"f_MettreAJourIdEtc", "pont", "T_InfosCarteVitale"},
        {"f_MettreAJourIdEtc", "hote", "T_Etat_Civil"},
    };
    CarteTest carte{contexte_carte(), {beneficiaire("DUPONT", "Jean", "19750512", "1")}};
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.operation + " without " + c.table);
        Boutique s;
        std::string erreur;
        ASSERT_TRUE(s.installer(erreur)) << erreur;
        std::filesystem::create_directories(s.magasin + "/Sv140");
        s.utiliser_script();
        s.scripter_reponse(
            1, c.operation == "f_LireVersion" ? reponse_version("1.0") : reponse_carte(carte));
        if (c.operation == "f_MettreAJourIdEtc") {
            ecrire(s.fichier("ZEMO_SvResponse.xml"), reponse_carte(carte));
            if (c.table != "T_Etat_Civil") {
                Base hote(s.base_hote());
                hote.executer(
                    "INSERT INTO T_Etat_Civil ([N°], [Sécurité sociale],"
                    " [Date Naissance], RangNaissance) VALUES"
                    " (57, '150017512345642', '1975-05-12 00:00:00', 1)");
            }
        }
        std::string avant;
        {
            Base db(c.base == "pont" ? s.base_pont() : s.base_hote());
            db.executer("DROP TABLE [" + c.table + "]");
            Base pont(s.base_pont());
            Base hote(s.base_hote());
            avant = pont.instantane() + hote.instantane();
        }
        Execution e = s.operation(c.operation);
        ASSERT_TRUE(fin_propre(e));
        Base pont(s.base_pont());
        Base hote(s.base_hote());
        EXPECT_EQ(pont.instantane() + hote.instantane(), avant);
        EXPECT_TRUE(resultat(s.fichier("ZEMO_Response.xml"))) << "no well-formed answer";
        bool signale = false;
        for (const auto& l : lignes(s.log())) {
            signale |= l.find(c.table) != std::string::npos ||
                       l.find(latin1(c.table)) != std::string::npos;
        }
        EXPECT_TRUE(signale) << s.log();
        if (::testing::Test::HasFailure()) {
            s.garder = true;
        }
    }
}

TEST_F(EntreesInvalides, WithoutTheParameterTableTheDefaultBufferIsUsed) {
    {
        Base pont(b.base_pont());
        pont.executer("DROP TABLE T_InfoParam");
    }
    b.scripter_reponse(1, reponse_version("2.2"));
    Execution e = b.operation("f_LireVersion");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_EQ(b.taille(1), 102400);
    Base pont(b.base_pont());
    EXPECT_EQ(pont.valeur("SELECT Info_Version_VersionDLL FROM T_InfosVersion"), "2.2");
}

}  // namespace
}  // namespace bb
