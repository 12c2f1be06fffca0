// What the attachment operations do with a damaged host order, a damaged database and
// attachment names that look like syntax: the host still finds a well-formed answer with
// the right code, the log says why, and no attachment's row is left half written.
#include <filesystem>

#include "degats.h"

namespace bb {
namespace {

const std::string kIllisible = "Impossible de lire dctsScor.xml";

std::string ordre(const std::string& fonction, const std::string& noeuds) {
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><ZRMESSAGE><requete><fonction><" +
           fonction + ">" + noeuds + "</" + fonction + "></fonction></requete></ZRMESSAGE>";
}

class EntreesScor : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        professionnel();
        // Attachment 1 of invoice 7, waiting to be sent, its PDF in the archive.
        std::filesystem::create_directories(magasin + "/Sv140Scor/202401");
        ecrire(magasin + "/Sv140Scor/202401/a.pdf", "%PDF-1.4\n%%EOF\n");
        sql(pont(),
            "INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_Nature, InfosSCor_Chemin, "
            "InfosSCor_nom, InfosSCor_DateGeneration, idDossier, InfosSCor_Mode) VALUES ('7', "
            "'ORDN', 'C:\\Ancien\\_Magasin\\Sv140Scor\\202401\\', 'a.pdf', "
            "'2024-01-15 10:00:00', 4, '');"
            "INSERT INTO T_InfosFacture (Info_Facture_NUMFAC, Info_Facture_TYPECERTIF) "
            "VALUES ('7', 'Degrade')");
    }
    /// Runs `operation` on this order (none: no order file), the middleware answering
    /// `reponse_zr` to every call.
    void lancer_avec(const std::string& operation, const std::optional<std::string>& document,
                     const std::string& reponse_zr) {
        utiliser_script();
        std::remove(fichier("dctsScor.xml").c_str());
        if (document) {
            ecrire(fichier("dctsScor.xml"), *document);
        }
        scripter(0, reponse_zr);
        std::remove(fichier("LogsSV.txt").c_str());
        EXPECT_TRUE(fin_propre(this->operation(operation)));
    }
    Textes reponse_hote() const {
        Textes r = resultat(fichier("ZEMO_Response.xml"));
        for (std::string& t : r) {
            std::erase(t, '\r');
        }
        return r;
    }
};

const std::string kPris = reponse("f_TransfertPJ", "0", "", "")
                              .insert(reponse("f_TransfertPJ", "0", "", "").find("<donnees>"),
                                      "<accesService>1</accesService>");

TEST_F(EntreesScor, ADamagedOrderSendsNothing) {
    struct Cas {
        std::string operation, valide, reponse_zr;
        Textes attendu;  // the answer to a damaged order
        bool enorme;     // the 100 MB order, once: read as the order it holds
    };
    const std::string id = "<Document><Id>1</Id></Document>";
    for (const Cas& c : std::vector<Cas>{
             {"f_Scor",
              ordre("f_Scor", "<Ordonnance><Id>0</Id></Ordonnance>"),
              "",
              {"f_Scor", "99", "Aucune Autorisation de Scan"},
              false},
             {"f_TransfertPJ_unique",
              ordre("f_TransfertPJ_unique", id),
              kPris,
              {"f_Scor", "99", kIllisible},
              false},
             {"f_LireInfosRetourPJ",
              ordre("f_LireInfosRetourPJ", id),
              reponse("f_LireInfosRetourPJ", "0", "", "<listeFacture/>"),
              {"f_Scor", "99", kIllisible},
              false},
             {"f_mettreajourStatut",
              ordre("f_mettreajourStatut", "<donnees><DateDebut>20240101</DateDebut></donnees>"),
              reponse("f_LireInfosRetourPJ", "0", "", "<listeFacture/>"),
              {"f_Scor", "99", kIllisible},
              false},
             {"f_deldctsSCOR",
              ordre("f_deldctsSCOR", "<Dossier><id_Document>1</id_Document></Dossier>"),
              reponse("f_SupprimerPJ", "0", ""),
              {"f_Scor", "99", kIllisible},
              true}}) {
        for (DocumentAbime d : kDocumentsAbimes) {
            if (d == DocumentAbime::Enorme && !c.enorme) {
                continue;
            }
            SCOPED_TRACE(c.operation + ", " + nom(d));
            const Lignes avant = instantane({pont(), hote()});
            lancer_avec(c.operation, abimer(d, c.valide), c.reponse_zr);
            if (d == DocumentAbime::Enorme) {
                // Read whole, as the order it holds, on both platforms.
                EXPECT_EQ(appels(), 1);
                EXPECT_EQ(reponse_hote(), (Textes{"Retour_f_SupprimerPJ", "0",
                                                  "La fonction s'est déroulée avec succès"}));
                EXPECT_EQ(sql(pont(), "SELECT idDossier FROM T_InfosSCor"), Lignes{{"0"}});
                continue;
            }
            EXPECT_EQ(appels(), 0);
            EXPECT_EQ(reponse_hote(), c.attendu);
            EXPECT_NE(log().find(c.operation == "f_Scor" ? "dctsScor.xml : "
                                                         : "dctsScor.xml illisible : "),
                      std::string::npos)
                << log();
            EXPECT_EQ(instantane({pont(), hote()}), avant);
        }
    }
}

TEST_F(EntreesScor, ADamagedDatabaseFailsTheAttachmentAndSaysWhich) {
    struct Cas {
        std::string operation, table, colonne, reponse_zr;
        std::optional<std::string> ordre;
    };
    for (const Cas& c : std::vector<Cas>{
             {"f_TransfertPJ", "T_InfosSCor", "InfosSCor_DateEnvoi", kPris, std::nullopt},
             {"f_ControlePJ", "SCOR_Erreurs", "Nature_PJ",
              reponse("f_ControlePJ", "0", "",
                      "<listeFacture><numeroFacture>7</numeroFacture></listeFacture>"),
              std::nullopt},
             {"f_deldctsSCOR", "T_InfosSCor", "idDossier", reponse("f_SupprimerPJ", "0", ""),
              ordre("f_deldctsSCOR", "<Dossier><id_Document>1</id_Document></Dossier>")}}) {
        for (BaseAbimee b : kBasesAbimees) {
            // A locked case waits out the bridge's five seconds: one is enough here.
            if (b == BaseAbimee::Verrouillee && c.operation != "f_TransfertPJ") {
                continue;
            }
            SCOPED_TRACE(c.operation + ", " + nom(b));
            const Lignes hote_avant = instantane({hote()});
            Degat degat(b, pont(), c.table, c.colonne);
            if (!degat.pris()) {
                continue;
            }
            const bool lisible = b == BaseAbimee::LectureSeule || b == BaseAbimee::ColonneManquante;
            const Lignes avant = lisible ? instantane({pont()}) : Lignes{};
            horloge_figee = b != BaseAbimee::Verrouillee;  // the bridge waits, then gives up
            lancer_avec(c.operation, c.ordre, c.reponse_zr);
            horloge_figee = true;
            const Textes r = reponse_hote();
            ASSERT_EQ(r.size(), 3u) << "no well-formed answer";
            EXPECT_EQ(r[1], "99") << r[2];
            if (r[2] != "Les données de la CPS n'ont pu être lues") {
                EXPECT_NE(r[2].find(chemin_du_pont(pont())), std::string::npos) << r[2];
            }
            EXPECT_NE(log().find(chemin_du_pont(pont()) + " : "), std::string::npos) << log();
            EXPECT_EQ(instantane({hote()}), hote_avant);
            if (lisible) {
                EXPECT_EQ(instantane({pont()}), avant);
            }
        }
    }
}

TEST_F(EntreesScor, HostileNamesStayInTheirRows) {
    // One attachment row per name, its file gone from the archive: each is found and marked
    // deleted by its own key, and nothing reaches the middleware.
    sql(pont(), "DELETE FROM T_InfosSCor");
    std::vector<std::string> noms;
    for (const std::string& t : textes_hostiles()) {
        if (t.find('\0') != std::string::npos) {
            continue;
        }
        std::string quote;
        for (char ch : t) {
            quote += ch == '\'' ? std::string("''") : std::string(1, ch);
        }
        sql(pont(),
            "INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_Nature, InfosSCor_Chemin, "
            "InfosSCor_nom, InfosSCor_DateGeneration, idDossier, InfosSCor_Mode) VALUES ('7', "
            "'ORDN', 'C:\\Ancien\\_Magasin\\Sv140Scor\\202401\\', '" +
                quote + "', '2024-01-15 10:00:00', 4, '')");
        noms.push_back(t);
    }
    lancer_avec("f_TransfertPJ", std::nullopt, kPris);
    EXPECT_EQ(appels(), 0);
    const Textes r = reponse_hote();
    ASSERT_EQ(r.size(), 3u);
    EXPECT_EQ(r[1], "0") << r[2];
    EXPECT_EQ(sql(pont(),
                  "SELECT count(*) FROM T_InfosSCor WHERE InfosSCor_nom = "
                  "'Document supprimé' AND InfosSCor_LibelError = 'Document supprimé' "
                  "AND idDossier = 0"),
              Lignes{{std::to_string(noms.size())}});
}

}  // namespace
}  // namespace bb
