#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/ui_console.h"

namespace sv140 {
namespace {

TEST(UiConsole, Answers) {
    const struct {
        const char* ligne;
        Reponse reponse;
    } cas[] = {{"o", Reponse::Oui},       {"oui", Reponse::Oui},      {"y", Reponse::Oui},
               {"YES", Reponse::Oui},     {"  Oui \t", Reponse::Oui}, {"oui\r", Reponse::Oui},
               {"n", Reponse::Non},       {"NON", Reponse::Non},      {" no ", Reponse::Non},
               {"", Reponse::Annuler},    {"ou", Reponse::Annuler},   {"oui oui", Reponse::Annuler},
               {"nein", Reponse::Annuler}};
    for (const auto& c : cas) {
        EXPECT_EQ(reponse_console(c.ligne), c.reponse) << '"' << c.ligne << '"';
    }
}

TEST(UiConsole, OneLinePerQuestionThenCancelAtTheEnd) {
    std::istringstream entree("non\r\npeut-etre\nY");
    std::ostringstream sortie;
    std::vector<std::string> journal;
    auto ui = creer_ui_console([&journal](std::string_view l) { journal.emplace_back(l); }, entree,
                               sortie);
    // A box with only OK leaves the input to the next question.
    ui->MsgBox("ligne 1\r\nligne 2", "Titre", Icone::Critique);
    for (Reponse r : {Reponse::Non, Reponse::Annuler, Reponse::Oui, Reponse::Annuler}) {
        EXPECT_EQ(ui->Question("Lier ?"), r);
    }
    std::string attendu = "MsgBox : Titre : ligne 1 | ligne 2\n";
    for (int i = 0; i < 4; ++i) {
        attendu += "MsgBox : SV140 : Lier ?\n";
    }
    EXPECT_EQ(sortie.str(), attendu);
    EXPECT_EQ(journal.front(), "MsgBox : Titre : ligne 1 | ligne 2");
}

// A console interface over given input, keeping what it wrote and logged.
struct Console {
    explicit Console(const std::string& reponses) : entree(reponses) {}
    std::unique_ptr<Ui> ui(Visionneuse visionneuse = nullptr) {
        return creer_ui_console([this](std::string_view l) { journal.emplace_back(l); }, entree,
                                sortie, std::move(visionneuse));
    }
    std::string reste() {
        std::string r;
        std::getline(entree, r, '\0');
        return r;
    }
    std::istringstream entree;
    std::ostringstream sortie;
    std::vector<std::string> journal;
};

std::string lignes(const std::vector<std::string>& l) {
    std::string texte;
    for (const std::string& ligne : l) {
        texte += ligne + "\n";
    }
    return texte;
}

TEST(UiConsole, FormActsUntilItsClosingButton) {
    Console c("2\n9\n abc \n 1 \n3\n1\n");
    auto ui = c.ui();
    Formulaire f{"Documents_SCOR",
                 "Revue",
                 {{"Ordonnance", "ordo.jpg"}, {"Feuille de soins", "cerfa.jpg"}, {"", ""}},
                 {"Ouvrir Ordonnance", "Supprimer Ordonnance", "Enregistrer"},
                 3};
    std::vector<int> actions;
    ui->Montrer(f, [&](int action) {
        actions.push_back(action);
        if (action == 2) {
            f.champs[0].valeur.clear();
        }
    });
    EXPECT_EQ(actions, (std::vector<int>{2, 1}));
    const std::string boutons = "1) Ouvrir Ordonnance\n2) Supprimer Ordonnance\n3) Enregistrer\n";
    EXPECT_EQ(c.sortie.str(),
              "MsgBox : Revue : Ordonnance : ordo.jpg | Feuille de soins : cerfa.jpg\n" + boutons +
                  "MsgBox : Revue : Ordonnance :  | Feuille de soins : cerfa.jpg\n" + boutons +
                  "Réponse non reconnue : 9\n"
                  "Réponse non reconnue : abc\n"
                  "MsgBox : Revue : Ordonnance :  | Feuille de soins : cerfa.jpg\n" +
                  boutons);
    EXPECT_EQ(lignes(c.journal), c.sortie.str());
    EXPECT_EQ(c.reste(), "1\n") << "the closing button ends the reading";
}

TEST(UiConsole, LeavingAFormOrAChooserWithoutAnAnswer) {
    // The end of the input, and a run of lines that name nothing, close without acting
    // and without a choice; a pipe that never ends must not keep the run waiting.
    std::string bruit;
    for (int i = 0; i < 50; ++i) {
        bruit += "x\n";
    }
    for (const std::string& entree : {std::string(), std::string("\n\n"), bruit}) {
        Console c(entree);
        auto ui = c.ui();
        Formulaire f{"Documents_SCOR", "Revue", {}, {"Supprimer Ordonnance", "Enregistrer"}, 2};
        bool agi = false;
        ui->Montrer(f, [&](int) { agi = true; });
        EXPECT_FALSE(agi);
        EXPECT_EQ(ui->Choisir("Autre PJ", {{"Devis autre - DAUT", "DAUT"}}), std::nullopt);
        EXPECT_EQ(ui->Question("Encore ?"), Reponse::Annuler);
    }
}

TEST(UiConsole, ChooserTakesANumberOrACode) {
    const std::vector<EntreeChoix> natures = {{"Devis audioprothèses - DAUD", "DAUD"},
                                              {"Devis podo-orthèses  - DPOD", "DPOD"},
                                              {"Ordonnance GAO - OGA", "OGA"},
                                              {"Sans code", ""}};
    const struct {
        const char* ligne;
        std::optional<std::size_t> index;
    } cas[] = {{"1", 0},
               {" 4\r", 3},
               {"04", 3},
               {"dpod", 1},
               {" OGA ", 2},
               {"0", std::nullopt},
               {"5", std::nullopt},
               {"", std::nullopt},
               {"OG", std::nullopt},
               {"DAUD - ", std::nullopt},
               {"99999999999999999999", std::nullopt}};
    for (const auto& c : cas) {
        EXPECT_EQ(entree_console(c.ligne, natures), c.index) << '"' << c.ligne << '"';
    }

    Console c("7\nOga\n");
    EXPECT_EQ(c.ui()->Choisir("Autre PJ", natures), 2u);
    EXPECT_EQ(c.sortie.str(),
              "MsgBox : Autre PJ : Numéro ou code de l'entrée choisie\n"
              "1) Devis audioprothèses - DAUD\n2) Devis podo-orthèses  - DPOD\n"
              "3) Ordonnance GAO - OGA\n4) Sans code\n"
              "Réponse non reconnue : 7\n");
    EXPECT_EQ(lignes(c.journal), c.sortie.str());
}

}  // namespace
}  // namespace sv140
