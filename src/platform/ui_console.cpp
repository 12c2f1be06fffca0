// Message boxes and questions on the console: one line on standard error and in the
// log, then, for a question, one answer line from standard input.
#include "platform/ui_console.h"

#include <iostream>
#include <string>
#include <utility>

namespace sv140 {

namespace {

class UiConsole : public Ui {
  public:
    UiConsole(Journal journal, std::istream& entree, std::ostream& sortie)
        : journal_(std::move(journal)), entree_(entree), sortie_(sortie) {}

    void MsgBox(std::string_view texte, std::string_view titre, Icone) override {
        montrer(titre, texte);
    }

    Reponse Question(std::string_view texte, std::string_view titre, Icone) override {
        montrer(titre, texte);
        std::string ligne;
        if (!std::getline(entree_, ligne)) {
            return Reponse::Annuler;
        }
        return reponse_console(ligne);
    }

  private:
    void montrer(std::string_view titre, std::string_view texte) {
        std::string ligne = ligne_msgbox(titre, texte);
        sortie_ << ligne << '\n' << std::flush;
        if (journal_) {
            journal_(ligne);
        }
    }

    Journal journal_;
    std::istream& entree_;
    std::ostream& sortie_;
};

bool est_blanc(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

}  // namespace

std::string ligne_msgbox(std::string_view titre, std::string_view texte) {
    std::string ligne = "MsgBox : ";
    ligne += titre;
    ligne += " : ";
    for (std::size_t i = 0; i < texte.size(); ++i) {
        char c = texte[i];
        if (c == '\r' || c == '\n') {
            if (c == '\r' && i + 1 < texte.size() && texte[i + 1] == '\n') {
                ++i;
            }
            ligne += " | ";
        } else {
            ligne += c;
        }
    }
    return ligne;
}

Reponse reponse_console(std::string_view ligne) {
    while (!ligne.empty() && est_blanc(ligne.front())) {
        ligne.remove_prefix(1);
    }
    while (!ligne.empty() && est_blanc(ligne.back())) {
        ligne.remove_suffix(1);
    }
    std::string mot;
    for (char c : ligne) {
        mot += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    }
    if (mot == "o" || mot == "oui" || mot == "y" || mot == "yes") {
        return Reponse::Oui;
    }
    if (mot == "n" || mot == "non" || mot == "no") {
        return Reponse::Non;
    }
    return Reponse::Annuler;
}

std::unique_ptr<Ui> creer_ui_console(Journal journal, std::istream& entree, std::ostream& sortie) {
    return std::make_unique<UiConsole>(std::move(journal), entree, sortie);
}

std::unique_ptr<Ui> creer_ui_console(Journal journal) {
    return creer_ui_console(std::move(journal), std::cin, std::cerr);
}

}  // namespace sv140
