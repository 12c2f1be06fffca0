// How the bridge reads the command line the host gives it, and what it does with a
// name it does not know.
#include "harnais.h"

namespace bb {
namespace {

std::string decomposition(const std::string& utf8) {
    std::string d;
    for (unsigned char c : latin1(utf8)) {
        d += std::to_string(c) + " ";
    }
    return d;
}

std::string joindre(const std::vector<std::string>& mots) {
    std::string s;
    for (const auto& m : mots) {
        s += (s.empty() ? "" : " ") + m;
    }
    return s;
}

class LigneCommande : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        b.utiliser_script();
    }
};

TEST_F(LigneCommande, TheCommandLineAndThePathsItGivesAreLogged) {
    struct Cas {
        std::vector<std::string> suite;  // words after the data folder
    };
    for (const Cas& c : {Cas{{}}, Cas{{"é"}}, Cas{{"un", "deux"}}}) {
        std::vector<std::string> args{"f_LireVersion", b.magasin};
        args.insert(args.end(), c.suite.begin(), c.suite.end());
        const std::string chaine = joindre(args);
        SCOPED_TRACE(chaine);

        Execution e = b.lancer(args);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_TRUE(b.log_finit_par("Chaine_Command : " + chaine)) << b.log();
        EXPECT_TRUE(b.log_finit_par("Decomposition Chaine : " + decomposition(chaine))) << b.log();
        EXPECT_TRUE(b.log_finit_par("F_Appel : f_LireVersion")) << b.log();
        EXPECT_TRUE(b.log_finit_par("DB_DONNEES : " + b.magasin + "/Donnees_32.accdb")) << b.log();
        EXPECT_TRUE(b.log_finit_par("DB_sv : " + b.magasin + "/SV140.accdb")) << b.log();
    }
}

TEST_F(LigneCommande, WithoutABlankTheDeveloperDefaultsListTheInvoices) {
    for (const auto& args :
         {std::vector<std::string>{}, std::vector<std::string>{"f_LireCVitale"}}) {
        SCOPED_TRACE(joindre(args));
        Execution e = b.lancer(args);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_TRUE(b.log_finit_par("F_Appel : f_ListerFactures")) << b.log();
        bool ligne_donnees = false;
        for (const auto& l : lignes(b.log())) {
            if (l.find("DB_DONNEES : ") != std::string::npos &&
                l.find("_Magasin") != std::string::npos && l.ends_with("Donnees_32.accdb")) {
                ligne_donnees = true;
            }
        }
        EXPECT_TRUE(ligne_donnees) << b.log();
    }
}

TEST_F(LigneCommande, AnUnknownNameIsShownAndNothingIsAskedOfTheMiddleware) {
    const std::string precedente = reponse("f_LireVersion", "0", "");
    struct Cas {
        std::vector<std::string> suite;
        bool reponse_precedente;  // an answer left by an earlier run
    };
    for (const std::string nom : {"F_LIRECVITALE", "f_lirecvitale", "f_Inconnue"}) {
        for (const Cas& c : {Cas{{}, true}, Cas{{"un", "deux"}, true}, Cas{{}, false}}) {
            std::vector<std::string> args{nom, b.magasin};
            args.insert(args.end(), c.suite.begin(), c.suite.end());
            const std::string chaine = joindre(args);
            SCOPED_TRACE(chaine + (c.reponse_precedente ? " (earlier answer)" : " (no answer)"));
            std::remove(b.fichier("ZEMO_SvResponse.xml").c_str());
            if (c.reponse_precedente) {
                ecrire(b.fichier("ZEMO_SvResponse.xml"), precedente);
            }

            Execution e = b.lancer(args);
            ASSERT_TRUE(fin_propre(e));
            const std::string inconnu = "SV140 : " + chaine + " -*- " + nom + " -*- " + b.magasin +
                                        " -*- " + joindre(c.suite);
            std::vector<std::string> attendu{inconnu};
            if (c.reponse_precedente) {
                // The earlier answer reports no error, so the response phase runs and
                // does not know the name either.
                attendu.push_back("SV140 : " + nom);
            } else {
                attendu.push_back("Reponse : Le fichier : " + b.fichier("ZEMO_SvResponse.xml") +
                                  " | non présent ! Veuillez réessayer dans quelques instants");
            }
            EXPECT_EQ(e.boites(), attendu) << e.erreurs;
            EXPECT_TRUE(b.log_finit_par("MsgBox : " + inconnu)) << b.log();
            EXPECT_EQ(b.appels(), 0);
        }
    }
}

TEST_F(LigneCommande, ACardUpdateThatSucceedsSaysSo) {
    b.scripter_reponse(1, reponse("f_MettreAJourCV", "0", ""));
    Execution e = b.operation("f_MettreAJourCV");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_EQ(e.boites(), std::vector<std::string>{"SV140 : f_MettreAJourCV"}) << e.erreurs;

    b.scripter(2, 0, reponse("f_MettreAJourCV", "276", "Carte absente"));
    e = b.operation("f_MettreAJourCV");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_TRUE(e.boites().empty()) << e.erreurs;
}

}  // namespace
}  // namespace bb
