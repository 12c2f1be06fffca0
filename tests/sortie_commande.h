// What a shell command prints, for the tests that check their files with tools that
// share none of the system's code (ImageMagick, poppler).
#pragma once

#include <cstdio>
#include <string>

namespace sv140::test {

/// The standard output of `commande` run by the shell; "" when it cannot be started.
inline std::string sortie_de(const std::string& commande) {
    std::string texte;
    if (FILE* p = ::popen(commande.c_str(), "r")) {
        char tampon[256];
        while (std::fgets(tampon, sizeof tampon, p)) {
            texte += tampon;
        }
        ::pclose(p);
    }
    return texte;
}

}  // namespace sv140::test
