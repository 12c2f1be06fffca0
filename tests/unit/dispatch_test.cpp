#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "aide_test.h"
#include "cards/cartes.h"
#include "exchange/run.h"
#include "invoicing/factures.h"
#include "main/dispatch.h"
#include "platform/systeme.h"
#include "platform/ui.h"
#include "scan/scan.h"
#include "scor/scor.h"

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

// Every operation the dispatch rules name has its row in one subsystem, and every row is
// reached: a row left out would answer the host as an unknown operation.
TEST(Dispatch, EveryOperationHasItsRow) {
    std::set<std::string_view> requetes(Ordre_Requetes().begin(), Ordre_Requetes().end());
    EXPECT_EQ(requetes.size(), 24u);
    for (std::string_view nom : Ordre_Requetes()) {
        EXPECT_NE(Trouver_Operation(nom), nullptr) << nom;
        // Only the card update has no response row: its name is shown instead.
        const bool dans_les_reponses =
            std::count(Ordre_Reponses().begin(), Ordre_Reponses().end(), nom) == 1;
        EXPECT_EQ(dans_les_reponses, nom != "f_MettreAJourCV") << nom;
    }
    for (std::string_view nom : Ordre_Reponses()) {
        EXPECT_TRUE(requetes.contains(nom)) << nom;
    }
    for (auto lignes :
         {Operations_Cartes(), Operations_Facturation(), Operations_Scor(), Operations_Scan()}) {
        for (const Operation& op : lignes) {
            EXPECT_TRUE(requetes.contains(op.nom)) << op.nom << " is never dispatched";
        }
    }
    EXPECT_EQ(Trouver_Operation("F_LIRECVITALE"), nullptr) << "names are compared exactly";
}

}  // namespace
}  // namespace sv140
