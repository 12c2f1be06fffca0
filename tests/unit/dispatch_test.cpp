#include <gtest/gtest.h>

#include "aide_test.h"
#include "main/dispatch.h"
#include "main/run.h"

namespace sv140 {
namespace {

TEST(Ligne_Commande, Decoupage) {
    struct Cas {
        std::string ligne, operation, chemin, troisieme;
    } cas[] = {
        {"f_LireCVitale /shop", "f_LireCVitale", "/shop", ""},
        {"f_LireCVitale /shop a b", "f_LireCVitale", "/shop", "a b"},
        {"f_LireCVitale  /shop", "f_LireCVitale", "", "/shop"},
        {"f_LireCVitale ", "f_LireCVitale", "", ""},
        {"F_LIRECVITALE /shop", "F_LIRECVITALE", "/shop", ""},
    };
    test::DossierTemporaire d;
    for (const Cas& c : cas) {
        sv140::Run run =
            nouveau_run(d / "Belvane_Classic/SV140", std::make_unique<test::UiEnregistree>());
        Decouper_Ligne_Commande(run, c.ligne);
        EXPECT_EQ(run.F_Appel, c.operation) << c.ligne;
        EXPECT_EQ(run.Chemin, c.chemin) << c.ligne;
        EXPECT_EQ(run.troisieme_mot, c.troisieme) << c.ligne;
        EXPECT_EQ(run.DB_DONNEES, c.chemin + "/Donnees_32.accdb");
        EXPECT_EQ(run.DB_sv, c.chemin + "/SV140.accdb");
        EXPECT_EQ(run.DB_temporaire, d / "Belvane_Classic/Temporaire.accdb");
        EXPECT_EQ(run.frontal, d / "Belvane_Classic/Belvane_Classic.accdr");
    }
}

TEST(Ligne_Commande, SansBlancLesValeursDuDeveloppeur) {
    for (const char* ligne : {"", "f_LireCVitale"}) {
        sv140::Run run = nouveau_run("/tmp/x/SV140", std::make_unique<test::UiEnregistree>());
        Decouper_Ligne_Commande(run, ligne);
        EXPECT_EQ(run.F_Appel, "f_ListerFactures");
        EXPECT_TRUE(run.Chemin.ends_with("Belvane_Classic/_Magasin")) << run.Chemin;
        EXPECT_TRUE(run.DB_temporaire.ends_with("Belvane_Classic/Temporaire.accdb"));
        EXPECT_TRUE(run.frontal.ends_with("Belvane_Classic.accdb"));
    }
}

TEST(Ligne_Commande, DecompositionEnCodesAnsi) {
    EXPECT_EQ(Decomposition("f_X"), "102 95 88 ");
    EXPECT_EQ(Decomposition("é €"), "233 32 128 ");
    EXPECT_EQ(Decomposition(""), "");
}

}  // namespace
}  // namespace sv140
