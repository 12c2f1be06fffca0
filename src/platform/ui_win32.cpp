// Message boxes and questions on Windows: the system's message box, owned by no
// window since the bridge has none, brought to the front over the host. With
// SV140_UI=console the console interface is used instead (tests under an emulator).
//
// Forms and choosers have no window of their own yet. Until they do, one shown
// outside the console is not drawn at all: its closing button is pressed (a chooser
// closes without a choice) and the log says so. Falling back to the console would do
// no better, since the bridge runs without one: its input ends at once.
#include "platform/ui.h"

#include "platform/windows_win32.h"

#include <string>
#include <utility>

#include "platform/encodage.h"
#include "platform/systeme.h"

namespace sv140 {

namespace {

UINT style_icone(Icone icone) {
    switch (icone) {
        case Icone::Critique:
            return MB_ICONERROR;
        case Icone::Question:
            return MB_ICONQUESTION;
        case Icone::Exclamation:
            return MB_ICONWARNING;
        case Icone::Information:
            return MB_ICONINFORMATION;
        case Icone::Aucune:
            break;
    }
    return 0;
}

int montrer(std::string_view texte, std::string_view titre, UINT boutons, Icone icone) {
    return ::MessageBoxW(nullptr, large(texte).c_str(), large(titre).c_str(),
                         boutons | style_icone(icone) | MB_TASKMODAL | MB_SETFOREGROUND);
}

class UiWin32 : public Ui {
  public:
    explicit UiWin32(Journal journal) : journal_(std::move(journal)) {}

    void MsgBox(std::string_view texte, std::string_view titre, Icone icone) override {
        montrer(texte, titre, MB_OK, icone);
    }

    Reponse Question(std::string_view texte, std::string_view titre, Icone icone) override {
        switch (montrer(texte, titre, MB_YESNOCANCEL, icone)) {
            case IDYES:
                return Reponse::Oui;
            case IDNO:
                return Reponse::Non;
            default:
                return Reponse::Annuler;
        }
    }

    void Montrer(const Formulaire& formulaire, const std::function<void(int)>&) override {
        journaliser("Fenêtre « " + formulaire.titre + " » non affichée sur ce poste : fermée");
    }

    std::optional<std::size_t> Choisir(std::string_view titre,
                                       const std::vector<EntreeChoix>&) override {
        journaliser("Fenêtre « " + std::string(titre) +
                    " » non affichée sur ce poste : fermée sans choix");
        return std::nullopt;
    }

    void Ouvrir(const std::string& chemin) override {
        if (!ouvrir_document(chemin)) {
            journaliser("Impossible d'ouvrir le document " + chemin);
        }
    }

  private:
    void journaliser(const std::string& ligne) {
        if (journal_) {
            journal_(ligne);
        }
    }

    Journal journal_;
};

}  // namespace

std::unique_ptr<Ui> creer_ui(Journal journal) {
    if (variable_environnement("SV140_UI") == "console") {
        return creer_ui_console(std::move(journal));
    }
    return std::make_unique<UiWin32>(std::move(journal));
}

}  // namespace sv140
