// Files, folders, processes, locks and shared libraries: the operating system as the
// bridge sees it. Paths are UTF-8 text.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sv140 {

/// The platform's path separator ('/' on Linux, '\\' on Windows).
char separateur();
/// `dossier` + separator + `nom`.
std::string joindre(std::string_view dossier, std::string_view nom);
/// The folder holding `chemin` (its last component removed; either separator).
std::string dossier_parent(std::string_view chemin);

/// The folder of the running executable.
std::string dossier_programme();
/// The command-line text as the host passed it, without the program name. On Linux,
/// the arguments joined with single blanks.
std::string ligne_de_commande(int argc, char** argv);

bool fichier_existe(const std::string& chemin);
bool dossier_existe(const std::string& chemin);
/// Creates one folder (its parent must exist). True when it exists afterwards.
bool creer_dossier(const std::string& chemin);
bool supprimer_fichier(const std::string& chemin);

/// Whether the file name `nom` matches `motif`, where `*` stands for any run of
/// characters and `?` for exactly one. Case is ignored for ASCII and accented Latin
/// letters, as the Windows file system ignores it, so that both platforms find the
/// same files.
bool nom_correspond(std::string_view nom, std::string_view motif);
/// The names (without folder) of the files of `dossier` that match `motif`, in byte
/// order; folders are left out. Empty when the folder cannot be read.
std::vector<std::string> lister_fichiers(const std::string& dossier, std::string_view motif);
/// Deletes the files of `dossier` that match `motif`, never a folder. Returns how many
/// were removed; a file that cannot be deleted stays and is not counted.
int supprimer_fichiers(const std::string& dossier, std::string_view motif);
/// Whole file as bytes; false when it cannot be read.
bool lire_fichier(const std::string& chemin, std::string& octets);
/// Replaces the file with these bytes; false on failure.
bool ecrire_fichier(const std::string& chemin, std::string_view octets);
/// Appends bytes, creating the file when missing.
bool ajouter_au_fichier(const std::string& chemin, std::string_view octets);

/// Renames the file `source` onto `destination`, replacing it in one step, so that
/// nobody sees a half-written `destination`. Both must be in the same folder's file
/// system. False on failure, `source` then left as it was.
bool remplacer_fichier(const std::string& source, const std::string& destination);

/// `chemin` as the C library's fopen takes it: on Windows the ANSI code page's text
/// (or the 8.3 short name where that code page lacks a character of an existing
/// path); on Linux `chemin` itself.
std::string chemin_ansi(const std::string& chemin);

/// Copies a file; with `echec_si_existe`, fails when the destination exists (the
/// Win32 CopyFile contract). True on success.
bool copier_fichier_systeme(const std::string& source, const std::string& destination,
                            bool echec_si_existe);
/// Removes from `dossier` the partial copies that `copier_fichier_systeme` left there
/// when its process was killed midway, never one that a live process, of this
/// workstation or another, is still writing. Returns how many were removed.
int supprimer_copies_abandonnees(const std::string& dossier);

/// How a program is started by `lancer_programme`.
struct Lancement {
    /// The arguments after the program name, passed each as one word, blanks and
    /// quotes included.
    std::vector<std::string> arguments;
    /// File that receives the program's standard output and error (created or
    /// replaced); "" leaves both as this process has them.
    std::string sortie;
    /// Standard input read from the null device, so that a console question sees its
    /// end at once; otherwise this process's input is shared.
    bool entree_vide = false;
    /// A file read as standard input instead (the answers to the questions a program
    /// asks on its console); "" for none.
    std::string entree;
    /// "NAME=value" entries added to this process's environment for the program,
    /// each replacing a variable of the same name.
    std::vector<std::string> environnement;
};

/// Starts `programme` and waits for its end. Linux runs exactly that path; Windows
/// also finds a bare name the way its own command lines do (".exe" added, PATH).
/// Returns its exit code; 128 + the signal's number for a program killed by a signal
/// (Linux); -1 when it could not be started, including when `sortie` cannot be
/// created.
int lancer_programme(const std::string& programme, const Lancement& lancement);

/// Starts a command line and waits for its end. Words are separated by blanks outside
/// double quotes; the quotes are dropped and "" is an empty word; the first word is
/// the program. Returns the exit code, or -1 when the program could not be started.
int lancer_et_attendre_processus(const std::string& ligne);

/// Opens a document with the program the optician's desktop gives its kind (the
/// image viewer) and does not wait for it. Linux: `xdg-open`, only when a display is
/// there; Windows: the shell's "open". False when nothing could be started.
bool ouvrir_document(const std::string& chemin);

/// Gives a copied program file the right to run. False when it cannot (true on
/// Windows, where no such right exists).
bool rendre_executable(const std::string& chemin);

/// `chemin` made absolute against the current folder (the path need not exist);
/// `chemin` itself when the current folder cannot be read.
std::string chemin_absolu(const std::string& chemin);

/// `chemin` as a database driver of this machine reads it. The SQLite ODBC driver that
/// Wine's ODBC reaches is a library of the underlying system, which does not know
/// drive letters: there it gets the system's own path. Elsewhere, `chemin` itself.
std::string chemin_pour_pilote(const std::string& chemin);

/// An exclusive lock on a file, held until destruction. The file's first byte is a mark
/// its holder may set: it stays when the holder is killed.
class Verrou {
  public:
    virtual ~Verrou() = default;
    /// The file's first byte, '\0' for an empty file.
    virtual char marque() = 0;
    /// Writes `m` as the file's first byte. False when it could not be written.
    virtual bool marquer(char m) = 0;
};
/// Takes the lock on `chemin` (created when missing), waiting at most `delai`.
/// Null when it could not be had in time.
std::unique_ptr<Verrou> prendre_verrou(const std::string& chemin, std::chrono::milliseconds delai);

/// A shared library loaded by full path.
class Bibliotheque {
  public:
    virtual ~Bibliotheque() = default;
    /// Address of an exported symbol, or null.
    virtual void* symbole(const char* nom) = 0;
};
/// Loads a library by its full path; null with `raison` filled on failure.
std::unique_ptr<Bibliotheque> charger_bibliotheque(const std::string& chemin, std::string& raison);

/// Value of an environment variable, "" when unset.
std::string variable_environnement(const char* nom);

}  // namespace sv140
