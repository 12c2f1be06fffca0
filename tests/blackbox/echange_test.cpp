// The exchange with the middleware, through a middleware that plays a script: the
// requests it receives, what becomes of its answers, its errors and its oversized
// answers, the archive and the answer the host reads.
#include <algorithm>
#include <filesystem>
#include <functional>

#include "harnais.h"

namespace bb {
namespace {

// The declaration the cleaning of an answer puts in place of its document type line,
// and the one the bridge writes on its own documents.
const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
const std::string kDeclarationPont = "<?xml version='1.0' encoding='ISO-8859-1'?>";

std::string remplacer(std::string s, const std::string& morceau, const std::string& par) {
    for (auto i = s.find(morceau); i != std::string::npos; i = s.find(morceau, i + par.size())) {
        s.replace(i, morceau.size(), par);
    }
    return s;
}

using Echange = BoiteNoire;

TEST_F(Echange, RequestsCarryTheDateAndTheProfessional) {
    struct Situation {
        std::string num_situ;  // "" when no professional is stored
        int version;
        std::string idNat, idFac, numSitu;
    };
    for (const Situation& s :
         {Situation{"", 3600, "", "", "1"}, Situation{"2", 3600, "10001234567", "876543210", "2"},
          Situation{"2", 3500, "10001234567", "876543210", "2"},
          Situation{"2", 3499, "10001234567", "123456789", "1"},
          Situation{"0", 3600, "10001234567", "123456789", "1"},
          Situation{" 2 ", 3600, "10001234567", "876543210", "2"}}) {
        if (!s.num_situ.empty()) {
            professionnel(s.num_situ, s.version);
        }
        auto el = [](const std::string& nom, const std::string& texte) {
            return texte.empty() ? "<" + nom + "/>" : "<" + nom + ">" + texte + "</" + nom + ">";
        };
        const std::string v = el("versionMessage", "0001");
        const std::string ps = "<PS>" + el("idNat", s.idNat) + el("idFac", s.idFac);
        const std::string situ = el("numSitu", s.numSitu);
        for (const auto& [op, parametres] : std::vector<std::pair<std::string, std::string>>{
                 {"f_LireCVitale", v + "<dateLecture>{jour}</dateLecture>"},
                 {"f_LireCPS", v},
                 {"f_LireVersion", v},
                 {"f_MettreAJourCV", v},
                 {"f_InitialisationPS", v + ps + situ + el("motDePasse", s.idNat) + "</PS>"},
                 {"f_MaJVersion", v + ps + situ + "</PS>"},
                 {"f_ListerFactures", v + ps + "</PS>"}}) {
            SCOPED_TRACE(op + " Num_Situ '" + s.num_situ + "' version " +
                         std::to_string(s.version));
            utiliser_script();
            ASSERT_TRUE(fin_propre(operation(op)));
            // The day of the run, known once it has run.
            const std::string corps =
                "<ZRMESSAGE><programme>Belvane_Classic II</programme><requete><fonction><" + op +
                ">" + remplacer(parametres, "{jour}", horloge("%Y%m%d")) + "</" + op +
                "></fonction></requete></ZRMESSAGE>";
            EXPECT_EQ(lire(fichier("ZEMO_SvRequest.xml")), kDeclarationPont + "\n" + corps + "\n");
            // The middleware receives its lines ended by CR LF.
            EXPECT_EQ(lire(script("requete_1.xml")), kDeclarationPont + "\r\n" + corps + "\r\n");
        }
    }
}

TEST_F(Echange, AFailedCallLeavesTheBridgesOwnAnswer) {
    const std::string bibliotheque = BoiteNoire::bibliotheque();
    const std::string charger = "SV140 : Impossible de charger " + chemin_du_pont(bibliotheque);
    const Textes brutale{"Toutes fonctions", "98", "Erreur Web Quintara - Sortie brutale"};
    struct Cas {
        std::string nom;
        int retour;
        std::function<void()> preparer;
        Textes boites;  // how each box begins
        Textes resultat;
    };
    for (const Cas& c : std::vector<Cas>{
             {"returns 7", 7, [] {}, {"SV140 : Erreur N° : 7"}, brutale},
             {"no library", 0, [&] { std::remove(bibliotheque.c_str()); }, {charger}, brutale},
             {"not a library", 0, [&] { ecrire(bibliotheque, "?"); }, {charger}, brutale},
             {"answer vanished",
              7,
              [&] { ecrire(script("1.efface"), "ZEMO_SvResponse.xml"); },
              {"SV140 : Erreur N° : 7",
               "Reponse : Le fichier : " + chemin_du_pont(fichier("ZEMO_SvResponse.xml")) +
                   " | non présent !"},
              {"f_LireVersion", "99", "Impossible de lire ZEMO_SvResponse.xml"}}}) {
        SCOPED_TRACE(c.nom);
        utiliser_script();
        scripter(1, "", c.retour);
        c.preparer();
        Execution e = operation("f_LireVersion");
        ASSERT_TRUE(fin_propre(e));
        const Textes boites = e.boites();
        ASSERT_EQ(boites.size(), c.boites.size()) << e.erreurs;
        for (std::size_t i = 0; i < boites.size(); ++i) {
            EXPECT_TRUE(boites[i].starts_with(c.boites[i])) << boites[i];
        }
        EXPECT_EQ(versions(), Lignes{});
        const std::string document =
            kDeclarationPont + "\n<ZRMESSAGE><programme>Belvane_Classic_II</programme><appelant>" +
            c.resultat[0] + "</appelant><resultat><codeErreur>" + c.resultat[1] +
            "</codeErreur><libelleErreur>" + c.resultat[2] +
            "</libelleErreur></resultat></ZRMESSAGE>\n";
        EXPECT_EQ(lire(fichier("ZEMO_SvResponse.xml")), document);
        EXPECT_EQ(lire(fichier("ZEMO_Response.xml")), document);
    }
}

TEST_F(Echange, AnswersAreCleanedThenKeptForTheHostAndArchivedByMonth) {
    // The answer after its document type line, with an accented text.
    const std::string corps =
        reponse("f_LireVersion", "0", "déjà lu", donnees_version("5.1")).substr(22);
    const std::string propre = kDeclaration + remplacer(corps, "\r\n", "");
    struct Cas {
        std::string nom, reponse, attendu;
        std::size_t tampon = 0;  // the buffer size set for the bridge
    };
    for (const Cas& c :
         std::vector<Cas>{{"document type only", "<!DOCTYPE ZRMESSAGE>\r\n" + corps, propre},
                          {"declaration and document type",
                           kDeclaration + "\r\n<!DOCTYPE ZRMESSAGE>\r\n" + corps, propre},
                          {"cut at the first NUL", kDeclaration + corps + '\0' + "<reste>", propre},
                          {"lone line feeds stay", kDeclaration + "\n" + corps,
                           kDeclaration + "\n" + remplacer(corps, "\r\n", "")},
                          {"the buffer exactly full", kDeclaration + corps, propre,
                           kDeclaration.size() + corps.size()}}) {
        SCOPED_TRACE(c.nom);
        const bool premier = c.nom == "document type only";
        if (premier) {
            std::filesystem::remove_all(magasin + "/Sv140");
        }
        sql(pont(), "DELETE FROM T_InfosVersion");
        if (c.tampon != 0) {
            sql(pont(), "UPDATE T_InfoParam SET Taille_Buffer = " + std::to_string(c.tampon));
        }
        utiliser_script();
        scripter(1, c.reponse);
        Execution e = operation("f_LireVersion");
        ASSERT_TRUE(fin_propre(e));
        // The first run makes the archive folder, and says so.
        EXPECT_EQ(e.boites(), premier ? Textes{"SV140 : Le répertoire n'existe pas"} : Textes{})
            << e.erreurs;
        if (c.tampon != 0) {
            EXPECT_EQ(lire(script("taille_1")), std::to_string(c.tampon));
        }
        // Kept as one line, for the bridge, for the host and in the archive.
        EXPECT_EQ(lire(fichier("ZEMO_SvResponse.xml")), c.attendu + "\r\n");
        EXPECT_EQ(lire(fichier("ZEMO_Response.xml")), c.attendu + "\r\n");
        EXPECT_EQ(archive("RSP_f_LireVersion_"), c.attendu + "\r\n");
        EXPECT_EQ(archive("REQ_f_LireVersion_"), lire(fichier("ZEMO_SvRequest.xml")));
        EXPECT_EQ(versions(), Lignes{version_stockee("5.1")});
    }
}

TEST_F(Echange, AnOversizedAnswerIsFetchedAgainWithALargerBufferOnlyOnce) {
    utiliser_script();
    scripter(1, reponse("f_LireVersion", "271", "Buffer trop petit Attendue:12000 Trouvée:5000"));
    scripter(2, reponse_version("7.0"));
    Execution e = operation("f_LireVersion");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_EQ(e.boites(), Textes{}) << e.erreurs;
    ASSERT_EQ(appels(), 2);
    EXPECT_EQ(lire(script("taille_2")), "13201");
    const std::string recup = "/ZRMESSAGE/requete/fonction/f_RecupMessage/*";
    EXPECT_EQ(xml(fichier("ZEMO_SvRequest.xml"), recup, true),
              (Textes{"versionMessage", "ordreEnErreur"}));
    EXPECT_EQ(xml(fichier("ZEMO_SvRequest.xml"), recup), (Textes{"0001", "f_LireVersion"}));
    EXPECT_TRUE(log_finit_par("F_Appel : f_LireVersion Buffer : 13200")) << log();
    EXPECT_NE(log().find("Retour reponse suite code 271 : "), std::string::npos) << log();
    EXPECT_EQ(versions(), Lignes{version_stockee("7.0")});

    // An answer that never fits ends in an error, not in endless calls.
    sql(pont(), "DELETE FROM T_InfosVersion");
    utiliser_script();
    scripter(0, reponse("f_LireVersion", "271", "Attendue:12000 Trouvée:5000"));
    ASSERT_TRUE(fin_propre(operation("f_LireVersion")));
    EXPECT_GE(appels(), 2);
    EXPECT_LE(appels(), 20);
    const Textes r = resultat(fichier("ZEMO_Response.xml"));
    ASSERT_EQ(r.size(), 3u) << "no well-formed answer";
    EXPECT_NE(r[1], "0");
    EXPECT_EQ(versions(), Lignes{});
}

TEST_F(Echange, ABrokenBufferSettingStillLetsCallsThrough) {
    for (const std::string valeur : {"NULL", "0", "-5", "'abc'"}) {
        SCOPED_TRACE(valeur);
        sql(pont(), "DELETE FROM T_InfosVersion; UPDATE T_InfoParam SET Taille_Buffer = " + valeur);
        utiliser_script();
        scripter(1, reponse_version("7.1"));
        ASSERT_TRUE(fin_propre(operation("f_LireVersion")));
        EXPECT_EQ(lire(script("taille_1")), "102400");
        EXPECT_NE(log().find("Taille_Buffer inutilisable"), std::string::npos) << log();
        EXPECT_EQ(versions(), Lignes{version_stockee("7.1")});
    }

    // An answer too large for the buffer, whose text does not say how large it is, is
    // asked for again with a larger buffer each time.
    sql(pont(), "DELETE FROM T_InfosVersion; UPDATE T_InfoParam SET Taille_Buffer = 1000");
    utiliser_script();
    scripter(1, reponse("f_LireVersion", "271", "Buffer trop petit"));
    scripter(2, reponse("f_LireVersion", "271", ""));
    scripter(3, reponse_version("7.2"));
    ASSERT_TRUE(fin_propre(operation("f_LireVersion")));
    EXPECT_EQ(lire(script("taille_2")), "409601");
    EXPECT_EQ(lire(script("taille_3")), "1638405");
    EXPECT_EQ(versions(), Lignes{version_stockee("7.2")});
}

TEST_F(Echange, EveryExchangeKeepsItsOwnArchive) {
    // Two runs in the same second (natively the clock stands still): neither archive
    // takes the other's place.
    for (const char* dll : {"7.3", "7.4"}) {
        utiliser_script();
        scripter(1, reponse_version(dll));
        ASSERT_TRUE(fin_propre(operation("f_LireVersion")));
    }
    Textes reponses, requetes;
    for (const auto& f : std::filesystem::recursive_directory_iterator(magasin + "/Sv140")) {
        const std::string nom = f.path().filename().string();
        if (nom.starts_with("RSP_f_LireVersion_")) {
            reponses.push_back(xml(f.path().string(), "//versionDll").at(0));
        } else if (nom.starts_with("REQ_f_LireVersion_")) {
            requetes.push_back(nom);
        }
    }
    std::sort(reponses.begin(), reponses.end());
    EXPECT_EQ(reponses, (Textes{"7.3", "7.4"}));
    EXPECT_EQ(requetes.size(), 2u);
}

TEST_F(Echange, QuietCodesShowNoBox) {
    struct Cas {
        Textes codes;
        bool boite;    // the optician is told
        bool stockee;  // the response phase runs
    };
    for (const Cas& c :
         {Cas{{"98", "260", "261", "276", "283", "297", "9998"}, false, false},
          Cas{{"1", "272", "5000"}, true, false}, Cas{{"0", "", "-3", "abc"}, false, true}}) {
        for (const auto& code : c.codes) {
            SCOPED_TRACE("code '" + code + "'");
            sql(pont(), "DELETE FROM T_InfosVersion");
            utiliser_script();
            scripter(1, reponse("f_LireVersion", code, "Libellé l'erreur", donnees_version("8")));
            Execution e = operation("f_LireVersion");
            ASSERT_TRUE(fin_propre(e));
            EXPECT_EQ(e.boites(), c.boite ? Textes{"Erreur dans f_LireVersion : Erreur N° " + code +
                                                   " |  | Libellé l'erreur"}
                                          : Textes{})
                << e.erreurs;
            EXPECT_TRUE(log_finit_par("Code Erreur Reponse : " + code)) << log();
            EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
                      (Textes{"f_LireVersion", code, "Libellé l'erreur"}));
            EXPECT_EQ(versions().size(), c.stockee ? 1u : 0u);
        }
    }
}

}  // namespace
}  // namespace bb
