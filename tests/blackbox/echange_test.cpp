// The exchange with the middleware, through a middleware that plays a script: the
// requests it receives, what becomes of its answers, its errors and its oversized
// answers, the archive and the answer the host reads.
#include <filesystem>

#include "harnais.h"

namespace bb {
namespace {

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";

/// The answer file without its final line end.
std::string sans_fin_de_ligne(std::string s) {
    while (!s.empty() && (s.back() == '\n' || s.back() == '\r')) {
        s.pop_back();
    }
    return s;
}

/// What the middleware receives: the request file's lines, each ended by CR LF.
std::string texte_envoye(const std::string& fichier) {
    std::string t;
    for (const auto& l : lignes(fichier)) {
        t += l + "\r\n";
    }
    return t;
}

class Echange : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        b.utiliser_script();
    }
    std::optional<std::string> version_stockee() {
        Base pont(b.base_pont());
        return pont.valeur(
            "SELECT Info_Version_VersionDLL FROM T_InfosVersion WHERE Info_Version_ID = 1");
    }
};

TEST_F(Echange, RequestsCarryTheEnvelopeAndTheProfessional) {
    struct Cas {
        std::string operation;
        std::vector<std::string> parametres;  // children of the operation element
        std::vector<std::string> ps;          // children of PS
    };
    const std::vector<Cas> cas{
        {"f_LireCVitale", {"versionMessage", "dateLecture"}, {}},
        {"f_LireCPS", {"versionMessage"}, {}},
        {"f_LireVersion", {"versionMessage"}, {}},
        {"f_MettreAJourCV", {"versionMessage"}, {}},
        {"f_InitialisationPS",
         {"versionMessage", "PS"},
         {"idNat", "idFac", "numSitu", "motDePasse"}},
        {"f_MaJVersion", {"versionMessage", "PS"}, {"idNat", "idFac", "numSitu"}},
        {"f_ListerFactures", {"versionMessage", "PS"}, {"idNat", "idFac"}},
    };
    struct Situation {
        std::string num_situ;
        int version;
        std::string numSitu, idFac;
    };
    for (const Situation& s :
         {Situation{"2", 3600, "2", "876543210"}, Situation{"2", 3500, "2", "876543210"},
          Situation{"2", 3499, "1", "123456789"}, Situation{"0", 3600, "1", "123456789"},
          Situation{" 2 ", 3600, "2", "876543210"}}) {
        b.professionnel(s.num_situ, s.version);
        for (const Cas& c : cas) {
            SCOPED_TRACE(c.operation + " Num_Situ '" + s.num_situ + "' version " +
                         std::to_string(s.version));
            std::remove(b.script("compteur").c_str());
            Execution e = b.operation(c.operation);
            ASSERT_TRUE(fin_propre(e));
            ASSERT_EQ(b.appels(), 1);

            const auto fichier = lire(b.fichier("ZEMO_SvRequest.xml"));
            ASSERT_TRUE(fichier);
            EXPECT_EQ(b.requete(1), texte_envoye(*fichier));
            Xml x(b.fichier("ZEMO_SvRequest.xml"));
            ASSERT_TRUE(x.ok()) << *fichier;
            EXPECT_EQ(x.encodage(), "ISO-8859-1");
            EXPECT_EQ(x.enfants("/ZRMESSAGE"), (std::vector<std::string>{"programme", "requete"}));
            EXPECT_EQ(x.texte("/ZRMESSAGE/programme"), "Belvane_Classic II");
            const std::string op = "/ZRMESSAGE/requete/fonction/" + c.operation;
            EXPECT_EQ(x.enfants("/ZRMESSAGE/requete/fonction"),
                      std::vector<std::string>{c.operation});
            EXPECT_EQ(x.enfants(op), c.parametres);
            EXPECT_EQ(x.texte(op + "/versionMessage"), "0001");
            if (c.operation == "f_LireCVitale") {
                EXPECT_EQ(x.texte(op + "/dateLecture"), "20240305");
            }
            if (!c.ps.empty()) {
                EXPECT_EQ(x.enfants(op + "/PS"), c.ps);
                EXPECT_EQ(x.texte(op + "/PS/idNat"), "10001234567");
                EXPECT_EQ(x.texte(op + "/PS/idFac"), s.idFac);
                if (c.ps.size() > 2) {
                    EXPECT_EQ(x.texte(op + "/PS/numSitu"), s.numSitu);
                }
                if (c.ps.size() > 3) {
                    EXPECT_EQ(x.texte(op + "/PS/motDePasse"), "10001234567");
                }
            }
        }
    }
}

TEST_F(Echange, WithoutAProfessionalTheInitialisationIsStillSentEmpty) {
    Execution e = b.operation("f_InitialisationPS");
    ASSERT_TRUE(fin_propre(e));
    ASSERT_EQ(b.appels(), 1);
    Xml x(b.fichier("ZEMO_SvRequest.xml"));
    const std::string ps = "/ZRMESSAGE/requete/fonction/f_InitialisationPS/PS/";
    EXPECT_EQ(x.texte(ps + "idNat"), "");
    EXPECT_EQ(x.texte(ps + "idFac"), "");
    EXPECT_EQ(x.texte(ps + "motDePasse"), "");
}

TEST_F(Echange, AMiddlewareErrorNumberLeavesTheAbruptEndDocument) {
    b.scripter_retour(1, 7);
    Execution e = b.operation("f_LireVersion");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_EQ(e.boites(), std::vector<std::string>{"SV140 : Erreur N° : 7"}) << e.erreurs;

    Xml x(b.fichier("ZEMO_SvResponse.xml"));
    ASSERT_TRUE(x.ok());
    EXPECT_EQ(x.encodage(), "ISO-8859-1");
    EXPECT_EQ(x.enfants("/ZRMESSAGE"),
              (std::vector<std::string>{"programme", "appelant", "resultat"}));
    EXPECT_EQ(x.enfants("/ZRMESSAGE/resultat"),
              (std::vector<std::string>{"codeErreur", "libelleErreur"}));
    EXPECT_EQ(x.texte("/ZRMESSAGE/programme"), "Belvane_Classic_II");
    auto r = resultat(b.fichier("ZEMO_SvResponse.xml"));
    ASSERT_TRUE(r);
    EXPECT_EQ(r->appelant, "Toutes fonctions");
    EXPECT_EQ(r->code, "98");
    EXPECT_EQ(r->libelle, "Erreur Web Quintara - Sortie brutale");
    EXPECT_EQ(lire(b.fichier("ZEMO_Response.xml")), lire(b.fichier("ZEMO_SvResponse.xml")));
    EXPECT_FALSE(version_stockee());
}

TEST_F(Echange, AMissingOrBrokenMiddlewareLeavesTheAbruptEndDocument) {
    for (const bool absente : {true, false}) {
        SCOPED_TRACE(absente ? "no library" : "not a library");
        std::remove(b.fichier("WebQuintara2.so").c_str());
        if (!absente) {
            ecrire(b.fichier("WebQuintara2.so"), "not a shared library");
        }
        Execution e = b.operation("f_LireVersion");
        ASSERT_TRUE(fin_propre(e));
        auto boites = e.boites();
        ASSERT_EQ(boites.size(), 1u) << e.erreurs;
        EXPECT_NE(boites[0].find(b.fichier("WebQuintara2.so")), std::string::npos) << boites[0];
        EXPECT_EQ(code_reponse(b.fichier("ZEMO_Response.xml")), "98");
        EXPECT_FALSE(version_stockee());
    }
}

TEST_F(Echange, AnswersAreCleanedBeforeTheyAreKept) {
    const std::string corps =
        "<ZRMESSAGE><appelant>f_LireVersion</appelant><resultat><codeErreur>0</codeErreur>"
        "<libelleErreur>d\xE9j\xE0 lu</libelleErreur><donnees>" +
        donnees_version("5.1") + "</donnees></resultat></ZRMESSAGE>";
    std::string corps_propre = corps;
    corps_propre.erase(corps_propre.find("\r\n"), 2);
    struct Cas {
        std::string nom, reponse, attendu;
    };
    const std::vector<Cas> cas{
        {"document type only", "<!DOCTYPE ZRMESSAGE>\r\n" + corps + "\r\n",
         kDeclaration + corps_propre},
        {"declaration and document type",
         kDeclaration + "\r\n<!DOCTYPE ZRMESSAGE>\r\n" + corps + "\r\n",
         kDeclaration + corps_propre},
        {"cut at the first NUL", kDeclaration + "\r\n" + corps + std::string(1, '\0') + "<reste>",
         kDeclaration + corps_propre},
        {"lone line feeds stay", kDeclaration + "\n" + corps, kDeclaration + "\n" + corps_propre},
    };
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.nom);
        std::remove(b.script("compteur").c_str());
        b.scripter_reponse(1, c.reponse);
        Execution e = b.operation("f_LireVersion");
        ASSERT_TRUE(fin_propre(e));
        EXPECT_TRUE(e.boites().empty()) << e.erreurs;
        const auto kept = lire(b.fichier("ZEMO_SvResponse.xml"));
        ASSERT_TRUE(kept);
        EXPECT_EQ(sans_fin_de_ligne(*kept), c.attendu);
        EXPECT_TRUE(kept->ends_with("\n")) << "the answer is written as one line with its end";
        EXPECT_EQ(lire(b.fichier("ZEMO_Response.xml")), kept);
        EXPECT_EQ(version_stockee(), "5.1");
    }
}

TEST_F(Echange, AnAnswerThatFillsTheBufferIsKeptWhole) {
    const std::string r = kDeclaration +
                          "<ZRMESSAGE><appelant>f_LireVersion</appelant><resultat>"
                          "<codeErreur>0</codeErreur><libelleErreur/><donnees>" +
                          donnees_version("6.2") + "</donnees></resultat></ZRMESSAGE>";
    std::string propre = r;
    propre.erase(propre.find("\r\n"), 2);
    {
        Base pont(b.base_pont());
        pont.executer("UPDATE T_InfoParam SET Taille_Buffer = " + std::to_string(r.size()) +
                      " WHERE Info_Param_ID = 1");
    }
    b.scripter_reponse(1, r);
    Execution e = b.operation("f_LireVersion");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_EQ(b.taille(1), static_cast<long>(r.size()));
    EXPECT_EQ(sans_fin_de_ligne(lire(b.fichier("ZEMO_SvResponse.xml")).value_or("")), propre);
    EXPECT_EQ(version_stockee(), "6.2");
}

TEST_F(Echange, AnOversizedAnswerIsFetchedAgainWithALargerBuffer) {
    b.scripter_reponse(
        1, reponse("f_LireVersion", "271", "Buffer trop petit Attendue:12000 Trouvée:5000"));
    b.scripter_reponse(2, reponse_version("7.0"));
    Execution e = b.operation("f_LireVersion");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_TRUE(e.boites().empty()) << e.erreurs;
    ASSERT_EQ(b.appels(), 2);
    EXPECT_EQ(b.taille(2), 13201);

    Xml x(b.fichier("ZEMO_SvRequest.xml"));
    EXPECT_EQ(x.enfants("/ZRMESSAGE/requete/fonction/f_RecupMessage"),
              (std::vector<std::string>{"versionMessage", "ordreEnErreur"}));
    EXPECT_EQ(x.texte("/ZRMESSAGE/requete/fonction/f_RecupMessage/ordreEnErreur"), "f_LireVersion");
    EXPECT_EQ(b.requete(2), texte_envoye(lire(b.fichier("ZEMO_SvRequest.xml")).value_or("")));
    EXPECT_TRUE(b.log_finit_par("F_Appel : f_LireVersion Buffer : 13200")) << b.log();
    EXPECT_TRUE(b.log_contient("Retour reponse suite code 271 : ")) << b.log();
    EXPECT_EQ(version_stockee(), "7.0");
}

TEST_F(Echange, AnAnswerThatNeverFitsEndsWithAnError) {
    b.scripter_toujours(0, reponse("f_LireVersion", "271", "Attendue:12000 Trouvée:5000"));
    Execution e = b.operation("f_LireVersion");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_GE(b.appels(), 2);
    EXPECT_LE(b.appels(), 20) << "the bridge keeps asking for the same answer";
    auto r = resultat(b.fichier("ZEMO_Response.xml"));
    ASSERT_TRUE(r) << "no well-formed answer for the host";
    EXPECT_NE(r->code, "0");
    EXPECT_NE(r->code, "");
    EXPECT_FALSE(version_stockee());
}

TEST_F(Echange, QuietCodesShowNoBox) {
    struct Cas {
        std::string code;
        bool boite;    // the optician is told
        bool stockee;  // the response phase runs
    };
    const std::vector<Cas> cas{
        {"98", false, false},  {"260", false, false}, {"261", false, false},  {"276", false, false},
        {"283", false, false}, {"297", false, false}, {"9998", false, false}, {"1", true, false},
        {"272", true, false},  {"5000", true, false}, {"0", false, true},     {"", false, true},
        {"-3", false, true},   {"abc", false, true},
    };
    for (const Cas& c : cas) {
        SCOPED_TRACE("code '" + c.code + "'");
        {
            Base pont(b.base_pont());
            pont.executer("DELETE FROM T_InfosVersion");
        }
        std::remove(b.script("compteur").c_str());
        b.scripter_reponse(
            1, reponse("f_LireVersion", c.code, "Libellé de l'erreur", donnees_version("8.0")));
        Execution e = b.operation("f_LireVersion");
        ASSERT_TRUE(fin_propre(e));
        std::vector<std::string> boites;
        if (c.boite) {
            boites.push_back("Erreur dans f_LireVersion : Erreur N° " + c.code +
                             " |  | Libellé de l'erreur");
        }
        EXPECT_EQ(e.boites(), boites) << e.erreurs;
        EXPECT_TRUE(b.log_finit_par("Code Erreur Reponse : " + c.code)) << b.log();
        EXPECT_EQ(code_reponse(b.fichier("ZEMO_Response.xml")), c.code);
        EXPECT_EQ(version_stockee().has_value(), c.stockee);
    }
}

TEST_F(Echange, AVanishedAnswerIsReported) {
    b.scripter_retour(1, 7);
    b.scripter_fichier(1, ".efface", "ZEMO_SvResponse.xml");
    Execution e = b.operation("f_LireVersion");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_EQ(e.boites(), (std::vector<std::string>{
                              "SV140 : Erreur N° : 7",
                              "Reponse : Le fichier : " + b.fichier("ZEMO_SvResponse.xml") +
                                  " | non présent ! Veuillez réessayer dans quelques instants"}))
        << e.erreurs;
    auto r = resultat(b.fichier("ZEMO_Response.xml"));
    ASSERT_TRUE(r) << "the host finds no answer";
    EXPECT_NE(r->code, "0");
}

TEST_F(Echange, EachExchangeIsArchivedByMonthAndCopiedForTheHost) {
    for (bool racine_presente : {false, true}) {
        SCOPED_TRACE(racine_presente ? "archive folder present" : "no archive folder");
        std::error_code ec;
        std::filesystem::remove_all(b.magasin + "/Sv140", ec);
        if (racine_presente) {
            std::filesystem::create_directories(b.magasin + "/Sv140", ec);
        }
        std::remove(b.script("compteur").c_str());
        b.scripter_reponse(1, reponse_version("9.1"));
        Execution e = b.operation("f_LireVersion");
        ASSERT_TRUE(fin_propre(e));
        std::vector<std::string> boites;
        if (!racine_presente) {
            boites.push_back("SV140 : Le répertoire n'existe pas");
        }
        EXPECT_EQ(e.boites(), boites) << e.erreurs;

        const std::string mois = b.magasin + "/Sv140/202403/";
        const auto reponse = lire(b.fichier("ZEMO_SvResponse.xml"));
        ASSERT_TRUE(reponse);
        EXPECT_EQ(lire(mois + "RSP_f_LireVersion_20240305_143012.xml"), reponse);
        EXPECT_EQ(lire(mois + "REQ_f_LireVersion_20240305_143012.xml"),
                  lire(b.fichier("ZEMO_SvRequest.xml")));
        EXPECT_EQ(lire(b.fichier("ZEMO_Response.xml")), reponse);
    }
}

TEST_F(Echange, OperationsNotYetAvailableAnswerWithoutCallingTheMiddleware) {
    for (const std::string op : {"f_CreerFacture", "f_Scor", "f_TransfertPJ"}) {
        SCOPED_TRACE(op);
        b.professionnel();
        Execution e = b.operation(op);
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(b.appels(), 0);
        auto r = resultat(b.fichier("ZEMO_Response.xml"));
        ASSERT_TRUE(r);
        EXPECT_EQ(r->appelant, op);
        EXPECT_EQ(r->code, "99");
        EXPECT_EQ(r->libelle, "Fonction non disponible");
    }
}

TEST_F(Echange, TheInvoiceListReachesTheHostIntact) {
    b.professionnel();
    const std::string liste =
        "<listeFacture><numeroFacture>000000123</numeroFacture><numeroFacture>000000124"
        "</numeroFacture><numeroFacture>000000125</numeroFacture></listeFacture>";
    const std::string r = kDeclaration +
                          "<ZRMESSAGE><appelant>f_ListerFactures</appelant>"
                          "<resultat><codeErreur>0</codeErreur><libelleErreur>"
                          "</libelleErreur><donnees>" +
                          liste + "</donnees></resultat></ZRMESSAGE>";
    b.scripter_reponse(1, r);
    Execution e = b.operation("f_ListerFactures");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_TRUE(e.boites().empty()) << e.erreurs;
    EXPECT_EQ(sans_fin_de_ligne(lire(b.fichier("ZEMO_Response.xml")).value_or("")), r);
    Xml x(b.fichier("ZEMO_Response.xml"));
    EXPECT_EQ(x.textes("/ZRMESSAGE/resultat/donnees/listeFacture/numeroFacture"),
              (std::vector<std::string>{"000000123", "000000124", "000000125"}));
}

}  // namespace
}  // namespace bb
