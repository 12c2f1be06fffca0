// A middleware that plays a script: the black-box tests put it in a program folder in
// place of WebQuintara2.so (WebQuintara2.dll for sv140.exe) and decide, call by call,
// what it answers. In zrscript/ beside the library:
//   compteur        calls made so far
//   <n>.ret, <n>.rsp  value returned by call n and the answer bytes copied into its
//                   buffer (at most its size); 0.ret and 0.rsp serve every other call
//   <n>.efface      a program-folder file removed during call n
//   <n>.attend      call n waits until zrscript/reveil exists
// Each call leaves requete_<n>.xml (the request) and taille_<n> (the buffer size). A
// call with nothing scripted returns 1.
#if defined(_WIN32)
#include <windows.h>
// Declared here rather than taken from the bridge's headers, so that a calling
// convention the bridge got wrong cannot hide.
#define ZR_EXPORT extern "C" __declspec(dllexport)
#define ZR_APPEL __stdcall
#else
#include <dlfcn.h>
#define ZR_EXPORT extern "C" __attribute__((visibility("default")))
#define ZR_APPEL
#endif

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>

namespace {

// The library's own folder, separator included.
std::string dossier() {
#if defined(_WIN32)
    HMODULE module = nullptr;
    GetModuleHandleExA(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCSTR>(&dossier), &module);
    char tampon[MAX_PATH] = ".\\x";
    GetModuleFileNameA(module, tampon, MAX_PATH);
    const std::string chemin = tampon;
    return chemin.substr(0, chemin.find_last_of("\\/") + 1);
#else
    Dl_info info{};
    dladdr(reinterpret_cast<void*>(&dossier), &info);
    std::string chemin = info.dli_fname != nullptr ? info.dli_fname : "./x";
    return chemin.substr(0, chemin.rfind('/') + 1);
#endif
}

bool existe(const std::string& chemin) {
    return std::ifstream(chemin).good();
}

std::optional<std::string> lire(const std::string& chemin) {
    std::ifstream f(chemin, std::ios::binary);
    std::ostringstream tout;
    tout << f.rdbuf();
    return f ? std::optional(tout.str()) : std::nullopt;
}

void ecrire(const std::string& chemin, const std::string& octets) {
    std::ofstream(chemin, std::ios::binary) << octets;
}

}  // namespace

ZR_EXPORT int ZR_APPEL ZR_Executer(const char* requete, char* reponse, int* taille) {
    const std::string programme = dossier(), script = programme + "zrscript/";
    const int n = std::atoi(lire(script + "compteur").value_or("0").c_str()) + 1;
    const std::string appel = script + std::to_string(n);
    ecrire(script + "compteur", std::to_string(n));
    ecrire(script + "requete_" + std::to_string(n) + ".xml", requete);
    ecrire(script + "taille_" + std::to_string(n), std::to_string(*taille));

    if (auto nom = lire(appel + ".efface")) {
        std::remove((programme + *nom).c_str());
    }
    // Counted, not timed: the bridge runs under a frozen clock.
    for (int i = 0; i < 600 && existe(appel + ".attend") && !existe(script + "reveil"); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    auto retour = lire(appel + ".ret");
    auto octets = lire(appel + ".rsp");
    if (!retour && !octets) {
        retour = lire(script + "0.ret");
        octets = lire(script + "0.rsp");
    }
    if (!retour && !octets) {
        return 1;
    }
    if (octets && *taille > 0) {
        std::memcpy(reponse, octets->data(), std::min<std::size_t>(octets->size(), *taille));
    }
    return std::atoi(retour.value_or("0").c_str());
}
