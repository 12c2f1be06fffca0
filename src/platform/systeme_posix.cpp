// Files, folders, processes, locks and shared libraries on Linux.
#include "platform/systeme.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

extern char** environ;

namespace sv140 {

namespace {

/// The name of a copy while it is written, beside its destination. Short, because the
/// destination's own name may already use the whole length a file system allows for
/// one component.
constexpr const char* kPrefixeCopie = ".sv140-copie-";

/// A file descriptor closed on scope exit.
class Descripteur {
  public:
    explicit Descripteur(int fd = -1) : fd_(fd) {}
    ~Descripteur() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    Descripteur(const Descripteur&) = delete;
    Descripteur& operator=(const Descripteur&) = delete;

    int get() const { return fd_; }
    bool valide() const { return fd_ >= 0; }
    /// Gives the descriptor away; it is no longer closed here.
    int liberer() {
        int fd = fd_;
        fd_ = -1;
        return fd;
    }
    /// Closes now and reports whether the close succeeded (a late write error shows
    /// up here on some file systems).
    bool fermer() {
        int fd = fd_;
        fd_ = -1;
        return fd < 0 || ::close(fd) == 0;
    }

  private:
    int fd_;
};

int ouvrir(const std::string& chemin, int drapeaux, mode_t mode = 0666) {
    int fd;
    do {
        fd = ::open(chemin.c_str(), drapeaux | O_CLOEXEC, mode);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

bool ecrire_tout(int fd, std::string_view octets) {
    const char* p = octets.data();
    std::size_t reste = octets.size();
    while (reste > 0) {
        ssize_t n = ::write(fd, p, reste);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        p += n;
        reste -= static_cast<std::size_t>(n);
    }
    return true;
}

bool lire_tout(int fd, std::string& octets) {
    octets.clear();
    char tampon[65536];
    for (;;) {
        ssize_t n = ::read(fd, tampon, sizeof tampon);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        if (n == 0) {
            return true;
        }
        octets.append(tampon, static_cast<std::size_t>(n));
    }
}

bool existe(const std::string& chemin) {
    struct stat st;
    return ::lstat(chemin.c_str(), &st) == 0;
}

class VerrouPosix : public Verrou {
  public:
    explicit VerrouPosix(int fd) : fd_(fd) {}
    // Closing the descriptor releases an open-file-description lock.
    ~VerrouPosix() override = default;
    char marque() override {
        char m = '\0';
        return ::pread(fd_.get(), &m, 1, 0) == 1 ? m : '\0';
    }
    bool marquer(char m) override { return ::pwrite(fd_.get(), &m, 1, 0) == 1; }

  private:
    Descripteur fd_;
};

class BibliothequePosix : public Bibliotheque {
  public:
    explicit BibliothequePosix(void* poignee) : poignee_(poignee) {}
    ~BibliothequePosix() override { ::dlclose(poignee_); }
    BibliothequePosix(const BibliothequePosix&) = delete;
    BibliothequePosix& operator=(const BibliothequePosix&) = delete;

    void* symbole(const char* nom) override { return ::dlsym(poignee_, nom); }

  private:
    void* poignee_;
};

}  // namespace

char separateur() {
    return '/';
}

std::string dossier_programme() {
    std::vector<char> tampon(4096);
    for (;;) {
        ssize_t n = ::readlink("/proc/self/exe", tampon.data(), tampon.size());
        if (n < 0) {
            return std::string();
        }
        if (static_cast<std::size_t>(n) < tampon.size()) {
            return dossier_parent(std::string_view(tampon.data(), static_cast<std::size_t>(n)));
        }
        tampon.resize(tampon.size() * 2);
    }
}

std::string ligne_de_commande(int argc, char** argv) {
    std::string ligne;
    for (int i = 1; i < argc; ++i) {
        if (i > 1) {
            ligne += ' ';
        }
        ligne += argv[i];
    }
    return ligne;
}

bool fichier_existe(const std::string& chemin) {
    struct stat st;
    return ::stat(chemin.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

bool dossier_existe(const std::string& chemin) {
    struct stat st;
    return ::stat(chemin.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool creer_dossier(const std::string& chemin) {
    ::mkdir(chemin.c_str(), 0777);
    return dossier_existe(chemin);
}

bool supprimer_fichier(const std::string& chemin) {
    return ::unlink(chemin.c_str()) == 0;
}

std::vector<std::string> lister_fichiers(const std::string& dossier, std::string_view motif) {
    std::vector<std::string> noms;
    DIR* d = ::opendir(dossier.c_str());
    if (d == nullptr) {
        return noms;
    }
    while (const struct dirent* entree = ::readdir(d)) {
        const std::string nom = entree->d_name;
        // fichier_existe follows a link to what it names: a link to a folder is a folder.
        if (nom != "." && nom != ".." && nom_correspond(nom, motif) &&
            fichier_existe(joindre(dossier, nom))) {
            noms.push_back(nom);
        }
    }
    ::closedir(d);
    std::sort(noms.begin(), noms.end());
    return noms;
}

bool lire_fichier(const std::string& chemin, std::string& octets) {
    Descripteur fd(ouvrir(chemin, O_RDONLY));
    return fd.valide() && lire_tout(fd.get(), octets);
}

bool ecrire_fichier(const std::string& chemin, std::string_view octets) {
    Descripteur fd(ouvrir(chemin, O_WRONLY | O_CREAT | O_TRUNC));
    return fd.valide() && ecrire_tout(fd.get(), octets) && fd.fermer();
}

bool ajouter_au_fichier(const std::string& chemin, std::string_view octets) {
    Descripteur fd(ouvrir(chemin, O_WRONLY | O_CREAT | O_APPEND));
    return fd.valide() && ecrire_tout(fd.get(), octets) && fd.fermer();
}

bool remplacer_fichier(const std::string& source, const std::string& destination) {
    return ::rename(source.c_str(), destination.c_str()) == 0;
}

std::string chemin_ansi(const std::string& chemin) {
    return chemin;
}

bool copier_fichier_systeme(const std::string& source, const std::string& destination,
                            bool echec_si_existe) {
    if (echec_si_existe && existe(destination)) {
        return false;
    }
    Descripteur entree(ouvrir(source, O_RDONLY));
    struct stat st;
    if (!entree.valide() || ::fstat(entree.get(), &st) != 0 || !S_ISREG(st.st_mode)) {
        return false;
    }

    // The copy is written under a temporary name in the destination folder and renamed
    // at the end, so that the host never sees a half-copied file. It holds a lock on
    // that file until then: a later run that finds the file unlocked knows its writer
    // is dead (supprimer_copies_abandonnees). A file cleared between its creation and
    // its lock is made again under another name.
    std::string dossier = dossier_parent(destination);
    std::string temporaire;
    int pris = -1;
    for (int essai = 0; essai < 3 && pris < 0; ++essai) {
        temporaire = joindre(dossier.empty() ? std::string_view(".") : dossier,
                             std::string(kPrefixeCopie) + "XXXXXX");
        Descripteur fd(::mkostemp(temporaire.data(), O_CLOEXEC));
        struct stat lie;
        if (!fd.valide()) {
            return false;
        }
        // Where the file system has no such locks the copy goes on without one, and no
        // run ever clears it.
        (void)::flock(fd.get(), LOCK_EX);
        if (::fstat(fd.get(), &lie) != 0 || lie.st_nlink > 0) {
            pris = fd.liberer();
        }
    }
    if (pris < 0) {
        return false;
    }
    Descripteur sortie(pris);
    // The lock outlives the close that reports late write errors, until the copy has
    // its name.
    Descripteur verrou(::dup(pris));
    bool ecrit = true;
    char tampon[65536];
    for (;;) {
        ssize_t n = ::read(entree.get(), tampon, sizeof tampon);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            ecrit = n == 0;
            break;
        }
        if (!ecrire_tout(sortie.get(), std::string_view(tampon, static_cast<std::size_t>(n)))) {
            ecrit = false;
            break;
        }
    }
    if (ecrit) {
        ::fchmod(sortie.get(), st.st_mode & 07777);
        const struct timespec dates[2] = {st.st_atim, st.st_mtim};
        ::futimens(sortie.get(), dates);
        ecrit = sortie.fermer();
    }
    if (!ecrit) {
        ::unlink(temporaire.c_str());
        return false;
    }

    bool place;
    if (echec_si_existe) {
        // link() refuses an existing destination atomically; on a file system
        // without hard links, fall back to checking first.
        if (::link(temporaire.c_str(), destination.c_str()) == 0) {
            place = true;
        } else if (errno == EEXIST) {
            place = false;
        } else {
            place = !existe(destination) && ::rename(temporaire.c_str(), destination.c_str()) == 0;
        }
    } else {
        place = ::rename(temporaire.c_str(), destination.c_str()) == 0;
    }
    ::unlink(temporaire.c_str());
    return place;
}

int supprimer_copies_abandonnees(const std::string& dossier) {
    int supprimees = 0;
    for (const std::string& nom : lister_fichiers(dossier, std::string(kPrefixeCopie) + "*")) {
        const std::string chemin = joindre(dossier, nom);
        Descripteur fd(ouvrir(chemin, O_RDONLY));
        if (fd.valide() && ::flock(fd.get(), LOCK_EX | LOCK_NB) == 0 &&
            ::unlink(chemin.c_str()) == 0) {
            ++supprimees;
        }
    }
    return supprimees;
}

int lancer_programme(const std::string& programme, const Lancement& lancement) {
    std::vector<std::string> mots;
    mots.push_back(programme);
    mots.insert(mots.end(), lancement.arguments.begin(), lancement.arguments.end());
    std::vector<char*> argv;
    for (std::string& mot : mots) {
        argv.push_back(mot.data());
    }
    argv.push_back(nullptr);

    std::vector<std::string> variables;
    for (char** e = environ; *e != nullptr; ++e) {
        const std::string_view variable(*e);
        const std::string_view nom = variable.substr(0, variable.find('=') + 1);
        bool remplacee = false;
        for (const std::string& ajout : lancement.environnement) {
            if (std::string_view(ajout).substr(0, ajout.find('=') + 1) == nom) {
                remplacee = true;
                break;
            }
        }
        if (!remplacee) {
            variables.emplace_back(variable);
        }
    }
    variables.insert(variables.end(), lancement.environnement.begin(),
                     lancement.environnement.end());
    std::vector<char*> envp;
    for (std::string& variable : variables) {
        envp.push_back(variable.data());
    }
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    if (::posix_spawn_file_actions_init(&actions) != 0) {
        return -1;
    }
    if (!lancement.entree.empty()) {
        ::posix_spawn_file_actions_addopen(&actions, 0, lancement.entree.c_str(), O_RDONLY, 0);
    } else if (lancement.entree_vide) {
        ::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    }
    if (!lancement.sortie.empty()) {
        ::posix_spawn_file_actions_addopen(&actions, 1, lancement.sortie.c_str(),
                                           O_WRONLY | O_CREAT | O_TRUNC, 0666);
        ::posix_spawn_file_actions_adddup2(&actions, 1, 2);
    }
    // The C library reports a failed exec or a file it could not open as the result,
    // so a program that did not start is never mistaken for one that exited 127.
    pid_t pid = 0;
    const int erreur =
        ::posix_spawn(&pid, programme.c_str(), &actions, nullptr, argv.data(), envp.data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (erreur != 0) {
        return -1;
    }

    int statut = 0;
    pid_t fini;
    do {
        fini = ::waitpid(pid, &statut, 0);
    } while (fini < 0 && errno == EINTR);
    if (fini != pid) {
        return -1;
    }
    if (WIFEXITED(statut)) {
        return WEXITSTATUS(statut);
    }
    // A program ended by a signal has no exit code; report it as a shell would.
    return WIFSIGNALED(statut) ? 128 + WTERMSIG(statut) : -1;
}

bool ouvrir_document(const std::string& chemin) {
    if (variable_environnement("DISPLAY").empty()) {
        return false;
    }
    // The viewer stays open while the form waits for the next action: a shell starts
    // xdg-open in the background and ends at once. Its input is the null device, so
    // that it never takes the answers meant for the form.
    Lancement lancement;
    lancement.arguments = {
        "-c", "command -v xdg-open >/dev/null || exit 127; xdg-open \"$1\" >/dev/null 2>&1 &", "sh",
        chemin};
    lancement.entree_vide = true;
    return lancer_programme("/bin/sh", lancement) == 0;
}

bool rendre_executable(const std::string& chemin) {
    return ::chmod(chemin.c_str(), 0755) == 0;
}

std::string chemin_pour_pilote(const std::string& chemin) {
    return chemin;
}

std::string chemin_absolu(const std::string& chemin) {
    std::string absolu = chemin;
    if (chemin.empty() || chemin.front() != '/') {
        std::vector<char> courant(4096);
        while (::getcwd(courant.data(), courant.size()) == nullptr) {
            if (errno != ERANGE) {
                return chemin;
            }
            courant.resize(courant.size() * 2);
        }
        absolu = courant.data();
        std::string_view relatif = chemin;
        while (relatif.substr(0, 2) == "./") {
            relatif.remove_prefix(2);
        }
        if (!relatif.empty() && relatif != ".") {
            if (absolu.back() != '/') {
                absolu += '/';
            }
            absolu += relatif;
        }
    }
    while (absolu.size() > 1 && absolu.back() == '/') {
        absolu.pop_back();
    }
    return absolu;
}

std::unique_ptr<Verrou> prendre_verrou(const std::string& chemin, std::chrono::milliseconds delai) {
    Descripteur fd(ouvrir(chemin, O_RDWR | O_CREAT));
    if (!fd.valide()) {
        return nullptr;
    }
    // An open-file-description lock conflicts with any other open of the file, in
    // this process or another, and goes away with the descriptor.
    struct flock verrou;
    std::memset(&verrou, 0, sizeof verrou);
    verrou.l_type = F_WRLCK;
    verrou.l_whence = SEEK_SET;
    verrou.l_start = 0;
    verrou.l_len = 0;
    // The wait is counted in attempts, not read from a clock: a clock can stand still
    // (a machine whose time is fixed for a test), a count cannot.
    constexpr std::chrono::milliseconds kPas(20);
    for (auto essais = delai / kPas;; --essais) {
        if (::fcntl(fd.get(), F_OFD_SETLK, &verrou) == 0) {
            return std::make_unique<VerrouPosix>(fd.liberer());
        }
        if ((errno != EACCES && errno != EAGAIN && errno != EINTR) || essais <= 0) {
            return nullptr;
        }
        std::this_thread::sleep_for(kPas);
    }
}

std::unique_ptr<Bibliotheque> charger_bibliotheque(const std::string& chemin, std::string& raison) {
    // A name without a folder would make dlopen search the system's library path.
    std::string complet = chemin.find('/') == std::string::npos ? "./" + chemin : chemin;
    ::dlerror();
    void* poignee = ::dlopen(complet.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (poignee == nullptr) {
        const char* texte = ::dlerror();
        raison = texte != nullptr ? texte : "cannot load " + chemin;
        return nullptr;
    }
    raison.clear();
    return std::make_unique<BibliothequePosix>(poignee);
}

std::string variable_environnement(const char* nom) {
    const char* valeur = std::getenv(nom);
    return valeur != nullptr ? valeur : std::string();
}

}  // namespace sv140
