// The lots the middleware sent, recorded invoice by invoice on the host's slips: lot
// numbers, the internal lot, the paying organisation and its regime. The middleware has
// already sent the lot, so every invoice recorded stays recorded whatever happens next.
#include "facturation.h"

namespace bb {
namespace {

class Lots : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        professionnel();
        for (const char* n : {"000000123", "123", "5", "6", "7", "8"}) {
            sql(pont(), std::string("INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture, "
                                    "Info_Bordereau_typeCertification) VALUES ('") +
                            n +
                            "', 'Sesam-Vitale'); INSERT INTO T_InfosFacture "
                            "(Info_Facture_NUMFAC) VALUES ('" +
                            n + "');");
        }
        sql(pont(),
            "INSERT INTO T_InfosAdresse (Info_Adresse_codeRegime, Info_Adresse_codeCaisse,"
            " Info_Adresse_codeCentre, Info_Adresse_libelle) VALUES ('01', '131', '0000',"
            " 'ANCIEN NOM')");
    }
    /// The lot answer: `donnees`, then a second message nested in them.
    void envoyer(const std::string& donnees, const std::string& imbrique = "",
                 const std::string& operation = "f_EnvoyerToutesFactures") {
        utiliser_script();
        const std::string r =
            reponse("f_EnvoyerToutesFactures", "0", "",
                    donnees + (imbrique.empty() ? "" : reponse_imbriquee(imbrique)));
        if (operation == "f_EnvoyerToutesFactures") {
            scripter(1, r);
        } else {
            ecrire(fichier("ZEMO_SvResponse.xml"), r);
        }
        EXPECT_TRUE(fin_propre(this->operation(operation)));
    }
    static std::string reponse_imbriquee(const std::string& donnees) {
        return "<ZRMESSAGE><resultat><codeErreur>0</codeErreur><donnees>" + donnees +
               "</donnees></resultat></ZRMESSAGE>";
    }
    Lignes bordereaux() {
        return sql(pont(),
                   "SELECT b.Info_Bordereau_numFacture, a.Info_Adresse_libelle, "
                   "length(b.Info_Bordereau_ID_lotInterne), b.Info_Bordereau_Regroupement, "
                   "b.Info_Bordereau_LibelRegroupement, b.Info_Bordereau_NumLot_FSE, "
                   "b.Info_Bordereau_NumLot_DRE, f.Info_Facture_Nlot FROM T_InfosBordereaux b "
                   "LEFT JOIN T_InfosAdresse a ON a.Info_Adresse_ID = b.Info_Adresse_ID_FK "
                   "LEFT JOIN T_InfosFacture f ON f.Info_Facture_NUMFAC = "
                   "b.Info_Bordereau_numFacture ORDER BY b.Info_Bordereau_ID");
    }
    Lignes organismes() {
        return sql(pont(),
                   "SELECT Info_Adresse_codeRegime || Info_Adresse_codeCaisse || "
                   "Info_Adresse_codeCentre, Info_Adresse_libelle, Info_Adresse_adresse, "
                   "Info_Adresse_commune, Info_Adresse_fax FROM T_InfosAdresse "
                   "ORDER BY Info_Adresse_ID");
    }

    const std::vector<FactureEnvoyee> lot_ = {
        {"000000123", "17", "01", "131", "1234", "CPAM DES BOUCHES-DU-RHONE",
         "56 CHEMIN D'AIGUIER\\BAT B", "MARSEILLE\\"},
        // Without a name the organisation found keeps what it holds.
        {"5", "17", "01", "131", "0000", ""},
        {"6", "18", "11", "123", "4567", ""},
        {"7", "D0003", "02", "621", "0000", "MSA DU NORD"},
        {"99", "17", "01", "131", "0000", "CPAM DES BOUCHES-DU-RHONE"},
        // Sent twice: recorded twice, alike.
        {"6", "18", "11", "123", "4567", ""},
    };
    const Lignes attendus_ = {
        {"000000123", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL"},
        {"123", "CPAM DES BOUCHES-DU-RHONE", "12", "01", "Régime Général", "17", "NULL", "17"},
        {"5", "CPAM DES BOUCHES-DU-RHONE", "12", "01", "Régime Général", "17", "NULL", "17"},
        {"6", "Caisse TEST 123 4567", "12", "11", "Autres", "18", "NULL", "18"},
        {"7", "NULL", "NULL", "NULL", "NULL", "NULL", "D0003", "NULL"},
        {"8", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL"},
    };
};

TEST_F(Lots, EveryInvoiceSentIsRecordedOnItsSlip) {
    envoyer(donnees_envoi(lot_), donnees_envoi({{"8", "19", "91", "751", "0000", "MGEN PARIS"}}));
    Lignes attendus = attendus_;
    attendus[5] = {"8", "MGEN PARIS", "12", "91", "MGEN", "19", "NULL", "19"};
    EXPECT_EQ(bordereaux(), attendus);
    EXPECT_EQ(sql(pont(),
                  "SELECT count(DISTINCT Info_Bordereau_ID_lotInterne) FROM "
                  "T_InfosBordereaux WHERE Info_Bordereau_NumLot_FSE = '17'"),
              Lignes{{"1"}});
    // The regimes that pay from the caisse are kept with centre 0000; backslashes are
    // gone from the address.
    EXPECT_EQ(
        organismes(),
        (Lignes{{"011310000", "CPAM DES BOUCHES-DU-RHONE", "56 CHEMIN D'AIGUIERBAT B", "MARSEILLE",
                 "0102030406"},
                {"111234567", "Caisse TEST 123 4567", "1 RUE DE LA PAIX", "PARIS", "0102030406"},
                {"026210000", "MSA DU NORD", "1 RUE DE LA PAIX", "PARIS", "0102030406"},
                {"917510000", "MGEN PARIS", "1 RUE DE LA PAIX", "PARIS", "0102030406"}}));
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
              (Textes{"f_EnvoyerToutesFactures", "0", "", "0"}));
}

TEST_F(Lots, AnInvoiceThatCannotBeRecordedIsNamedAndTheOthersStay) {
    // The degraded lot's column is missing from this shop's slip table.
    sql(pont(), "ALTER TABLE T_InfosBordereaux DROP COLUMN Info_Bordereau_NumLot_DRE");
    envoyer(donnees_envoi(lot_));
    Lignes attendus = attendus_;
    for (auto& ligne : attendus) {
        ligne.erase(ligne.begin() + 6);
    }
    EXPECT_EQ(sql(pont(),
                  "SELECT b.Info_Bordereau_numFacture, a.Info_Adresse_libelle, "
                  "length(b.Info_Bordereau_ID_lotInterne), b.Info_Bordereau_Regroupement, "
                  "b.Info_Bordereau_LibelRegroupement, b.Info_Bordereau_NumLot_FSE, "
                  "f.Info_Facture_Nlot FROM T_InfosBordereaux b LEFT JOIN T_InfosAdresse a ON "
                  "a.Info_Adresse_ID = b.Info_Adresse_ID_FK LEFT JOIN T_InfosFacture f ON "
                  "f.Info_Facture_NUMFAC = b.Info_Bordereau_numFacture ORDER BY "
                  "b.Info_Bordereau_ID"),
              attendus);
    // Invoice 7's organisation went with its unit.
    EXPECT_EQ(
        sql(pont(), "SELECT count(*) FROM T_InfosAdresse WHERE Info_Adresse_codeRegime = '02'"),
        Lignes{{"0"}});
    const Textes r = resultat(fichier("ZEMO_Response.xml"));
    ASSERT_EQ(r.size(), 3u);
    EXPECT_EQ(r[1], "99");
    EXPECT_TRUE(r[2].starts_with("Lot envoyé, mais non enregistré : facture '7' (")) << r[2];
    EXPECT_TRUE(r[2].ends_with("la réponse de l'intergiciel est conservée dans l'archive")) << r[2];
    EXPECT_TRUE(archive("RSP_f_EnvoyerToutesFactures_").has_value());
}

TEST_F(Lots, TheTestOperationRecordsAgainTheAnswerOnDiskFirstMessageOnly) {
    envoyer(donnees_envoi(lot_), donnees_envoi({{"8", "19", "91", "751", "0000", "MGEN"}}),
            "retour_f_EnvoyerToutesFacturestest");
    EXPECT_EQ(bordereaux(), attendus_);
}

TEST_F(Lots, AnswersThatRecordNothing) {
    const Lignes avant = bordereaux();
    struct Cas {
        const char* nom;
        std::string operation, reponse_zr;
        Textes reponse;
    } cas[] = {
        {"middleware error",
         "f_EnvoyerToutesFactures",
         reponse("f_EnvoyerToutesFactures", "5", "Aucune facture à envoyer", donnees_envoi(lot_)),
         {"f_EnvoyerToutesFactures", "5", "Aucune facture à envoyer"}},
        {"unreadable lot answer",
         "f_EnvoyerToutesFactures",
         "<ZRMESSAGE><resultat>",
         {"f_EnvoyerToutesFactures", "99", "Impossible de lire ZEMO_SvResponse.xml"}},
        {"unreadable list",
         "f_ListerFactures",
         "<ZRMESSAGE>",
         {"f_EnvoyerToutesFactures", "99", "Impossible de lire ZEMO_SvResponse.xml"}},
        {"unknown invoices only",
         "f_EnvoyerToutesFactures",
         reponse("f_EnvoyerToutesFactures", "0", "",
                 donnees_envoi({{"404", "17", "01", "131", "0000", "X"},
                                {"", "17", "01", "131", "0000", "X"},
                                {std::string(30, '9'), "17", "01", "131", "0000", "X"}})),
         {"f_EnvoyerToutesFactures", "0", ""}},
    };
    for (const Cas& c : cas) {
        utiliser_script();
        scripter(1, c.reponse_zr);
        EXPECT_TRUE(fin_propre(operation(c.operation)));
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), c.reponse) << c.nom;
        EXPECT_EQ(bordereaux(), avant) << c.nom;
    }
}

}  // namespace
}  // namespace bb
