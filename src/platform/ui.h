// Message boxes and questions shown to the optician.
//
// On Linux (and on Windows with SV140_UI=console) they go to the console: one line on
// standard error and the same line in LogsSV.txt, then, for a question, one line read
// from standard input.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace sv140 {

enum class Icone { Aucune, Critique, Question, Exclamation, Information };
enum class Reponse { Oui, Non, Annuler };

class Ui {
  public:
    virtual ~Ui() = default;
    /// A box with one OK button.
    virtual void MsgBox(std::string_view texte, std::string_view titre = "SV140",
                        Icone icone = Icone::Aucune) = 0;
    /// A Yes/No/Cancel question.
    virtual Reponse Question(std::string_view texte, std::string_view titre = "SV140",
                             Icone icone = Icone::Question) = 0;
};

/// Writes one line to the run's log.
using Journal = std::function<void(std::string_view)>;

/// The console interface (stderr, stdin and the log).
std::unique_ptr<Ui> creer_ui_console(Journal journal);
/// The platform's interface: the console on Linux; message boxes on Windows unless
/// SV140_UI=console.
std::unique_ptr<Ui> creer_ui(Journal journal);

/// The line the console writes for a box: "MsgBox : " + title + " : " + text, each
/// line break of the text (CR LF, CR or LF) written as " | ".
std::string ligne_msgbox(std::string_view titre, std::string_view texte);
/// The answer a console line gives: o/oui/y/yes, n/non/no, anything else Cancel.
Reponse reponse_console(std::string_view ligne);

}  // namespace sv140
