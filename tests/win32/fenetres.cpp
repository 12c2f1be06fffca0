// Shows the bridge's windows one after the other, as a capture session shows them,
// for scripts/captures.sh: the question of a scan, the two critical boxes, the two
// review windows and the nature chooser (twice: chosen, then closed). The forms are
// the real ones of src/scan, over fake images in the program folder given as the
// argument.
//
// A watcher thread describes on standard output each window while it is up, and again
// whenever what it shows changes, so the script knows which window is in front, what
// its controls say and where to click:
//   fenetre "<caption>"
//   <class> "<text>" actif|inactif <x> <y>     (one per control, centre on the screen)
//   fin
// where a list's text is "<count> entrées, choix <selected index or -1>".
// The program's own lines ("agir 4", "AutrePJ DPOD", "image Cerfa_SCOR.jpg absente")
// say what the windows handed back.
#include "platform/windows_win32.h"

#include <fcntl.h>
#include <io.h>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "scan/scan.h"

namespace sv140 {
namespace {

std::mutex sortie;

void ecrire(const std::string& ligne) {
    std::lock_guard<std::mutex> verrou(sortie);
    std::fputs((ligne + "\n").c_str(), stdout);
    std::fflush(stdout);
}

/// A window's text on one line: its line breaks as " | ", as the console writes them.
std::string texte_de(HWND fenetre) {
    wchar_t texte[1024] = {};
    const int n = ::GetWindowTextW(fenetre, texte, 1024);
    std::string ligne;
    for (char c : etroit(texte, static_cast<std::size_t>(n))) {
        if (c == '\n') {
            ligne += " | ";
        } else if (c != '\r') {
            ligne += c;
        }
    }
    return ligne;
}

std::string classe_de(HWND fenetre) {
    wchar_t classe[64] = {};
    const int n = ::GetClassNameW(fenetre, classe, 64);
    return etroit(classe, static_cast<std::size_t>(n));
}

BOOL CALLBACK decrire_controle(HWND controle, LPARAM description) {
    RECT r;
    ::GetWindowRect(controle, &r);
    std::string classe = classe_de(controle);
    std::string texte = texte_de(controle);
    if (classe == "ComboBox") {
        texte = std::to_string(::SendMessageW(controle, CB_GETCOUNT, 0, 0)) + " entrées, choix " +
                std::to_string(::SendMessageW(controle, CB_GETCURSEL, 0, 0));
    }
    *reinterpret_cast<std::string*>(description) +=
        classe + " \"" + texte + "\" " + (::IsWindowEnabled(controle) ? "actif " : "inactif ") +
        std::to_string((r.left + r.right) / 2) + " " + std::to_string((r.top + r.bottom) / 2) +
        "\n";
    return TRUE;
}

BOOL CALLBACK premiere_visible(HWND fenetre, LPARAM trouvee) {
    if (!::IsWindowVisible(fenetre)) {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(trouvee) = fenetre;
    return FALSE;
}

/// Describes the main thread's window in front whenever the description changes.
void surveiller(DWORD fil, const std::atomic<bool>& fini) {
    std::string derniere;
    while (!fini) {
        HWND fenetre = nullptr;
        ::EnumThreadWindows(fil, premiere_visible, reinterpret_cast<LPARAM>(&fenetre));
        std::string description;
        if (fenetre != nullptr) {
            description = "fenetre \"" + texte_de(fenetre) + "\"\n";
            ::EnumChildWindows(fenetre, decrire_controle, reinterpret_cast<LPARAM>(&description));
            description += "fin";
        }
        if (!description.empty() && description != derniere) {
            ecrire(description);
        }
        derniere = description;
        ::Sleep(100);
    }
}

/// The platform's interface, saying which action each button press hands to the form.
class Temoin : public Ui {
  public:
    explicit Temoin(std::unique_ptr<Ui> ui) : ui_(std::move(ui)) {}
    void MsgBox(std::string_view texte, std::string_view titre, Icone icone) override {
        ui_->MsgBox(texte, titre, icone);
    }
    Reponse Question(std::string_view texte, std::string_view titre, Icone icone) override {
        return ui_->Question(texte, titre, icone);
    }
    void Montrer(const Formulaire& formulaire, const std::function<void(int)>& agir) override {
        ui_->Montrer(formulaire, [&](int action) {
            ecrire("agir " + std::to_string(action));
            agir(action);
        });
    }
    std::optional<std::size_t> Choisir(std::string_view titre,
                                       const std::vector<EntreeChoix>& entrees) override {
        return ui_->Choisir(titre, entrees);
    }
    void Ouvrir(const std::string& chemin) override { ui_->Ouvrir(chemin); }

  private:
    std::unique_ptr<Ui> ui_;
};

void images(const Run& run) {
    for (const char* image :
         {fichiers::kImageOrdonnance, fichiers::kImageFeuilleDeSoins, fichiers::kImageAutre}) {
        ecrire(std::string("image ") + image +
               (fichier_existe(run.fichier(image)) ? " presente" : " absente"));
    }
}

void capture(const std::string& dossier) {
    Run run = nouveau_run(dossier, std::make_unique<Temoin>(creer_ui([](std::string_view l) {
                              ecrire("journal " + std::string(l));
                          })));
    for (const char* image :
         {fichiers::kImageOrdonnance, fichiers::kImageFeuilleDeSoins, fichiers::kImageAutre}) {
        ecrire_fichier(run.fichier(image), "\xFF\xD8\xFF\xD9");
    }

    const Reponse r = run.ui->Question(
        "ATTENTION : ORDONNANCE\nInsérer l'ordonnance puis <OUI>\n\nEn cliquant sur <NON> "
        "l'information Collecte Papier sera automatiquement insérée",
        "SCOR Ordonnance", Icone::Question);
    ecrire(std::string("reponse ") + (r == Reponse::Oui   ? "Oui"
                                      : r == Reponse::Non ? "Non"
                                                          : "Annuler"));
    run.ui->MsgBox("Le document Ordonnance\ndépasse la taille autorisée de 250 Ko",
                   "Taille incorrecte", Icone::Critique);
    run.ui->MsgBox("Le fichier : " + run.fichier(fichiers::kPapierCollecte) +
                       "\nnon présent ! Veuillez Contacter le Support technique",
                   "Reponse", Icone::Critique);

    // The other attachment as a collected paper, to show that state too.
    Documents_SCOR(run, {"", "", "M"});
    images(run);
    Document_Ordo2(run, "");
    for (int i = 0; i < 2; ++i) {
        const std::optional<std::string> code = AutrePJ(run);
        ecrire("AutrePJ " + code.value_or("aucune"));
    }
}

}  // namespace
}  // namespace sv140

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: sv140-fenetres PROGRAM_FOLDER\n", stderr);
        return 2;
    }
    // Lines as written: the script reads UTF-8 lines ending in LF.
    _setmode(_fileno(stdout), _O_BINARY);
    std::atomic<bool> fini{false};
    std::thread surveillant(sv140::surveiller, ::GetCurrentThreadId(), std::cref(fini));
    sv140::capture(argv[1]);
    fini = true;
    surveillant.join();
    sv140::ecrire("termine");
    return 0;
}
