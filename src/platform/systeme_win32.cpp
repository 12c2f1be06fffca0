// Files, folders, processes, locks and shared libraries on Windows, through the
// wide-character system interfaces so that accented shop folders keep their names.
#include "platform/systeme.h"

#include "platform/windows_win32.h"

#include <shellapi.h>

#include <algorithm>
#include <cwchar>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/encodage.h"

namespace sv140 {

namespace {

/// A kernel handle closed on scope exit.
class Poignee {
  public:
    explicit Poignee(HANDLE h = INVALID_HANDLE_VALUE) : h_(h) {}
    ~Poignee() {
        if (valide()) {
            ::CloseHandle(h_);
        }
    }
    Poignee(const Poignee&) = delete;
    Poignee& operator=(const Poignee&) = delete;
    Poignee(Poignee&& autre) noexcept : h_(autre.liberer()) {}
    Poignee& operator=(Poignee&& autre) noexcept {
        if (this != &autre) {
            fermer();
            h_ = autre.liberer();
        }
        return *this;
    }

    HANDLE get() const { return h_; }
    bool valide() const { return h_ != INVALID_HANDLE_VALUE && h_ != nullptr; }
    /// Gives the handle away; it is no longer closed here.
    HANDLE liberer() {
        HANDLE h = h_;
        h_ = INVALID_HANDLE_VALUE;
        return h;
    }
    /// Closes now and reports whether the close succeeded.
    bool fermer() {
        HANDLE h = h_;
        h_ = INVALID_HANDLE_VALUE;
        return h == INVALID_HANDLE_VALUE || h == nullptr || ::CloseHandle(h) != 0;
    }

  private:
    HANDLE h_;
};

bool ecrire_tout(HANDLE h, std::string_view octets) {
    const char* p = octets.data();
    std::size_t reste = octets.size();
    while (reste > 0) {
        const DWORD morceau = reste > 0x40000000u ? 0x40000000u : static_cast<DWORD>(reste);
        DWORD ecrits = 0;
        if (!::WriteFile(h, p, morceau, &ecrits, nullptr) || ecrits == 0) {
            return false;
        }
        p += ecrits;
        reste -= ecrits;
    }
    return true;
}

std::string message_systeme(DWORD code) {
    wchar_t* tampon = nullptr;
    const DWORD n = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(&tampon), 0, nullptr);
    std::string texte;
    if (n > 0 && tampon != nullptr) {
        texte = etroit(tampon, n);
    }
    if (tampon != nullptr) {
        ::LocalFree(tampon);
    }
    while (!texte.empty() &&
           (texte.back() == '\r' || texte.back() == '\n' || texte.back() == ' ')) {
        texte.pop_back();
    }
    return texte + " (" + std::to_string(code) + ")";
}

/// Lets the system deliver window messages while the bridge waits, so that the host
/// does not see a frozen program.
void traiter_messages() {
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

/// One argument written so that the C runtime's command-line splitting gives it back
/// unchanged: quoted when it holds blanks or quotes or is empty, a quote preceded by a
/// backslash, and the backslashes before a quote or the closing quote doubled.
std::wstring argument_cite(const std::wstring& argument) {
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
        return argument;
    }
    std::wstring cite = L"\"";
    std::size_t barres = 0;
    for (wchar_t c : argument) {
        if (c == L'\\') {
            ++barres;
            continue;
        }
        if (c == L'"') {
            cite.append(barres * 2 + 1, L'\\');
        } else {
            cite.append(barres, L'\\');
        }
        barres = 0;
        cite.push_back(c);
    }
    cite.append(barres * 2, L'\\');
    cite.push_back(L'"');
    return cite;
}

/// An inheritable copy of `h`, or an invalid handle when `h` is none.
Poignee copie_heritable(HANDLE h) {
    HANDLE copie = nullptr;
    if (h == nullptr || h == INVALID_HANDLE_VALUE ||
        !::DuplicateHandle(::GetCurrentProcess(), h, ::GetCurrentProcess(), &copie, 0, TRUE,
                           DUPLICATE_SAME_ACCESS)) {
        return Poignee();
    }
    return Poignee(copie);
}

Poignee copie_heritable(DWORD flux) {
    return copie_heritable(::GetStdHandle(flux));
}

/// The name part of "NAME=value", "=" included. Entries such as "=C:=C:\\x" (the
/// current folder of each drive) start with '=' that belongs to the name.
std::wstring_view nom_de_variable(std::wstring_view variable) {
    const std::size_t egal = variable.find(L'=', 1);
    return variable.substr(0, egal == std::wstring_view::npos ? variable.size() : egal + 1);
}

bool meme_nom(std::wstring_view a, std::wstring_view b) {
    return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                  static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

/// This process's environment with `ajouts` added or replacing, as the double-nul
/// terminated block CreateProcessW takes. The system expects it sorted by name without
/// regard to case.
std::vector<wchar_t> bloc_environnement(const std::vector<std::string>& ajouts) {
    std::vector<std::wstring> variables;
    for (const std::string& ajout : ajouts) {
        variables.push_back(large(ajout));
    }
    if (wchar_t* actuel = ::GetEnvironmentStringsW()) {
        for (const wchar_t* p = actuel; *p != L'\0'; p += std::wcslen(p) + 1) {
            const std::wstring_view variable(p);
            bool remplacee = false;
            for (std::size_t i = 0; i < ajouts.size() && !remplacee; ++i) {
                remplacee = meme_nom(nom_de_variable(variables[i]), nom_de_variable(variable));
            }
            if (!remplacee) {
                variables.emplace_back(variable);
            }
        }
        ::FreeEnvironmentStringsW(actuel);
    }
    std::stable_sort(
        variables.begin(), variables.end(), [](const std::wstring& a, const std::wstring& b) {
            const std::wstring_view na = nom_de_variable(a);
            const std::wstring_view nb = nom_de_variable(b);
            return ::CompareStringOrdinal(na.data(), static_cast<int>(na.size()), nb.data(),
                                          static_cast<int>(nb.size()), TRUE) == CSTR_LESS_THAN;
        });
    std::vector<wchar_t> bloc;
    for (const std::wstring& variable : variables) {
        bloc.insert(bloc.end(), variable.begin(), variable.end());
        bloc.push_back(L'\0');
    }
    bloc.push_back(L'\0');
    return bloc;
}

class VerrouWin32 : public Verrou {
  public:
    explicit VerrouWin32(HANDLE h) : h_(h) {}
    ~VerrouWin32() override {
        OVERLAPPED debut{};
        ::UnlockFileEx(h_, 0, MAXDWORD, MAXDWORD, &debut);
        ::CloseHandle(h_);
    }
    VerrouWin32(const VerrouWin32&) = delete;
    VerrouWin32& operator=(const VerrouWin32&) = delete;
    char marque() override {
        char m = '\0';
        OVERLAPPED debut{};
        DWORD lus = 0;
        return ::ReadFile(h_, &m, 1, &lus, &debut) && lus == 1 ? m : '\0';
    }
    bool marquer(char m) override {
        OVERLAPPED debut{};
        DWORD ecrits = 0;
        return ::WriteFile(h_, &m, 1, &ecrits, &debut) && ecrits == 1;
    }

  private:
    HANDLE h_;
};

class BibliothequeWin32 : public Bibliotheque {
  public:
    explicit BibliothequeWin32(HMODULE module) : module_(module) {}
    ~BibliothequeWin32() override { ::FreeLibrary(module_); }
    BibliothequeWin32(const BibliothequeWin32&) = delete;
    BibliothequeWin32& operator=(const BibliothequeWin32&) = delete;

    void* symbole(const char* nom) override {
        return reinterpret_cast<void*>(::GetProcAddress(module_, nom));
    }

  private:
    HMODULE module_;
};

}  // namespace

char separateur() {
    return '\\';
}

std::string dossier_programme() {
    std::vector<wchar_t> tampon(MAX_PATH);
    for (;;) {
        const DWORD n =
            ::GetModuleFileNameW(nullptr, tampon.data(), static_cast<DWORD>(tampon.size()));
        if (n == 0) {
            return std::string();
        }
        if (n < tampon.size()) {
            return dossier_parent(etroit(tampon.data(), n));
        }
        tampon.resize(tampon.size() * 2);
    }
}

std::string ligne_de_commande(int, char**) {
    // The host's text as it passed it: the command line less the program name, which
    // is quoted when its path holds blanks, and the blanks that follow it.
    const wchar_t* p = ::GetCommandLineW();
    if (*p == L'"') {
        ++p;
        while (*p != L'\0' && *p != L'"') {
            ++p;
        }
        if (*p == L'"') {
            ++p;
        }
    } else {
        while (*p != L'\0' && *p != L' ' && *p != L'\t') {
            ++p;
        }
    }
    while (*p == L' ' || *p == L'\t') {
        ++p;
    }
    return etroit(p, std::wcslen(p));
}

bool fichier_existe(const std::string& chemin) {
    const DWORD attributs = ::GetFileAttributesW(large(chemin).c_str());
    return attributs != INVALID_FILE_ATTRIBUTES && (attributs & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool dossier_existe(const std::string& chemin) {
    const DWORD attributs = ::GetFileAttributesW(large(chemin).c_str());
    return attributs != INVALID_FILE_ATTRIBUTES && (attributs & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool creer_dossier(const std::string& chemin) {
    ::CreateDirectoryW(large(chemin).c_str(), nullptr);
    return dossier_existe(chemin);
}

bool supprimer_fichier(const std::string& chemin) {
    return ::DeleteFileW(large(chemin).c_str()) != 0;
}

std::vector<std::string> lister_fichiers(const std::string& dossier, std::string_view motif) {
    std::vector<std::string> noms;
    // Every name is read and matched here rather than by the system's own pattern,
    // which also tries the short 8.3 names: "*.jpg" would find "page.jpeg" there.
    WIN32_FIND_DATAW trouve;
    HANDLE h = ::FindFirstFileExW(large(joindre(dossier, "*")).c_str(), FindExInfoBasic, &trouve,
                                  FindExSearchNameMatch, nullptr, 0);
    if (h == INVALID_HANDLE_VALUE) {
        return noms;
    }
    do {
        if ((trouve.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            std::string nom = etroit(trouve.cFileName, std::wcslen(trouve.cFileName));
            if (nom_correspond(nom, motif)) {
                noms.push_back(std::move(nom));
            }
        }
    } while (::FindNextFileW(h, &trouve));
    ::FindClose(h);
    std::sort(noms.begin(), noms.end());
    return noms;
}

bool lire_fichier(const std::string& chemin, std::string& octets) {
    Poignee h(::CreateFileW(large(chemin).c_str(), GENERIC_READ,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!h.valide()) {
        return false;
    }
    octets.clear();
    char tampon[65536];
    for (;;) {
        DWORD lus = 0;
        if (!::ReadFile(h.get(), tampon, sizeof tampon, &lus, nullptr)) {
            return false;
        }
        if (lus == 0) {
            return true;
        }
        octets.append(tampon, lus);
    }
}

bool ecrire_fichier(const std::string& chemin, std::string_view octets) {
    Poignee h(::CreateFileW(large(chemin).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                            CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return h.valide() && ecrire_tout(h.get(), octets) && h.fermer();
}

bool ajouter_au_fichier(const std::string& chemin, std::string_view octets) {
    Poignee h(::CreateFileW(large(chemin).c_str(), FILE_APPEND_DATA,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    return h.valide() && ecrire_tout(h.get(), octets) && h.fermer();
}

bool remplacer_fichier(const std::string& source, const std::string& destination) {
    return ::MoveFileExW(large(source).c_str(), large(destination).c_str(),
                         MOVEFILE_REPLACE_EXISTING) != 0;
}

std::string chemin_ansi(const std::string& chemin) {
    std::wstring texte = large(chemin);
    BOOL perdu = FALSE;
    int n = ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, texte.c_str(), -1, nullptr, 0,
                                  nullptr, &perdu);
    if (perdu) {
        // The short name spells every component in ASCII (when the volume keeps them).
        const DWORD taille = ::GetShortPathNameW(texte.c_str(), nullptr, 0);
        std::wstring court(taille, L'\0');
        if (taille != 0 && ::GetShortPathNameW(texte.c_str(), court.data(), taille) < taille) {
            court.resize(std::wcslen(court.c_str()));
            texte = std::move(court);
            n = ::WideCharToMultiByte(CP_ACP, 0, texte.c_str(), -1, nullptr, 0, nullptr, nullptr);
        }
    }
    if (n <= 0) {
        return std::string();
    }
    std::string ansi(static_cast<std::size_t>(n), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, texte.c_str(), -1, ansi.data(), n, nullptr, nullptr);
    ansi.resize(static_cast<std::size_t>(n) - 1);
    return ansi;
}

namespace {
constexpr const char* kPrefixeCopie = ".sv140-copie-";
// A copy under our name this old was left by a killed run: a live one gets its name
// within the second.
constexpr ULONGLONG kAgeCopieAbandonnee = 60ULL * 10000000ULL;  // in 100 ns
}  // namespace

bool copier_fichier_systeme(const std::string& source, const std::string& destination,
                            bool echec_si_existe) {
    // The copy is written under a short name of ours in the destination folder, then
    // given its name in one step: a run killed midway never leaves the host half an
    // answer, nor the archive half an exchange.
    static unsigned long numero = 0;
    const std::string dossier = dossier_parent(destination);
    const std::wstring temporaire = large(joindre(
        dossier.empty() ? std::string_view(".") : dossier,
        kPrefixeCopie + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++numero)));
    if (!::CopyFileW(large(source).c_str(), temporaire.c_str(), FALSE)) {
        ::DeleteFileW(temporaire.c_str());
        return false;
    }
    // Without MOVEFILE_REPLACE_EXISTING the move refuses an existing destination, in the
    // same step.
    const bool place = ::MoveFileExW(temporaire.c_str(), large(destination).c_str(),
                                     echec_si_existe ? 0 : MOVEFILE_REPLACE_EXISTING) != 0;
    if (!place) {
        ::DeleteFileW(temporaire.c_str());
    }
    return place;
}

int supprimer_copies_abandonnees(const std::string& dossier) {
    FILETIME maintenant;
    ::GetSystemTimeAsFileTime(&maintenant);
    const auto valeur = [](const FILETIME& t) {
        return (static_cast<ULONGLONG>(t.dwHighDateTime) << 32) | t.dwLowDateTime;
    };
    int supprimees = 0;
    WIN32_FIND_DATAW trouve;
    HANDLE h = ::FindFirstFileExW(large(joindre(dossier, std::string(kPrefixeCopie) + "*")).c_str(),
                                  FindExInfoBasic, &trouve, FindExSearchNameMatch, nullptr, 0);
    if (h == INVALID_HANDLE_VALUE) {
        return 0;
    }
    do {
        // A copy still being written is open without delete sharing: it cannot go.
        if ((trouve.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 &&
            valeur(maintenant) - valeur(trouve.ftCreationTime) > kAgeCopieAbandonnee &&
            ::DeleteFileW(
                large(joindre(dossier, etroit(trouve.cFileName, std::wcslen(trouve.cFileName))))
                    .c_str())) {
            ++supprimees;
        }
    } while (::FindNextFileW(h, &trouve));
    ::FindClose(h);
    return supprimees;
}

int lancer_programme(const std::string& programme, const Lancement& lancement) {
    std::wstring ligne = L"\"" + large(programme) + L"\"";
    for (const std::string& argument : lancement.arguments) {
        ligne += L' ';
        ligne += argument_cite(large(argument));
    }

    STARTUPINFOW demarrage{};
    demarrage.cb = sizeof demarrage;
    demarrage.dwFlags = STARTF_USESHOWWINDOW;
    demarrage.wShowWindow = SW_SHOWNORMAL;
    DWORD drapeaux = 0;
    BOOL heriter = FALSE;
    Poignee entree, sortie, erreur;
    if (lancement.entree_vide || !lancement.entree.empty() || !lancement.sortie.empty()) {
        SECURITY_ATTRIBUTES heritage{sizeof heritage, nullptr, TRUE};
        if (!lancement.entree.empty()) {
            entree = Poignee(::CreateFileW(large(lancement.entree).c_str(), GENERIC_READ,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE, &heritage,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
            if (!entree.valide()) {
                return -1;
            }
        } else if (lancement.entree_vide) {
            entree =
                Poignee(::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      &heritage, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        } else {
            entree = copie_heritable(STD_INPUT_HANDLE);
        }
        if (!lancement.sortie.empty()) {
            // A process the program starts in turn may keep the output open after the
            // program's end (Wine's desktop process does): it must not stop the caller
            // from removing or replacing the file.
            sortie =
                Poignee(::CreateFileW(large(lancement.sortie).c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      &heritage, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
            if (!sortie.valide()) {
                return -1;
            }
            // Output and error share one handle, hence one file position: their lines
            // interleave as the program writes them.
            erreur = copie_heritable(sortie.get());
            // The program's console output is in the file; it needs no window.
            drapeaux |= CREATE_NO_WINDOW;
        } else {
            sortie = copie_heritable(STD_OUTPUT_HANDLE);
            erreur = copie_heritable(STD_ERROR_HANDLE);
        }
        demarrage.dwFlags |= STARTF_USESTDHANDLES;
        demarrage.hStdInput = entree.valide() ? entree.get() : nullptr;
        demarrage.hStdOutput = sortie.valide() ? sortie.get() : nullptr;
        demarrage.hStdError = erreur.valide() ? erreur.get() : nullptr;
        heriter = TRUE;
    }

    std::vector<wchar_t> bloc;
    if (!lancement.environnement.empty()) {
        bloc = bloc_environnement(lancement.environnement);
        drapeaux |= CREATE_UNICODE_ENVIRONMENT;
    }

    PROCESS_INFORMATION processus{};
    // No application name: a bare program name is found as a typed command would be.
    if (!::CreateProcessW(nullptr, ligne.data(), nullptr, nullptr, heriter, drapeaux,
                          bloc.empty() ? nullptr : bloc.data(), nullptr, &demarrage, &processus)) {
        return -1;
    }
    ::CloseHandle(processus.hThread);
    Poignee h(processus.hProcess);
    // The child holds its own copies now.
    entree.fermer();
    sortie.fermer();
    erreur.fermer();

    // The wait ends on the process's end, not on an exit code: a program that ends
    // with 259 has ended.
    for (;;) {
        const DWORD r =
            ::MsgWaitForMultipleObjects(1, &processus.hProcess, FALSE, INFINITE, QS_ALLINPUT);
        if (r == WAIT_OBJECT_0 + 1) {
            traiter_messages();
            continue;
        }
        if (r != WAIT_OBJECT_0) {
            return -1;
        }
        break;
    }
    DWORD code = 0;
    if (!::GetExitCodeProcess(h.get(), &code)) {
        return -1;
    }
    return static_cast<int>(code);
}

bool ouvrir_document(const std::string& chemin) {
    // Above 32 the shell started something; below, it is an error code.
    const HINSTANCE r =
        ::ShellExecuteW(nullptr, L"open", large(chemin).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(r) > 32;
}

bool rendre_executable(const std::string&) {
    return true;
}

std::string chemin_absolu(const std::string& chemin) {
    const std::wstring relatif = large(chemin);
    const DWORD taille = ::GetFullPathNameW(relatif.c_str(), 0, nullptr, nullptr);
    if (taille == 0) {
        return chemin;
    }
    std::vector<wchar_t> absolu(taille);
    const DWORD ecrit = ::GetFullPathNameW(relatif.c_str(), taille, absolu.data(), nullptr);
    if (ecrit == 0 || ecrit >= taille) {
        return chemin;
    }
    return etroit(absolu.data(), ecrit);
}

std::string chemin_pour_pilote(const std::string& chemin) {
    // Only Wine's kernel32 has this export; on Windows the driver reads Windows paths.
    using VersUnix = char*(__cdecl*)(const wchar_t*);
    static const auto vers_unix = reinterpret_cast<VersUnix>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (vers_unix == nullptr) {
        return chemin;
    }
    char* unix_ = vers_unix(large(chemin_absolu(chemin)).c_str());
    if (unix_ == nullptr) {
        return chemin;
    }
    std::string r = unix_;
    ::HeapFree(::GetProcessHeap(), 0, unix_);
    return r;
}

std::unique_ptr<Verrou> prendre_verrou(const std::string& chemin, std::chrono::milliseconds delai) {
    HANDLE h = ::CreateFileW(large(chemin).c_str(), GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    Poignee fichier(h);
    // Counted in attempts, like the Linux wait: a fixed test clock must not stop it.
    constexpr std::chrono::milliseconds kPas(20);
    for (auto essais = delai / kPas;; --essais) {
        OVERLAPPED debut{};
        if (::LockFileEx(h, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, MAXDWORD,
                         MAXDWORD, &debut)) {
            return std::make_unique<VerrouWin32>(fichier.liberer());
        }
        if (::GetLastError() != ERROR_LOCK_VIOLATION || essais <= 0) {
            return nullptr;
        }
        ::Sleep(static_cast<DWORD>(kPas.count()));
    }
}

std::unique_ptr<Bibliotheque> charger_bibliotheque(const std::string& chemin, std::string& raison) {
    HMODULE module = ::LoadLibraryW(large(chemin).c_str());
    if (module == nullptr) {
        raison = chemin + " : " + message_systeme(::GetLastError());
        return nullptr;
    }
    raison.clear();
    return std::make_unique<BibliothequeWin32>(module);
}

std::string variable_environnement(const char* nom) {
    const std::wstring nom_large = large(nom);
    const DWORD taille = ::GetEnvironmentVariableW(nom_large.c_str(), nullptr, 0);
    if (taille == 0) {
        return std::string();
    }
    std::vector<wchar_t> valeur(taille);
    const DWORD n = ::GetEnvironmentVariableW(nom_large.c_str(), valeur.data(), taille);
    if (n == 0 || n >= taille) {
        return std::string();
    }
    return etroit(valeur.data(), n);
}

}  // namespace sv140
