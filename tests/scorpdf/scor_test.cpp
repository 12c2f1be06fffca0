// The built PDF generator, run in a program folder of its own as the bridge runs it.
// Its PDFs are checked by qpdf and poppler, which share none of its code; the images
// are made here by ImageMagick.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "platform/encodage.h"
#include "platform/systeme.h"
#include "sortie_commande.h"

namespace sv140 {
namespace {

namespace fs = std::filesystem;

using test::sortie_de;

struct Groupe {
    std::string nom;  // Ordonnance, Cerfa, Autre
    std::string pdf;
    std::string facture;
    std::string nature;  // Autre only
};

class ScorTest : public ::testing::Test {
  public:
    void SetUp() override {
        dossier_ = (fs::temp_directory_path() /
                    ("sv140-scor-" + std::to_string(::getpid()) + "-" +
                     ::testing::UnitTest::GetInstance()->current_test_info()->name()))
                       .string();
        fs::remove_all(dossier_);
        fs::create_directories(dossier_);
        ASSERT_TRUE(
            copier_fichier_systeme(programme(), chemin(fs::path(programme()).filename()), false));
        ASSERT_TRUE(rendre_executable(chemin(fs::path(programme()).filename())));
    }
    void TearDown() override { fs::remove_all(dossier_); }

    std::string chemin(const std::string& nom) const { return joindre(dossier_, nom); }

    /// Scor, or Scor.exe run by Wine for the wine.* tests.
    static bool sous_wine() { return variable_environnement("SV140_CIBLE") == "win32"; }
    static std::string programme() {
#ifdef SV140_WIN32_BIN
        if (sous_wine()) {
            return SV140_WIN32_BIN "/Scor.exe";
        }
#endif
        return SCOR_EXE;
    }

    void image(const std::string& nom, const std::string& dessin) {
        ASSERT_EQ(std::system(("convert " + dessin + " " + chemin(nom)).c_str()), 0);
    }

    /// The order as the bridge writes it: ISO-8859-1.
    void ordre(const std::vector<Groupe>& groupes) {
        std::string xml =
            "<?xml version='1.0' encoding='ISO-8859-1'?>\n<ZRMESSAGE><programme>x</programme>"
            "<requete><fonction><f_Scor><versionMessage>0001</versionMessage><donnees>";
        for (const Groupe& g : groupes) {
            xml += "<" + g.nom + "><IDfact>123456789</IDfact><Dossier>D</Dossier><Id>7</Id>" +
                   "<Facture>" + g.facture + "</Facture>" +
                   (g.nature.empty() ? "" : "<natureAutre>" + g.nature + "</natureAutre>") +
                   "<Compteur>1</Compteur><pdf>" + g.pdf + "</pdf></" + g.nom + ">";
        }
        xml += "</donnees></f_Scor></fonction></requete></ZRMESSAGE>\n";
        ASSERT_TRUE(ecrire_fichier(chemin("dctsScorPDF.xml"), utf8_vers_cp1252(xml)));
    }

    /// Runs Scor; its exit code, with its messages in `messages`.
    int lancer() {
        Lancement l;
        l.sortie = dossier_ + "-sortie.txt";
        l.entree_vide = true;
        const std::string scor = chemin(fs::path(programme()).filename());
        int code;
        if (sous_wine()) {
            l.arguments = {scor};
            l.environnement = {"WINEDEBUG=-all"};
            code = lancer_programme("/usr/bin/wine", l);
        } else {
            code = lancer_programme(scor, l);
        }
        lire_fichier(l.sortie, messages);
        supprimer_fichier(l.sortie);
        return code;
    }

    std::string contenu(const std::string& nom) const {
        std::string octets;
        lire_fichier(chemin(nom), octets);
        return octets;
    }

    std::string dossier_;
    std::string messages;
};

TEST_F(ScorTest, EachImageBecomesItsPdf) {
    image("Ordo_SCOR.jpg",
          "-size 300x400 xc:white -fill black -draw 'circle 150,200 150,300' "
          "-colorspace Gray");
    image("Cerfa_SCOR.jpg", "-size 500x300 gradient:red-blue");
    image("Autre_SCOR.jpg", "-size 120x200 xc:green -colorspace CMYK");
    ordre({{"Ordonnance", "o.pdf", "1234", ""},
           {"Cerfa", "c.pdf", "12(34)\\", ""},
           {"Autre", "a.pdf", "99", "Pièce"}});
    ASSERT_EQ(lancer(), 0) << messages;
    EXPECT_EQ(messages, "");

    struct Attendu {
        const char* pdf;
        const char* jpeg;
        const char* image;  // pdfimages -list: width height color comp bpc enc
        const char* titre;
        const char* sujet;
    };
    const Attendu attendus[] = {
        {"o.pdf", "Ordo_SCOR.jpg", "300 400 gray 1 8 jpeg", "ORDN", "1234"},
        {"c.pdf", "Cerfa_SCOR.jpg", "500 300 rgb 3 8 jpeg", "FSNC", "12(34)\\"},
        {"a.pdf", "Autre_SCOR.jpg", "120 200 cmyk 4 8 jpeg", "Pièce", "99"},
    };
    for (const Attendu& a : attendus) {
        SCOPED_TRACE(a.pdf);
        const std::string pdf = chemin(a.pdf);
        EXPECT_EQ(std::system(("qpdf --check " + pdf + " >/dev/null").c_str()), 0);
        EXPECT_EQ(sortie_de("pdfimages -list " + pdf +
                            " | awk 'NR > 2 { print $4, $5, $6, $7, $8, $9 }'"),
                  std::string(a.image) + "\n");
        // The JPEG is in the PDF byte for byte.
        const std::string extrait = chemin("extrait");
        ASSERT_EQ(std::system(("pdfimages -all " + pdf + " " + extrait).c_str()), 0);
        EXPECT_EQ(contenu("extrait-000.jpg"), contenu(a.jpeg));
        const std::string infos = sortie_de("pdfinfo " + pdf);
        for (const std::string& ligne :
             {std::string("Title:           ") + a.titre,
              std::string("Subject:         ") + a.sujet,
              std::string("Producer:        sv140 Scor"), std::string("PDF version:     1.4"),
              std::string("Page size:       595 x 842 pts (A4)")}) {
            EXPECT_NE(infos.find(ligne + "\n"), std::string::npos) << ligne << "\n" << infos;
        }
        EXPECT_EQ(std::system(("pdftoppm -r 20 -png " + pdf + " " + chemin("rendu")).c_str()), 0);
        EXPECT_TRUE(fichier_existe(chemin("rendu-1.png")));
    }
    EXPECT_TRUE(lister_fichiers(dossier_, "*.tmp").empty());
}

struct CasEchec {
    const char* nom;
    void (*preparer)(ScorTest&, const std::string&);
    const char* pdf;
    const char* message;
    bool autres_ecrits;  // the order was read: the good document still gets its PDF
};

TEST_F(ScorTest, AFailureLeavesNoHalfWrittenFile) {
    const CasEchec cas[] = {
        {"ordre absent",
         [](ScorTest& t, const std::string&) { supprimer_fichier(t.chemin("dctsScorPDF.xml")); },
         "o.pdf", "Impossible de lire dctsScorPDF.xml", false},
        {"ordre mal formé",
         [](ScorTest& t, const std::string&) {
             ecrire_fichier(t.chemin("dctsScorPDF.xml"), "<ZRMESSAGE><requete>");
         },
         "o.pdf", "Impossible de lire dctsScorPDF.xml", false},
        {"image absente",
         [](ScorTest& t, const std::string&) { supprimer_fichier(t.chemin("Ordo_SCOR.jpg")); },
         "o.pdf", "Ordo_SCOR.jpg absente", true},
        {"image qui n'est pas un JPEG",
         [](ScorTest& t, const std::string&) {
             ASSERT_EQ(
                 std::system(
                     ("convert -size 10x10 xc:white png:" + t.chemin("Ordo_SCOR.jpg")).c_str()),
                 0);
         },
         "o.pdf", "pas une image JPEG", true},
        {"nom qui sort du dossier", [](ScorTest&, const std::string&) {}, "../o.pdf", "refusé",
         true},
        // Its name is taken by a folder: the PDF cannot be put in its place.
        {"nom pris par un dossier",
         [](ScorTest& t, const std::string& pdf) { creer_dossier(t.chemin(pdf)); }, "d.pdf",
         "impossible de remplacer", true},
    };
    for (const CasEchec& c : cas) {
        SCOPED_TRACE(c.nom);
        for (const std::string& nom : lister_fichiers(dossier_, "*")) {
            if (nom != fs::path(programme()).filename()) {
                supprimer_fichier(chemin(nom));
            }
        }
        fs::remove_all(chemin("d.pdf"));
        image("Ordo_SCOR.jpg", "-size 40x60 xc:gray");
        image("Cerfa_SCOR.jpg", "-size 60x40 xc:white");
        ASSERT_TRUE(ecrire_fichier(chemin("o.pdf"), "ancien"));
        ordre({{"Ordonnance", c.pdf, "1", ""}, {"Cerfa", "c.pdf", "2", ""}});
        c.preparer(*this, c.pdf);

        EXPECT_EQ(lancer(), 1);
        EXPECT_NE(messages.find(c.message), std::string::npos) << messages;
        EXPECT_EQ(messages.find('\n'), messages.size() - 1) << "one line: " << messages;
        EXPECT_EQ(contenu("o.pdf"), "ancien");
        EXPECT_EQ(fichier_existe(chemin("c.pdf")), c.autres_ecrits);
        EXPECT_TRUE(lister_fichiers(dossier_, "*.tmp").empty());
        EXPECT_FALSE(fs::exists(fs::path(dossier_).parent_path() / "o.pdf"));
    }
}

}  // namespace
}  // namespace sv140
