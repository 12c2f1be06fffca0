// The invoicing cycle against the middleware simulator, as the host drives it: claims
// created, the host's slips made, the day's claims sent in lots, and two simulated days
// later the insurers' payments reconciled on the slips.
#include "facturation.h"

namespace bb {
namespace {

class CycleFacturation : public BoiteNoire {
  protected:
    void reussir(const std::string& operation) {
        Execution e = BoiteNoire::operation(operation);
        ASSERT_TRUE(fin_propre(e));
        ASSERT_EQ(xml(fichier("ZEMO_Response.xml"), "/ZRMESSAGE/resultat/codeErreur"), Textes{"0"})
            << operation << "\n"
            << e.erreurs << log();
    }
    void carte(const std::string& id) {
        Execution o = outil({"carte", racine, id});
        ASSERT_EQ(o.statut, 0) << o.erreurs;
    }
    /// The host's slips for every invoice stored, as the host makes them after a
    /// creation: the number exactly as stored, the parts due from the invoice's totals.
    void bordereaux_hote() {
        for (const Textes& f : sql(pont(),
                                   "SELECT Info_Facture_NUMFAC, Info_Facture_TYPECERTIF,"
                                   " Info_Facture_TPAMO, Info_Facture_TPAMC"
                                   " FROM T_InfosFacture")) {
            sql(pont(),
                "INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture,"
                " Info_Bordereau_typeCertification) VALUES ('" +
                    f[0] + "', '" + f[1] + "')");
            sql(hote(),
                "INSERT INTO [Bordereau Mutuelle] (NumFicheCommande, NumFacture,"
                " Mutuelle, [Date], TotalTmoCPAM, TotalCPAM, TotalMutuelle) VALUES"
                " ('FC" +
                    f[0] + "', '" + f[0] + "', 1, '2024-03-05 00:00:00', 0, " + f[2] + ", " + f[3] +
                    ")");
        }
    }
};

TEST_F(CycleFacturation, ClaimsAreSentInLotsThenPaidOnTheSlips) {
    professionnel("1", 3600);
    reussir("f_LireCPS");
    const Champs martin = {{"beneficiaire/nomBeneficaire", "MARTIN"},
                           {"beneficiaire/prenomBeneficaire", "Julien"},
                           {"beneficiaire/dateNaissanceBeneficaire", "19780512"},
                           {"beneficiaire/nirAssure", "1780575115042"},
                           {"beneficiaire/codeCaisse", "751"},
                           {"beneficiaire/codeCentre", "0441"}};
    // Two claims with the card in the reader, one without (degraded), one estimate.
    carte("famille");
    for (const char* mode : {"Facture", "Facture", "Simulation"}) {
        Champs c = martin;
        c.emplace_back("donneesFacture/modetraitement", mode);
        ecrire(fichier("ZEMO_Request.xml"), document_facture(c));
        reussir("f_CreerFacture");
    }
    carte("aucune");
    ecrire(fichier("ZEMO_Request.xml"), document_facture(martin));
    reussir("f_CreerFacture");
    ASSERT_EQ(sql(pont(),
                  "SELECT Info_Facture_NUMFAC, Info_Facture_TYPECERTIF FROM "
                  "T_InfosFacture ORDER BY Info_Facture_ID"),
              (Lignes{{"1", "Sesam-Vitale"}, {"2", "Sesam-Vitale"}, {"3", "Degrade"}}));
    EXPECT_EQ(sql(pont(), "SELECT count(*) FROM T_InfosDetailFacture"), Lignes{{"9"}});

    bordereaux_hote();
    reussir("f_ListerFactures");
    EXPECT_EQ(xml(fichier("ZEMO_Response.xml"), "//listeFacture/numeroFacture"),
              (Textes{"1", "2", "3"}));

    reussir("f_EnvoyerToutesFactures");
    // Every slip of the sent invoices carries its lot: e-claims in a numbered lot with
    // their organisation, the degraded one in a paper lot.
    const Lignes lots = sql(pont(),
                            "SELECT b.Info_Bordereau_numFacture,"
                            " b.Info_Bordereau_NumLot_FSE IS NOT NULL,"
                            " b.Info_Bordereau_NumLot_DRE IS NOT NULL,"
                            " a.Info_Adresse_codeRegime || a.Info_Adresse_codeCaisse"
                            " || a.Info_Adresse_codeCentre, f.Info_Facture_Nlot > 0"
                            " FROM T_InfosBordereaux b JOIN T_InfosFacture f"
                            " ON f.Info_Facture_NUMFAC = b.Info_Bordereau_numFacture"
                            " LEFT JOIN T_InfosAdresse a"
                            " ON a.Info_Adresse_ID = b.Info_Adresse_ID_FK"
                            " ORDER BY b.Info_Bordereau_ID");
    EXPECT_EQ(lots, (Lignes{{"1", "1", "0", "017510000", "1"},
                            {"2", "1", "0", "017510000", "1"},
                            {"3", "0", "1", "NULL", "NULL"}}));

    // A sent invoice can no longer be deleted: its rows stay.
    ecrire(fichier("ZEMO_Request.xml"),
           "<BelvaneClassicII><donneesFacture><numeroFacture>X1</numeroFacture>"
           "</donneesFacture></BelvaneClassicII>");
    ASSERT_TRUE(fin_propre(operation("f_SupprimerFacture")));
    EXPECT_NE(xml(fichier("ZEMO_Response.xml"), "//codeErreur"), Textes{"0"});
    EXPECT_EQ(sql(pont(), "SELECT count(*) FROM T_InfosFacture"), Lignes{{"3"}});

    // The next day the lot is still on its way; two days later it is paid.
    ecrire(fichier("ZEMO_Request.xml"),
           "<ZRMESSAGE><donnees><datedebut>20240101</datedebut><datedfin>20241231</datedfin>"
           "</donnees></ZRMESSAGE>");
    ecrire(programme + "/zrsim/jour.txt", "1\n");
    reussir("f_LireInfosRetourFacture");
    EXPECT_EQ(sql(hote(), "SELECT DISTINCT Motif, Pointage FROM [Bordereau Mutuelle]"),
              (Lignes{{"E", "0"}}));
    ecrire(programme + "/zrsim/jour.txt", "2\n");
    reussir("f_LireInfosRetourFacture");
    EXPECT_EQ(sql(hote(),
                  "SELECT NumFacture, Libel_Rejet, Motif, Paiement_RO = TotalCPAM,"
                  " Paiement_RC = TotalMutuelle, Pointage, Solde"
                  " FROM [Bordereau Mutuelle] ORDER BY rowid"),
              (Lignes{{"1", "Paye", "P", "1", "1", "-1", "-1"},
                      {"2", "Paye", "P", "1", "1", "-1", "-1"},
                      {"3", "Paye", "P", "1", "1", "-1", "-1"}}));
}

}  // namespace
}  // namespace bb
