// What the invoicing operations do with a damaged host document, a damaged database and
// field texts that look like syntax: the host still finds a well-formed answer with the
// right code, the log says why, and no unit of work is left half written.
#include <algorithm>

#include "degats.h"
#include "facturation.h"

namespace bb {
namespace {

const std::string kIllisible = "Impossible de lire ZEMO_Request.xml";

/// A text as an element's content that reads back as itself whatever the document's
/// declared encoding: markup escaped, every non-ASCII character a character reference.
/// NUL stays a reference, which no XML document may hold.
std::string contenu(const std::string& texte) {
    std::string r;
    for (std::size_t i = 0; i < texte.size(); ++i) {
        const auto c = static_cast<unsigned char>(texte[i]);
        if (c == '&' || c == '<' || c == '>' || c == 0) {
            r += "&#" + std::to_string(c) + ";";
        } else if (c < 0x80) {
            r += static_cast<char>(c);
        } else {
            const int suite = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : 1;
            unsigned point = c & (0x3F >> suite);
            for (int k = 0; k < suite; ++k) {
                point = point << 6 | (static_cast<unsigned char>(texte[++i]) & 0x3F);
            }
            r += "&#" + std::to_string(point) + ";";
        }
    }
    return r;
}

bool avec_nul(const std::string& t) {
    return t.find('\0') != std::string::npos;
}

/// Under Wine, text outside ISO-8859-1 does not reach the SQLite files intact (each UTF-16
/// unit keeps its low byte only, on the way through Wine's ODBC): what is stored is not
/// compared there.
bool compare_en_base(const std::string& t) {
    return !sous_wine() || std::none_of(t.begin(), t.end(), [](char c) {
        return static_cast<unsigned char>(c) >= 0xC4;
    });
}

std::string facture_hote(const std::string& numero) {
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><BelvaneClassicII><donneesFacture>"
           "<numeroFacture>" +
           numero + "</numeroFacture></donneesFacture></BelvaneClassicII>";
}

const std::string kPeriode =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><ZRMESSAGE><donnees><datedebut>20240101"
    "</datedebut><datedfin>20240131</datedfin></donnees></ZRMESSAGE>";

std::string retour(const std::string& numero, const std::string& etat) {
    return "<recapitulatifFacture><numeroFacture>" + numero + "</numeroFacture><etatFacture>" +
           etat + "</etatFacture></recapitulatifFacture>";
}

class EntreesFacturation : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        professionnel();
        // Invoice 123 with a line, a slip and an attachment; the host's slip of it.
        sql(pont(),
            "INSERT INTO T_InfosFacture (Info_Facture_NUMFAC) VALUES ('123');"
            "INSERT INTO T_InfosDetailFacture (Info_Facture_ID_FK) VALUES (last_insert_rowid());"
            "INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture, "
            "Info_Bordereau_typeCertification) VALUES ('123', 'Sesam-Vitale');"
            "INSERT INTO T_InfosSCor (InfosSCor_NUMFAC) VALUES ('123');");
        sql(hote(),
            "INSERT INTO [Bordereau Mutuelle] (NumFicheCommande, NumFacture, Mutuelle, [Date],"
            " TotalTmoCPAM, TotalCPAM, TotalMutuelle) VALUES"
            " ('FC1', '123', 1, '2024-01-02 00:00:00', 0, 20, 50)");
    }

    /// What an operation reads, and what the middleware answers it when it gets there.
    struct Preparation {
        std::string operation, document, reponse_zr;
    };
    Preparation preparer(const std::string& operation) const {
        if (operation == "f_CreerFacture") {
            return {operation, document_facture(),
                    reponse_creation("77", {{{"codeActeNGAP", "MON"}, {"quantite", "1"}}})};
        }
        if (operation == "f_SupprimerFacture" || operation == "f_LireFacture") {
            return {operation, facture_hote("X123"), reponse(operation, "0", "")};
        }
        if (operation == "f_EnvoyerToutesFactures") {
            return {operation, "",
                    reponse(operation, "0", "",
                            donnees_envoi({{"123", "17", "01", "131", "0000", "CPAM"}}))};
        }
        if (operation == "f_LireInfosRetourFacture") {
            return {operation, kPeriode,
                    reponse(operation, "0", "",
                            "<donneesRetourFacture>" + retour("123", "Paye") +
                                "<RSP><donneesFacture><numeroFacture>123</numeroFacture>"
                                "<montantPaiementAMORSP>20</montantPaiementAMORSP>"
                                "<montantPaiementAMCRSP>50</montantPaiementAMCRSP>"
                                "</donneesFacture></RSP></donneesRetourFacture>")};
        }
        return {operation, "", reponse(operation, "0", "")};
    }
    Execution lancer_avec(const Preparation& p, const std::optional<std::string>& document) {
        utiliser_script();
        std::remove(fichier("ZEMO_Request.xml").c_str());
        if (document) {
            ecrire(fichier("ZEMO_Request.xml"), *document);
        }
        scripter(1, p.reponse_zr);
        std::remove(fichier("LogsSV.txt").c_str());
        Execution e = operation(p.operation);
        EXPECT_TRUE(fin_propre(e));
        return e;
    }
    Lignes bases() { return instantane({pont(), hote()}); }
    Textes reponse_hote() const {
        Textes r = resultat(fichier("ZEMO_Response.xml"));
        for (std::string& t : r) {
            std::erase(t, '\r');
        }
        return r;
    }
};

TEST_F(EntreesFacturation, ADamagedHostDocumentSendsNothing) {
    struct Cas {
        std::string operation, appelant;
        bool enorme;  // the 100 MB document, once for the claim document's reader
    };
    for (const Cas& c :
         std::vector<Cas>{{"f_CreerFacture", "f_CreerFacture", true},
                          {"f_SupprimerFacture", "f_CreerFacture", false},
                          {"f_LireInfosRetourFacture", "F_LireInfosRetourFacture", false}}) {
        const Preparation p = preparer(c.operation);
        for (DocumentAbime d : kDocumentsAbimes) {
            if (d == DocumentAbime::Enorme && !c.enorme) {
                continue;
            }
            SCOPED_TRACE(c.operation + ", " + nom(d));
            const Lignes avant = bases();
            lancer_avec(p, abimer(d, p.document));
            if (d == DocumentAbime::Enorme) {
                // Well-formed: read as the claim it holds.
                EXPECT_EQ(appels(), 1);
                EXPECT_EQ(reponse_hote(), (Textes{c.operation, "0", ""}));
                EXPECT_EQ(sql(pont(),
                              "SELECT count(*) FROM T_InfosFacture WHERE "
                              "Info_Facture_NUMFAC = '77'"),
                          Lignes{{"1"}});
                sql(pont(),
                    "DELETE FROM T_InfosFacture WHERE Info_Facture_NUMFAC = '77';"
                    "DELETE FROM T_InfosDetailFacture WHERE Info_Facture_ID_FK NOT IN "
                    "(SELECT Info_Facture_ID FROM T_InfosFacture)");
                continue;
            }
            EXPECT_EQ(appels(), 0);
            EXPECT_EQ(reponse_hote(), (Textes{c.appelant, "99", kIllisible}));
            EXPECT_NE(log().find("ZEMO_Request.xml illisible : "), std::string::npos) << log();
            EXPECT_EQ(bases(), avant);
        }
    }
}

TEST_F(EntreesFacturation, ADamagedDatabaseFailsTheUnitAndSaysWhich) {
    struct Cas {
        std::string operation;
        bool hote;
        std::string table, colonne;  // none: the operation only reads the data version there
        bool ecrit;                  // a read-only or locked database fails the operation
    };
    for (const Cas& c : std::vector<Cas>{
             {"f_CreerFacture", false, "T_InfosFacture", "Info_Facture_TOTALFAC", true},
             {"f_CreerFacture", true, "", "", false},
             {"f_SupprimerFacture", false, "T_InfosSCor", "InfosSCor_NUMFAC", true},
             {"f_LireFacture", false, "T_InfosCPS", "Info_CPS_NUM_IDN", false},
             {"f_EnvoyerToutesFactures", false, "T_InfosBordereaux", "Info_Bordereau_NumLot_FSE",
              true},
             {"f_LireInfosRetourFacture", true, "Bordereau Mutuelle", "Paiement_RO", true}}) {
        const Preparation p = preparer(c.operation);
        const std::string base = c.hote ? hote() : pont();
        for (BaseAbimee b : kBasesAbimees) {
            // A locked case waits out the bridge's five seconds: one per kind of unit.
            if ((b == BaseAbimee::ColonneManquante && c.table.empty()) ||
                (b == BaseAbimee::Verrouillee && c.operation == "f_SupprimerFacture")) {
                continue;
            }
            SCOPED_TRACE(c.operation + ", " + base + " " + nom(b));
            const Lignes autre = instantane({c.hote ? pont() : hote()});
            Degat degat(b, base, c.table, c.colonne);
            if (!degat.pris()) {
                continue;
            }
            // Another workstation's transaction cannot be read beside it from here.
            const bool lisible = b == BaseAbimee::LectureSeule || b == BaseAbimee::ColonneManquante;
            const Lignes avant = lisible ? instantane({base}) : Lignes{};
            horloge_figee = b != BaseAbimee::Verrouillee;  // the bridge waits, then gives up
            lancer_avec(p, p.document);
            horloge_figee = true;
            const Textes r = reponse_hote();
            ASSERT_EQ(r.size(), 3u) << "no well-formed answer";
            if (lisible) {
                EXPECT_EQ(instantane({base}), avant);
            }
            const bool sans_effet =
                (!c.ecrit && (b == BaseAbimee::LectureSeule || b == BaseAbimee::Verrouillee)) ||
                (c.table.empty() && b != BaseAbimee::Corrompue);
            if (sans_effet) {
                EXPECT_EQ(r[1], "0") << r[2];
                continue;
            }
            EXPECT_EQ(r[1], "99");
            EXPECT_EQ(instantane({c.hote ? pont() : hote()}), autre);
            // Without the professional's identity no request is built; any other failure
            // names the database.
            if (r[2] != "Les données de la CPS n'ont pu être lues") {
                EXPECT_NE(r[2].find(chemin_du_pont(base)), std::string::npos) << r[2];
            }
            EXPECT_NE(log().find(chemin_du_pont(base) + " : "), std::string::npos) << log();
        }
    }
}

TEST_F(EntreesFacturation, HostileTextsStayInTheirFields) {
    // A claim whose folder type, and whose invoice number and act code as the middleware
    // answers them, are each a hostile text: stored as they are, or the claim refused.
    for (const std::string& t : textes_hostiles()) {
        SCOPED_TRACE(contenu(t).substr(0, 60));
        Preparation p = preparer("f_CreerFacture");
        p.reponse_zr = reponse_creation(contenu(t), {{{"codeActeNGAP", contenu(t)}}});
        const Lignes avant = bases();
        lancer_avec(p, document_facture({{"donneesFacture/typeDossier", t}}));
        if (avec_nul(t)) {
            EXPECT_EQ(appels(), 0);
            EXPECT_EQ(reponse_hote(), (Textes{"f_CreerFacture", "99", kIllisible}));
            EXPECT_EQ(bases(), avant);
            continue;
        }
        EXPECT_EQ(reponse_hote(), (Textes{"f_CreerFacture", "0", ""}));
        const Lignes stockee =
            sql(pont(),
                "SELECT Info_Facture_NUMFAC, Info_Facture_TypDOS, "
                "Info_DetailFacture_CODACTE FROM T_InfosFacture, "
                "T_InfosDetailFacture WHERE Info_Facture_ID_FK = Info_Facture_ID "
                "AND Info_Facture_ID = (SELECT max(Info_Facture_ID) FROM "
                "T_InfosFacture)");
        if (compare_en_base(t)) {
            EXPECT_EQ(stockee, (Lignes{{t, t, t}}));
        }
        sql(pont(),
            "DELETE FROM T_InfosDetailFacture WHERE Info_Facture_ID_FK = (SELECT "
            "max(Info_Facture_ID) FROM T_InfosFacture); DELETE FROM T_InfosFacture "
            "WHERE Info_Facture_ID = (SELECT max(Info_Facture_ID) FROM T_InfosFacture)");
    }

    // One lot: for each text, an invoice of that number (no slip has it) and, for a slip
    // of its own, a paying organisation of that name and address.
    std::vector<FactureEnvoyee> lot;
    Lignes organismes;
    for (const std::string& t : textes_hostiles()) {
        if (avec_nul(t)) {
            continue;
        }
        const std::string numero = std::to_string(lot.size() + 500);
        const std::string caisse = std::to_string(lot.size() + 200);
        sql(pont(),
            "INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture) VALUES ('" + numero + "')");
        lot.push_back({contenu(t), "17", "01", caisse, "0000", "", "", ""});
        lot.push_back({numero, "17", "01", caisse, "0000", contenu(t), contenu(t), contenu(t)});
        // The address and town are quoted by the host's rule.
        organismes.push_back({"01" + caisse + "0000", t, stocke(t), stocke(t)});
    }
    Preparation p = preparer("f_EnvoyerToutesFactures");
    p.reponse_zr = reponse(p.operation, "0", "", donnees_envoi(lot));
    lancer_avec(p, std::nullopt);
    EXPECT_EQ(reponse_hote(), (Textes{p.operation, "0", ""}));
    Lignes stockes = sql(pont(),
                         "SELECT Info_Adresse_codeRegime || Info_Adresse_codeCaisse || "
                         "Info_Adresse_codeCentre, Info_Adresse_libelle, Info_Adresse_adresse, "
                         "Info_Adresse_commune FROM T_InfosAdresse ORDER BY Info_Adresse_ID");
    ASSERT_EQ(stockes.size(), organismes.size());
    for (std::size_t i = 0; i < stockes.size(); ++i) {
        if (compare_en_base(organismes[i][1])) {
            EXPECT_EQ(stockes[i], organismes[i]);
        }
    }

    // Returns naming those invoices, and one state for the host's slip of each text.
    std::string retours;
    for (const std::string& t : textes_hostiles()) {
        retours += retour(contenu(t), "Paye") + retour("123", contenu(t));
    }
    p = preparer("f_LireInfosRetourFacture");
    p.reponse_zr = reponse(p.operation, "0", "",
                           "<donneesRetourFacture>" + retours + "</donneesRetourFacture>");
    const Lignes avant = instantane({pont()});
    lancer_avec(p, p.document);
    EXPECT_EQ(instantane({pont()}), avant);
    // NUL makes no XML: the answer is unreadable as a whole.
    EXPECT_EQ(reponse_hote(),
              (Textes{p.operation, "99", "Impossible de lire ZEMO_SvResponse.xml"}));
    retours.clear();
    for (const std::string& t : textes_hostiles()) {
        if (!avec_nul(t)) {
            retours += retour(contenu(t), "Paye") + retour("123", contenu(t));
        }
    }
    p.reponse_zr = reponse(p.operation, "0", "",
                           "<donneesRetourFacture>" + retours + "</donneesRetourFacture>");
    lancer_avec(p, p.document);
    EXPECT_EQ(reponse_hote(), (Textes{p.operation, "0", ""}));
    if (compare_en_base(textes_hostiles().back())) {
        EXPECT_EQ(sql(hote(), "SELECT NumFicheCommande, Libel_Rejet FROM [Bordereau Mutuelle]"),
                  (Lignes{{"FC1", textes_hostiles().back()}}));
    }
}

}  // namespace
}  // namespace bb
