#include <windows.h>

#include "platform/encodage.h"
#include "shop/processus.h"

namespace sv140::shop {
namespace {

std::wstring large(const std::string& utf8) {
    const std::u16string texte = utf8_vers_utf16(utf8);
    return std::wstring(texte.begin(), texte.end());
}

std::string etroit(const std::wstring& texte) {
    return utf16_vers_utf8(std::u16string(texte.begin(), texte.end()));
}

// One argument quoted the way the C runtime splits a command line back.
std::wstring argument_cite(const std::wstring& argument) {
    if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos) {
        return argument;
    }
    std::wstring cite = L"\"";
    std::size_t barres = 0;
    for (wchar_t c : argument) {
        if (c == L'\\') {
            ++barres;
        } else if (c == L'"') {
            cite.append(barres * 2 + 1, L'\\');
            barres = 0;
        } else {
            barres = 0;
        }
        cite.push_back(c);
    }
    cite.append(barres, L'\\');
    cite.push_back(L'"');
    return cite;
}

}  // namespace

int lancer_pont(const std::string& programme, const std::vector<std::string>& arguments,
                const std::string& sortie) {
    std::wstring ligne = argument_cite(large(programme));
    for (const std::string& argument : arguments) {
        ligne += L" " + argument_cite(large(argument));
    }

    SECURITY_ATTRIBUTES heritage{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE entree = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &heritage,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    HANDLE fichier = CreateFileW(large(sortie).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &heritage,
                                 CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);

    STARTUPINFOW demarrage{};
    demarrage.cb = sizeof(demarrage);
    demarrage.dwFlags = STARTF_USESTDHANDLES;
    demarrage.hStdInput = entree;
    demarrage.hStdOutput = fichier;
    demarrage.hStdError = fichier;
    PROCESS_INFORMATION processus{};

    // The child inherits the environment: the bridge then talks on the console.
    SetEnvironmentVariableW(L"SV140_UI", L"console");
    const BOOL lance =
        CreateProcessW(large(programme).c_str(), ligne.data(), nullptr, nullptr, TRUE,
                       CREATE_NO_WINDOW, nullptr, nullptr, &demarrage, &processus);
    if (entree != INVALID_HANDLE_VALUE) {
        CloseHandle(entree);
    }
    if (fichier != INVALID_HANDLE_VALUE) {
        CloseHandle(fichier);
    }
    if (!lance) {
        return -1;
    }
    WaitForSingleObject(processus.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(processus.hProcess, &code);
    CloseHandle(processus.hThread);
    CloseHandle(processus.hProcess);
    return static_cast<int>(code);
}

bool rendre_executable(const std::string&) {
    return true;
}

std::string chemin_absolu(const std::string& chemin) {
    const std::wstring relatif = large(chemin);
    const DWORD taille = GetFullPathNameW(relatif.c_str(), 0, nullptr, nullptr);
    if (taille == 0) {
        return chemin;
    }
    std::wstring absolu(taille, L'\0');
    const DWORD ecrit = GetFullPathNameW(relatif.c_str(), taille, absolu.data(), nullptr);
    if (ecrit == 0 || ecrit >= taille) {
        return chemin;
    }
    absolu.resize(ecrit);
    return etroit(absolu);
}

}  // namespace sv140::shop
