// Message boxes, questions, forms and choosers on the console: one line on standard
// error and in the log for each thing shown, then the answers from standard input,
// one line each.
#include "platform/ui_console.h"

#include <iostream>
#include <string>
#include <utility>

namespace sv140 {

namespace {

// Answers that name nothing are asked again, but a fixed number of them in a row
// closes the form: input that never ends (a pipe of garbage) must not keep the run
// waiting forever.
constexpr int kReponsesInconnues = 10;

bool est_blanc(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

std::string_view sans_blancs(std::string_view ligne) {
    while (!ligne.empty() && est_blanc(ligne.front())) {
        ligne.remove_prefix(1);
    }
    while (!ligne.empty() && est_blanc(ligne.back())) {
        ligne.remove_suffix(1);
    }
    return ligne;
}

std::string minuscules(std::string_view texte) {
    std::string mot;
    for (char c : texte) {
        mot += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return mot;
}

/// The number from 1 to `nombre` that the line holds, as an index from 0.
std::optional<std::size_t> numero(std::string_view ligne, std::size_t nombre) {
    ligne = sans_blancs(ligne);
    // Nine digits at most: the count cannot overflow.
    if (ligne.empty() || ligne.size() > 9) {
        return std::nullopt;
    }
    std::size_t n = 0;
    for (char c : ligne) {
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        n = n * 10 + static_cast<std::size_t>(c - '0');
    }
    if (n < 1 || n > nombre) {
        return std::nullopt;
    }
    return n - 1;
}

/// What a form shows, a line per field ("Ordonnance : /path"); a cleared field (no
/// label, no text) is not drawn.
std::string etat(const Formulaire& formulaire) {
    std::string texte;
    for (const ChampFormulaire& champ : formulaire.champs) {
        if (champ.libelle.empty() && champ.valeur.empty()) {
            continue;
        }
        if (!texte.empty()) {
            texte += '\n';
        }
        texte += champ.libelle + " : " + champ.valeur;
    }
    return texte;
}

class UiConsole : public Ui {
  public:
    UiConsole(Journal journal, std::istream& entree, std::ostream& sortie, Visionneuse visionneuse)
        : journal_(std::move(journal)),
          entree_(entree),
          sortie_(sortie),
          visionneuse_(std::move(visionneuse)) {}

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

    void Montrer(const Formulaire& formulaire, const std::function<void(int)>& agir) override {
        for (;;) {
            montrer(formulaire.titre, etat(formulaire));
            for (std::size_t i = 0; i < formulaire.actions.size(); ++i) {
                ecrire(std::to_string(i + 1) + ") " + formulaire.actions[i]);
            }
            std::optional<std::size_t> choix = lire(
                [&](std::string_view ligne) { return numero(ligne, formulaire.actions.size()); });
            if (!choix || static_cast<int>(*choix + 1) == formulaire.fermeture) {
                return;
            }
            agir(static_cast<int>(*choix + 1));
        }
    }

    std::optional<std::size_t> Choisir(std::string_view titre,
                                       const std::vector<EntreeChoix>& entrees) override {
        montrer(titre, "Numéro ou code de l'entrée choisie");
        for (std::size_t i = 0; i < entrees.size(); ++i) {
            ecrire(std::to_string(i + 1) + ") " + entrees[i].texte);
        }
        return lire([&](std::string_view ligne) { return entree_console(ligne, entrees); });
    }

    void Ouvrir(const std::string& chemin) override {
        ecrire("Ouvrir : " + chemin);
        if (visionneuse_) {
            visionneuse_(chemin);
        }
    }

  private:
    void montrer(std::string_view titre, std::string_view texte) {
        ecrire(ligne_msgbox(titre, texte));
    }

    void ecrire(const std::string& ligne) {
        sortie_ << ligne << '\n' << std::flush;
        if (journal_) {
            journal_(ligne);
        }
    }

    /// Reads lines until `comprendre` finds an index in one. Nothing at the end of
    /// the input or after too many lines it did not understand.
    template <class Comprendre>
    std::optional<std::size_t> lire(const Comprendre& comprendre) {
        std::string ligne;
        for (int inconnues = 0; inconnues < kReponsesInconnues; ++inconnues) {
            if (!std::getline(entree_, ligne)) {
                return std::nullopt;
            }
            if (std::optional<std::size_t> index = comprendre(ligne)) {
                return index;
            }
            ecrire("Réponse non reconnue : " + std::string(sans_blancs(ligne)));
        }
        return std::nullopt;
    }

    Journal journal_;
    std::istream& entree_;
    std::ostream& sortie_;
    Visionneuse visionneuse_;
};

}  // namespace

std::optional<std::size_t> entree_console(std::string_view ligne,
                                          const std::vector<EntreeChoix>& entrees) {
    if (std::optional<std::size_t> index = numero(ligne, entrees.size())) {
        return index;
    }
    const std::string code = minuscules(sans_blancs(ligne));
    for (std::size_t i = 0; i < entrees.size(); ++i) {
        if (!code.empty() && minuscules(entrees[i].code) == code) {
            return i;
        }
    }
    return std::nullopt;
}

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
    const std::string mot = minuscules(sans_blancs(ligne));
    if (mot == "o" || mot == "oui" || mot == "y" || mot == "yes") {
        return Reponse::Oui;
    }
    if (mot == "n" || mot == "non" || mot == "no") {
        return Reponse::Non;
    }
    return Reponse::Annuler;
}

std::unique_ptr<Ui> creer_ui_console(Journal journal, std::istream& entree, std::ostream& sortie,
                                     Visionneuse visionneuse) {
    return std::make_unique<UiConsole>(std::move(journal), entree, sortie, std::move(visionneuse));
}

std::unique_ptr<Ui> creer_ui_console(Journal journal) {
    return creer_ui_console(std::move(journal), std::cin, std::cerr);
}

}  // namespace sv140
