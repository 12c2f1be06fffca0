#include <gtest/gtest.h>

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

}  // namespace
}  // namespace sv140
