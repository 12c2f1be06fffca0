#include <gtest/gtest.h>

#include "aide_test.h"
#include "exchange/echange.h"
#include "main/run.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

TEST(Nettoyer_Reponse, LaReponseDevientUnDocumentDUneLigne) {
    const std::string decl = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
    struct Cas {
        std::string brute, propre;
    } cas[] = {
        {"<!DOCTYPE ZRMESSAGE>\r\n<ZRMESSAGE>\r\n<a>1</a>\r\n</ZRMESSAGE>\r\n",
         decl + "<ZRMESSAGE><a>1</a></ZRMESSAGE>"},
        {decl + "\r\n<!DOCTYPE ZRMESSAGE>\r\n<ZRMESSAGE/>", decl + "<ZRMESSAGE/>"},
        {"<?xml version='1.0'?><ZRMESSAGE/>", "<?xml version='1.0'?><ZRMESSAGE/>"},
        {std::string("<ZRMESSAGE/>\0<reste/>", 21), "<ZRMESSAGE/>"},
        {"<ZRMESSAGE>a\nb\rc</ZRMESSAGE>", "<ZRMESSAGE>a\nb\rc</ZRMESSAGE>"},
        {std::string("\0\0", 2), ""},
    };
    for (const Cas& c : cas) {
        EXPECT_EQ(Nettoyer_Reponse(c.brute), c.propre) << c.brute;
    }
}

class ReponseTest : public ::testing::Test {
  protected:
    ReponseTest() {
        auto ui = std::make_unique<test::UiEnregistree>();
        ui_ = ui.get();
        run_ = nouveau_run(dossier_.chemin(), std::move(ui));
        run_.F_Appel = "f_LireCVitale";
    }
    void repondre(const std::string& code, const std::string& libelle = "Libellé") {
        test::ecrire(run_.fichier("ZEMO_SvResponse.xml"),
                     "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><ZRMESSAGE><appelant>" +
                         run_.F_Appel + "</appelant><resultat><codeErreur>" + code +
                         "</codeErreur><libelleErreur>" + libelle +
                         "</libelleErreur></resultat></ZRMESSAGE>");
    }
    XmlDocument reponse() {
        XmlDocument doc;
        EXPECT_TRUE(doc.charger_fichier(run_.fichier("ZEMO_SvResponse.xml")));
        return doc;
    }
    test::DossierTemporaire dossier_;
    test::UiEnregistree* ui_;
    sv140::Run run_;
};

TEST_F(ReponseTest, CodesDeRetour) {
    struct Cas {
        const char* operation;
        const char* code;
        bool retour;
        bool boite;
    } cas[] = {
        {"f_LireCVitale", "0", true, false},    {"f_LireCVitale", "", true, false},
        {"f_LireCVitale", "-3", true, false},   {"f_LireCVitale", "abc", true, false},
        {"f_LireCVitale", "42", false, true},   {"f_LireCPS", "99", false, true},
        {"f_LireCVitale", "98", false, false},  {"f_LireCVitale", "260", false, false},
        {"f_LireCVitale", "261", false, false}, {"f_LireCVitale", "276", false, false},
        {"f_LireCVitale", "283", false, false}, {"f_LireCVitale", "297", false, false},
        {"f_TransfertPJ", "42", false, false},  {"f_TransfertPJ_unique", "1", false, false},
    };
    for (const Cas& c : cas) {
        ui_->boites.clear();
        run_.F_Appel = c.operation;
        repondre(c.code);
        EXPECT_EQ(Lire_Reponse(run_), c.retour) << c.operation << " " << c.code;
        EXPECT_EQ(ui_->boites.size(), c.boite ? 1u : 0u) << c.operation << " " << c.code;
    }
}

TEST_F(ReponseTest, LaBoiteDErreurNommeLOperationEtLeLibelle) {
    run_.F_Appel = "f_LireCPS";
    repondre("42", "Carte absente");
    EXPECT_FALSE(Lire_Reponse(run_));
    ASSERT_EQ(ui_->boites.size(), 1u);
    EXPECT_EQ(ui_->boites[0].titre, "Erreur dans f_LireCPS");
    EXPECT_EQ(ui_->boites[0].texte, "Erreur N° 42\r\n\r\nCarte absente");
    EXPECT_EQ(ui_->boites[0].icone, Icone::Critique);
}

TEST_F(ReponseTest, SansReponseLHoteTrouveUneErreurLisible) {
    EXPECT_FALSE(Lire_Reponse(run_));
    ASSERT_EQ(ui_->boites.size(), 1u);
    EXPECT_EQ(ui_->boites[0].titre, "Reponse");
    EXPECT_EQ(ui_->boites[0].texte,
              "Le fichier : " + run_.fichier("ZEMO_SvResponse.xml") +
                  "\r\nnon présent ! Veuillez réessayer dans quelques instants");
    EXPECT_EQ(reponse().racine().texte_de("resultat/codeErreur"), "99");

}

TEST_F(ReponseTest, UneReponseIllisibleLaisseLaParoleALOperation) {
    // Read as an answer without a code; the store step then reports it under its name.
    test::ecrire(run_.fichier("ZEMO_SvResponse.xml"), "<ZRMESSAGE><resultat>");
    EXPECT_TRUE(Lire_Reponse(run_));
    EXPECT_TRUE(ui_->boites.empty());
}

TEST_F(ReponseTest, DocumentDErreurDuPont) {
    Reponse_Erreur(run_, "99", "Les données de la CPS n'ont pu être lues", "f_InitialisationPS");
    std::string octets = test::lire(run_.fichier("ZEMO_SvResponse.xml"));
    EXPECT_EQ(octets.rfind("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 0), 0u);
    XmlDocument doc = reponse();
    auto enfants = doc.selectionner("/ZRMESSAGE/*");
    ASSERT_EQ(enfants.size(), 3u);
    EXPECT_EQ(enfants[0].nom(), "programme");
    EXPECT_EQ(enfants[0].texte(), "Belvane_Classic_II");
    EXPECT_EQ(enfants[1].texte(), "f_InitialisationPS");
    EXPECT_EQ(doc.racine().texte_de("resultat/codeErreur"), "99");
    EXPECT_EQ(doc.racine().texte_de("resultat/libelleErreur"),
              "Les données de la CPS n'ont pu être lues");
}

TEST_F(ReponseTest, SansIntergicielLAppelEchoueEtLeDocument98Reste) {
    EXPECT_FALSE(Executer_ZR(run_, "<ZRMESSAGE/>\r\n", 1024));
    ASSERT_EQ(ui_->boites.size(), 1u);
    EXPECT_NE(ui_->boites[0].texte.find(run_.fichier("WebQuintara2.so")), std::string::npos);
    XmlDocument doc = reponse();
    EXPECT_EQ(doc.racine().texte_de("appelant"), "Toutes fonctions");
    EXPECT_EQ(doc.racine().texte_de("resultat/codeErreur"), "98");
}

TEST_F(ReponseTest, RequeteAbsenteFinDuRun) {
    EXPECT_THROW(Envoyer_Requete(run_, "f_LireCPS", 0), FinBrutale);
    XmlDocument doc = reponse();
    EXPECT_EQ(doc.racine().texte_de("resultat/codeErreur"), "1");
    EXPECT_EQ(doc.racine().texte_de("resultat/libelleErreur"), "Requete XML Non trouvée");
    EXPECT_EQ(doc.racine().texte_de("appelant"), "f_LireCPS");
}

}  // namespace
}  // namespace sv140
