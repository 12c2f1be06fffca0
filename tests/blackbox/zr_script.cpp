// A middleware that plays a script: the black-box tests put it in a program folder in
// place of WebQuintara2.so and decide, call by call, what it answers.
//
// Everything lives in zrscript/ beside the library (found through dladdr):
//   compteur          number of calls made so far in this folder
//   appel_<n>.ret     value returned by the n-th call (0 when only .rsp is given)
//   appel_<n>.rsp     bytes copied into the answer buffer (at most *size of them)
//   toujours.ret/rsp  the same, for every call that has no appel_<n> file
//   appel_<n>.efface  name of a program-folder file removed during the call
//   appel_<n>.attend  the call waits until zrscript/reveil exists (bounded)
// and every call leaves requete_<n>.xml (the request's exact bytes) and taille_<n>.txt
// (the buffer size it was given). A call with nothing scripted returns 1.
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string dossier_bibliotheque() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&dossier_bibliotheque), &info) == 0 ||
        info.dli_fname == nullptr) {
        return ".";
    }
    std::string chemin = info.dli_fname;
    auto barre = chemin.rfind('/');
    return barre == std::string::npos ? std::string(".") : chemin.substr(0, barre);
}

std::string dossier_script() {
    return dossier_bibliotheque() + "/zrscript/";
}

bool lire(const std::string& chemin, std::string& octets) {
    std::ifstream f(chemin, std::ios::binary);
    if (!f) {
        return false;
    }
    std::ostringstream tout;
    tout << f.rdbuf();
    octets = tout.str();
    return true;
}

void ecrire(const std::string& chemin, const std::string& octets) {
    std::ofstream f(chemin, std::ios::binary | std::ios::trunc);
    f << octets;
}

bool existe(const std::string& chemin) {
    return access(chemin.c_str(), F_OK) == 0;
}

std::string sans_blancs(std::string s) {
    while (!s.empty() && (s.back() == '\n' || s.back() == '\r' || s.back() == ' ')) {
        s.pop_back();
    }
    return s;
}

int prochain_appel(const std::string& dossier) {
    std::string texte;
    int n = 0;
    if (lire(dossier + "compteur", texte)) {
        n = std::atoi(texte.c_str());
    }
    ++n;
    ecrire(dossier + "compteur", std::to_string(n) + "\n");
    return n;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int ZR_Executer(const char* requete,
                                                                  char* reponse, int* taille) {
    const std::string dossier = dossier_script();
    const int n = prochain_appel(dossier);
    const std::string appel = dossier + "appel_" + std::to_string(n);

    ecrire(dossier + "requete_" + std::to_string(n) + ".xml",
           requete == nullptr ? std::string() : std::string(requete));
    ecrire(dossier + "taille_" + std::to_string(n) + ".txt",
           (taille == nullptr ? std::string("null") : std::to_string(*taille)) + "\n");

    std::string nom;
    if (lire(appel + ".efface", nom)) {
        std::remove((dossier_bibliotheque() + "/" + sans_blancs(nom)).c_str());
    }
    if (existe(appel + ".attend")) {
        // Counted, not timed: the bridge runs under a frozen clock.
        for (int i = 0; i < 600 && !existe(dossier + "reveil"); ++i) {
            usleep(100 * 1000);
        }
    }

    std::string retour, octets;
    bool a_retour = lire(appel + ".ret", retour);
    bool a_reponse = lire(appel + ".rsp", octets);
    if (!a_retour && !a_reponse) {
        a_retour = lire(dossier + "toujours.ret", retour);
        a_reponse = lire(dossier + "toujours.rsp", octets);
    }
    if (!a_retour && !a_reponse) {
        return 1;
    }
    if (a_reponse && reponse != nullptr && taille != nullptr && *taille > 0) {
        std::size_t n_octets =
            std::min<std::size_t>(octets.size(), static_cast<std::size_t>(*taille));
        std::memcpy(reponse, octets.data(), n_octets);
    }
    return a_retour ? std::atoi(retour.c_str()) : 0;
}
