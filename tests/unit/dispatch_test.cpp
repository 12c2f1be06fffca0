#include <gtest/gtest.h>

#include "aide_test.h"
#include "exchange/run.h"
#include "main/dispatch.h"
#include "platform/systeme.h"
#include "platform/ui.h"

namespace sv140 {
namespace {

TEST(LigneCommande, Split) {
    const struct {
        std::string ligne, operation, chemin, troisieme;
    } cas[] = {{"f_LireCVitale /shop", "f_LireCVitale", "/shop", ""},
               {"f_LireCVitale /shop a b", "f_LireCVitale", "/shop", "a b"},
               {"f_LireCVitale  /shop", "f_LireCVitale", "", "/shop"},
               {"f_LireCVitale ", "f_LireCVitale", "", ""},
               {"F_LIRECVITALE /shop", "F_LIRECVITALE", "/shop", ""}};
    test::DossierTemporaire d;
    for (const auto& c : cas) {
        sv140::Run run = nouveau_run(d / "Belvane_Classic/SV140", creer_ui_console(nullptr));
        Decouper_Ligne_Commande(run, c.ligne);
        EXPECT_EQ(run.F_Appel + "|" + run.Chemin + "|" + run.troisieme_mot,
                  c.operation + "|" + c.chemin + "|" + c.troisieme);
        EXPECT_EQ(run.DB_DONNEES, joindre(c.chemin, "Donnees_32.accdb"));
        EXPECT_EQ(run.DB_sv, joindre(c.chemin, "SV140.accdb"));
        EXPECT_EQ(run.DB_temporaire, joindre(d / "Belvane_Classic", "Temporaire.accdb"));
        EXPECT_EQ(run.frontal, joindre(d / "Belvane_Classic", "Belvane_Classic.accdr"));
    }
    EXPECT_EQ(Decomposition("f_X"), "102 95 88 ");
    EXPECT_EQ(Decomposition("é €"), "233 32 128 ");
}

}  // namespace
}  // namespace sv140
