// The parts of the file and process seam that read the same on every platform: path
// text, file name patterns and the splitting of a command line into a program and its
// arguments.
#include "platform/systeme.h"

#include "platform/encodage.h"

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

/// The text's characters, a UTF-16 surrogate pair taken as the one character it is.
std::u32string caracteres(std::string_view utf8) {
    const std::u16string utf16 = utf8_vers_utf16(utf8);
    std::u32string texte;
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        char32_t c = utf16[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 &&
            utf16[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (utf16[++i] - 0xDC00);
        }
        texte += c;
    }
    return texte;
}

char32_t majuscule(char32_t c) {
    if ((c >= U'a' && c <= U'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7)) {
        return c - 0x20;
    }
    if (c == 0x153) {  // œ
        return 0x152;
    }
    if (c == 0xFF) {  // ÿ
        return 0x178;
    }
    return c;
}

}  // namespace

bool nom_correspond(std::string_view nom, std::string_view motif) {
    const std::u32string n = caracteres(nom);
    const std::u32string m = caracteres(motif);
    // Each '*' is tried at its shortest first; on a mismatch the last '*' seen takes
    // one more character. The last star is enough: what an earlier one would take, it
    // can take too.
    std::size_t i = 0, j = 0;
    std::size_t etoile = std::u32string::npos, reprise = 0;
    while (i < n.size()) {
        if (j < m.size() && m[j] == U'*') {
            etoile = j++;
            reprise = i;
        } else if (j < m.size() && (m[j] == U'?' || majuscule(m[j]) == majuscule(n[i]))) {
            ++i;
            ++j;
        } else if (etoile != std::u32string::npos) {
            j = etoile + 1;
            i = ++reprise;
        } else {
            return false;
        }
    }
    while (j < m.size() && m[j] == U'*') {
        ++j;
    }
    return j == m.size();
}

int supprimer_fichiers(const std::string& dossier, std::string_view motif) {
    int supprimes = 0;
    for (const std::string& nom : lister_fichiers(dossier, motif)) {
        if (supprimer_fichier(joindre(dossier, nom))) {
            ++supprimes;
        }
    }
    return supprimes;
}

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
