// A claim created from the host's claim document: the request the middleware receives,
// then the invoice and its lines stored from what the middleware created.
#include "facturation.h"

namespace bb {
namespace {

const std::string kCree = "/ZRMESSAGE/requete/fonction/f_CreerFacture/donneesFacture/";

class Creation : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        professionnel();
    }
    /// Runs f_CreerFacture on this claim document; returns the request sent.
    std::string creer(const std::string& document, const std::string& reponse_zr = "") {
        utiliser_script();
        ecrire(fichier("ZEMO_Request.xml"), document);
        scripter(1, reponse_zr.empty() ? reponse_creation("", {}) : reponse_zr);
        Execution e = operation("f_CreerFacture");
        EXPECT_TRUE(fin_propre(e));
        return script("requete_1.xml");
    }
    /// The request's values at these paths below donneesFacture ("a | b").
    Textes champ(const std::string& chemins) {
        std::string xpath;
        for (std::size_t debut = 0; debut != std::string::npos;) {
            const std::size_t fin = chemins.find(" | ", debut);
            xpath += (xpath.empty() ? "" : " | ") + kCree + chemins.substr(debut, fin - debut);
            debut = fin == std::string::npos ? fin : fin + 3;
        }
        return xml(script("requete_1.xml"), xpath);
    }
    Lignes factures() {
        return sql(pont(),
                   "SELECT Info_Facture_NUMFAC, Info_Facture_TypDOS, Info_Facture_NumDOS, "
                   "Info_Facture_dteCreate, Info_Facture_TYPEFLUX, Info_Facture_NATASSUR, "
                   "Info_Facture_CODREG || Info_Facture_CODCAI || Info_Facture_CODCEN, "
                   "Info_Facture_NUMMUT, Info_Facture_TYPETP, Info_Facture_TYPECERTIF, "
                   "Info_Facture_TPAMO, Info_Facture_TPAMC, Info_Facture_TOTALFAC, "
                   "Info_Facture_TOTALASS, Info_Facture_SCOR FROM T_InfosFacture");
    }
};

TEST_F(Creation, TheRequestCarriesTheClaimInTheOrderTheMiddlewareReads) {
    ecrire(fichier("CPE.TXT"), "");
    creer(
        document_facture({{"donneesFacture/originePrescription", "RA"},
                          {"donneesFacture/refPrescripteur", "Dr O'HARA \"#;]\" ÉLÉONORE-MARIE X"},
                          {"donneesTP/numeroMutuelle", "099999997"},
                          {"beneficiaire/dateAT", "15/03/2024"},
                          {"beneficiaire/numeroAT", "123"},
                          {"beneficiaire/supportAT", "1"},
                          {"beneficiaire/CaisseGestionnaireAT", "131"},
                          {"beneficiaire/dateMaternite", "31/02/2024"},
                          {"beneficiaire/montantPecSMG", "12.345"}}));
    EXPECT_EQ(xml(script("requete_1.xml"), kCree + "*", true), (Textes{"dateFacture",
                                                                       "PS",
                                                                       "benef",
                                                                       "natureAssurance",
                                                                       "dateAT",
                                                                       "numeroAT",
                                                                       "supportAT",
                                                                       "numOrgGestAT",
                                                                       "montantPecSMG",
                                                                       "typeTP",
                                                                       "soinsSoumisPrescription",
                                                                       "datePrescription",
                                                                       "identifiantPrescripteur",
                                                                       "specialitePrescripteur",
                                                                       "nomPrescripteur",
                                                                       "originePrescription",
                                                                       "mutuelle",
                                                                       "parcoursSoins",
                                                                       "modeDevis",
                                                                       "nombreLignesActes",
                                                                       "modifierLignesActes",
                                                                       "acte",
                                                                       "acte",
                                                                       "acte",
                                                                       "typeCertification"}));
    const std::pair<std::string, Textes> attendus[] = {
        {"../versionMessage", {"0005"}},
        {"PS/*", {"10001234567", "123456789", "1"}},
        {"benef/*[not(*)] | benef/Beneficiaire/*",
         {"1750575123456", "42", "01", "131", "0000", "DUPONT", "Jean", "19750512", "1"}},
        {"dateAT | numeroAT | numOrgGestAT | montantPecSMG",
         {"20240315", "000000123", "131", "0001235"}},
        {"nomPrescripteur | originePrescription | specialitePrescripteur",
         {"15", "Dr O'HARA \"#;]\" ÉLÉONORE-MA", "2"}},
        {"mutuelle/*", {"99999997", "", "ADH1", "PEC1", "20240301"}},
        {"parcoursSoins/indicateurPDS | modeDevis | modifierLignesActes", {"O", "N", "N"}},
        {"acte/codeActeNGAP", {"MON", "VER", "VER"}},
        {"acte/codeAffine/codeAffineDetaille", {"2210546", "2227908", "2227920"}},
        {"acte/prixUnitairePublic", {"0012000", "0009550", "0009550"}},
        {"acte/nombreUnite | acte/qualificatifDepense",
         {"01", "Aucun", "01", "Aucun", "01", "Aucun"}},
        {"acte/montantPECActe", {"0003000", "0006000", "0006000"}},
        {"typeCertification", {"Desynchro"}},
    };
    for (const auto& [chemin, valeurs] : attendus) {
        EXPECT_EQ(champ(chemin), valeurs) << chemin;
    }
}

TEST_F(Creation, AccidentsTiersPayantAndModeChangeWhatIsSent) {
    const std::vector<Champs> forfait = {
        {{"codeActe", "MON"},
         {"nombreUnite", "2"},
         {"montantNet", "12.34"},
         {"PartMontantAMO", "-15.32"}},
        {{"codeActe", "VRS"},
         {"nombreUnite", "1"},
         {"montantNet", "40"},
         {"qualificatifDepense", "F"}},
        {{"codeActe", "VRS"}, {"nombreUnite", "1"}, {"montantNet", "40"}},
    };
    struct Cas {
        const char* nom;
        Champs retouches;
        std::string chemins;
        Textes valeurs;
        std::string journal = "";
    } cas[] = {
        {"private-life accident",
         {{"beneficiaire/accidentViePrivee", "1"},
          {"beneficiaire/dateAT", "2024-03-15"},
          {"beneficiaire/supportAT", "1"}},
         "dateAVP | dateAT | natureAssurance | supportAT",
         {"20240315", "Maladie"}},
        {"no accident clears the support",
         {{"beneficiaire/supportAT", "1"}, {"beneficiaire/dateAT", "not a date"}},
         "supportAT | numOrgGestAT | dateAT",
         {}},
        {"AMC tiers payant and simulation",
         {{"donneesTP/typeTP", "AMC"}, {"donneesFacture/modetraitement", "Simulation"}},
         "acte/qualificatifDepense | modeDevis",
         {"O", "N", "N", "N"}},
        {"unknown mode is an estimate",
         {{"donneesFacture/modetraitement", "facture"}},
         "modeDevis",
         {"O"}},
        {"fixed insurer without total",
         {{"donneesTP/TPtotalAMC", "0"}, {"donneesTP/numeroMutuelle", "75500017"}},
         "mutuelle/numeroMutuelle",
         {"75500017"}},
        {"no total, no block", {{"donneesTP/TPtotalAMC", "0"}}, "mutuelle", {}},
        {"no prescription",
         {{"donneesTP/soinsSoumisPrescription", "N"}, {"donneesFacture/originePrescription", "XX"}},
         "originePrescription | datePrescription",
         {}},
        {"unknown origin kept",
         {{"donneesFacture/originePrescription", "XX"}},
         "originePrescription",
         {"XX"}},
    };
    for (const Cas& c : cas) {
        creer(document_facture(c.retouches));
        EXPECT_EQ(champ(c.chemins), c.valeurs) << c.nom;
        EXPECT_NE(log().find(c.journal), std::string::npos) << c.nom;
    }

    // The flat allowance of 50 goes to the first lines first: a gap of 40 (2 x 12.34
    // + 15.32) takes 40.00, the next gap of 40 the 10.00 left, the last nothing.
    creer(document_facture({{"donneesTP/forfaitMutuelle", "50"},
                            {"donneesActe/totalNetProduitsPriseEnChargeAMC", "0"}},
                           &forfait));
    EXPECT_EQ(champ("acte/montantPECActe"), (Textes{"0004000", "0001000"}));
    EXPECT_EQ(champ("acte/prixUnitairePublic | acte/nombreUnite"),
              (Textes{"0001234", "02", "0004000", "01", "0004000", "01"}));
    EXPECT_EQ(champ("acte/qualificatifDepense"), (Textes{"Aucun", "F", "Aucun"}));
    // With a complementary total the allowance tops up each line's own amount.
    std::vector<Champs> complement = forfait;
    complement[0].emplace_back("MontantAMC", "30");
    creer(document_facture({{"donneesTP/forfaitMutuelle", "15"},
                            {"donneesActe/totalNetProduitsPriseEnChargeAMC", "150"}},
                           &complement));
    EXPECT_EQ(champ("acte/montantPECActe"), (Textes{"0004000", "0000500"}));
}

TEST_F(Creation, TheCreatedInvoiceIsStoredWithItsLines) {
    const std::vector<Champs> lignes = {
        {{"codeActeNGAP", "MON"},
         {"codeAffine/codeAffineDetaille", "2210546"},
         {"quantite", "1"},
         {"tauxRemboursement", "60"},
         {"montantHonoraires", "0012000"},
         {"baseRemboursement", "0000284"},
         {"montantAMO", "0000170"},
         {"montantAMC", "0003000"},
         {"qualifDepense", "Aucun"},
         {"codeExo", "0"}},
        {{"codeActeNGAP", "VER"},
         {"codeAffine/typePrestation", "V"},
         {"quantite", "2"},
         {"tauxRemboursement", "60"},
         {"montantHonoraires", "0019100"},
         {"montantAMO", "n/a"},
         {"montantAMC", "0012000"},
         {"qualifDepense", "N"},
         {"codeExo", "3"}},
    };
    for (bool scor : {false, true}) {
        sql(pont(),
            "DELETE FROM T_InfosFacture; DELETE FROM T_InfosDetailFacture;"
            "UPDATE T_InfoParam SET SCORActif = " +
                std::string(scor ? "-1" : "0"));
        creer(document_facture({{"donneesFacture/numDossier", "4521"}}),
              reponse_creation("123", lignes));
        EXPECT_EQ(factures(), (Lignes{{"123", "LUN", "4521", horloge("%Y-%m-%d 00:00:00"), "FSE",
                                       "AS", "011310000", "12345678", "AMO", "Sesam-Vitale", "0.3",
                                       "150.0", "311.0", "160.7", scor ? "-1" : "0"}}));
    }
    EXPECT_EQ(sql(pont(),
                  "SELECT d.Info_Facture_ID_FK = f.Info_Facture_ID, Info_DetailFacture_CODACTE, "
                  "Info_Facture_CODLPP, Info_DetailFacture_TypPrestation, "
                  "Info_DetailFacture_prixUnitaire, Info_DetailFacture_baseLPP, "
                  "Info_DetailFacture_tauxRbt, Info_DetailFacture_QUANTITE, "
                  "Info_DetailFacture_MtAMO, Info_DetailFacture_MtAMC, "
                  "Info_DetailFacture_QualifDepense, Info_DetailFacture_codeExo FROM "
                  "T_InfosDetailFacture d, T_InfosFacture f ORDER BY Info_DetailFacture_ID"),
              (Lignes{{"1", "MON", "2210546", "", "120.0", "2.84", "60", "1", "1.7", "30.0",
                       "Aucun", "0"},
                      {"1", "VER", "", "V", "191.0", "0.0", "60", "2", "0.0", "120.0", "N", "3"}}));
    EXPECT_NE(log().find("Valeur non numérique : montantAMO = 'n/a', lue 0"),
              std::string::npos);
}

TEST_F(Creation, WhatCannotBeUsedIsSaidAndNothingHalfStored) {
    struct Cas {
        const char* nom;
        std::string document, reponse_zr;
        int appels;
        Textes reponse;  // appelant, code, label of ZEMO_Response.xml
        std::string journal;
        std::size_t factures, lignes;
    } cas[] = {
        {"unreadable claim document",
         "<BelvaneClassicII><donneesFacture>",
         "",
         0,
         {"f_CreerFacture", "99", "Impossible de lire ZEMO_Request.xml"},
         "ZEMO_Request.xml illisible",
         0,
         0},
        {"a document that declares entities",
         "<!DOCTYPE a [<!ENTITY x \"y\">]><BelvaneClassicII/>",
         "",
         0,
         {"f_CreerFacture", "99", "Impossible de lire ZEMO_Request.xml"},
         "déclare des entités",
         0,
         0},
        {"answer without a number",
         document_facture(),
         reponse_creation("", {{{"codeActeNGAP", "MON"}}}),
         1,
         {"f_CreerFacture", "0", ""},
         "Réponse sans numéro de facture",
         0,
         0},
        {"answer without act lines",
         document_facture(),
         reponse_creation("77", {}),
         1,
         {"f_CreerFacture", "0", ""},
         "Facture 77 enregistrée avec 0 ligne(s)",
         1,
         0},
        {"answer with amounts that are no numbers",
         document_facture(),
         reponse_creation("78", {{{"montantAMO", "12,5"}}},
                          "<montantPSTotalHono>douze</montantPSTotalHono>"),
         1,
         {"f_CreerFacture", "0", ""},
         "montantPSTotalHono = 'douze'",
         1,
         1},
        {"middleware refusal",
         document_facture(),
         reponse("f_CreerFacture", "161", "Aucune ligne d'acte"),
         1,
         {"f_CreerFacture", "161", "Aucune ligne d'acte"},
         "Retour_Reponse : False",
         0,
         0},
    };
    for (const Cas& c : cas) {
        sql(pont(), "DELETE FROM T_InfosFacture; DELETE FROM T_InfosDetailFacture");
        creer(c.document, c.reponse_zr.empty() ? reponse("f_CreerFacture", "0", "") : c.reponse_zr);
        EXPECT_EQ(appels(), c.appels) << c.nom;
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")), c.reponse) << c.nom;
        EXPECT_NE(log().find(c.journal), std::string::npos) << c.nom << "\n" << log();
        EXPECT_EQ(sql(pont(), "SELECT count(*) FROM T_InfosFacture")[0][0],
                  std::to_string(c.factures))
            << c.nom;
        EXPECT_EQ(sql(pont(), "SELECT count(*) FROM T_InfosDetailFacture")[0][0],
                  std::to_string(c.lignes))
            << c.nom;
    }
}

TEST_F(Creation, NoActLineOrNinetyNineAndNamesThatLookLikeSyntax) {
    const std::string nom = "D'ARTAGNAN \"LE GASCON\" ; ] # ÉLÉONORE";
    for (std::size_t n : {std::size_t{0}, std::size_t{99}}) {
        std::vector<Champs> actes(
            n, Champs{{"codeActe", "MON"}, {"nombreUnite", "1"}, {"montantNet", "1"}});
        creer(document_facture({{"beneficiaire/nomBeneficaire", nom}}, &actes));
        EXPECT_EQ(champ("acte").size(), n);
        EXPECT_EQ(champ("nombreLignesActes"), Textes{std::to_string(n)});
        EXPECT_EQ(champ("benef/Beneficiaire/NOM_USG"), Textes{nom});
    }
    // A claim document with no groups at all still makes a well-formed request.
    creer("<BelvaneClassicII/>");
    EXPECT_EQ(champ("modeDevis | nombreLignesActes | montantPecSMG"),
              (Textes{"0000000", "O", "0"}));
}

}  // namespace
}  // namespace bb
