// sv140-appel: one call of the simulated middleware alone, as the bridge makes it, so
// that the measurements can tell the middleware's share of a run from the bridge's.
//
//   sv140-appel ZRSIM REQUETE TAILLE   the request file the bridge wrote
//                                      (ZEMO_SvRequest.xml), an answer buffer of TAILLE
//                                      bytes; exit 0 when the answer fitted
#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "platform/systeme.h"
#include "sim/etat.h"

int main(int argc, char** argv) {
    using namespace sv140;
    std::string requete;
    if (argc != 4 || !lire_fichier(argv[2], requete)) {
        std::cerr << "usage : sv140-appel ZRSIM REQUETE TAILLE\n";
        return 2;
    }
    int taille = std::stoi(argv[3]);
    std::vector<char> reponse(static_cast<std::size_t>(taille), '\0');
    const int retour = sim::Executer(argv[1], requete.c_str(), reponse.data(), &taille);
    const std::string texte(reponse.begin(), std::find(reponse.begin(), reponse.end(), '\0'));
    if (retour != 0 || texte.find("<codeErreur>0</codeErreur>") == std::string::npos) {
        std::cerr << "sv140-appel : " << retour << " " << texte.substr(0, 400) << "\n";
        return 1;
    }
    return 0;
}
