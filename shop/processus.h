// What sv140-shop needs from the operating system beyond the bridge's own seam: running
// the installed bridge the way the host does, and making a copied program runnable.
// One implementation per platform (processus_posix.cpp, processus_win32.cpp).
#pragma once

#include <string>
#include <vector>

namespace sv140::shop {

/// Runs `programme` with `arguments` and waits for its end. Its standard input is
/// empty (a console question then answers Cancel), SV140_UI=console is added to its
/// environment, and its standard output and error go to the file `sortie` (replaced).
/// Returns the exit code, or -1 when the program could not be started.
int lancer_pont(const std::string& programme, const std::vector<std::string>& arguments,
                const std::string& sortie);

/// Gives a copied program file the right to run. False when it cannot.
bool rendre_executable(const std::string& chemin);

/// `chemin` made absolute against the current folder (the path need not exist);
/// `chemin` itself when the current folder cannot be read.
std::string chemin_absolu(const std::string& chemin);

}  // namespace sv140::shop
