// File names matched by pattern, listed and deleted, as the capture session clears
// the program folder's leftovers. Runs on both platforms: the Windows listing reads
// the folder its own way.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "aide_test.h"
#include "platform/systeme.h"

namespace sv140 {
namespace {

TEST(Fichiers, NamesMatchPatternsWithoutRegardToCase) {
    const struct {
        const char *nom, *motif;
        bool correspond;
    } cas[] = {
        {"20240105_12.pdf", "20*.pdf", true},
        {"20.PDF", "20*.pdf", true},
        {"2O24.pdf", "20*.pdf", false},
        {"20240105.pdf.bak", "20*.pdf", false},
        {"x20.pdf", "20*.pdf", false},
        {"Autre_SCOR.jpg", "AUTRE_SCOR.JPG", true},
        {"a.b.jpg", "*.jpg", true},
        {"page.jpeg", "*.jpg", false},
        {".jpg", "*.jpg", true},
        {"ab", "a?", true},
        {"a", "a?", false},
        {"abc", "a?", false},
        {"éte.jpg", "?te.jpg", true},
        {"ÉTÉ.jpg", "été.jpg", true},
        {"Œil.jpg", "œIL.JPG", true},
        {"aXbXc", "*x*c", true},
        {"aXbXd", "*x*c", false},
        {"mississippi", "*sip*i", true},
        {"", "*", true},
        {"a", "", false},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(nom_correspond(c.nom, c.motif), c.correspond) << c.nom << " ~ " << c.motif;
    }
}

TEST(Fichiers, ListAndDeleteFilesOfOneFolderOnly) {
    test::DossierTemporaire d;
    for (const char* nom : {"20240105_1.pdf", "20240105_2.PDF", "x20.pdf", "Ordo_SCOR.jpg"}) {
        test::ecrire(d / nom, "x");
    }
    ASSERT_TRUE(creer_dossier(d / "2024.pdf"));
    ASSERT_TRUE(creer_dossier(d / "sous"));
    test::ecrire(d / "sous/20240105_3.pdf", "x");

    EXPECT_EQ(lister_fichiers(d.chemin(), "20*.pdf"),
              (std::vector<std::string>{"20240105_1.pdf", "20240105_2.PDF"}));
    EXPECT_EQ(supprimer_fichiers(d.chemin(), "20*.pdf"), 2);
    EXPECT_EQ(supprimer_fichiers(d.chemin(), "20*.pdf"), 0);
    EXPECT_TRUE(dossier_existe(d / "2024.pdf"));
    EXPECT_TRUE(fichier_existe(d / "sous/20240105_3.pdf"));
    EXPECT_EQ(lister_fichiers(d.chemin(), "*"),
              (std::vector<std::string>{"Ordo_SCOR.jpg", "x20.pdf"}));
    EXPECT_TRUE(lister_fichiers(d / "absent", "*").empty());
    EXPECT_EQ(supprimer_fichiers(d / "absent", "*"), 0);
}

}  // namespace
}  // namespace sv140
