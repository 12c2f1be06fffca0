// Message boxes, questions and forms on Windows: the system's message box and the
// dialogs of formulaires_win32.rc, owned by no window since the bridge has none, and
// brought to the front over the host. A dialog without an owner disables no other
// window, and the bridge has none to disable: it holds the run as the message boxes do.
// With SV140_UI=console the console interface is used instead (tests under an
// emulator).
#include "platform/ui.h"

#include "platform/windows_win32.h"

#include <commctrl.h>

#include <exception>
#include <string>
#include <utility>

#include "platform/encodage.h"
#include "platform/formulaires_win32.h"
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

/// The dialog drawn for a form, by the form's name, and its number of rows. In each
/// row k (from 0) the form's actions 2k+1 and 2k+2 are "Ouvrir" and "Supprimer"; the
/// closing button comes after them.
struct Modele {
    const char* nom;
    int dialogue;
    int lignes;
};
constexpr Modele kModeles[] = {
    {"Documents_SCOR", IDD_DOCUMENTS_SCOR, 3},
    {"Document_Ordo2", IDD_DOCUMENT_ORDO2, 1},
};

/// What a dialog's procedure works on, from its creation to its end.
struct Dialogue {
    const Formulaire* formulaire = nullptr;
    const std::function<void(int)>* agir = nullptr;
    int lignes = 0;
    const std::vector<EntreeChoix>* entrees = nullptr;
    std::string titre;
    /// What `agir` threw: it must not unwind through the system's frames, so the
    /// dialog ends and Montrer throws it again.
    std::exception_ptr erreur;
};

void texte(HWND fenetre, int id, const std::string& valeur) {
    ::SetDlgItemTextW(fenetre, id, large(valeur).c_str());
}

/// Shows the form's fields as they are now; a cleared field's buttons have nothing to
/// act on and are disabled. Focus on a button just disabled would leave the keyboard
/// with nothing: it goes to the closing button.
void remplir(HWND fenetre, const Dialogue& d) {
    for (int k = 0; k < d.lignes; ++k) {
        const ChampFormulaire& champ = d.formulaire->champs[static_cast<std::size_t>(k)];
        texte(fenetre, IDC_LIBELLE + k, champ.libelle);
        texte(fenetre, IDC_TEXTE + k, champ.valeur);
        const BOOL actif = !(champ.libelle.empty() && champ.valeur.empty());
        for (int id : {IDC_OUVRIR + k, IDC_SUPPRIMER + k}) {
            HWND bouton = ::GetDlgItem(fenetre, id);
            if (!actif && ::GetFocus() == bouton) {
                ::SendMessageW(fenetre, WM_NEXTDLGCTL,
                               reinterpret_cast<WPARAM>(::GetDlgItem(fenetre, IDOK)), TRUE);
            }
            ::EnableWindow(bouton, actif);
        }
    }
}

/// Starts a dialog: its caption, and the keyboard on the control `focus`, in front of
/// whatever the host shows.
void ouvrir(HWND fenetre, const Dialogue& d, int focus) {
    ::SetWindowTextW(fenetre, large(d.titre).c_str());
    ::SendMessageW(fenetre, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(::GetDlgItem(fenetre, focus)),
                   TRUE);
    ::SetForegroundWindow(fenetre);
}

INT_PTR CALLBACK procedure_formulaire(HWND fenetre, UINT message, WPARAM w, LPARAM l) {
    auto* d = reinterpret_cast<Dialogue*>(::GetWindowLongPtrW(fenetre, DWLP_USER));
    if (message == WM_INITDIALOG) {
        d = reinterpret_cast<Dialogue*>(l);
        ::SetWindowLongPtrW(fenetre, DWLP_USER, l);
        remplir(fenetre, *d);
        // Return saves at once: the review is mostly a look.
        ouvrir(fenetre, *d, IDOK);
        return FALSE;
    }
    if (message != WM_COMMAND || HIWORD(w) != BN_CLICKED || d == nullptr) {
        return FALSE;
    }
    const int id = LOWORD(w);
    int action = 0;
    if (id >= IDC_OUVRIR && id < IDC_OUVRIR + d->lignes) {
        action = 2 * (id - IDC_OUVRIR) + 1;
    } else if (id >= IDC_SUPPRIMER && id < IDC_SUPPRIMER + d->lignes) {
        action = 2 * (id - IDC_SUPPRIMER) + 2;
    } else if (id == IDOK || id == IDCANCEL) {
        ::EndDialog(fenetre, 0);
        return TRUE;
    } else {
        return FALSE;
    }
    try {
        (*d->agir)(action);
        remplir(fenetre, *d);
    } catch (...) {
        d->erreur = std::current_exception();
        ::EndDialog(fenetre, 0);
    }
    return TRUE;
}

/// The chooser ends with the chosen entry's index plus one, or 0 for no choice.
INT_PTR CALLBACK procedure_choix(HWND fenetre, UINT message, WPARAM w, LPARAM l) {
    if (message == WM_INITDIALOG) {
        const auto* d = reinterpret_cast<const Dialogue*>(l);
        for (const EntreeChoix& entree : *d->entrees) {
            ::SendDlgItemMessageW(fenetre, IDC_LISTE, CB_ADDSTRING, 0,
                                  reinterpret_cast<LPARAM>(large(entree.texte).c_str()));
        }
        // The whole list at once: the natures are read, not searched.
        ::SendDlgItemMessageW(fenetre, IDC_LISTE, CB_SETMINVISIBLE, d->entrees->size(), 0);
        // The choice comes first; Return then confirms it.
        ouvrir(fenetre, *d, IDC_LISTE);
        return FALSE;
    }
    if (message != WM_COMMAND || HIWORD(w) != BN_CLICKED) {
        return FALSE;
    }
    if (LOWORD(w) == IDOK) {
        const LRESULT choix = ::SendDlgItemMessageW(fenetre, IDC_LISTE, CB_GETCURSEL, 0, 0);
        ::EndDialog(fenetre, choix == CB_ERR ? 0 : choix + 1);
        return TRUE;
    }
    if (LOWORD(w) == IDCANCEL) {
        ::EndDialog(fenetre, 0);
        return TRUE;
    }
    return FALSE;
}

class UiWin32 : public Ui {
  public:
    explicit UiWin32(Journal journal) : journal_(std::move(journal)) {
        INITCOMMONCONTROLSEX controles{sizeof(controles), ICC_STANDARD_CLASSES};
        ::InitCommonControlsEx(&controles);
    }

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

    void Montrer(const Formulaire& formulaire, const std::function<void(int)>& agir) override {
        const Modele* modele = nullptr;
        for (const Modele& m : kModeles) {
            if (formulaire.nom == m.nom &&
                formulaire.champs.size() == static_cast<std::size_t>(m.lignes)) {
                modele = &m;
            }
        }
        if (modele == nullptr) {
            journaliser("Fenêtre « " + formulaire.titre + " » non affichée sur ce poste : fermée");
            return;
        }
        Dialogue d;
        d.formulaire = &formulaire;
        d.agir = &agir;
        d.lignes = modele->lignes;
        d.titre = formulaire.titre;
        if (afficher(modele->dialogue, procedure_formulaire, d) < 0) {
            journaliser("Fenêtre « " + formulaire.titre + " » impossible à afficher : fermée");
        }
        if (d.erreur) {
            std::rethrow_exception(d.erreur);
        }
    }

    std::optional<std::size_t> Choisir(std::string_view titre,
                                       const std::vector<EntreeChoix>& entrees) override {
        Dialogue d;
        d.entrees = &entrees;
        d.titre = std::string(titre);
        const INT_PTR choix = afficher(IDD_CHOIX, procedure_choix, d);
        if (choix < 0) {
            journaliser("Fenêtre « " + d.titre + " » impossible à afficher : fermée sans choix");
        }
        if (choix <= 0) {
            return std::nullopt;
        }
        return static_cast<std::size_t>(choix - 1);
    }

    void Ouvrir(const std::string& chemin) override {
        if (!ouvrir_document(chemin)) {
            journaliser("Impossible d'ouvrir le document " + chemin);
        }
    }

  private:
    /// Shows a dialog of the program's resources until it ends: what it ended with, or
    /// -1 when it could not be made.
    static INT_PTR afficher(int dialogue, DLGPROC procedure, Dialogue& d) {
        return ::DialogBoxParamW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(dialogue), nullptr,
                                 procedure, reinterpret_cast<LPARAM>(&d));
    }

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
