#include "shop/schema.h"

#include <span>
#include <string_view>
#include <vector>

#include "data/connexion.h"
#include "platform/systeme.h"

namespace sv140::shop {
namespace {

// Access types in SQLite: Yes/No INTEGER (-1/0), Date/Time TEXT, Long INTEGER,
// AutoNumber INTEGER PRIMARY KEY AUTOINCREMENT, Double/Currency REAL, Text/Memo TEXT.
// A key the bridge assigns itself (the constant 1, the situation number) is a plain
// INTEGER PRIMARY KEY.

// SV140.accdb: the bridge's own tables.
constexpr std::string_view kPont[] = {
    // One row, Info_Param_ID 1: the shop's settings for the bridge.
    R"(CREATE TABLE T_InfoParam (
    Info_Param_ID INTEGER PRIMARY KEY,
    SCORActif INTEGER NOT NULL DEFAULT 0,
    Num_Situ TEXT,
    Taille_Buffer INTEGER,
    DPI_FSE_SCOR INTEGER, DPI_ORD_SCOR INTEGER, DPI_AUT_SCOR INTEGER,
    CLR_FSE_SCOR INTEGER, CLR_ORD_SCOR INTEGER, CLR_AUT_SCOR INTEGER,
    QUA_FSE_SCOR INTEGER, QUA_ORD_SCOR INTEGER, QUA_AUT_SCOR INTEGER,
    LUM_FSE_SCOR INTEGER, LUM_ORD_SCOR INTEGER, LUM_AUT_SCOR INTEGER,
    CON_FSE_SCOR INTEGER, CON_ORD_SCOR INTEGER, CON_AUT_SCOR INTEGER
))",

    // The professional card: one row, Info_CPS_ID 1.
    R"(CREATE TABLE T_InfosCPS (
    Info_CPS_ID INTEGER PRIMARY KEY,
    Info_CPS_TYP_CPS TEXT,
    Info_CPS_TYP_IDN TEXT,
    Info_CPS_NUM_IDN TEXT,
    Info_CPS_CLE_IDN TEXT,
    Info_CPS_COD_CIV TEXT,
    Info_CPS_NOM_PRAT TEXT,
    Info_CPS_PNOM_PRAT TEXT
))",

    // The card's situations, keyed by their number. The number is also kept as text:
    // the situation of the shop's Num_Situ is looked up by comparison with a quoted text.
    R"(CREATE TABLE T_InfosSituation_CPS (
    InfoSituation_CPS_ID INTEGER PRIMARY KEY,
    Info_CPS_ID_FK INTEGER,
    InfoSituation_CPS_NUM_SIT TEXT,
    InfoSituation_CPS_MODE_EXE TEXT,
    InfoSituation_CPS_STAT_EXE TEXT,
    InfoSituation_CPS_SECT_ACT TEXT,
    InfoSituation_CPS_TYP_IDS TEXT,
    InfoSituation_CPS_NUM_IDS TEXT,
    InfoSituation_CPS_CLE_IDS TEXT,
    InfoSituation_RAIS_STR TEXT,
    InfoSituation_NUM_IDFACPS TEXT,
    InfoSituation_CLE_IDFACPS TEXT,
    InfoSituation_IDENT_REMP TEXT,
    InfoSituation_CLE_IDR TEXT,
    InfoSituation_COD_CONV TEXT,
    InfoSituation_COD_SPEC TEXT,
    InfoSituation_COD_Z_TAR TEXT,
    InfoSituation_COD_Z_IK TEXT,
    InfoSituation_COD_AGR1 TEXT,
    InfoSituation_COD_AGR2 TEXT,
    InfoSituation_COD_AGR3 TEXT,
    InfoSituation_H_SIGN_FSE TEXT,
    InfoSituation_H_SIGN_LOT TEXT
))",

    // Middleware and reader versions: one row, Info_Version_ID 1.
    R"(CREATE TABLE T_InfosVersion (
    Info_Version_ID INTEGER PRIMARY KEY,
    Info_Version_VersionDLL TEXT,
    Info_Version_VersionCDC TEXT,
    Info_Version_versionReferentiel TEXT,
    Info_Version_constructeur TEXT,
    Info_Version_typeLecteur TEXT,
    Info_Version_numSerie TEXT,
    Info_Version_typeOS TEXT,
    Info_Version_nomAppli TEXT,
    Info_Version_numVersion TEXT,
    Info_Version_dateAppli TEXT,
    Info_Version_heureAppli TEXT,
    Info_Version_crcAppli TEXT
))",

    // One row per insured and beneficiary linked to a client of the host. Card values
    // are kept as read (dates and ranks included); the rights periods fill nine slots.
    R"(CREATE TABLE T_InfosCarteVitale (
    Info_CV_ID INTEGER PRIMARY KEY AUTOINCREMENT,
    Info_CV_TYP_CART TEXT,
    Info_ETC_ID_FK INTEGER,
    Info_CV_VIT_NSER TEXT, Info_CV_FDV_CRT TEXT,
    Info_CV_RUF1_ADM TEXT, Info_CV_RUF2_ADM TEXT, Info_CV_RUF_ADM TEXT,
    Info_CV_TYP_IDEN TEXT,
    Info_CV_NIR_ASS TEXT, Info_CV_CLE_ASS TEXT,
    Info_CV_RGG_COD TEXT, Info_CV_RTT_CAI TEXT, Info_CV_RTT_UGE TEXT,
    Info_CV_COD_GES TEXT, Info_CV_RUF_FAM TEXT,
    Info_CV_COD_SEF TEXT, Info_CV_DEB_SEF TEXT, Info_CV_FIN_SEF TEXT,
    Info_CV_ORG_GE TEXT, Info_CV_GST_CD TEXT, Info_CV_IDT_AT TEXT,
    Info_CV_ORG_GE1 TEXT, Info_CV_GST_CD1 TEXT, Info_CV_IDT_AT1 TEXT,
    Info_CV_ORG_GE2 TEXT, Info_CV_GST_CD2 TEXT, Info_CV_IDT_AT2 TEXT,
    Info_CV_NB_BENEF TEXT,
    Info_CV_NOM_USG TEXT, Info_CV_NOM_PAT TEXT, Info_CV_PRM_USG TEXT,
    Info_CV_ADR_LN1 TEXT, Info_CV_ADR_LN2 TEXT, Info_CV_ADR_LN3 TEXT,
    Info_CV_ADR_LN4 TEXT, Info_CV_ADR_LN5 TEXT,
    Info_CV_NIR_CER TEXT, Info_CV_CLE_CER TEXT, Info_CV_DAT_CER TEXT,
    Info_CV_NAI_BEN TEXT, Info_CV_BEN_RNG TEXT, Info_CV_BEN_QLT TEXT,
    Info_CV_COD_SEB TEXT, Info_CV_DEB_SEB TEXT, Info_CV_FIN_SEB TEXT,
    Info_CV_RUF_BEN TEXT,
    Info_CV_MUT_NUM TEXT, Info_CV_CONT_MUT TEXT, Info_CV_TRT_MUT TEXT,
    Info_CV_TYP_MUT TEXT, Info_CV_SER_MUT TEXT, Info_CV_IND_STS TEXT,
    Info_CV_CPL_NU2 TEXT, Info_CV_CPL_EDI TEXT, Info_CV_ADH_NUM TEXT,
    Info_CV_TRT_AMC TEXT, Info_CV_CPL_DEB TEXT, Info_CV_CPL_FIN TEXT,
    Info_CV_ROU_FLX TEXT, Info_CV_ID_HOT TEXT, Info_CV_NOM_DOM TEXT,
    Info_CV_IND_STS_AMC TEXT, Info_CV_TYP_SER TEXT, Info_CV_SER_CRT TEXT,
    Info_CV_RUF_COMP TEXT,
    Info_CV_NB_DRT_AMO INTEGER,
    Info_CV_DAMO_DEB_1 TEXT, Info_CV_DAMO_DEB_2 TEXT, Info_CV_DAMO_DEB_3 TEXT,
    Info_CV_DAMO_DEB_4 TEXT, Info_CV_DAMO_DEB_5 TEXT, Info_CV_DAMO_DEB_6 TEXT,
    Info_CV_DAMO_DEB_7 TEXT, Info_CV_DAMO_DEB_8 TEXT, Info_CV_DAMO_DEB_9 TEXT,
    Info_CV_DAMO_FIN_1 TEXT, Info_CV_DAMO_FIN_2 TEXT, Info_CV_DAMO_FIN_3 TEXT,
    Info_CV_DAMO_FIN_4 TEXT, Info_CV_DAMO_FIN_5 TEXT, Info_CV_DAMO_FIN_6 TEXT,
    Info_CV_DAMO_FIN_7 TEXT, Info_CV_DAMO_FIN_8 TEXT, Info_CV_DAMO_FIN_9 TEXT,
    Info_CV_NB_DRT_CC INTEGER,
    Info_CV_CC_DEB_1 TEXT, Info_CV_CC_FIN_1 TEXT, Info_CV_COD_ALD_1 TEXT, Info_CV_COD_SITU_1 TEXT,
    Info_CV_CC_DEB_2 TEXT, Info_CV_CC_FIN_2 TEXT, Info_CV_COD_ALD_2 TEXT, Info_CV_COD_SITU_2 TEXT,
    Info_CV_CC_DEB_3 TEXT, Info_CV_CC_FIN_3 TEXT, Info_CV_COD_ALD_3 TEXT, Info_CV_COD_SITU_3 TEXT,
    Info_CV_CC_DEB_4 TEXT, Info_CV_CC_FIN_4 TEXT, Info_CV_COD_ALD_4 TEXT, Info_CV_COD_SITU_4 TEXT,
    Info_CV_CC_DEB_5 TEXT, Info_CV_CC_FIN_5 TEXT, Info_CV_COD_ALD_5 TEXT, Info_CV_COD_SITU_5 TEXT,
    Info_CV_CC_DEB_6 TEXT, Info_CV_CC_FIN_6 TEXT, Info_CV_COD_ALD_6 TEXT, Info_CV_COD_SITU_6 TEXT,
    Info_CV_CC_DEB_7 TEXT, Info_CV_CC_FIN_7 TEXT, Info_CV_COD_ALD_7 TEXT, Info_CV_COD_SITU_7 TEXT,
    Info_CV_CC_DEB_8 TEXT, Info_CV_CC_FIN_8 TEXT, Info_CV_COD_ALD_8 TEXT, Info_CV_COD_SITU_8 TEXT,
    Info_CV_CC_DEB_9 TEXT, Info_CV_CC_FIN_9 TEXT, Info_CV_COD_ALD_9 TEXT, Info_CV_COD_SITU_9 TEXT,
    Info_CV_NB_DRT_MUT INTEGER,
    Info_CV_DMUT_DEB_1 TEXT, Info_CV_DMUT_DEB_2 TEXT, Info_CV_DMUT_DEB_3 TEXT,
    Info_CV_DMUT_DEB_4 TEXT, Info_CV_DMUT_DEB_5 TEXT, Info_CV_DMUT_DEB_6 TEXT,
    Info_CV_DMUT_DEB_7 TEXT, Info_CV_DMUT_DEB_8 TEXT, Info_CV_DMUT_DEB_9 TEXT,
    Info_CV_DMUT_FIN_1 TEXT, Info_CV_DMUT_FIN_2 TEXT, Info_CV_DMUT_FIN_3 TEXT,
    Info_CV_DMUT_FIN_4 TEXT, Info_CV_DMUT_FIN_5 TEXT, Info_CV_DMUT_FIN_6 TEXT,
    Info_CV_DMUT_FIN_7 TEXT, Info_CV_DMUT_FIN_8 TEXT, Info_CV_DMUT_FIN_9 TEXT
))",

    // Invoices created through the middleware; amounts in euros.
    R"(CREATE TABLE T_InfosFacture (
    Info_Facture_ID INTEGER PRIMARY KEY AUTOINCREMENT,
    Info_Facture_NUMFAC TEXT,
    Info_Facture_TypDOS TEXT,
    Info_Facture_NumDOS INTEGER,
    Info_Facture_dteCreate TEXT,
    Info_Facture_TYPEFLUX TEXT,
    Info_Facture_NATASSUR TEXT,
    Info_Facture_CODREG TEXT,
    Info_Facture_CODCAI TEXT,
    Info_Facture_CODCEN TEXT,
    Info_Facture_NUMMUT TEXT,
    Info_Facture_TYPETP TEXT,
    Info_Facture_TYPECERTIF TEXT,
    Info_Facture_TPAMO REAL,
    Info_Facture_TPAMC REAL,
    Info_Facture_TOTALFAC REAL,
    Info_Facture_TOTALASS REAL,
    Info_Facture_SCOR INTEGER NOT NULL DEFAULT 0,
    Info_Facture_Nlot INTEGER
))",

    // The act lines of an invoice. The LPP column carries the invoice prefix.
    R"(CREATE TABLE T_InfosDetailFacture (
    Info_DetailFacture_ID INTEGER PRIMARY KEY AUTOINCREMENT,
    Info_Facture_ID_FK INTEGER,
    Info_DetailFacture_CODACTE TEXT,
    Info_Facture_CODLPP TEXT,
    Info_DetailFacture_TypPrestation TEXT,
    Info_DetailFacture_prixUnitaire REAL,
    Info_DetailFacture_baseLPP REAL,
    Info_DetailFacture_tauxRbt INTEGER,
    Info_DetailFacture_QUANTITE INTEGER,
    Info_DetailFacture_MtAMO REAL,
    Info_DetailFacture_MtAMC REAL,
    Info_DetailFacture_QualifDepense TEXT,
    Info_DetailFacture_codeExo INTEGER
))",

    // One slip row per invoice, written by the host; the lot sending fills in its lot.
    R"(CREATE TABLE T_InfosBordereaux (
    Info_Bordereau_ID INTEGER PRIMARY KEY AUTOINCREMENT,
    Info_Bordereau_numFacture TEXT,
    Info_Bordereau_typeCertification TEXT,
    Info_Adresse_ID_FK INTEGER,
    Info_Bordereau_ID_lotInterne TEXT,
    Info_Bordereau_Regroupement TEXT,
    Info_Bordereau_LibelRegroupement TEXT,
    Info_Bordereau_NumLot_FSE TEXT,
    Info_Bordereau_NumLot_DRE TEXT
))",

    // The paying organisations met while sending lots.
    R"(CREATE TABLE T_InfosAdresse (
    Info_Adresse_ID INTEGER PRIMARY KEY AUTOINCREMENT,
    Info_Adresse_codeRegime TEXT,
    Info_Adresse_codeCaisse TEXT,
    Info_Adresse_codeCentre TEXT,
    Info_Adresse_libelle TEXT,
    Info_Adresse_adresse TEXT,
    Info_Adresse_codePostal TEXT,
    Info_Adresse_commune TEXT,
    Info_Adresse_cedex TEXT,
    Info_Adresse_telephone TEXT,
    Info_Adresse_fax TEXT
))",

    // The scanned attachments. A new attachment is marked for sending, without error,
    // status or acknowledgement: the transfer and the status follow-up select on these.
    R"(CREATE TABLE T_InfosSCor (
    InfosSCor_ID INTEGER PRIMARY KEY AUTOINCREMENT,
    InfosSCor_NUMFAC TEXT,
    InfosSCor_Nature TEXT,
    InfosSCor_Chemin TEXT,
    InfosSCor_nom TEXT,
    InfosSCor_DateGeneration TEXT,
    InfosSCor_HreGeneration INTEGER,
    idDossier INTEGER,
    typeDossier TEXT,
    InfosSCor_Mode TEXT,
    Numero_CPT INTEGER,
    InfosSCor_DateEnvoi TEXT,
    Pointage INTEGER NOT NULL DEFAULT -1,
    C_Erreur INTEGER DEFAULT 0,
    InfosSCor_LibelError TEXT,
    C_Statut INTEGER DEFAULT 0,
    InfosSCor_ARL INTEGER NOT NULL DEFAULT 0
))",

    // The attachments missing from the invoices of the last control.
    R"(CREATE TABLE SCOR_Erreurs (
    id_PJ TEXT,
    numeroFacture TEXT,
    Nature_PJ TEXT,
    Reference_Client TEXT
))",

    // Every column a statement of the bridge selects or updates rows by is indexed, as
    // the shop's Access files index their key and number fields: a look-up costs the
    // same in a shop of ten invoices as in one of a hundred thousand.
    "CREATE INDEX IX_Situation_NUM_SIT ON T_InfosSituation_CPS (InfoSituation_CPS_NUM_SIT)",
    // The beneficiary of a card, found again by NIR, key, birth date and rank; the
    // host finds its client's card by the client number.
    R"(CREATE INDEX IX_CarteVitale_Beneficiaire ON T_InfosCarteVitale (
    Info_CV_NIR_ASS, Info_CV_CLE_ASS, Info_CV_NAI_BEN, Info_CV_BEN_RNG))",
    "CREATE INDEX IX_CarteVitale_Client ON T_InfosCarteVitale (Info_ETC_ID_FK)",
    "CREATE INDEX IX_Facture_NUMFAC ON T_InfosFacture (Info_Facture_NUMFAC)",
    "CREATE INDEX IX_DetailFacture_Facture ON T_InfosDetailFacture (Info_Facture_ID_FK)",
    "CREATE INDEX IX_Bordereaux_numFacture ON T_InfosBordereaux (Info_Bordereau_numFacture)",
    R"(CREATE INDEX IX_Adresse_Organisme ON T_InfosAdresse (
    Info_Adresse_codeRegime, Info_Adresse_codeCaisse, Info_Adresse_codeCentre))",
    // Attachments: by invoice (and nature), by file name, the ones waiting to be sent,
    // the ones whose acknowledgement is awaited or came, by generation date.
    "CREATE INDEX IX_SCor_NUMFAC ON T_InfosSCor (InfosSCor_NUMFAC, InfosSCor_Nature)",
    "CREATE INDEX IX_SCor_nom ON T_InfosSCor (InfosSCor_nom)",
    "CREATE INDEX IX_SCor_A_Envoyer ON T_InfosSCor (Pointage, InfosSCor_DateEnvoi)",
    "CREATE INDEX IX_SCor_Suivi ON T_InfosSCor (InfosSCor_ARL, InfosSCor_DateGeneration)",
    // The status of all of an invoice's attachments is written to the rows whose number
    // has that numeric value ("000123" and "123"): the index holds the expression the
    // statement compares, written in the same Access SQL so that it is rewritten for
    // SQLite exactly as the statement is.
    "CREATE INDEX IX_SCor_Valeur_NUMFAC ON T_InfosSCor (Trim(Val([InfosSCor_NUMFAC])))",

    // A new shop: SCOR off, situation 1, the usual answer buffer, and the scanning
    // settings the bridge would use anyway (the claim form's low quality and high
    // brightness are the scheme's).
    R"(INSERT INTO T_InfoParam (
    Info_Param_ID, SCORActif, Num_Situ, Taille_Buffer,
    DPI_FSE_SCOR, DPI_ORD_SCOR, DPI_AUT_SCOR,
    CLR_FSE_SCOR, CLR_ORD_SCOR, CLR_AUT_SCOR,
    QUA_FSE_SCOR, QUA_ORD_SCOR, QUA_AUT_SCOR,
    LUM_FSE_SCOR, LUM_ORD_SCOR, LUM_AUT_SCOR,
    CON_FSE_SCOR, CON_ORD_SCOR, CON_AUT_SCOR
) VALUES (
    1, 0, '1', 102400,
    200, 200, 200,
    1, 1, 1,
    5, 60, 60,
    200, 0, 0,
    0, 0, 0
))",
};

// Donnees_32.accdb: the host's tables that the bridge reads or writes, with the
// columns it uses (and the client's names, which the host keeps beside them).
constexpr std::string_view kHote[] = {
    // The host's schema version: 3500 brings the situation number and SCOR, 3600 the
    // storage of the card's rights periods.
    R"(CREATE TABLE Version (
    Version INTEGER
))",

    // The client the optician has chosen for the card just read (one row).
    R"(CREATE TABLE T_Etat_Civil (
    [N°] INTEGER,
    Nom TEXT,
    [Prénom] TEXT,
    [Sécurité sociale] TEXT,
    [Date Naissance] TEXT,
    RangNaissance INTEGER,
    Divers TEXT
))",

    // A lens table of the host that serves as the list of the card's beneficiaries.
    R"(CREATE TABLE [Sélection Verres] (
    [Nom du Verre] TEXT,
    Couleur TEXT,
    [Diamètre] INTEGER,
    Fournisseur TEXT,
    Rubrique1 TEXT,
    [Plage-Mini] INTEGER,
    Rubrique2 TEXT,
    [Code Liaison Vidéo] TEXT,
    Cod_Commande TEXT,
    Num_Adherent TEXT
))",

    R"(CREATE TABLE [Saisie des Clients] (
    [N°] INTEGER PRIMARY KEY AUTOINCREMENT,
    Nom TEXT,
    [Prénom] TEXT
))",

    // Glasses and contact-lens files, linked to their client.
    R"(CREATE TABLE [Fiche Technique Optique] (
    [N°] INTEGER PRIMARY KEY AUTOINCREMENT,
    Lien INTEGER,
    [NUMERO FACTURE] INTEGER
))",

    R"(CREATE TABLE [Fiche Technique Lentille] (
    [N°] INTEGER PRIMARY KEY AUTOINCREMENT,
    Lien INTEGER,
    [NUMERO FACTURE] INTEGER
))",

    // The host's slips, reconciled with what the insurers paid.
    R"(CREATE TABLE [Bordereau Mutuelle] (
    NumFicheCommande TEXT,
    NumFacture TEXT,
    Mutuelle INTEGER,
    [Date] TEXT,
    TotalTmoCPAM REAL,
    TotalCPAM REAL,
    TotalMutuelle REAL,
    Paiement_RO REAL,
    Paiement_RC REAL,
    Pointage INTEGER NOT NULL DEFAULT 0,
    Solde INTEGER NOT NULL DEFAULT 0,
    Date_pointage TEXT,
    Libel_Rejet TEXT,
    Motif TEXT,
    DateEdition TEXT
))",

    R"(CREATE TABLE [Fichier des Mutuelles] (
    Compteur INTEGER PRIMARY KEY AUTOINCREMENT,
    [Nom Mutuelle] TEXT
))",

    R"(CREATE TABLE [Contrat Mutuelles] (
    [N°] INTEGER PRIMARY KEY AUTOINCREMENT,
    Lien INTEGER
))",

    // Indexed on the same ground as the bridge's tables: an attachment's client is found
    // by the invoice number of its glasses or lenses file; the return information finds
    // the slips by invoice, updates them by order sheet, stamps the generic insurer's
    // unedited ones and may start its period at the oldest slip.
    "CREATE INDEX IX_FicheOptique_Facture ON [Fiche Technique Optique] ([NUMERO FACTURE])",
    "CREATE INDEX IX_FicheLentille_Facture ON [Fiche Technique Lentille] ([NUMERO FACTURE])",
    "CREATE INDEX IX_Bordereau_NumFacture ON [Bordereau Mutuelle] (NumFacture)",
    "CREATE INDEX IX_Bordereau_NumFicheCommande ON [Bordereau Mutuelle] (NumFicheCommande)",
    "CREATE INDEX IX_Bordereau_Edition ON [Bordereau Mutuelle] (Mutuelle, DateEdition)",
    "CREATE INDEX IX_Bordereau_Date ON [Bordereau Mutuelle] ([Date])",
    "CREATE INDEX IX_Mutuelles_Nom ON [Fichier des Mutuelles] ([Nom Mutuelle])",
    "CREATE INDEX IX_Contrat_Lien ON [Contrat Mutuelles] (Lien)",

    "INSERT INTO Version ( Version ) VALUES ( 3600 )",
};

bool creer_base(const std::string& chemin, std::span<const std::string_view> instructions,
                std::string& erreur) {
    Connexion cnx;
    Statut s = Connexion::creer_sqlite(chemin);
    if (s) {
        s = cnx.ouvrir(chemin);
    }
    for (std::size_t i = 0; s && i < instructions.size(); ++i) {
        s = cnx.Execute(instructions[i]);
        if (!s) {
            erreur = s.raison() + "\n" + std::string(instructions[i]);
            return false;
        }
    }
    if (s) {
        s = cnx.valider();
    }
    erreur = s.raison();
    return s.ok();
}

}  // namespace

bool Creer_Bases(const std::string& dossier_magasin, const std::string& chemin_temporaire,
                 std::string& erreur) {
    struct Base {
        std::string chemin;
        std::span<const std::string_view> instructions;
    };
    const Base bases[] = {
        {joindre(dossier_magasin, kBasePont), kPont},
        {joindre(dossier_magasin, kBaseHote), kHote},
        // The host's work tables, none of which the bridge reads.
        {chemin_temporaire, {}},
    };
    for (const Base& base : bases) {
        if (fichier_existe(base.chemin)) {
            erreur = base.chemin + " existe déjà";
            return false;
        }
    }
    std::vector<std::string> creees;
    for (const Base& base : bases) {
        creees.push_back(base.chemin);
        if (!creer_base(base.chemin, base.instructions, erreur)) {
            for (const std::string& chemin : creees) {
                supprimer_fichier(chemin);
            }
            return false;
        }
    }
    return true;
}

}  // namespace sv140::shop
