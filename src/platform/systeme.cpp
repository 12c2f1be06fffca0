// The parts of the file and process seam that read the same on every platform: path
// text and the splitting of a command line into a program and its arguments.
#include "platform/systeme.h"

namespace sv140 {

namespace {

// Paths from the host's settings mix both separators whatever the platform.
bool est_separateur(char c) {
    return c == '/' || c == '\\';
}

/// Splits a command line into words: blanks separate words outside double quotes,
/// the quotes themselves are dropped, and "" is an empty word.
std::vector<std::string> mots_de_commande(const std::string& ligne) {
    std::vector<std::string> mots;
    std::string mot;
    bool dans_mot = false;
    bool entre_guillemets = false;
    for (char c : ligne) {
        if (c == '"') {
            entre_guillemets = !entre_guillemets;
            dans_mot = true;
        } else if ((c == ' ' || c == '\t') && !entre_guillemets) {
            if (dans_mot) {
                mots.push_back(mot);
                mot.clear();
                dans_mot = false;
            }
        } else {
            mot += c;
            dans_mot = true;
        }
    }
    if (dans_mot) {
        mots.push_back(mot);
    }
    return mots;
}

}  // namespace

std::string joindre(std::string_view dossier, std::string_view nom) {
    std::string chemin(dossier);
    chemin += separateur();
    chemin += nom;
    return chemin;
}

std::string dossier_parent(std::string_view chemin) {
    // A trailing separator names the same folder: "/a/b/" is in "/a".
    std::size_t fin = chemin.size();
    while (fin > 1 && est_separateur(chemin[fin - 1])) {
        --fin;
    }
    std::size_t i = fin;
    while (i > 0 && !est_separateur(chemin[i - 1])) {
        --i;
    }
    if (i == 0) {
        return std::string();
    }
    std::size_t coupe = i - 1;
    while (coupe > 0 && est_separateur(chemin[coupe - 1])) {
        --coupe;
    }
    // The root keeps its separator ("/x" is in "/", "C:\x" in "C:\").
    if (coupe == 0 || chemin[coupe - 1] == ':') {
        return std::string(chemin.substr(0, coupe + 1));
    }
    return std::string(chemin.substr(0, coupe));
}

int lancer_et_attendre_processus(const std::string& ligne) {
    std::vector<std::string> mots = mots_de_commande(ligne);
    if (mots.empty() || mots[0].empty()) {
        return -1;
    }
    Lancement lancement;
    lancement.arguments.assign(mots.begin() + 1, mots.end());
    return lancer_programme(mots[0], lancement);
}

}  // namespace sv140
