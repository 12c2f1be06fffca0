#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "shop/processus.h"

extern char** environ;

namespace sv140::shop {

int lancer_pont(const std::string& programme, const std::vector<std::string>& arguments,
                const std::string& sortie) {
    std::vector<std::string> textes;
    textes.push_back(programme);
    textes.insert(textes.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& texte : textes) {
        argv.push_back(texte.data());
    }
    argv.push_back(nullptr);

    static const char kConsole[] = "SV140_UI=console";
    std::vector<std::string> variables;
    for (char** e = environ; *e != nullptr; ++e) {
        if (std::strncmp(*e, "SV140_UI=", 9) != 0) {
            variables.emplace_back(*e);
        }
    }
    variables.emplace_back(kConsole);
    std::vector<char*> envp;
    for (std::string& variable : variables) {
        envp.push_back(variable.data());
    }
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, sortie.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);

    pid_t pid = 0;
    const int erreur =
        posix_spawn(&pid, programme.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (erreur != 0) {
        return -1;
    }
    int etat = 0;
    while (waitpid(pid, &etat, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    if (WIFEXITED(etat)) {
        return WEXITSTATUS(etat);
    }
    // Killed by a signal: reported like the shell does, 128 + signal.
    return WIFSIGNALED(etat) ? 128 + WTERMSIG(etat) : -1;
}

namespace {

std::string chemin_absolu_brut(const std::string& chemin) {
    if (!chemin.empty() && chemin.front() == '/') {
        return chemin;
    }
    std::string courant(4096, '\0');
    if (getcwd(courant.data(), courant.size()) == nullptr) {
        return chemin;
    }
    courant.resize(std::strlen(courant.c_str()));
    if (chemin.empty() || chemin == ".") {
        return courant;
    }
    std::string relatif = chemin;
    while (relatif.rfind("./", 0) == 0) {
        relatif.erase(0, 2);
    }
    return courant == "/" ? "/" + relatif : courant + "/" + relatif;
}

}  // namespace

bool rendre_executable(const std::string& chemin) {
    return chmod(chemin.c_str(), 0755) == 0;
}

std::string chemin_absolu(const std::string& chemin) {
    std::string absolu = chemin_absolu_brut(chemin);
    while (absolu.size() > 1 && absolu.back() == '/') {
        absolu.pop_back();
    }
    return absolu;
}

}  // namespace sv140::shop
