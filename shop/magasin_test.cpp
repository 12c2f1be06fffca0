// A new shop: the databases accept the bridge's and the host's statements as they send
// them, find their rows through an index, and start with the values their flows rely on;
// nothing already there is replaced. The claim document and the simulated day the tool
// gives a host developer.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "data/access_sql.h"
#include "data/connexion.h"
#include "exchange/fichiers.h"
#include "platform/horloge.h"
#include "platform/intergiciel.h"
#include "shop/facturation.h"
#include "shop/installation.h"
#include "shop/schema.h"
#include "sim/etat.h"

namespace sv140::shop {
namespace {

namespace fs = std::filesystem;

std::string contenu(const fs::path& chemin) {
    std::ostringstream texte;
    texte << std::ifstream(chemin, std::ios::binary).rdbuf();
    return texte.str();
}

/// A fresh folder for each test.
class Magasin : public ::testing::Test {
  protected:
    void SetUp() override { fs::create_directories(dossier_); }
    void TearDown() override { fs::remove_all(dossier_); }

    const fs::path dossier_ =
        fs::temp_directory_path() / ("sv140-shop-" + std::to_string(std::random_device{}()));
};

using Schema = Magasin;
using Installation = Magasin;
using Facturation = Magasin;

struct Instruction {
    const char* base;
    std::string sql;
    // A query's first row, as "column=text ..."; "" for a query that finds no row, null
    // for a statement that returns none.
    const char* premiere_ligne = nullptr;
};

TEST_F(Schema, LesBasesAcceptentLesInstructionsDuPontEtDeLHote) {
    std::string erreur;
    ASSERT_TRUE(Creer_Bases(dossier_.string(), (dossier_ / kBaseTemporaire).string(), erreur))
        << erreur;
    for (const char* nom : {kBasePont, kBaseHote, kBaseTemporaire}) {
        EXPECT_EQ(Connexion::moteur_du_fichier((dossier_ / nom).string()), Moteur::SQLite) << nom;
    }
    Connexion pont;
    Connexion hote;
    for (auto [cnx, nom] : {std::pair{&pont, kBasePont}, std::pair{&hote, kBaseHote}}) {
        Statut s = cnx->ouvrir((dossier_ / nom).string());
        ASSERT_TRUE(s) << s.raison();
    }

    const char* P = kBasePont;
    const char* H = kBaseHote;
    const std::string facture =
        "INSERT INTO T_InfosFacture ( Info_Facture_NUMFAC, Info_Facture_dteCreate, "
        "Info_Facture_TOTALFAC ) SELECT '123' AS v1, #03/05/2024# as v1d, 123.45 AS v12;";
    // The tables answer the bridge in every black-box run; these are the defaults and the
    // invoice key. In order: each statement finds the rows the earlier ones wrote.
    const Instruction instructions[] = {
        {P, "SELECT T_InfoParam.* From T_InfoParam WHERE (((T_InfoParam.Info_Param_ID)=1));",
         "Num_Situ=1 SCORActif=0"},
        // A deleted row's key is never handed out again: the bridge reads a new row's key
        // back as the largest one.
        {P, facture},
        {P, "DELETE * FROM T_InfosFacture;"},
        {P, facture},
        {P, "SELECT Max(T_InfosFacture.Info_Facture_ID) AS ID_FAC FROM T_InfosFacture;",
         "ID_FAC=2"},
        {H, "SELECT Max(Version.Version) AS Num_Version FROM Version;", "Num_Version=3600"},
    };
    for (const Instruction& i : instructions) {
        SCOPED_TRACE(i.sql);
        Connexion& cnx = std::string(i.base) == kBasePont ? pont : hote;
        if (i.premiere_ligne == nullptr) {
            Statut s = cnx.Execute(i.sql);
            EXPECT_TRUE(s) << s.raison();
            continue;
        }
        auto rs = cnx.Ouvrir(i.sql);
        ASSERT_TRUE(rs) << rs.statut().raison();
        EXPECT_EQ(rs->EOF_(), *i.premiere_ligne == '\0');
        std::istringstream valeurs(i.premiere_ligne);
        for (std::string v; valeurs >> v;) {
            EXPECT_EQ(v, v.substr(0, v.find('=') + 1) + rs->champ(v.substr(0, v.find('='))).str());
        }
    }
}

// The look-ups of the invoicing and attachment flows, as the bridge sends them: none
// reads a whole table, so none slows down as the shop's history grows.
TEST_F(Schema, LesRecherchesDuPontPassentParUnIndex) {
    std::string erreur;
    ASSERT_TRUE(Creer_Bases(dossier_.string(), (dossier_ / kBaseTemporaire).string(), erreur))
        << erreur;
    const char* P = kBasePont;
    const char* H = kBaseHote;
    const std::pair<const char*, const char*> recherches[] = {
        {P,
         "SELECT T_InfosFacture.Info_Facture_NUMFAC, T_InfosFacture.Info_Facture_ID FROM "
         "T_InfosFacture WHERE (((T_InfosFacture.Info_Facture_NUMFAC)='123'));"},
        {P,
         "DELETE T_InfosDetailFacture.Info_Facture_ID_FK  FROM T_InfosDetailFacture WHERE "
         "(((T_InfosDetailFacture.Info_Facture_ID_FK)=7));"},
        {P,
         "UPDATE T_InfosBordereaux SET T_InfosBordereaux.Info_Bordereau_NumLot_DRE = 'A' "
         "WHERE (((T_InfosBordereaux.Info_Bordereau_numFacture)='123'));"},
        {P,
         "SELECT T_InfosAdresse.Info_Adresse_ID From T_InfosAdresse WHERE "
         "(((T_InfosAdresse.Info_Adresse_codeRegime)='01') AND "
         "((T_InfosAdresse.Info_Adresse_codeCaisse)='131') AND "
         "((T_InfosAdresse.Info_Adresse_codeCentre)='0000'));"},
        {P,
         "UPDATE T_InfosSCor SET T_InfosSCor.C_Statut = 3, T_InfosSCor.InfosSCor_LibelError = "
         "'x', T_InfosSCor.InfosSCor_ARL = 0 WHERE (((Trim(Val([InfosSCor_NUMFAC])))='123'));"},
        {P,
         "SELECT T_InfosSCor.* FROM T_InfosSCor WHERE (((T_InfosSCor.Pointage)=True) AND "
         "((T_InfosSCor.InfosSCor_DateEnvoi) Is Null) AND ((T_InfosSCor.idDossier)>0)) ORDER BY "
         "T_InfosSCor.InfosSCor_NUMFAC;"},
        {H,
         "SELECT [Bordereau Mutuelle].* From [Bordereau Mutuelle] WHERE ((([Bordereau "
         "Mutuelle].NumFacture)='123'));"},
        {H,
         "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Paiement_RC = 1, [Bordereau "
         "Mutuelle].Date_pointage = Date() WHERE ((([Bordereau "
         "Mutuelle].NumFicheCommande)=\"FC000123\") AND (([Bordereau "
         "Mutuelle].TotalMutuelle)>0));"},
        {H,
         "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].DateEdition = #11/24/2026# "
         "WHERE ((([Bordereau Mutuelle].Mutuelle)=3) AND (([Bordereau Mutuelle].DateEdition) "
         "Is Null));"},
        {H,
         "SELECT [Fichier des Mutuelles].[Nom Mutuelle], [Contrat Mutuelles].N° FROM [Fichier "
         "des Mutuelles] INNER JOIN [Contrat Mutuelles] ON [Fichier des Mutuelles].Compteur = "
         "[Contrat Mutuelles].Lien WHERE ((([Fichier des Mutuelles].[Nom "
         "Mutuelle])='[TPGEN]'));"},
    };
    for (const auto& [base, sql] : recherches) {
        SCOPED_TRACE(sql);
        Connexion cnx;
        ASSERT_TRUE(cnx.ouvrir((dossier_ / base).string()));
        // The plan of the statement as the connection rewrites it for SQLite.
        auto plan =
            cnx.Ouvrir("EXPLAIN QUERY PLAN " + Traduire_Access_SQL(sql, maintenant_local()));
        ASSERT_TRUE(plan) << plan.statut().raison();
        ASSERT_FALSE(plan->EOF_());
        for (; !plan->EOF_(); plan->MoveNext()) {
            const std::string etape = plan->champ("detail").str();
            EXPECT_EQ(etape.rfind("SCAN", 0), std::string::npos) << etape;
        }
    }
}

TEST_F(Schema, UnFichierExistantArreteTouteLaCreation) {
    std::ofstream(dossier_ / kBaseTemporaire) << "host work file";
    std::string erreur;
    EXPECT_FALSE(Creer_Bases(dossier_.string(), (dossier_ / kBaseTemporaire).string(), erreur));
    EXPECT_NE(erreur.find(kBaseTemporaire), std::string::npos) << erreur;
    EXPECT_EQ(contenu(dossier_ / kBaseTemporaire), "host work file");
    EXPECT_FALSE(fs::exists(dossier_ / kBasePont));
    EXPECT_FALSE(fs::exists(dossier_ / kBaseHote));
}

// The layout itself is what every black-box test starts from.
TEST_F(Installation, UneInstallationExistanteNestJamaisRemplacee) {
    std::ofstream(dossier_ / kNomPont) << "bridge";
    std::ofstream(dossier_ / kNomIntergiciel) << "middleware";
    std::ofstream(dossier_ / fichiers::kGenerateurPdf) << "generator";
    std::ofstream(dossier_ / fichiers::kPapierCollecte) << "collected paper";
    const fs::path magasin = dossier_ / "magasin";
    std::string erreur;
    ASSERT_EQ(Installer(magasin.string(), dossier_.string(), erreur), Issue::Faite) << erreur;
    const fs::path pont = magasin / "Belvane_Classic" / "SV140" / kNomPont;
    std::ofstream(pont) << "the optician's own copy";
    EXPECT_EQ(Installer(magasin.string(), dossier_.string(), erreur), Issue::Existe);
    EXPECT_EQ(contenu(pont), "the optician's own copy");
}

// What the bridge reads back from the claim document is the card's beneficiary, whatever
// its name holds, in a claim the complementary insurer has a share of.
TEST_F(Facturation, LaDemandeDeFactureTientLesDonneesDeLaCarte) {
    const std::string zrsim = (dossier_ / "zrsim").string();
    std::string erreur;
    ASSERT_TRUE(sim::Initialiser_Etat_Demo(zrsim, erreur)) << erreur;
    struct Cas {
        const char* carte;
        int numero;
        // The beneficiary group as "element=text ...", then the insurer.
        std::vector<std::pair<const char*, const char*>> beneficiaire;
        const char* mutuelle;
    };
    const Cas cas[] = {
        {"accents",
         1,
         {{"nomBeneficaire", "D'ARTAGNAN-LEFÈVRE"},
          {"prenomBeneficaire", "Zoé \"Zaza\""},
          {"cleNirAssure", "13"},
          {"codeCentre", "0512"}},
         "12345678"},
        // The insurer named in the card's complementary block.
        {"mutuelle", 2, {{"prenomBeneficaire", "Anne"}, {"cleNirAssure", "62"}}, "88123456"},
    };
    const std::string chemin = (dossier_ / "ZEMO_Request.xml").string();
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.carte);
        auto b = Lire_Beneficiaire(zrsim, c.carte, c.numero, erreur);
        ASSERT_TRUE(b) << erreur;
        ASSERT_TRUE(Document_Facture({.beneficiaire = *b}).enregistrer(chemin));

        XmlDocument doc;
        ASSERT_TRUE(doc.charger_fichier(chemin)) << doc.erreur();
        for (const auto& [element, texte] : c.beneficiaire) {
            EXPECT_EQ(doc.selectionner_un("/BelvaneClassicII/beneficiaire/" + std::string(element))
                          .texte(),
                      texte)
                << element;
        }
        auto valeur = [&doc](const std::string& chemin) {
            return doc.selectionner_un("/BelvaneClassicII/" + chemin).texte();
        };
        EXPECT_EQ(valeur("donneesTP/numeroMutuelle"), c.mutuelle);
        EXPECT_EQ(valeur("donneesFacture/modetraitement"), "Facture");
        EXPECT_EQ(valeur("donneesFacture/dateFacture"), Date_Du_Jour());
        const auto actes = doc.selectionner("/BelvaneClassicII/donneesActe/Acte");
        EXPECT_EQ(std::to_string(actes.size()), valeur("donneesActe/nombreLignesActes"));
        double part_amc = 0;
        for (const XmlNoeud& acte : actes) {
            EXPECT_EQ(acte.texte_de("dateSoins"), Date_Du_Jour());
            part_amc += std::stod(acte.texte_de("MontantAMC"));
        }
        EXPECT_GT(part_amc, 0);
        EXPECT_DOUBLE_EQ(std::stod(valeur("donneesTP/TPtotalAMC")), part_amc);
    }

    for (const auto& [carte, numero] : {std::pair{"famille", 5}, {"famille", 0}, {"inconnue", 1}}) {
        EXPECT_FALSE(Lire_Beneficiaire(zrsim, carte, numero, erreur)) << carte << numero;
    }
}

TEST_F(Facturation, AvancerDeplaceLeJourSimuleDepuisOuIlEst) {
    const std::string zrsim = (dossier_ / "zrsim").string();
    std::string erreur;
    ASSERT_TRUE(sim::Initialiser_Etat_Demo(zrsim, erreur)) << erreur;
    std::string date;
    ASSERT_TRUE(Avancer_Jour_Simule(zrsim, 2, date, erreur)) << erreur;
    EXPECT_EQ(date, Date_Du_Jour(2));
    ASSERT_TRUE(Avancer_Jour_Simule(zrsim, -40, date, erreur)) << erreur;
    EXPECT_EQ(date, Date_Du_Jour(-38));
}

}  // namespace
}  // namespace sv140::shop
