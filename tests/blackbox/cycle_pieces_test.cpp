// The attachments' lifecycle against the middleware simulator, as the host drives it:
// sent, followed over the simulated days, checked against the invoices that need them,
// and withdrawn while the middleware still holds them.
#include <filesystem>

#include "facturation.h"

namespace bb {
namespace {

class CyclePieces : public BoiteNoire {
  protected:
    void reussir(const std::string& operation, const std::string& code = "0") {
        Execution e = BoiteNoire::operation(operation);
        ASSERT_TRUE(fin_propre(e));
        ASSERT_EQ(xml(fichier("ZEMO_Response.xml"), "/ZRMESSAGE/resultat/codeErreur"), Textes{code})
            << operation << "\n"
            << e.erreurs << log();
    }
    void outil_ok(const Textes& arguments) {
        Execution o = outil(arguments);
        ASSERT_EQ(o.statut, 0) << o.erreurs;
    }
    /// An attachment of invoice `facture` stored on another drive, its PDF in this
    /// shop's archive; its InfosSCor_ID.
    std::string piece(const std::string& facture, const std::string& nature,
                      const std::string& contenu = "%PDF-1.4\n%%EOF\n") {
        const std::string nom =
            "20240115100000_00000000" + facture + "_" + nature + "_991001231_000000001.pdf";
        std::filesystem::create_directories(magasin + "/Sv140Scor/202401");
        ecrire(magasin + "/Sv140Scor/202401/" + nom, contenu);
        sql(pont(),
            "INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_Nature, "
            "InfosSCor_Chemin, InfosSCor_nom, InfosSCor_DateGeneration, idDossier, "
            "typeDossier) VALUES ('" +
                facture + "', '" + nature + "', 'E:\\Boutique\\Sv140Scor\\202401\\', '" + nom +
                "', '2024-01-15 10:00:00', 1, 'LUN')");
        return sql(pont(), "SELECT max(InfosSCor_ID) FROM T_InfosSCor")[0][0];
    }
    void ordre(const std::string& fonction, const std::string& noeuds) {
        ecrire(fichier("dctsScor.xml"), "<ZRMESSAGE><requete><fonction><" + fonction + ">" +
                                            noeuds + "</" + fonction +
                                            "></fonction></requete></ZRMESSAGE>");
    }
    void supprimer(const std::string& id) {
        ordre("f_deldctsSCOR", "<Dossier><id_Document>" + id + "</id_Document></Dossier>");
    }
    /// Nature, sent, still to send, transfer code, status, label, acknowledgement.
    Lignes suivi() const {
        return sql(pont(),
                   "SELECT InfosSCor_Nature, InfosSCor_DateEnvoi IS NOT NULL, "
                   "Pointage, C_Erreur, C_Statut, InfosSCor_LibelError, "
                   "InfosSCor_ARL FROM T_InfosSCor ORDER BY InfosSCor_ID");
    }
    std::string libelle() const {
        Textes t = xml(fichier("ZEMO_Response.xml"), "//libelleErreur");
        std::string texte = t.empty() ? "" : t[0];
        std::erase(texte, '\r');
        return texte;
    }
};

TEST_F(CyclePieces, SentFollowedCheckedAndWithdrawn) {
    professionnel("1", 3600);
    reussir("f_LireCPS");
    // Invoice 1 signed with the card, invoice 2 degraded; both sent.
    outil_ok({"carte", racine, "famille"});
    ecrire(fichier("ZEMO_Request.xml"), document_facture());
    reussir("f_CreerFacture");
    outil_ok({"carte", racine, "aucune"});
    reussir("f_CreerFacture");
    for (const char* numero : {"1", "2"}) {
        sql(pont(), std::string("INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture) "
                                "VALUES ('") +
                        numero + "')");
    }
    reussir("f_EnvoyerToutesFactures");

    const std::string ordo = piece("1", "ORDN");
    const std::string cerfa = piece("1", "FSNC");
    piece("1", "AUTP", "pas un PDF");
    reussir("f_TransfertPJ", "99");
    EXPECT_EQ(libelle(), "Il y a 1 Pièce(s) jointe(s) avec erreur(s)");
    EXPECT_EQ(suivi(), (Lignes{{"ORDN", "1", "0", "0", "0", "", "0"},
                               {"FSNC", "1", "0", "0", "0", "", "0"},
                               {"AUTP", "0", "-1", "170", "0",
                                "Pièce jointe refusée - Le fichier n'est pas un PDF", "0"}}));

    // Two days later the prescription is accepted; the claim form of a signed invoice is
    // left to be handled by hand. From here on the answers outgrow the shop's buffer and
    // are fetched again.
    outil_ok({"avancer", racine, "2"});
    sql(pont(), "UPDATE T_InfoParam SET Taille_Buffer = 320");
    ordre("f_mettreajourStatut", "<donnees><DateDebut>20240101</DateDebut></donnees>");
    reussir("f_mettreajourStatut");
    EXPECT_NE(log().find("F_Appel : f_LireInfosRetourPJ Buffer : "), std::string::npos);
    EXPECT_EQ(suivi(), (Lignes{{"ORDN", "1", "0", "0", "0", "PJ acceptée", "-1"},
                               {"FSNC", "1", "0", "0", "12",
                                "La Pièce justificative est a traiter manuellement", "-1"},
                               {"AUTP", "0", "-1", "170", "0",
                                "Pièce jointe refusée - Le fichier n'est pas un PDF", "0"}}));

    reussir("f_ControlePJ");
    EXPECT_EQ(sql(pont(), "SELECT * FROM SCOR_Erreurs"),
              (Lignes{{"FSNC", "2", "Feuille de Soins", "Facture inconnue"},
                      {"ORDN", "2", "Ordonnance", "Facture inconnue"}}));

    // The claim form is still held by the middleware; the prescription has reached the
    // fund.
    supprimer(cerfa);
    reussir("f_deldctsSCOR");
    supprimer(ordo);
    reussir("f_deldctsSCOR", "99");
    EXPECT_EQ(libelle(), "Suppression impossible\nLa pièce jointe a déjà été transmise");
    EXPECT_EQ(sql(pont(),
                  "SELECT InfosSCor_nom, idDossier FROM T_InfosSCor ORDER BY "
                  "InfosSCor_ID LIMIT 2"),
              (Lignes{{"20240115100000_000000001_ORDN_991001231_000000001.pdf", "1"},
                      {"Document supprimé", "0"}}));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(magasin + "/Sv140Scor/202401"),
                            std::filesystem::directory_iterator{}),
              2);

    // A status the fund may give, imposed by the host's developer, read for one attachment.
    outil_ok(
        {"statut-pj", racine, "20240115100000_000000001_ORDN_991001231_000000001.pdf", "5230"});
    ordre("f_LireInfosRetourPJ", "<Document><Id>" + ordo + "</Id></Document>");
    reussir("f_LireInfosRetourPJ");
    EXPECT_EQ(suivi()[0], (Textes{"ORDN", "1", "0", "0", "5230", "Certificat révoqué", "-1"}));
}

}  // namespace
}  // namespace bb
