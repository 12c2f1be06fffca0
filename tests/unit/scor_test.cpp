// The attachment store and the scan operation, against a shop's real databases, with
// a scanner and an image converter of the test's own.
#include <gtest/gtest.h>

#include <sstream>

#include "aide_test.h"
#include "data/connexion.h"
#include "exchange/fichiers.h"
#include "platform/horloge.h"
#include "platform/systeme.h"
#include "platform/ui_console.h"
#include "scan/scan.h"
#include "scor/scor.h"
#include "tools/outils.h"

namespace sv140::test {
namespace {

/// Delivers a page.
class ScannerDeTest : public Scanner {
  public:
    ResultatScan numeriser(const ReglagesScan&, const std::string& bmp) override {
        ecrire(bmp, "BM page");
        return {EtatScan::Reussi, ""};
    }
    bool choisir_source(Ui&) override { return false; }
};

/// Writes a JPEG of exactly the size it is given.
class ConvertisseurDeTest : public ConvertisseurImage {
  public:
    explicit ConvertisseurDeTest(std::size_t octets) : octets_(octets) {}
    int qualite = -1;
    bool bmp_vers_jpeg(const std::string&, const std::string& jpeg, int q, std::string&) override {
        qualite = q;
        ecrire(jpeg, std::string(octets_, 'j'));
        return true;
    }

  private:
    std::size_t octets_;
};

class Scor : public Magasin {
  protected:
    /// A run whose console answers with `reponses` and writes to `sortie`.
    sv140::Run run(const std::string& reponses) {
        entree.str(reponses);
        sv140::Run r = nouveau();
        r.ui = creer_ui_console(nullptr, entree, sortie);
        return r;
    }
    std::vector<std::vector<std::string>> lignes(const std::string& base, const std::string& sql) {
        Connexion c;
        EXPECT_TRUE(c.ouvrir(base));
        auto rs = c.Ouvrir(sql);
        EXPECT_TRUE(rs) << rs.statut().raison();
        std::vector<std::vector<std::string>> resultat;
        for (; rs && !rs->EOF_(); rs->MoveNext()) {
            resultat.emplace_back();
            for (const std::string& col : rs->colonnes()) {
                resultat.back().push_back(rs->champ(col).texte.value_or("NULL"));
            }
        }
        return resultat;
    }
    std::istringstream entree;
    std::ostringstream sortie;
};

TEST_F(Scor, ImageAtTheSchemesLimitIsRefused) {
    const struct {
        std::size_t octets;
        bool garde;
    } cas[] = {{195999, true}, {196000, false}};
    for (const auto& c : cas) {
        sv140::Run r = run("o\n");
        auto scanner = std::make_unique<ScannerDeTest>();
        auto images = std::make_unique<ConvertisseurDeTest>(c.octets);
        ConvertisseurDeTest& vu = *images;
        r.scanner = std::move(scanner);
        r.images = std::move(images);
        std::string mode = "x";
        Numeriser(r, kCerfa, mode);
        EXPECT_EQ(vu.qualite, 5) << "the claim form's quality";
        EXPECT_EQ(fichier_existe(programme + "/Cerfa_SCOR.jpg"), c.garde) << c.octets;
        EXPECT_FALSE(fichier_existe(programme + "/monfichier.bmp"));
        EXPECT_EQ(sortie.str().find("MsgBox : Taille incorrecte : Le document Feuille de Soins | "
                                    "dépasse la taille autorisée de 250 Ko") != std::string::npos,
                  !c.garde);
        EXPECT_EQ(mode, "x") << "a scan leaves the mode as it was";
        supprimer_fichier(programme + "/Cerfa_SCOR.jpg");
        sortie.str("");
    }
}

TEST_F(Scor, SettingsTakeTheirDefaultsWhenNullOrZero) {
    // Resolution and pixel type fall back on 0 too; quality, brightness and contrast
    // only on Null, so that a 0 stays 0.
    executer(pont,
             "UPDATE T_InfoParam SET DPI_ORD_SCOR = 0, CLR_ORD_SCOR = NULL, QUA_ORD_SCOR = 0,"
             " LUM_ORD_SCOR = NULL, CON_ORD_SCOR = 7, DPI_FSE_SCOR = NULL, QUA_FSE_SCOR = NULL,"
             " LUM_FSE_SCOR = NULL, CLR_AUT_SCOR = 2, DPI_AUT_SCOR = 300, QUA_AUT_SCOR = NULL");
    const struct {
        std::string_view type;
        int dpi, clr, qua, lum, con;
    } cas[] = {{kOrdo, 200, 1, 0, 0, 7}, {kCerfa, 200, 1, 5, 200, 0}, {kAutp, 300, 2, 60, 0, 0}};
    for (bool sans_ligne : {false, true}) {
        if (sans_ligne) {
            executer(pont, "DELETE FROM T_InfoParam");
        }
        sv140::Run r = nouveau();
        for (const auto& c : cas) {
            const ParametresScan p = Lire_Parametres_Scan(r.bases(), c.type);
            const int qua = sans_ligne ? (c.type == kCerfa ? 5 : 60) : c.qua;
            const int lum = sans_ligne ? (c.type == kCerfa ? 200 : 0) : c.lum;
            EXPECT_EQ(p.reglages.resolution, sans_ligne ? 200 : c.dpi) << c.type;
            EXPECT_EQ(p.reglages.type_pixel, sans_ligne ? 1 : c.clr) << c.type;
            EXPECT_EQ(p.qualite, qua) << c.type;
            EXPECT_EQ(p.reglages.luminosite, lum) << c.type;
            EXPECT_EQ(p.reglages.contraste, sans_ligne ? 0 : c.con) << c.type;
        }
    }
}

TEST(RebaserCheminScor, ReRootsOnTheHostDatabasesFolder) {
    const std::string s(1, separateur());
    const struct {
        const char *base, *stocke;
        std::string attendu;
    } cas[] = {
        {"D:\\Shop\\Shop.accdb", "C:\\Old\\Sv140Scor\\202401\\",
         "D:\\Shop" + s + "Sv140Scor" + s + "202401" + s},
        {"/shop/Donnees_32.accdb", "/old/SV140SCOR/202401/",
         "/shop" + s + "SV140SCOR" + s + "202401" + s},
        {"D:\\Shop\\", "C:\\Old\\Sv140Scor\\202401\\", "D:\\Shop\\"},
        {"D:\\Shop\\Shop.accdb", "C:\\Old\\Archives\\202401\\", ""},
        {"D:\\Shop\\Shop.accdb", "C:\\Old\\Sv140Scorpions\\",
         "D:\\Shop" + s + "Sv140Scorpions" + s},
        {"", "C:\\Old\\Sv140Scor\\202401\\", ""},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(RebaserCheminScor(c.base, c.stocke), c.attendu) << c.base << " " << c.stocke;
    }
}

TEST_F(Scor, EachKindWithItsImageAndPdfGetsItsRow) {
    SessionScor session;
    session.idFac = "123456789";
    session.ordonnance = {"OPT", 5, "000123", 1, "", "o.pdf"};
    session.cerfa = {"LEN", 6, "123", 2, "M", "c.pdf"};
    session.autre = {"OPT", 7, "123", 3, "", "a.pdf"};
    session.natureAutre = "OGA";
    for (const char* f : {"Ordo_SCOR.jpg", "Cerfa_SCOR.jpg", "Autre_SCOR.jpg", "o.pdf", "c.pdf"}) {
        ecrire(programme + "/" + f, f);
    }
    // The other attachment's PDF was not made: no row for it. The claim form's is already
    // archived: its copy goes and its row points at the archived file.
    sv140::Run r = run("");
    const std::tm t = maintenant_local();
    const std::string dossier = joindre(joindre(donnees, "Sv140Scor"), Format_Date(t, "%Y%m"));
    ASSERT_TRUE(creer_dossier(joindre(donnees, "Sv140Scor")) && creer_dossier(dossier));
    ecrire(dossier + "/c.pdf", "archived before");
    ASSERT_TRUE(InsererPiecesSCor(r, donnees, session));
    r.cnx.reset();
    EXPECT_EQ(lignes(pont,
                     "SELECT InfosSCor_NUMFAC, InfosSCor_Nature, InfosSCor_Chemin, InfosSCor_nom,"
                     " idDossier, typeDossier, InfosSCor_Mode, Numero_CPT, Pointage "
                     "FROM T_InfosSCor ORDER BY InfosSCor_ID"),
              (std::vector<std::vector<std::string>>{
                  {"123", "ORDN", dossier + separateur(), "o.pdf", "5", "OPT", "", "1", "-1"},
                  {"123", "FSNC", dossier + separateur(), "c.pdf", "6", "LEN", "M", "2", "-1"}}));
    EXPECT_EQ(lire(dossier + "/c.pdf"), "archived before");
    EXPECT_FALSE(fichier_existe(programme + "/c.pdf"));
    EXPECT_EQ(lire(dossier + "/o.pdf"), "o.pdf");
}

TEST_F(Scor, ClientBehindAnInvoice) {
    for (const char* sql :
         {"INSERT INTO [Saisie des Clients] ([N°], Nom, [Prénom]) VALUES (1, 'Dupont', NULL)",
          "INSERT INTO [Saisie des Clients] ([N°], Nom, [Prénom]) VALUES (2, 'Martin', 'Léa')",
          "INSERT INTO [Fiche Technique Optique] (Lien, [NUMERO FACTURE]) VALUES (1, 123)",
          "INSERT INTO [Fiche Technique Lentille] (Lien, [NUMERO FACTURE]) VALUES (2, 456)"}) {
        executer(hote, sql);
    }
    sv140::Run r = nouveau();
    const struct {
        const char *facture, *nom;
    } cas[] = {{"123", "Dupont ?"}, {"000456", "Martin Léa"}, {"789", "Facture inconnue"}};
    for (const auto& c : cas) {
        auto nom = NomClientFacture(r, c.facture);
        ASSERT_TRUE(nom) << nom.statut().raison();
        EXPECT_EQ(*nom, c.nom) << c.facture;
    }
}

TEST(StatutPJ, LabelsAndAcknowledgement) {
    const struct {
        long long code;
        const char* libelle;
        bool accuse;
    } cas[] = {
        {0, "PJ acceptée", true},
        {11, "La Pièce justificative a été expédiée à la Caisse mais reste sans retour (>48H)",
         false},
        {12, "La Pièce justificative est a traiter manuellement", true},
        {14, "En attente de traitement par Corvane", false},
        {1070, "Sujet identique (message déjà transmis)", true},
        {5100, "Structure de données de l’entête SEH incorrecte", true},
        {5330, "Certificat révoqué", true},
        {5334, "Certificat périmé", true},
        {5999, "Dossier rejeté", true},
        {4, "", false},
        {77, "", true},
        {-1, "", false},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(LibelleStatutPJ(c.code), c.libelle) << c.code;
        EXPECT_EQ(AccuseReceptionPJ(c.code), c.accuse) << c.code;
    }
}

TEST(StatutPJ, StartOfThePeriod) {
    const std::pair<const char*, std::optional<std::string>> cas[] = {
        {"20240105", "1/5/2024"},  {"20241231", "12/31/2024"},   {"00000000", "1/1/1900"},
        {"", "1/1/1900"},          {"2024-01-05", std::nullopt}, {"20241305", std::nullopt},
        {"2024010", std::nullopt}, {"20240100", std::nullopt},
    };
    for (const auto& [texte, litteral] : cas) {
        EXPECT_EQ(DebutStatuts(texte), litteral) << texte;
    }
}

}  // namespace
}  // namespace sv140::test
