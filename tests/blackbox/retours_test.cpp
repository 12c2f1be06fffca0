// What the insurers did with the invoices of a period, written onto the host's slips:
// the state of each invoice, what was paid and whether the slip is settled.
#include <ctime>
#include <iomanip>
#include <sstream>

#include "facturation.h"

namespace bb {
namespace {

std::string recapitulatif(const std::string& numero, const std::string& etat) {
    return "<recapitulatifFacture><dateFacture>20240301</dateFacture><libelleOrgaDest>CPAM"
           "</libelleOrgaDest><montantTotalHonoraires>31100</montantTotalHonoraires>"
           "<numeroFacture>" +
           numero + "</numeroFacture><etatFacture>" + etat +
           "</etatFacture><benef><nom>DUPONT</nom></benef></recapitulatifFacture>";
}

std::string paiement(const std::string& numero, const std::string& amo, const std::string& amc) {
    return "<donneesFacture><numeroFacture>" + numero + "</numeroFacture><montantPaiementAMORSP>" +
           amo + "</montantPaiementAMORSP><montantPaiementAMCRSP>" + amc +
           "</montantPaiementAMCRSP></donneesFacture>";
}

class Retours : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        professionnel();
        utiliser_script();
        // Slips: order sheet, invoice, insurer, date, compulsory parts, complementary part.
        sql(hote(),
            "INSERT INTO [Bordereau Mutuelle] (NumFicheCommande, NumFacture, Mutuelle, [Date],"
            " TotalTmoCPAM, TotalCPAM, TotalMutuelle, DateEdition) VALUES"
            " ('FC1', '123', 1, '2024-02-01 00:00:00', 10, 20, 50, NULL),"
            " ('FC\"2', '123', 1, '2024-02-01 00:00:00', 0, 0, 40, NULL),"
            " ('FC3', '124', 1, '2024-02-02 00:00:00', 0, 30, 0, NULL),"
            " ('FC4', '125', 1, '2024-02-02 00:00:00', 0, 30, 0, NULL),"
            " ('FC5', '126', 1, '2024-02-02 00:00:00', 0, 30, 0, NULL),"
            " ('FC6', '127', 1, '2024-02-02 00:00:00', 0, 10, 0, NULL),"
            " ('FC7', '500', 3, '2024-02-03 00:00:00', 0, 0, 0, NULL),"
            " ('FC8', '501', 3, '2024-02-03 00:00:00', 0, 0, 0, '2024-01-01 00:00:00');"
            "INSERT INTO [Fichier des Mutuelles] (Compteur, [Nom Mutuelle]) VALUES (7, '[TPGEN]');"
            "INSERT INTO [Contrat Mutuelles] ([N°], Lien) VALUES (3, 7);");
        ecrire(fichier("ZEMO_Request.xml"),
               "<ZRMESSAGE><donnees><datedebut>20240101</datedebut><datedfin>20240131</datedfin>"
               "</donnees></ZRMESSAGE>");
    }
    void lire_retours(const std::string& reponse_zr) {
        utiliser_script();
        scripter(1, reponse_zr);
        EXPECT_TRUE(fin_propre(operation("f_LireInfosRetourFacture")));
    }
    Lignes bordereaux() {
        return sql(hote(),
                   "SELECT NumFicheCommande, Libel_Rejet, Motif, Paiement_RO, Paiement_RC,"
                   " Pointage, Solde, Date_pointage, DateEdition FROM [Bordereau Mutuelle]"
                   " ORDER BY rowid");
    }
    /// The period the request asked for.
    Textes periode() {
        const std::string f = "/ZRMESSAGE/requete/fonction/f_LireInfosRetourFacture/";
        return xml(script("requete_1.xml"), f + "dateDebut | " + f + "dateFin");
    }
    const std::string retours_ = reponse(
        "f_LireInfosRetourFacture", "0", "",
        "<donneesRetourFacture>" + recapitulatif("123", "Paye") + recapitulatif("124", "paye ") +
            recapitulatif("125", "Expedie ou en cours de traitement") +
            recapitulatif("127", "Paye") + recapitulatif("999", "Paye") + "<RSP>" +
            paiement("123", "30", "90") + paiement("124", "20", "0") + paiement("999", "1", "1") +
            "</RSP></donneesRetourFacture>" +
            "<ZRMESSAGE><resultat><donnees><donneesRetourFacture>" +
            recapitulatif("126", "Facture en erreur") +
            "</donneesRetourFacture></donnees></resultat></ZRMESSAGE>");
};

TEST_F(Retours, StatesAndPaymentsLandOnTheSlipsTheyAreDueOn) {
    lire_retours(retours_);
    const std::string jour = horloge("%Y-%m-%d 00:00:00");
    EXPECT_EQ(
        bordereaux(),
        (Lignes{{"FC1", "Paye", "P", "30.0", "90.0", "-1", "-1", jour, "NULL"},
                {"FC\"2", "Paye", "P", "NULL", "90.0", "-1", "-1", jour, "NULL"},
                // Not settled: 20 paid of the 30 due.
                {"FC3", "paye", "", "20.0", "NULL", "0", "0", jour, "NULL"},
                {"FC4", "Expedie ou en cours de traitement", "E", "NULL", "NULL", "0", "0", "NULL",
                 "NULL"},
                {"FC5", "Facture en erreur", "N", "NULL", "NULL", "0", "0", "NULL", "NULL"},
                // Paid, says the answer, but without its payments: not settled.
                {"FC6", "Paye", "P", "0.0", "NULL", "0", "0", jour, "NULL"},
                // The generic tiers-payant insurer's slips not yet edited are dated.
                {"FC7", "NULL", "NULL", "NULL", "NULL", "0", "0", "NULL", jour},
                {"FC8", "NULL", "NULL", "NULL", "NULL", "0", "0", "NULL", "2024-01-01 00:00:00"}}));
    EXPECT_EQ(periode(), (Textes{"20240101", "20240131"}));
    EXPECT_NE(log().find("Etat Facture : (126) : Facture en erreur"), std::string::npos);
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml"))[1], "0");
}

TEST_F(Retours, AnInvoiceThatCannotBeReconciledIsNamedAndTheOthersStay) {
    sql(hote(), "ALTER TABLE [Bordereau Mutuelle] DROP COLUMN Paiement_RC");
    lire_retours(retours_);
    const Lignes lignes = sql(hote(),
                              "SELECT NumFicheCommande, Motif FROM [Bordereau Mutuelle]"
                              " ORDER BY rowid LIMIT 6");
    // The paid invoices' states went with their payments; the others are recorded.
    EXPECT_EQ(lignes, (Lignes{{"FC1", "NULL"},
                              {"FC\"2", "NULL"},
                              {"FC3", "NULL"},
                              {"FC4", "E"},
                              {"FC5", "N"},
                              {"FC6", "NULL"}}));
    const Textes r = resultat(fichier("ZEMO_Response.xml"));
    ASSERT_EQ(r.size(), 3u);
    EXPECT_EQ(r[1], "99");
    EXPECT_TRUE(
        r[2].starts_with("Retours lus, mais non enregistré : facture '123', facture "
                         "'124', facture '127' ("))
        << r[2];
}

// The host's clock's day, `jours` earlier, as yyyymmdd.
std::string jour_moins(const std::string& aujourdhui, int jours) {
    std::tm t{};
    std::istringstream(aujourdhui) >> std::get_time(&t, "%Y-%m-%d");
    t.tm_mday -= jours;
    t.tm_hour = 12;
    t.tm_isdst = -1;
    std::mktime(&t);
    std::ostringstream s;
    s << std::put_time(&t, "%Y%m%d");
    return s.str();
}

TEST_F(Retours, ThePeriodComesFromTheHostOrFromItsOldestSlip) {
    struct Cas {
        const char* nom;
        int version;
        std::string plus_ancien;  // the oldest slip's date, "" for no slip
    } cas[] = {
        {"recent slip", 3499, "2024-02-01 00:00:00"},
        {"slip older than 90 days", 3499, "2020-01-01 00:00:00"},
        {"no slip", 2000, ""},
        {"not a date", 3499, "hier"},
    };
    for (const Cas& c : cas) {
        professionnel("1", c.version);
        sql(hote(), "DELETE FROM [Bordereau Mutuelle]");
        if (!c.plus_ancien.empty()) {
            sql(hote(),
                "INSERT INTO [Bordereau Mutuelle] ([Date]) VALUES ('" + c.plus_ancien + "')");
        }
        lire_retours(reponse("f_LireInfosRetourFacture", "0", ""));
        const std::string aujourdhui = horloge("%Y-%m-%d");
        const std::string limite = jour_moins(aujourdhui, 90);
        const std::string debut =
            c.plus_ancien.size() >= 10 && !sous_wine() && c.plus_ancien.starts_with("2024")
                ? "20240201"
                : limite;
        EXPECT_EQ(periode(), (Textes{debut, horloge("%Y%m%d")})) << c.nom;
    }
}

TEST_F(Retours, AnswersThatWriteNothing) {
    const Lignes avant = bordereaux();
    lire_retours(reponse("f_LireInfosRetourFacture", "7", "Période invalide"));
    EXPECT_EQ(bordereaux(), avant);
    lire_retours("<ZRMESSAGE>");
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
              (Textes{"f_LireInfosRetourFacture", "99", "Impossible de lire ZEMO_SvResponse.xml"}));
    EXPECT_EQ(bordereaux(), avant);
    // From data version 3500 the host writes the period: without it nothing is asked.
    ecrire(fichier("ZEMO_Request.xml"), "<ZRMESSAGE>");
    lire_retours(retours_);
    EXPECT_EQ(appels(), 0);
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
              (Textes{"F_LireInfosRetourFacture", "99", "Impossible de lire ZEMO_Request.xml"}));
    EXPECT_EQ(bordereaux(), avant);
}

}  // namespace
}  // namespace bb
