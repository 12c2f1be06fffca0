// The databases of a new shop must accept every statement the bridge and the host send,
// word for word as they send them, and start with the values the host's flows rely on.
#include "shop/schema.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "data/connexion.h"

namespace sv140::shop {
namespace {

namespace fs = std::filesystem;

class BasesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::random_device alea;
        dossier_ = fs::temp_directory_path() / ("sv140-shop-schema-" + std::to_string(alea()));
        fs::create_directories(dossier_);
    }
    void TearDown() override { fs::remove_all(dossier_); }

    std::string chemin(const std::string& nom) const { return (dossier_ / nom).string(); }
    bool creer(std::string& erreur) const {
        return Creer_Bases(dossier_.string(), chemin(kBaseTemporaire), erreur);
    }

    fs::path dossier_;
};

// Assignments to the nine numbered slots of the card's repeated rights values.
std::string colonnes_numerotees(const std::vector<std::string>& prefixes) {
    std::string texte;
    for (int i = 1; i <= 9; ++i) {
        for (const std::string& prefixe : prefixes) {
            texte += ", T_InfosCarteVitale." + prefixe + std::to_string(i) + " = '" +
                     std::to_string(i) + "'";
        }
    }
    return texte;
}

std::string insertion_carte() {
    const std::vector<std::string> colonnes = {
        "Info_CV_TYP_CART", "Info_ETC_ID_FK",      "Info_CV_VIT_NSER", "Info_CV_FDV_CRT",
        "Info_CV_RUF1_ADM", "Info_CV_RUF2_ADM",    "Info_CV_RUF_ADM",  "Info_CV_TYP_IDEN",
        "Info_CV_NIR_ASS",  "Info_CV_CLE_ASS",     "Info_CV_RGG_COD",  "Info_CV_RTT_CAI",
        "Info_CV_RTT_UGE",  "Info_CV_COD_GES",     "Info_CV_RUF_FAM",  "Info_CV_COD_SEF",
        "Info_CV_DEB_SEF",  "Info_CV_FIN_SEF",     "Info_CV_ORG_GE",   "Info_CV_GST_CD",
        "Info_CV_IDT_AT",   "Info_CV_ORG_GE1",     "Info_CV_GST_CD1",  "Info_CV_IDT_AT1",
        "Info_CV_ORG_GE2",  "Info_CV_GST_CD2",     "Info_CV_IDT_AT2",  "Info_CV_NB_BENEF",
        "Info_CV_NOM_USG",  "Info_CV_NOM_PAT",     "Info_CV_PRM_USG",  "Info_CV_ADR_LN1",
        "Info_CV_ADR_LN2",  "Info_CV_ADR_LN3",     "Info_CV_ADR_LN4",  "Info_CV_ADR_LN5",
        "Info_CV_NIR_CER",  "Info_CV_CLE_CER",     "Info_CV_DAT_CER",  "Info_CV_NAI_BEN",
        "Info_CV_BEN_RNG",  "Info_CV_BEN_QLT",     "Info_CV_COD_SEB",  "Info_CV_DEB_SEB",
        "Info_CV_FIN_SEB",  "Info_CV_RUF_BEN",     "Info_CV_MUT_NUM",  "Info_CV_CONT_MUT",
        "Info_CV_TRT_MUT",  "Info_CV_TYP_MUT",     "Info_CV_SER_MUT",  "Info_CV_IND_STS",
        "Info_CV_CPL_NU2",  "Info_CV_CPL_EDI",     "Info_CV_ADH_NUM",  "Info_CV_TRT_AMC",
        "Info_CV_CPL_DEB",  "Info_CV_CPL_FIN",     "Info_CV_ROU_FLX",  "Info_CV_ID_HOT",
        "Info_CV_NOM_DOM",  "Info_CV_IND_STS_AMC", "Info_CV_TYP_SER",  "Info_CV_SER_CRT",
        "Info_CV_RUF_COMP"};
    std::string liste;
    std::string valeurs;
    for (const std::string& c : colonnes) {
        liste += (liste.empty() ? "" : ", ") + c;
        const std::string valeur = c == "Info_ETC_ID_FK"    ? "7"
                                   : c == "Info_CV_NIR_ASS" ? "'180017512345'"
                                   : c == "Info_CV_CLE_ASS" ? "'45'"
                                   : c == "Info_CV_NAI_BEN" ? "'19800315'"
                                   : c == "Info_CV_BEN_RNG" ? "'1'"
                                                            : "'x'";
        valeurs += (valeurs.empty() ? "" : ", ") + valeur + " AS " + c.substr(8);
    }
    return "INSERT INTO T_InfosCarteVitale ( " + liste + " ) SELECT " + valeurs + ";";
}

constexpr int kEcriture = -1;

struct Instruction {
    const char* base;
    std::string sql;
    int lignes;  // rows the query returns, or kEcriture for a statement
};

// Statements as the bridge and the host send them, in an order where each finds the
// rows the earlier ones wrote.
std::vector<Instruction> instructions_du_pont() {
    const char* P = kBasePont;
    const char* H = kBaseHote;
    return {
        // Parameters, professional card, situations, versions.
        {P,
         "SELECT T_InfoParam.SCORActif From T_InfoParam WHERE (((T_InfoParam.Info_Param_ID)=1));",
         1},
        {P, "SELECT T_InfoParam.Num_Situ From T_InfoParam WHERE (((T_InfoParam.Info_Param_ID)=1));",
         1},
        {P, "SELECT T_InfoParam.* From T_InfoParam WHERE (((T_InfoParam.Info_Param_ID)=1));", 1},
        {P,
         "INSERT INTO T_InfosCPS ( Info_CPS_ID, Info_CPS_TYP_CPS, Info_CPS_TYP_IDN, "
         "Info_CPS_NUM_IDN, Info_CPS_CLE_IDN, Info_CPS_COD_CIV, Info_CPS_NOM_PRAT, "
         "Info_CPS_PNOM_PRAT ) SELECT 1 AS Info_CPS_ID, '0' AS Info_CPS_TYP_CPS, '8' AS "
         "Info_CPS_TYP_IDN, '99900012345' AS Info_CPS_NUM_IDN, '6' AS Info_CPS_CLE_IDN, '21' AS "
         "Info_CPS_COD_CIV, 'MARTIN' AS Info_CPS_NOM_PRAT, 'Claire' AS Info_CPS_PNOM_PRAT;",
         kEcriture},
        {P,
         "UPDATE T_InfosCPS SET T_InfosCPS.Info_CPS_TYP_CPS = '0', T_InfosCPS.Info_CPS_PNOM_PRAT = "
         "'Claire' WHERE (((T_InfosCPS.Info_CPS_ID)=1));",
         kEcriture},
        {P,
         "SELECT T_InfosCPS.Info_CPS_ID, T_InfosCPS.Info_CPS_NUM_IDN FROM T_InfosCPS WHERE "
         "(((T_InfosCPS.Info_CPS_ID)=1));",
         1},
        {P, "DELETE * FROM T_InfosSituation_CPS;", kEcriture},
        {P,
         "INSERT INTO T_InfosSituation_CPS ( InfoSituation_CPS_ID, Info_CPS_ID_FK, "
         "InfoSituation_CPS_NUM_SIT, InfoSituation_CPS_MODE_EXE, InfoSituation_CPS_STAT_EXE, "
         "InfoSituation_CPS_SECT_ACT, InfoSituation_CPS_TYP_IDS, InfoSituation_CPS_NUM_IDS, "
         "InfoSituation_CPS_CLE_IDS, InfoSituation_RAIS_STR, InfoSituation_NUM_IDFACPS, "
         "InfoSituation_CLE_IDFACPS, InfoSituation_IDENT_REMP, InfoSituation_CLE_IDR, "
         "InfoSituation_COD_CONV, InfoSituation_COD_SPEC, InfoSituation_COD_Z_TAR, "
         "InfoSituation_COD_Z_IK, InfoSituation_COD_AGR1, InfoSituation_COD_AGR2, "
         "InfoSituation_COD_AGR3, InfoSituation_H_SIGN_FSE, InfoSituation_H_SIGN_LOT )SELECT 1 AS "
         "InfoSituation_CPS_ID, 1 AS Info_CPS_ID_FK, 1 AS InfoSituation_CPS_NUM_SIT, '0' AS "
         "InfoSituation_CPS_MODE_EXE, '1' AS InfoSituation_CPS_STAT_EXE, '31' AS "
         "InfoSituation_CPS_SECT_ACT, '4' AS InfoSituation_CPS_TYP_IDS, '123' AS "
         "InfoSituation_CPS_NUM_IDS, '1' AS InfoSituation_CPS_CLE_IDS, 'OPTIQUE DU PORT' AS "
         "InfoSituation_RAIS_STR, '12345678' AS InfoSituation_NUM_IDFACPS, '9' AS "
         "InfoSituation_CLE_IDFACPS, '' AS InfoSituation_IDENT_REMP, '' AS InfoSituation_CLE_IDR, "
         "'1' AS InfoSituation_COD_CONV, '28' AS InfoSituation_COD_SPEC, '30' AS "
         "InfoSituation_COD_Z_TAR, '0' AS InfoSituation_COD_Z_IK, '0' AS InfoSituation_COD_AGR1, "
         "'0' AS InfoSituation_COD_AGR2, '0' AS InfoSituation_COD_AGR3, '1' AS "
         "InfoSituation_H_SIGN_FSE, '1' AS InfoSituation_H_SIGN_LOT;",
         kEcriture},
        {P,
         "SELECT T_InfosSituation_CPS.InfoSituation_CPS_NUM_SIT, "
         "T_InfosSituation_CPS.InfoSituation_NUM_IDFACPS, "
         "T_InfosSituation_CPS.InfoSituation_CLE_IDFACPS FROM T_InfosSituation_CPS WHERE "
         "(((T_InfosSituation_CPS.InfoSituation_CPS_NUM_SIT)='1'));",
         1},
        {P,
         "INSERT INTO T_InfosVersion ( Info_Version_ID, Info_Version_VersionDLL, "
         "Info_Version_VersionCDC, Info_Version_versionReferentiel, Info_Version_constructeur, "
         "Info_Version_typeLecteur, Info_Version_numSerie, Info_Version_typeOS, "
         "Info_Version_nomAppli, Info_Version_numVersion, Info_Version_dateAppli, "
         "Info_Version_heureAppli, Info_Version_crcAppli )SELECT 1 AS Info_Version_ID, '1'  AS "
         "Info_Version_VersionDLL, '2' AS Info_Version_VersionCDC, '3' AS "
         "Info_Version_versionReferentiel, 'a' AS Info_Version_constructeur, 'b' AS "
         "Info_Version_typeLecteur, 'c' AS Info_Version_numSerie, 'd' AS Info_Version_typeOS, 'e' "
         "AS Info_Version_nomAppli, 'f' AS Info_Version_numVersion, 'g' AS Info_Version_dateAppli, "
         "'h' AS Info_Version_heureAppli, 'i' AS Info_Version_crcAppli;",
         kEcriture},
        {P,
         " UPDATE T_InfosVersion SET T_InfosVersion.Info_Version_VersionDLL = '2', "
         "T_InfosVersion.Info_Version_crcAppli = 'j' WHERE (((T_InfosVersion.Info_Version_ID)=1));",
         kEcriture},

        // Vitale card and its rights.
        {P, insertion_carte(), kEcriture},
        {P,
         "SELECT T_InfosCarteVitale.Info_CV_ID, T_InfosCarteVitale.Info_CV_NIR_ASS, "
         "T_InfosCarteVitale.Info_CV_CLE_ASS, T_InfosCarteVitale.Info_CV_NAI_BEN, "
         "T_InfosCarteVitale.Info_CV_BEN_RNG From T_InfosCarteVitale WHERE "
         "(((T_InfosCarteVitale.Info_CV_NIR_ASS)='180017512345') AND "
         "((T_InfosCarteVitale.Info_CV_CLE_ASS)='45') AND "
         "((T_InfosCarteVitale.Info_CV_NAI_BEN)='19800315') AND "
         "((T_InfosCarteVitale.Info_CV_BEN_RNG)='1'));",
         1},
        {P,
         "UPDATE T_InfosCarteVitale SET T_InfosCarteVitale.Info_ETC_ID_FK = 7, "
         "T_InfosCarteVitale.Info_CV_TYP_CART = '1', T_InfosCarteVitale.Info_CV_RUF_COMP = '' "
         "WHERE (((T_InfosCarteVitale.Info_CV_ID)=1));",
         kEcriture},
        {P,
         "UPDATE T_InfosCarteVitale SET T_InfosCarteVitale.Info_CV_NB_DRT_AMO = 2, "
         "T_InfosCarteVitale.Info_CV_NB_DRT_CC = 1, T_InfosCarteVitale.Info_CV_NB_DRT_MUT = 9" +
             colonnes_numerotees({"Info_CV_DAMO_DEB_", "Info_CV_DAMO_FIN_", "Info_CV_CC_DEB_",
                                  "Info_CV_CC_FIN_", "Info_CV_COD_ALD_", "Info_CV_COD_SITU_",
                                  "Info_CV_DMUT_DEB_", "Info_CV_DMUT_FIN_"}) +
             " WHERE (((T_InfosCarteVitale.Info_CV_ID)=1));",
         kEcriture},
        {P,
         "SELECT T_InfosCarteVitale.Info_CV_NOM_USG, T_InfosCarteVitale.Info_CV_PRM_USG From "
         "T_InfosCarteVitale WHERE (((T_InfosCarteVitale.Info_CV_NIR_ASS)='180017512345') AND "
         "((T_InfosCarteVitale.Info_CV_CLE_ASS)='45') AND "
         "((T_InfosCarteVitale.Info_CV_NAI_BEN)='19800315') AND "
         "((T_InfosCarteVitale.Info_CV_BEN_RNG)='1'));",
         1},

        // Invoices, their lines, lots and paying organisations.
        {P,
         "INSERT INTO T_InfosFacture ( Info_Facture_NUMFAC, Info_Facture_TypDOS, "
         "Info_Facture_NumDOS, Info_Facture_dteCreate, Info_Facture_TYPEFLUX, "
         "Info_Facture_NATASSUR, Info_Facture_CODREG, Info_Facture_CODCAI, Info_Facture_CODCEN, "
         "Info_Facture_NUMMUT, Info_Facture_TYPETP, Info_Facture_TYPECERTIF, Info_Facture_TPAMO, "
         "Info_Facture_TPAMC, Info_Facture_TOTALFAC, Info_Facture_TOTALASS, Info_Facture_SCOR ) "
         "SELECT '123' AS v1, 'LUN' as v1b, 42 as v1c, #03/05/2024# as v1d, 'S' AS v2, 'MA' AS v3, "
         "'01' AS v4, '751' AS v5, '0000' AS v6, '12345678' AS v7, 'AMO' AS v8, 'Degrade' AS v9, "
         "12.5 AS v10, 30 AS v11, 123.45 AS v12, 81 AS v13, -1 AS v14;",
         kEcriture},
        {P, "SELECT Max(T_InfosFacture.Info_Facture_ID) AS ID_FAC FROM T_InfosFacture;", 1},
        {P,
         "INSERT INTO T_InfosDetailFacture ( Info_Facture_ID_FK, Info_DetailFacture_CODACTE, "
         "Info_Facture_CODLPP, Info_DetailFacture_TypPrestation, Info_DetailFacture_prixUnitaire, "
         "Info_DetailFacture_baseLPP, Info_DetailFacture_tauxRbt, Info_DetailFacture_QUANTITE, "
         "Info_DetailFacture_MtAMO, Info_DetailFacture_MtAMC, Info_DetailFacture_QualifDepense, "
         "Info_DetailFacture_codeExo ) SELECT 1 AS V1, 'VER' AS V2, '2227920' AS V3, 'P' AS V4, "
         "100.5 AS V5, 12.04 AS V6, 60 AS V6b, 2 AS V7, 7.22 AS V8, 80 AS V9, 'N' AS V10, 0 AS "
         "V11;",
         kEcriture},
        {P,
         "INSERT INTO T_InfosBordereaux ( Info_Bordereau_numFacture, "
         "Info_Bordereau_typeCertification ) VALUES ( '123', 'Sesam-Vitale' );",
         kEcriture},
        {P,
         "SELECT T_InfosBordereaux.* FROM T_InfosBordereaux WHERE "
         "(((T_InfosBordereaux.Info_Bordereau_numFacture)='123'));",
         1},
        {P,
         "INSERT INTO T_InfosAdresse ( Info_Adresse_codeRegime, Info_Adresse_codeCaisse, "
         "Info_Adresse_codeCentre, Info_Adresse_libelle, Info_Adresse_adresse, "
         "Info_Adresse_codePostal, Info_Adresse_commune, Info_Adresse_cedex, "
         "Info_Adresse_telephone, Info_Adresse_fax ) SELECT '01' AS C_R, '131' AS C_C, '0000' AS "
         "C_G, 'Caisse TEST 131 0000' AS L_C, '' AS A_AD, '' AS A_CP, '' AS A_Co, '' AS A_Ce, '' "
         "AS A_Te, '' AS A_Fa;",
         kEcriture},
        {P,
         "SELECT T_InfosAdresse.Info_Adresse_ID, T_InfosAdresse.Info_Adresse_codeRegime, "
         "T_InfosAdresse.Info_Adresse_codeCaisse, T_InfosAdresse.Info_Adresse_codeCentre From "
         "T_InfosAdresse WHERE (((T_InfosAdresse.Info_Adresse_codeRegime)='01') AND "
         "((T_InfosAdresse.Info_Adresse_codeCaisse)='131') AND "
         "((T_InfosAdresse.Info_Adresse_codeCentre)='0000'));",
         1},
        {P,
         "UPDATE T_InfosAdresse SET T_InfosAdresse.Info_Adresse_libelle = 'CPAM', "
         "T_InfosAdresse.Info_Adresse_adresse = '1 rue d''Alsace', "
         "T_InfosAdresse.Info_Adresse_codePostal = '13000', T_InfosAdresse.Info_Adresse_commune = "
         "'Marseille', T_InfosAdresse.Info_Adresse_cedex = '', "
         "T_InfosAdresse.Info_Adresse_telephone = '', T_InfosAdresse.Info_Adresse_fax = ''  WHERE "
         "(((T_InfosAdresse.Info_Adresse_codeRegime)='01') AND "
         "((T_InfosAdresse.Info_Adresse_codeCaisse)='131') AND "
         "((T_InfosAdresse.Info_Adresse_codeCentre)='0000'));",
         kEcriture},
        {P,
         "UPDATE T_InfosBordereaux SET T_InfosBordereaux.Info_Adresse_ID_FK = 1, "
         "T_InfosBordereaux.Info_Bordereau_ID_lotInterne = '240305143012', "
         "T_InfosBordereaux.Info_Bordereau_Regroupement = '01', "
         "T_InfosBordereaux.Info_Bordereau_LibelRegroupement = 'Régime Général', "
         "T_InfosBordereaux.Info_Bordereau_NumLot_FSE = '101' WHERE "
         "(((T_InfosBordereaux.Info_Bordereau_numFacture)='123'));",
         kEcriture},
        {P,
         "UPDATE T_InfosBordereaux SET T_InfosBordereaux.Info_Bordereau_NumLot_DRE = 'A01' WHERE "
         "(((T_InfosBordereaux.Info_Bordereau_numFacture)='123'));",
         kEcriture},
        {P,
         "UPDATE T_InfosFacture SET T_InfosFacture.Info_Facture_Nlot = 101 WHERE "
         "(((T_InfosFacture.Info_Facture_NUMFAC)='123'));",
         kEcriture},

        // Attachments.
        {P,
         "INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_Nature, InfosSCor_Chemin, "
         "InfosSCor_nom, InfosSCor_DateGeneration, InfosSCor_HreGeneration, idDossier, "
         "typeDossier, InfosSCor_Mode, Numero_CPT)  VALUES ('123', 'ORDN', "
         "'/shop/Sv140Scor/202403/', '20240305093015_000000123_ORDN_123456789_000000001.pdf', "
         "#03-05-2024 09:30:15#, 93015, 42, 'Lunettes', '', 1)",
         kEcriture},
        {P,
         "SELECT T_InfosSCor.* FROM T_InfosSCor WHERE (((T_InfosSCor.Pointage)=True) AND "
         "((T_InfosSCor.InfosSCor_DateEnvoi) Is Null) AND ((T_InfosSCor.idDossier)>0)) ORDER BY "
         "T_InfosSCor.InfosSCor_NUMFAC;",
         1},
        {P,
         "SELECT T_InfosSCor.InfosSCor_NUMFAC FROM T_InfosSCor WHERE "
         "(((T_InfosSCor.InfosSCor_ARL)=False) AND ((T_InfosSCor.C_Erreur)=0) AND "
         "((T_InfosSCor.InfosSCor_DateGeneration)>=#1/5/2024#)) GROUP BY "
         "T_InfosSCor.InfosSCor_NUMFAC;",
         1},
        {P,
         "SELECT T_InfosSCor.InfosSCor_NUMFAC FROM T_InfosSCor WHERE (((T_InfosSCor.C_Statut)>14) "
         "AND ((T_InfosSCor.InfosSCor_ARL)=True) AND "
         "((T_InfosSCor.InfosSCor_DateGeneration)>=#1/5/2024#)) GROUP BY "
         "T_InfosSCor.InfosSCor_NUMFAC;",
         0},
        {P,
         "SELECT T_InfosSCor.*, T_InfosSCor.InfosSCor_ID FROM T_InfosSCor WHERE "
         "(((T_InfosSCor.InfosSCor_ID)=1));",
         1},
        {P,
         "UPDATE T_InfosSCor SET T_InfosSCor.C_Erreur = 5, T_InfosSCor.InfosSCor_LibelError = "
         "'refus - l''accès' WHERE (((T_InfosSCor.InfosSCor_ID)=1));",
         kEcriture},
        {P,
         "UPDATE T_InfosSCor SET T_InfosSCor.C_Statut = 12, T_InfosSCor.InfosSCor_LibelError = 'La "
         "Pièce justificative est a traiter manuellement', T_InfosSCor.InfosSCor_ARL = 0 WHERE "
         "(((Trim(Val([InfosSCor_NUMFAC])))='123'));",
         kEcriture},
        {P,
         "UPDATE T_InfosSCor SET T_InfosSCor.C_Statut = 0, T_InfosSCor.InfosSCor_LibelError = 'PJ "
         "acceptée', T_InfosSCor.InfosSCor_ARL = -1 WHERE (((T_InfosSCor.InfosSCor_nom)='x.pdf'));",
         kEcriture},
        {P,
         "UPDATE T_InfosSCor SET T_InfosSCor.InfosSCor_DateEnvoi = Date(),T_InfosSCor.Pointage = "
         "0, T_InfosSCor.C_Erreur = 0, T_InfosSCor.InfosSCor_LibelError = '' WHERE "
         "(((T_InfosSCor.InfosSCor_ID)=1));",
         kEcriture},
        {P,
         "UPDATE T_InfosSCor SET T_InfosSCor.InfosSCor_nom = 'Document "
         "supprimé',T_InfosSCor.InfosSCor_LibelError = 'Document supprimé', T_InfosSCor.idDossier "
         "= 0, T_InfosSCor.Pointage = 0, T_InfosSCor.InfosSCor_Mode = '' WHERE "
         "(((T_InfosSCor.InfosSCor_ID)=1));",
         kEcriture},
        {P, "DELETE SCOR_Erreurs.* FROM SCOR_Erreurs;", kEcriture},
        {P,
         "SELECT T_InfosFacture.Info_Facture_TYPECERTIF FROM T_InfosFacture WHERE "
         "(((T_InfosFacture.Info_Facture_NUMFAC)='123'));",
         1},
        {P,
         "SELECT T_InfosSCor.InfosSCor_NUMFAC, T_InfosSCor.InfosSCor_Nature FROM T_InfosSCor WHERE "
         "(((T_InfosSCor.InfosSCor_NUMFAC)='123') AND ((T_InfosSCor.InfosSCor_Nature)='ORDN'));",
         1},
        {P,
         "INSERT INTO SCOR_Erreurs ( id_PJ, numeroFacture, Nature_PJ, Reference_Client) SELECT '0' "
         "AS V1, '123' AS V2, 'Feuille de Soins' AS V3, 'Dupont ?' AS V4;",
         kEcriture},
        {P,
         "INSERT INTO SCOR_Erreurs ( id_PJ, numeroFacture, Nature_PJ ) SELECT '0' AS V1, '123' AS "
         "V2, 'Ordonnance' AS V3;",
         kEcriture},

        // Invoice deletion removes what the bridge kept for it.
        {P,
         "SELECT T_InfosFacture.Info_Facture_NUMFAC, T_InfosFacture.Info_Facture_ID FROM "
         "T_InfosFacture WHERE (((T_InfosFacture.Info_Facture_NUMFAC)='123'));",
         1},
        {P,
         "DELETE T_InfosFacture.Info_Facture_ID FROM T_InfosFacture WHERE "
         "(((T_InfosFacture.Info_Facture_ID)=1));",
         kEcriture},
        {P,
         "DELETE T_InfosDetailFacture.Info_Facture_ID_FK  FROM T_InfosDetailFacture WHERE "
         "(((T_InfosDetailFacture.Info_Facture_ID_FK)=1));",
         kEcriture},
        {P,
         "DELETE T_InfosBordereaux.Info_Bordereau_numFacture FROM T_InfosBordereaux WHERE "
         "(((T_InfosBordereaux.Info_Bordereau_numFacture)='123'));",
         kEcriture},
        {P,
         "DELETE T_InfosSCor.*, T_InfosSCor.InfosSCor_NUMFAC FROM T_InfosSCor WHERE "
         "(((T_InfosSCor.InfosSCor_NUMFAC)='123'));",
         kEcriture},

        // The host's side: version, card list, chosen client, slips, insurers, files.
        {H, "SELECT Max(Version.Version) AS Num_Version FROM Version;", 1},
        {H, "DELETE DISTINCTROW [Sélection Verres].[Nom du Verre] FROM [Sélection Verres];",
         kEcriture},
        {H,
         "INSERT INTO [Sélection Verres] ( [Nom du Verre], Couleur, Diamètre, Fournisseur, "
         "Rubrique1, [Plage-Mini], Rubrique2, [Code Liaison Vidéo], Cod_Commande, Num_Adherent ) "
         "SELECT 'D''ARTAGNAN' AS NA, 'Zoé' AS PA, 0 AS QL, '180017512345645' AS NIR, '19800315' "
         "AS DN, 1 AS RG, '017510000' AS CC, '017510000' AS CA, '22222228' AS NU, '' as NH;",
         kEcriture},
        {H, "INSERT INTO [Saisie des Clients] ( Nom, Prénom ) VALUES ( 'Dupont', Null );",
         kEcriture},
        {H,
         "INSERT INTO T_Etat_Civil ( N°, [Sécurité sociale], [Date Naissance], RangNaissance, "
         "Divers ) VALUES ( 1, '180017512345645', #03/15/1980#, 1, '!3113' );",
         kEcriture},
        {H,
         "SELECT T_Etat_Civil.N°, T_Etat_Civil.[Sécurité sociale], T_Etat_Civil.[Date Naissance], "
         "T_Etat_Civil.RangNaissance, T_Etat_Civil.Divers FROM T_Etat_Civil;",
         1},
        {H, "INSERT INTO [Fiche Technique Optique] ( Lien, [NUMERO FACTURE] ) VALUES ( 1, 123 );",
         kEcriture},
        {H,
         "SELECT [Fiche Technique Optique].[NUMERO FACTURE], [Saisie des Clients].Nom, [Saisie des "
         "Clients].Prénom FROM [Fiche Technique Optique] INNER JOIN [Saisie des Clients] ON [Fiche "
         "Technique Optique].Lien = [Saisie des Clients].N° WHERE ((([Fiche Technique "
         "Optique].[NUMERO FACTURE])=123));",
         1},
        {H,
         "SELECT [Fiche Technique Lentille].[NUMERO FACTURE], [Saisie des Clients].Nom, [Saisie "
         "des Clients].Prénom FROM [Fiche Technique Lentille] INNER JOIN [Saisie des Clients] ON "
         "[Fiche Technique Lentille].Lien = [Saisie des Clients].N° WHERE ((([Fiche Technique "
         "Lentille].[NUMERO FACTURE])=123));",
         0},
        {H,
         "INSERT INTO [Bordereau Mutuelle] ( NumFicheCommande, NumFacture, Mutuelle, [Date], "
         "TotalTmoCPAM, TotalCPAM, TotalMutuelle ) VALUES ( 'C12', '123', 1, #02/01/2024#, 4.5, "
         "7.22, 80 );",
         kEcriture},
        {H, "SELECT Min([Bordereau Mutuelle].Date) AS MinDeDate FROM [Bordereau Mutuelle];", 1},
        {H,
         "SELECT [Bordereau Mutuelle].* From [Bordereau Mutuelle] WHERE ((([Bordereau "
         "Mutuelle].NumFacture)='123'));",
         1},
        {H,
         "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Libel_Rejet = 'Paye', [Bordereau "
         "Mutuelle].Motif = 'P' WHERE ((([Bordereau Mutuelle].NumFicheCommande)='C12'));",
         kEcriture},
        {H,
         "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Paiement_RC = 80, [Bordereau "
         "Mutuelle].Pointage = -1, [Bordereau Mutuelle].Solde = -1 , [Bordereau "
         "Mutuelle].Date_pointage = Date() WHERE ((([Bordereau "
         "Mutuelle].NumFicheCommande)=\"C12\") AND (([Bordereau Mutuelle].TotalMutuelle)>0));",
         kEcriture},
        {H,
         "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Paiement_RO = 11.72, [Bordereau "
         "Mutuelle].Pointage = -1, [Bordereau Mutuelle].Solde = -1 , [Bordereau "
         "Mutuelle].Date_pointage = Date() WHERE ((([Bordereau "
         "Mutuelle].NumFicheCommande)=\"C12\") AND (([TotalCPAM]+[TotalTmoCPAM])>0));",
         kEcriture},
        {H, "INSERT INTO [Fichier des Mutuelles] ( [Nom Mutuelle] ) VALUES ( '[TPGEN]' );",
         kEcriture},
        {H, "INSERT INTO [Contrat Mutuelles] ( Lien ) VALUES ( 1 );", kEcriture},
        {H,
         "SELECT [Fichier des Mutuelles].[Nom Mutuelle], [Contrat Mutuelles].N° FROM [Fichier des "
         "Mutuelles] INNER JOIN [Contrat Mutuelles] ON [Fichier des Mutuelles].Compteur = [Contrat "
         "Mutuelles].Lien WHERE ((([Fichier des Mutuelles].[Nom Mutuelle])='[TPGEN]'));",
         1},
        {H,
         "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].DateEdition = #03/05/2024# WHERE "
         "((([Bordereau Mutuelle].Mutuelle)=1) AND (([Bordereau Mutuelle].DateEdition) Is Null));",
         kEcriture},
    };
}

TEST_F(BasesTest, EveryFileIsRecognisedAsSQLite) {
    std::string erreur;
    ASSERT_TRUE(creer(erreur)) << erreur;
    for (const char* nom : {kBasePont, kBaseHote, kBaseTemporaire}) {
        std::ifstream fichier(chemin(nom), std::ios::binary);
        std::string entete(16, '\0');
        fichier.read(entete.data(), 16);
        EXPECT_EQ(entete, std::string("SQLite format 3\0", 16)) << nom;
        EXPECT_EQ(Connexion::moteur_du_fichier(chemin(nom)), Moteur::SQLite) << nom;
    }
}

TEST_F(BasesTest, AcceptsEveryStatementOfTheBridgeAndTheHost) {
    std::string erreur;
    ASSERT_TRUE(creer(erreur)) << erreur;
    Connexion pont;
    Connexion hote;
    ASSERT_TRUE(pont.ouvrir(chemin(kBasePont))) << pont.derniere_erreur();
    ASSERT_TRUE(hote.ouvrir(chemin(kBaseHote))) << hote.derniere_erreur();
    for (const Instruction& i : instructions_du_pont()) {
        Connexion& cnx = std::string(i.base) == kBasePont ? pont : hote;
        if (i.lignes == kEcriture) {
            EXPECT_TRUE(cnx.Execute(i.sql)) << cnx.derniere_erreur() << "\n" << i.sql;
        } else {
            auto rs = cnx.Ouvrir(i.sql);
            ASSERT_TRUE(rs.has_value()) << cnx.derniere_erreur() << "\n" << i.sql;
            EXPECT_EQ(rs->RecordCount(), static_cast<std::size_t>(i.lignes)) << i.sql;
        }
    }
}

struct ValeurAttendue {
    const char* base;
    const char* sql;
    const char* champ;
    const char* texte;
};

TEST_F(BasesTest, StartsWithTheValuesTheHostFlowsNeed) {
    std::string erreur;
    ASSERT_TRUE(creer(erreur)) << erreur;
    Connexion pont;
    Connexion hote;
    ASSERT_TRUE(pont.ouvrir(chemin(kBasePont)));
    ASSERT_TRUE(hote.ouvrir(chemin(kBaseHote)));
    // Rows written as the bridge writes them, leaving out the columns it never sets.
    ASSERT_TRUE(pont.Execute(
        "INSERT INTO T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_Nature, idDossier) VALUES "
        "('123', 'ORDN', 42)"));
    ASSERT_TRUE(
        pont.Execute("INSERT INTO T_InfosFacture ( Info_Facture_NUMFAC ) SELECT '123' AS v1;"));
    ASSERT_TRUE(
        hote.Execute("INSERT INTO [Bordereau Mutuelle] ( NumFicheCommande ) VALUES ( 'C1' );"));

    const char* parametres =
        "SELECT T_InfoParam.* From T_InfoParam WHERE (((T_InfoParam.Info_Param_ID)=1));";
    const char* piece = "SELECT T_InfosSCor.* FROM T_InfosSCor;";
    const ValeurAttendue attendues[] = {
        {kBasePont, parametres, "SCORActif", "0"},
        {kBasePont, parametres, "Num_Situ", "1"},
        {kBasePont, parametres, "Taille_Buffer", "102400"},
        {kBasePont, parametres, "DPI_FSE_SCOR", "200"},
        {kBasePont, parametres, "DPI_ORD_SCOR", "200"},
        {kBasePont, parametres, "DPI_AUT_SCOR", "200"},
        {kBasePont, parametres, "CLR_FSE_SCOR", "1"},
        {kBasePont, parametres, "CLR_ORD_SCOR", "1"},
        {kBasePont, parametres, "CLR_AUT_SCOR", "1"},
        {kBasePont, parametres, "QUA_FSE_SCOR", "5"},
        {kBasePont, parametres, "QUA_ORD_SCOR", "60"},
        {kBasePont, parametres, "QUA_AUT_SCOR", "60"},
        {kBasePont, parametres, "LUM_FSE_SCOR", "200"},
        {kBasePont, parametres, "LUM_ORD_SCOR", "0"},
        {kBasePont, parametres, "LUM_AUT_SCOR", "0"},
        {kBasePont, parametres, "CON_FSE_SCOR", "0"},
        {kBasePont, parametres, "CON_ORD_SCOR", "0"},
        {kBasePont, parametres, "CON_AUT_SCOR", "0"},
        {kBaseHote, "SELECT Max(Version.Version) AS Num_Version FROM Version;", "Num_Version",
         "3600"},
        // A new attachment waits to be sent, with no error, status or acknowledgement.
        {kBasePont, piece, "Pointage", "-1"},
        {kBasePont, piece, "C_Erreur", "0"},
        {kBasePont, piece, "C_Statut", "0"},
        {kBasePont, piece, "InfosSCor_ARL", "0"},
        {kBasePont, piece, "InfosSCor_ID", "1"},
        {kBasePont, "SELECT T_InfosFacture.* FROM T_InfosFacture;", "Info_Facture_SCOR", "0"},
        {kBaseHote, "SELECT [Bordereau Mutuelle].* FROM [Bordereau Mutuelle];", "Pointage", "0"},
        {kBaseHote, "SELECT [Bordereau Mutuelle].* FROM [Bordereau Mutuelle];", "Solde", "0"},
    };
    for (const ValeurAttendue& a : attendues) {
        Connexion& cnx = std::string(a.base) == kBasePont ? pont : hote;
        auto rs = cnx.Ouvrir(a.sql);
        ASSERT_TRUE(rs.has_value()) << cnx.derniere_erreur() << "\n" << a.sql;
        ASSERT_FALSE(rs->EOF_()) << a.sql;
        EXPECT_EQ(rs->champ(a.champ).str(), a.texte) << a.champ;
    }
    // Never sent: the transfer's "Is Null" must find it.
    auto rs = pont.Ouvrir(piece);
    ASSERT_TRUE(rs.has_value());
    EXPECT_TRUE(rs->champ("InfosSCor_DateEnvoi").nul());
}

TEST_F(BasesTest, KeysAssignedByTheDatabaseAreNeverReused) {
    std::string erreur;
    ASSERT_TRUE(creer(erreur)) << erreur;
    Connexion pont;
    ASSERT_TRUE(pont.ouvrir(chemin(kBasePont)));
    // The bridge reads a new row's key back as the largest key: a deleted last row must
    // not hand its key to the next one, or attachments would follow the wrong invoice.
    ASSERT_TRUE(pont.Execute("INSERT INTO T_InfosFacture ( Info_Facture_NUMFAC ) VALUES ( '1' );"));
    ASSERT_TRUE(pont.Execute("INSERT INTO T_InfosFacture ( Info_Facture_NUMFAC ) VALUES ( '2' );"));
    ASSERT_TRUE(pont.Execute("DELETE * FROM T_InfosFacture;"));
    ASSERT_TRUE(pont.Execute("INSERT INTO T_InfosFacture ( Info_Facture_NUMFAC ) VALUES ( '3' );"));
    auto rs =
        pont.Ouvrir("SELECT Max(T_InfosFacture.Info_Facture_ID) AS ID_FAC FROM T_InfosFacture;");
    ASSERT_TRUE(rs.has_value());
    EXPECT_EQ(rs->champ("ID_FAC").str(), "3");
}

TEST_F(BasesTest, NeverOverwritesAnExistingDatabase) {
    std::string erreur;
    ASSERT_TRUE(creer(erreur)) << erreur;
    {
        Connexion pont;
        ASSERT_TRUE(pont.ouvrir(chemin(kBasePont)));
        ASSERT_TRUE(pont.Execute("UPDATE T_InfoParam SET T_InfoParam.Num_Situ = '2';"));
        ASSERT_TRUE(pont.valider());
    }
    EXPECT_FALSE(creer(erreur));
    EXPECT_NE(erreur.find(kBasePont), std::string::npos) << erreur;

    Connexion pont;
    ASSERT_TRUE(pont.ouvrir(chemin(kBasePont)));
    auto rs = pont.Ouvrir("SELECT T_InfoParam.Num_Situ FROM T_InfoParam;");
    ASSERT_TRUE(rs.has_value());
    EXPECT_EQ(rs->champ("Num_Situ").str(), "2");
}

TEST_F(BasesTest, OneExistingFileStopsTheWholeCreation) {
    std::ofstream(chemin(kBaseTemporaire)) << "host work file";
    std::string erreur;
    EXPECT_FALSE(creer(erreur));
    EXPECT_FALSE(fs::exists(chemin(kBasePont)));
    EXPECT_FALSE(fs::exists(chemin(kBaseHote)));
}

TEST_F(BasesTest, AFailedCreationLeavesNoFileBehind) {
    const std::string temporaire = (dossier_ / "absent" / kBaseTemporaire).string();
    std::string erreur;
    EXPECT_FALSE(Creer_Bases(dossier_.string(), temporaire, erreur));
    EXPECT_FALSE(erreur.empty());
    EXPECT_FALSE(fs::exists(chemin(kBasePont)));
    EXPECT_FALSE(fs::exists(chemin(kBaseHote)));
}

}  // namespace
}  // namespace sv140::shop
