// The attachments after capture, against a scripted middleware: what each transfer
// answer leaves in the attachment's row, the statuses read back, the control of missing
// attachments, and deletion on the host's order.
#include <filesystem>

#include "harnais.h"

namespace bb {
namespace {

/// The folder rows were stored with on another machine: each run finds the file again
/// under its own shop folder.
const char* const kDossierStocke = "C:\\Ancien\\_Magasin\\Sv140Scor\\202401\\";

std::string transfert(const std::string& code, const std::string& libelle, const std::string& acces,
                      const std::string& erreurs = "") {
    std::string r = reponse("f_TransfertPJ", code, libelle, erreurs);
    if (!acces.empty()) {
        r.insert(r.find("<donnees>"), "<accesService>" + acces + "</accesService>\r\n");
    }
    return r;
}
const std::string kPris = transfert("0", "", "1");

std::string ordre(const std::string& fonction, const std::string& noeuds) {
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><ZRMESSAGE><requete><fonction><" +
           fonction + ">" + noeuds + "</" + fonction + "></fonction></requete></ZRMESSAGE>";
}

class PiecesJointes : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        professionnel();
        utiliser_script();
    }

    /// An attachment row stored elsewhere (its PDF put under this shop's archive unless
    /// `fichier` is false); its InfosSCor_ID.
    std::string piece(const std::string& numfac, const std::string& nom, bool fichier = true,
                      const std::string& autres_colonnes = "", const std::string& valeurs = "") {
        if (fichier) {
            std::filesystem::create_directories(magasin + "/Sv140Scor/202401");
            ecrire(magasin + "/Sv140Scor/202401/" + nom, "%PDF-1.4\n%%EOF\n");
        }
        std::string quote = nom;
        for (std::size_t i = quote.find('\''); i != quote.npos; i = quote.find('\'', i + 2)) {
            quote.insert(i, "'");
        }
        sql(pont(),
            "INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_Nature, "
            "InfosSCor_Chemin, InfosSCor_nom, InfosSCor_DateGeneration, idDossier, "
            "InfosSCor_Mode" +
                autres_colonnes + ") VALUES ('" + numfac + "', 'ORDN', '" + kDossierStocke +
                "', '" + quote + "', '2024-01-15 10:00:00', 4, ''" + valeurs + ")");
        return sql(pont(), "SELECT max(InfosSCor_ID) FROM T_InfosSCor")[0][0];
    }
    bool pdf_present(const std::string& nom) const {
        return existe(magasin + "/Sv140Scor/202401/" + nom);
    }
    /// nom, date sent, Pointage, C_Erreur, label of each row.
    Lignes envois() const {
        return sql(pont(),
                   "SELECT InfosSCor_nom, InfosSCor_DateEnvoi, Pointage, C_Erreur, "
                   "InfosSCor_LibelError FROM T_InfosSCor ORDER BY InfosSCor_ID");
    }
    /// C_Statut, label and acknowledgement of each row.
    Lignes statuts() const {
        return sql(pont(),
                   "SELECT C_Statut, InfosSCor_LibelError, InfosSCor_ARL FROM "
                   "T_InfosSCor ORDER BY InfosSCor_ID");
    }
    std::string aujourdhui() const { return horloge("%Y-%m-%d") + " 00:00:00"; }
    Textes requete(int appel, const std::string& xpath) const {
        return xml(script("requete_" + std::to_string(appel) + ".xml"), xpath);
    }
    /// The host's answer, its line breaks as LF.
    Textes reponse_hote() const {
        Textes r = resultat(fichier("ZEMO_Response.xml"));
        for (std::string& t : r) {
            std::erase(t, '\r');
        }
        return r;
    }
};

TEST_F(PiecesJointes, EachTransferAnswerIsRecordedInItsRow) {
    const std::string succes = "La fonction s'est déroulée avec succès";
    const std::string une_erreur = "Il y a 1 Pièce(s) jointe(s) avec erreur(s)";
    struct Cas {
        const char* nom;
        std::string reponse;
        Textes ligne;  // date sent (empty: today), Pointage, C_Erreur, label
        std::string fin;
    } cas[] = {
        {"taken", kPris, {"", "0", "0", ""}, succes},
        {"taken with a label holding quotes",
         transfert("0", "Reçu l'\"original\"", "1"),
         {"", "0", "0", stocke("Reçu l'\"original\"")},
         succes},
        {"no service access",
         transfert("0", "", ""),
         {"NULL", "-1", "0", "Service de transfert inaccessible (accesService absent)"},
         une_erreur},
        {"service access 0",
         transfert("0", "Hors ligne", "0"),
         {"NULL", "-1", "0", "Hors ligne"},
         une_erreur},
        {"negative code",
         transfert("-4", "Refusé", "1"),
         {"NULL", "-1", "-4", "Refusé"},
         une_erreur},
        {"refused with its reasons",
         transfert("17", "Rejet", "1",
                   "<erreur>Trop gros</erreur><erreur>Pas un "
                   "PDF</erreur>"),
         {"NULL", "-1", "17", "Rejet - Trop gros - Pas un PDF"},
         une_erreur},
        {"reasons without a label",
         transfert("17", "", "1", "<erreur>Trop gros</erreur>"),
         {"NULL", "-1", "17", "Trop gros"},
         une_erreur},
        {"middleware call failed",
         "",
         {"NULL", "-1", "98", "Erreur Web Quintara - Sortie brutale"},
         une_erreur},
    };
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.nom);
        sql(pont(), "DELETE FROM T_InfosSCor");
        const std::string nom = "d'été 1.pdf";
        piece("123", nom);
        utiliser_script();
        scripter(1, c.reponse, c.reponse.empty() ? 7 : 0);
        const Execution e = operation("f_TransfertPJ");
        EXPECT_TRUE(fin_propre(e));
        ASSERT_EQ(appels(), 1);
        EXPECT_EQ(requete(1, "//f_TransfertPJ/*[not(self::PS)] | //PS/*"),
                  (Textes{"0001", "10001234567", "123456789", "1",
                          chemin_du_pont(magasin + "/Sv140Scor/202401/"), nom, "0", "e"}));
        Textes attendu = c.ligne;
        if (attendu[0].empty()) {
            attendu[0] = aujourdhui();
        }
        attendu.insert(attendu.begin(), nom);
        EXPECT_EQ(envois(), Lignes{attendu});
        EXPECT_EQ(reponse_hote(), (Textes{"f_Scor", c.fin == succes ? "0" : "99", c.fin}));
        EXPECT_TRUE(pdf_present(nom));
    }
}

TEST_F(PiecesJointes, OnlyPendingRowsAreSentInInvoiceOrderAndAVanishedFileIsMarked) {
    piece("20", "b.pdf");
    piece("10", "disparu.pdf", false);
    piece("15", "supprime.pdf", true, ", Pointage", ", 0");
    piece("12", "envoye.pdf", true, ", InfosSCor_DateEnvoi", ", '2024-01-16 00:00:00'");
    piece("11", "dossier0.pdf");
    sql(pont(), "UPDATE T_InfosSCor SET idDossier = 0 WHERE InfosSCor_nom = 'dossier0.pdf'");
    piece("100", "a.pdf");
    sql(pont(), "UPDATE T_InfosSCor SET InfosSCor_Mode = 'M' WHERE InfosSCor_nom = 'a.pdf'");
    scripter(0, kPris);

    EXPECT_TRUE(fin_propre(operation("f_TransfertPJ")));
    // Text order: "100" before "20"; the vanished one is not sent.
    ASSERT_EQ(appels(), 2);
    EXPECT_EQ(requete(1, "//nomPJ | //mode"), (Textes{"a.pdf", "m"}));
    EXPECT_EQ(requete(2, "//nomPJ"), Textes{"b.pdf"});
    const std::string j = aujourdhui();
    EXPECT_EQ(envois(), (Lignes{{"b.pdf", j, "0", "0", ""},
                                {"Document supprimé", "NULL", "0", "0", "Document supprimé"},
                                {"supprime.pdf", "NULL", "0", "0", "NULL"},
                                {"envoye.pdf", "2024-01-16 00:00:00", "-1", "0", "NULL"},
                                {"dossier0.pdf", "NULL", "-1", "0", "NULL"},
                                {"a.pdf", j, "0", "0", ""}}));
    EXPECT_EQ(reponse_hote(), (Textes{"f_Scor", "0", "La fonction s'est déroulée avec succès"}));

    utiliser_script();
    EXPECT_TRUE(fin_propre(operation("f_TransfertPJ")));
    EXPECT_EQ(appels(), 0);
    EXPECT_EQ(reponse_hote(), (Textes{"f_Scor", "0", "Aucun document à envoyer"}));
}

TEST_F(PiecesJointes, FiveHundredPendingRowsAreEachSentOnce) {
    std::filesystem::create_directories(magasin + "/Sv140Scor/202401");
    for (int i = 1; i <= 500; ++i) {
        ecrire(magasin + "/Sv140Scor/202401/" + std::to_string(i) + ".pdf", "%PDF-1.4\n");
    }
    sql(pont(), std::string("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                            "WHERE i < 500) INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, "
                            "InfosSCor_Chemin, InfosSCor_nom, idDossier) SELECT i, '") +
                    kDossierStocke + "', i || '.pdf', 1 FROM n");
    scripter(0, kPris);
    EXPECT_TRUE(fin_propre(operation("f_TransfertPJ")));
    EXPECT_EQ(appels(), 500);
    EXPECT_EQ(sql(pont(),
                  "SELECT count(*) FROM T_InfosSCor WHERE Pointage = 0 AND "
                  "InfosSCor_DateEnvoi IS NOT NULL"),
              (Lignes{{"500"}}));
    EXPECT_EQ(reponse_hote(), (Textes{"f_Scor", "0", "La fonction s'est déroulée avec succès"}));
}

TEST_F(PiecesJointes, ARefusalOrAStopMidwayKeepsWhatWasSent) {
    for (int i = 1; i <= 5; ++i) {
        piece(std::to_string(i), std::to_string(i) + ".pdf");
    }
    scripter(0, kPris);
    scripter(3, transfert("30", "Refusée", "1"));
    EXPECT_TRUE(fin_propre(operation("f_TransfertPJ")));
    EXPECT_EQ(appels(), 5);
    Lignes attendu;
    for (int i = 1; i <= 5; ++i) {
        attendu.push_back(i == 3 ? Textes{"3.pdf", "NULL", "-1", "30", "Refusée"}
                                 : Textes{std::to_string(i) + ".pdf", aujourdhui(), "0", "0", ""});
    }
    EXPECT_EQ(envois(), attendu);
    EXPECT_EQ(reponse_hote(),
              (Textes{"f_Scor", "99", "Il y a 1 Pièce(s) jointe(s) avec erreur(s)"}));

    // The same five again, the run killed while the middleware holds the third.
    sql(pont(), "UPDATE T_InfosSCor SET InfosSCor_DateEnvoi = NULL, Pointage = -1, C_Erreur = 0");
    utiliser_script();
    scripter(0, kPris);
    ecrire(script("3.attend"), "");
    tuer_apres = sous_wine() ? 30 : 5;
    operation("f_TransfertPJ");
    tuer_apres = 0;
    EXPECT_EQ(appels(), 3);
    const Lignes apres_arret = envois();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(apres_arret[i][2], i < 2 ? "0" : "-1") << apres_arret[i][0];
    }
    std::filesystem::remove(script("3.attend"));
    EXPECT_TRUE(fin_propre(operation("f_TransfertPJ")));
    EXPECT_EQ(appels(), 6);
    EXPECT_EQ(requete(4, "//nomPJ"), Textes{"3.pdf"});
    for (const Textes& l : envois()) {
        EXPECT_EQ(l[2], "0") << l[0];
    }
}

TEST_F(PiecesJointes, TheHostsOrderSendsItsDocuments) {
    const std::string id = piece("5", "x.pdf");
    ecrire(fichier("dctsScor.xml"),
           ordre("f_TransfertPJ_unique",
                 "<Document><Id>" + id +
                     "</Id><Chemin>D:\\Autre\\Sv140Scor\\202401\\</Chemin>"
                     "<Nom>x.pdf</Nom><Mode>M</Mode></Document><Document><Id>" +
                     id +
                     "</Id><Chemin>D:\\Autre\\Sv140Scor\\202401\\</Chemin><Nom>absent.pdf</Nom>"
                     "<Mode></Mode></Document>"));
    scripter(0, transfert("8", "Refusée", "1"));
    EXPECT_TRUE(fin_propre(operation("f_TransfertPJ_unique")));
    EXPECT_EQ(appels(), 1);
    EXPECT_EQ(requete(1, "//cheminPJ | //mode"),
              (Textes{chemin_du_pont(magasin + "/Sv140Scor/202401/"), "m"}));
    EXPECT_EQ(envois(), (Lignes{{"x.pdf", "NULL", "-1", "8", "Refusée"}}));
    EXPECT_EQ(reponse_hote(), (Textes{"f_Scor", "0", "La fonction s'est déroulée avec succès"}));

    for (const std::string& mauvais :
         {std::string("<Document><Id>1x</Id></Document>"), std::string("<Document><Id>")}) {
        utiliser_script();
        ecrire(fichier("dctsScor.xml"), ordre("f_TransfertPJ_unique", mauvais));
        EXPECT_TRUE(fin_propre(operation("f_TransfertPJ_unique")));
        EXPECT_EQ(appels(), 0);
        EXPECT_EQ(reponse_hote(), (Textes{"f_Scor", "99", "Impossible de lire dctsScor.xml"}));
    }
}

std::string statuts_zr(const std::string& factures, const std::string& code = "0",
                       const std::string& libelle = "") {
    return reponse("f_LireInfosRetourPJ", code, libelle,
                   "<listeFacture>" + factures + "</listeFacture>");
}
std::string facture(const std::string& numero, const std::string& pjs) {
    return "<facture><numFact>" + numero + "</numFact>" + pjs + "</facture>";
}
std::string pj(const std::string& code, const std::string& nom) {
    return "<PJ><code>" + code + "</code><nomPJ>" + nom + "</nomPJ></PJ>";
}

TEST_F(PiecesJointes, StatusesAreReadIntoTheRowsTheyName) {
    const std::string a = piece("7", "a.pdf"), b = piece("7", "b.pdf");
    const std::string c = piece("000008", "c.pdf"), d = piece("9", "d.pdf");
    const std::string e = piece("10", "e.pdf");
    ecrire(fichier("dctsScor.xml"),
           ordre("f_LireInfosRetourPJ",
                 "<Document><Id>" + a + "</Id></Document><Document><Id>" + b +
                     "</Id></Document><Document><Id>999</Id>"
                     "</Document><Document><Id>" +
                     c + "</Id></Document><Document><Id>" + d + "</Id></Document><Document><Id>" +
                     e + "</Id></Document>"));
    scripter(1, statuts_zr(facture("000000007", pj("12", "a.txt") + pj("abc", "b.pdf")) +
                           facture("000000008", pj("", "") + pj("5230", "c.pdf")) +
                           facture("000000009", pj("2", "") + pj("77", "x'y.pdf")) +
                           facture("000000010", pj("11", "e.pdf"))));
    EXPECT_TRUE(fin_propre(operation("f_LireInfosRetourPJ")));
    ASSERT_EQ(appels(), 1);
    EXPECT_EQ(requete(1, "//numeroFacture"),
              (Textes{"000000007", "000000008", "000000009", "000000010"}));
    EXPECT_EQ(statuts(), (Lignes{{"12", "La Pièce justificative est a traiter manuellement", "-1"},
                                 {"0", "NULL", "0"},
                                 {"5230", "Certificat révoqué", "-1"},
                                 {"2", "Pas de Pièce Jointe", "0"},
                                 {"11",
                                  "La Pièce justificative a été expédiée à la Caisse mais reste "
                                  "sans retour (>48H)",
                                  "0"}}));
    EXPECT_EQ(reponse_hote()[1], "0");

    struct Refus {
        const char* nom;
        std::string ordre, reponse;
        int appels;
        Textes fin;
    } refus[] = {
        {"middleware error",
         ordre("f_LireInfosRetourPJ", "<Document><Id>" + a + "</Id></Document>"),
         statuts_zr("", "12", "Service fermé"),
         1,
         {"Retour_f_LireinfosRetourPJ", "99", "Service fermé"}},
        {"no row",
         ordre("f_LireInfosRetourPJ", "<Document><Id>999</Id></Document>"),
         "",
         0,
         {"f_LireInfosRetourPJ", "99", "Document introuvable"}},
        {"malformed order",
         "<ZRMESSAGE>",
         "",
         0,
         {"f_Scor", "99", "Impossible de lire dctsScor.xml"}},
    };
    for (const Refus& r : refus) {
        SCOPED_TRACE(r.nom);
        utiliser_script();
        scripter(1, r.reponse);
        ecrire(fichier("dctsScor.xml"), r.ordre);
        const Lignes avant = statuts();
        EXPECT_TRUE(fin_propre(operation("f_LireInfosRetourPJ")));
        EXPECT_EQ(appels(), r.appels);
        EXPECT_EQ(reponse_hote(), r.fin);
        EXPECT_EQ(statuts(), avant);
    }
}

TEST_F(PiecesJointes, TheUpdateAsksForMovingAndRefusedAttachmentsSinceTheStart) {
    const char* const colonnes = ", InfosSCor_ARL, C_Erreur, C_Statut";
    piece("1", "moving.pdf", true, colonnes, ", 0, 0, 9");
    piece("2", "accepted.pdf", true, colonnes, ", -1, 0, 0");
    piece("3", "refused.pdf", true, colonnes, ", -1, 0, 5230");
    piece("4", "transfer-error.pdf", true, colonnes, ", 0, 17, 0");
    piece("5", "old.pdf", true, colonnes, ", 0, 0, 9");
    sql(pont(),
        "UPDATE T_InfosSCor SET InfosSCor_DateGeneration = '2024-01-04 23:59:59' WHERE "
        "InfosSCor_nom = 'old.pdf'");
    ecrire(fichier("20240105_reste.pdf"), "%PDF");
    const auto mise_a_jour = [&](const std::string& debut) {
        ecrire(fichier("dctsScor.xml"),
               ordre("f_mettreajourStatut",
                     "<donnees><DateDebut>" + debut + "</DateDebut></donnees>"));
        return fin_propre(operation("f_mettreajourStatut"));
    };
    scripter(0, statuts_zr(facture("1", pj("0", "moving.pdf"))));
    EXPECT_TRUE(mise_a_jour("20240105"));
    ASSERT_EQ(appels(), 1);
    EXPECT_EQ(requete(1, "//numeroFacture"), (Textes{"000000001", "000000003"}));
    EXPECT_FALSE(existe(fichier("20240105_reste.pdf")));
    EXPECT_EQ(statuts()[0], (Textes{"0", "PJ acceptée", "-1"}));

    EXPECT_TRUE(mise_a_jour("00000000"));
    EXPECT_EQ(requete(2, "//numeroFacture"), (Textes{"000000005", "000000003"}));

    sql(pont(), "UPDATE T_InfosSCor SET InfosSCor_ARL = -1, C_Statut = 0");
    EXPECT_TRUE(mise_a_jour("20240105"));
    EXPECT_EQ(appels(), 2);
    EXPECT_EQ(reponse_hote(), (Textes{"f_mettreAjourStatut", "98", "Aucun Statut à Vérifier"}));

    EXPECT_TRUE(mise_a_jour("2024-01-05"));
    EXPECT_EQ(appels(), 2);
    EXPECT_EQ(reponse_hote(), (Textes{"f_Scor", "99", "Impossible de lire dctsScor.xml"}));
}

TEST_F(PiecesJointes, TheControlListsTheAttachmentsTheListedInvoicesLack) {
    // 31 degraded with an optical device, 32 signed with its prescription stored, 33 signed
    // without a device, 34 unknown here.
    sql(pont(),
        "INSERT INTO T_InfosFacture (Info_Facture_ID, Info_Facture_NUMFAC, "
        "Info_Facture_TYPECERTIF) VALUES (1, '31', 'Degrade'), (2, '32', 'Sesam-Vitale'), "
        "(3, '33', 'Sesam-Vitale');"
        "INSERT INTO T_InfosDetailFacture (Info_Facture_ID_FK, Info_Facture_CODLPP) VALUES "
        "(1, '2203240'), (2, '2203240'), (3, ''), (3, NULL);"
        "INSERT INTO SCOR_Erreurs VALUES ('ORDN', '1', 'Ordonnance', 'Ancien');");
    piece("32", "ordo32.pdf");
    sql(hote(),
        "INSERT INTO [Saisie des Clients] ([N°], Nom, [Prénom]) VALUES (5, 'D''Ornano', "
        "NULL); INSERT INTO [Fiche Technique Optique] (Lien, [NUMERO FACTURE]) VALUES "
        "(5, 31)");
    scripter(1, reponse("f_ControlePJ", "0", "",
                        "<listeFacture><numeroFacture>000000031</numeroFacture><numeroFacture>"
                        "000000032</numeroFacture><numeroFacture>33</numeroFacture>"
                        "<numeroFacture>3'4</numeroFacture></listeFacture>"));
    EXPECT_TRUE(fin_propre(operation("f_ControlePJ")));
    EXPECT_EQ(requete(1, "//f_ControlePJ/*[not(self::PS)] | //PS/*"),
              (Textes{"0001", "10001234567", "123456789", "1"}));
    EXPECT_EQ(sql(pont(), "SELECT * FROM SCOR_Erreurs"),
              (Lignes{{"FSNC", "31", "Feuille de Soins", "D'Ornano ?"},
                      {"ORDN", "31", "Ordonnance", "D'Ornano ?"}}));
    EXPECT_EQ(reponse_hote(),
              (Textes{"f_ControlePJ", "0", "La fonction s'est déroulée avec succès"}));

    utiliser_script();
    scripter(1, reponse("f_ControlePJ", "5", "Contrôle impossible"));
    EXPECT_TRUE(fin_propre(operation("f_ControlePJ")));
    EXPECT_EQ(reponse_hote(), (Textes{"f_ControlePJ", "99", "Contrôle impossible"}));
    EXPECT_EQ(sql(pont(), "SELECT count(*) FROM SCOR_Erreurs"), (Lignes{{"2"}}));
}

TEST_F(PiecesJointes, DeletionFollowsTheMiddlewaresAnswer) {
    const std::string retenter =
        "Ré-essayer ultérieurement\nLa pièce jointe n'existe pas dans ZR (Attente "
        "d'actualisation)";
    const std::string impossible = "Suppression impossible\nLa pièce jointe a déjà été transmise";
    struct Cas {
        const char* nom;
        bool envoyee;
        std::string code, libelle;
        bool supprimee;
        Textes fin;
    } cas[] = {
        {"withdrawn",
         true,
         "0",
         "",
         true,
         {"Retour_f_SupprimerPJ", "0", "La fonction s'est déroulée avec succès"}},
        {"unknown, never sent",
         false,
         "41",
         "Pièce jointe inconnue",
         true,
         {"Retour_f_SupprimerPJ", "0", "La fonction s'est déroulée avec succès"}},
        {"unknown, sent",
         true,
         "41",
         "Pièce jointe inconnue",
         false,
         {"Retour_f_SupprimerPJ", "99", retenter}},
        {"passed to the fund",
         true,
         "42",
         "Pièce jointe déjà transmise",
         false,
         {"Retour_f_SupprimerPJ", "99", impossible}},
        {"other refusal",
         false,
         "7",
         "Service fermé",
         false,
         {"Retour_f_SupprimerPJ", "99", "Service fermé"}},
    };
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.nom);
        sql(pont(), "DELETE FROM T_InfosSCor");
        const std::string id =
            c.envoyee ? piece("3", "p.pdf", true, ", InfosSCor_DateEnvoi", ", '2024-01-16'")
                      : piece("3", "p.pdf");
        ecrire(fichier("dctsScor.xml"),
               ordre("f_deldctsSCOR",
                     "<Dossier><Dossier>OPT</Dossier><Id>4</Id><Facture>3"
                     "</Facture><id_Document>" +
                         id + "</id_Document><Nature>ORDN</Nature></Dossier>"));
        utiliser_script();
        scripter(1, reponse("f_SupprimerPJ", c.code, c.libelle));
        EXPECT_TRUE(fin_propre(operation("f_deldctsSCOR")));
        ASSERT_EQ(appels(), 1);
        EXPECT_EQ(requete(1, "//nomPJ"), Textes{"p.pdf"});
        EXPECT_EQ(reponse_hote(), c.fin);
        EXPECT_EQ(pdf_present("p.pdf"), !c.supprimee);
        EXPECT_EQ(sql(pont(), "SELECT InfosSCor_nom, idDossier FROM T_InfosSCor"),
                  (Lignes{c.supprimee ? Textes{"Document supprimé", "0"} : Textes{"p.pdf", "4"}}));
    }

    for (const auto& [noeud, fin] :
         {std::pair{std::string("<Dossier><id_Document>999</id_Document></Dossier>"),
                    Textes{"f_SupprimerPJ", "99", "Document introuvable"}},
          std::pair{std::string("<Dossier><id_Document>1 OR 1=1</id_Document></Dossier>"),
                    Textes{"f_Scor", "99", "Impossible de lire dctsScor.xml"}}}) {
        utiliser_script();
        ecrire(fichier("dctsScor.xml"), ordre("f_deldctsSCOR", noeud));
        EXPECT_TRUE(fin_propre(operation("f_deldctsSCOR")));
        EXPECT_EQ(appels(), 0);
        EXPECT_EQ(reponse_hote(), fin);
    }
}

}  // namespace
}  // namespace bb
