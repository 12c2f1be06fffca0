#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "platform/ui_console.h"

namespace sv140 {
namespace {

TEST(UiConsole, ReponsesLues) {
    const struct {
        const char* ligne;
        Reponse reponse;
    } cas[] = {
        {"o", Reponse::Oui},           {"oui", Reponse::Oui},      {"y", Reponse::Oui},
        {"YES", Reponse::Oui},         {"  Oui \t", Reponse::Oui}, {"oui\r", Reponse::Oui},
        {"n", Reponse::Non},           {"NON", Reponse::Non},      {" no ", Reponse::Non},
        {"", Reponse::Annuler},        {"   ", Reponse::Annuler},  {"ou", Reponse::Annuler},
        {"oui oui", Reponse::Annuler}, {"nein", Reponse::Annuler}, {"1", Reponse::Annuler},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(reponse_console(c.ligne), c.reponse) << '"' << c.ligne << '"';
    }
}

TEST(UiConsole, SautsDeLigneDansLaBoite) {
    const struct {
        const char* texte;
        const char* ligne;
    } cas[] = {
        {"Carte absente", "MsgBox : SV140 : Carte absente"},
        {"a\r\nb", "MsgBox : SV140 : a | b"},
        {"a\rb\nc", "MsgBox : SV140 : a | b | c"},
        {"a\n\rb", "MsgBox : SV140 : a |  | b"},
        {"a\r\n\r\nb\n", "MsgBox : SV140 : a |  | b | "},
        {"", "MsgBox : SV140 : "},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(ligne_msgbox("SV140", c.texte), c.ligne);
    }
    EXPECT_EQ(ligne_msgbox("Réponse", "Supprimer l'ordonnance ?"),
              "MsgBox : Réponse : Supprimer l'ordonnance ?");
}

TEST(UiConsole, LigneSurLaSortieEtDansLeJournal) {
    std::istringstream entree("texte lu par personne\n");
    std::ostringstream sortie;
    std::vector<std::string> journal;
    auto ui = creer_ui_console([&journal](std::string_view l) { journal.emplace_back(l); }, entree,
                               sortie);

    ui->MsgBox("Le répertoire n'existe pas");
    ui->MsgBox("ligne 1\r\nligne 2", "Titre", Icone::Critique);

    EXPECT_EQ(sortie.str(),
              "MsgBox : SV140 : Le répertoire n'existe pas\n"
              "MsgBox : Titre : ligne 1 | ligne 2\n");
    EXPECT_EQ(journal, (std::vector<std::string>{"MsgBox : SV140 : Le répertoire n'existe pas",
                                                 "MsgBox : Titre : ligne 1 | ligne 2"}));
    // A box with only OK leaves the input for the next question.
    std::string reste;
    std::getline(entree, reste);
    EXPECT_EQ(reste, "texte lu par personne");
}

TEST(UiConsole, UneLigneParQuestionPuisAnnulerEnFinDEntree) {
    std::istringstream entree("oui\n non\r\npeut-etre\nY");
    std::ostringstream sortie;
    auto ui = creer_ui_console(nullptr, entree, sortie);

    EXPECT_EQ(ui->Question("Lier ?"), Reponse::Oui);
    EXPECT_EQ(ui->Question("Lier ?"), Reponse::Non);
    EXPECT_EQ(ui->Question("Lier ?"), Reponse::Annuler);
    EXPECT_EQ(ui->Question("Lier ?"), Reponse::Oui);
    EXPECT_EQ(ui->Question("Lier ?"), Reponse::Annuler);
    EXPECT_EQ(ui->Question("Lier ?"), Reponse::Annuler);

    std::string attendu;
    for (int i = 0; i < 6; ++i) {
        attendu += "MsgBox : SV140 : Lier ?\n";
    }
    EXPECT_EQ(sortie.str(), attendu);
}

}  // namespace
}  // namespace sv140
