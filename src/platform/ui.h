// Message boxes, questions, forms and choosers shown to the optician, and the
// documents opened for them.
//
// On Linux (and on Windows with SV140_UI=console) they go to the console: one line on
// standard error and the same line in LogsSV.txt, then, for a question, a form or a
// chooser, the answer read from standard input one line at a time.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sv140 {

enum class Icone { Aucune, Critique, Question, Exclamation, Information };
enum class Reponse { Oui, Non, Annuler };

/// One field of a form: its label and the text its box shows (both may be empty: a
/// cleared field).
struct ChampFormulaire {
    std::string libelle;
    std::string valeur;
};

/// A modal form: which one, what it shows and its buttons.
struct Formulaire {
    /// Which form this is ("Documents_SCOR", "Document_Ordo2"): the window a platform
    /// draws for it. The console draws every form the same way.
    std::string nom;
    /// The window's caption.
    std::string titre;
    /// The fields, in the order they are drawn.
    std::vector<ChampFormulaire> champs;
    /// Each button's caption with what it acts on ("Supprimer Ordonnance"), numbered
    /// from 1 in this order.
    std::vector<std::string> actions;
    /// The number of the closing button.
    int fermeture = 0;
};

/// One entry of a chooser: the text shown, and the code the optician may also answer
/// with (none when empty).
struct EntreeChoix {
    std::string texte;
    std::string code;
};

class Ui {
  public:
    virtual ~Ui() = default;
    /// A box with one OK button.
    virtual void MsgBox(std::string_view texte, std::string_view titre = "SV140",
                        Icone icone = Icone::Aucune) = 0;
    /// A Yes/No/Cancel question.
    virtual Reponse Question(std::string_view texte, std::string_view titre = "SV140",
                             Icone icone = Icone::Question) = 0;
    /// Shows `formulaire` until its closing button is pressed. Each other button
    /// pressed is handed to `agir` by its number; `agir` may change the form through
    /// the caller's own reference (clear a deleted document's field), and the form is
    /// then shown again as it is. The closing button is also what leaving the form any
    /// other way presses, and is not handed to `agir`.
    virtual void Montrer(const Formulaire& formulaire, const std::function<void(int)>& agir) = 0;
    /// Lets the optician pick one of `entrees`. Returns its index (from 0), or nothing
    /// when the chooser was closed without a choice.
    virtual std::optional<std::size_t> Choisir(std::string_view titre,
                                               const std::vector<EntreeChoix>& entrees) = 0;
    /// Shows the document `chemin` (a scanned page) to the optician, in the desktop's
    /// viewer where there is one, and returns without waiting for it. A document that
    /// cannot be shown is logged, never an error of the caller's.
    virtual void Ouvrir(const std::string& chemin) = 0;
};

/// Writes one line to the run's log.
using Journal = std::function<void(std::string_view)>;

/// The console interface (stderr, stdin and the log).
std::unique_ptr<Ui> creer_ui_console(Journal journal);
/// The platform's interface: the console on Linux, where documents also open in the
/// desktop's viewer when a display is there; message boxes and dialogs on Windows
/// unless SV140_UI=console.
std::unique_ptr<Ui> creer_ui(Journal journal);

/// The line the console writes for a box: "MsgBox : " + title + " : " + text, each
/// line break of the text (CR LF, CR or LF) written as " | ".
std::string ligne_msgbox(std::string_view titre, std::string_view texte);
/// The answer a console line gives: o/oui/y/yes, n/non/no, anything else Cancel.
Reponse reponse_console(std::string_view ligne);
/// The entry a console line names: its number (from 1) or its code, case and
/// surrounding blanks ignored. Its index (from 0), or nothing for any other line.
std::optional<std::size_t> entree_console(std::string_view ligne,
                                          const std::vector<EntreeChoix>& entrees);

}  // namespace sv140
