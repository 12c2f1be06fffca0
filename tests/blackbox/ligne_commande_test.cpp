// How the bridge reads the command line the host gives it, and what it does with a
// name it does not know.
#include "harnais.h"
#include "platform/encodage.h"

namespace bb {
namespace {

using namespace std::string_literals;

std::string joindre(const Textes& mots) {
    std::string s;
    for (const auto& m : mots) {
        s += (s.empty() ? "" : " ") + m;
    }
    return s;
}

using LigneCommande = BoiteNoire;

TEST_F(LigneCommande, TheCommandLineAndThePathsItGivesAreLogged) {
    for (const auto& suite : std::vector<Textes>{{}, {"é"}, {"un", "deux"}}) {
        Textes args{"f_LireVersion", chemin_du_pont(magasin)};
        args.insert(args.end(), suite.begin(), suite.end());
        const std::string chaine = joindre(args);
        SCOPED_TRACE(chaine);
        std::string decomposition;  // the platform's single-byte codes: 233 for é
        for (unsigned char c : sv140::utf8_vers_cp1252(chaine)) {
            decomposition += std::to_string(c) + " ";
        }
        ASSERT_TRUE(fin_propre(lancer(args)));
        for (const std::string& l :
             {"Chaine_Command : " + chaine, "Decomposition Chaine : " + decomposition,
              "F_Appel : f_LireVersion"s, "DB_DONNEES : " + chemin_du_pont(hote()),
              "DB_sv : " + chemin_du_pont(pont())}) {
            EXPECT_TRUE(log_finit_par(l)) << l << "\n" << log();
        }
    }
    // Without a blank on the command line, the developer's defaults list the invoices.
    for (const auto& args : std::vector<Textes>{{}, {"f_LireCVitale"}}) {
        ASSERT_TRUE(fin_propre(lancer(args)));
        EXPECT_TRUE(log_finit_par("F_Appel : f_ListerFactures")) << log();
    }
}

TEST_F(LigneCommande, AnUnknownNameIsShownAndNothingIsAskedOfTheMiddleware) {
    utiliser_script();
    struct Cas {
        std::string nom;
        Textes suite;
        bool reponse_precedente;  // an answer left by an earlier run
    };
    for (const Cas& c : {Cas{"F_LIRECVITALE", {}, true}, Cas{"f_Inconnue", {"un", "deux"}, true},
                         Cas{"f_lirecvitale", {}, false}}) {
        Textes args{c.nom, chemin_du_pont(magasin)};
        args.insert(args.end(), c.suite.begin(), c.suite.end());
        SCOPED_TRACE(joindre(args));
        std::remove(fichier("ZEMO_SvResponse.xml").c_str());
        if (c.reponse_precedente) {
            ecrire(fichier("ZEMO_SvResponse.xml"), reponse("f_LireVersion", "0", ""));
        }
        Execution e = lancer(args);
        ASSERT_TRUE(fin_propre(e));
        const std::string inconnu = "SV140 : " + joindre(args) + " -*- " + c.nom + " -*- " +
                                    args[1] + " -*- " + joindre(c.suite);
        // An earlier answer without error lets the response phase run: it does not know
        // the name either.
        const std::string seconde =
            c.reponse_precedente
                ? "SV140 : " + c.nom
                : "Reponse : Le fichier : " + chemin_du_pont(fichier("ZEMO_SvResponse.xml")) +
                      " | non présent ! Veuillez réessayer dans quelques instants";
        EXPECT_EQ(e.boites(), (Textes{inconnu, seconde})) << e.erreurs;
        EXPECT_TRUE(log_finit_par("MsgBox : " + inconnu)) << log();
        EXPECT_EQ(appels(), 0);
    }
}

TEST_F(LigneCommande, OnlyASuccessfulCardUpdateSaysSo) {
    utiliser_script();
    scripter(1, reponse("f_MettreAJourCV", "0", ""));
    scripter(2, reponse("f_MettreAJourCV", "276", "Carte absente"));
    Execution e = operation("f_MettreAJourCV");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_EQ(e.boites(), Textes{"SV140 : f_MettreAJourCV"}) << e.erreurs;
    e = operation("f_MettreAJourCV");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_EQ(e.boites(), Textes{}) << e.erreurs;
}

}  // namespace
}  // namespace bb
