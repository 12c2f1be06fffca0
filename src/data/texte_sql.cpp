#include "data/texte_sql.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "tools/outils.h"

namespace sv140 {

namespace {

void doubler(std::string& texte, char guillemet) {
    std::string sortie;
    sortie.reserve(texte.size());
    for (const char c : texte) {
        sortie += c;
        if (c == guillemet) {
            sortie += c;
        }
    }
    texte = std::move(sortie);
}

bool chiffre(char c) {
    return c >= '0' && c <= '9';
}

// The decimal order of magnitude of a number too large or too small for a double, to
// tell an overflow (the host gives an infinity) from an underflow (it gives 0).
long grandeur(std::string_view mantisse, long exposant) {
    const std::size_t point = std::min(mantisse.find('.'), mantisse.size());
    const std::size_t premier = mantisse.find_first_of("123456789");
    if (premier == std::string_view::npos) {
        return 0;
    }
    const long position = premier < point ? static_cast<long>(point - premier)
                                          : -static_cast<long>(premier - point - 1);
    return position + exposant;
}

}  // namespace

std::string Doubler_Apostrophes(std::string& valeur) {
    doubler(valeur, '"');
    doubler(valeur, '\'');
    return valeur;
}

std::string Doubler_Apostrophes(std::optional<std::string>& valeur) {
    if (!valeur) {
        valeur.emplace();
    }
    return Doubler_Apostrophes(*valeur);
}

std::string Texte_SQL(std::string_view valeur) {
    std::string sortie(valeur);
    doubler(sortie, '\'');
    return sortie;
}

std::string Texte_Hote_SQL(std::string_view valeur) {
    std::string copie(valeur);
    return Doubler_Apostrophes(copie);
}

double Val(std::string_view brut) {
    // The host's reading ignores blanks, tabs and line ends wherever they stand:
    // "1 2" is 12.
    std::string sans_blancs(brut);
    std::erase_if(sans_blancs,
                  [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
    std::string_view texte = sans_blancs;
    std::size_t i = 0;
    bool negatif = false;
    if (i < texte.size() && (texte[i] == '+' || texte[i] == '-')) {
        negatif = texte[i] == '-';
        ++i;
    }
    // The sign stays out of the copy: from_chars does not take a '+'.
    std::string nombre;
    bool des_chiffres = false;
    while (i < texte.size() && chiffre(texte[i])) {
        nombre += texte[i++];
        des_chiffres = true;
    }
    if (i < texte.size() && texte[i] == '.') {
        nombre += texte[i++];
        while (i < texte.size() && chiffre(texte[i])) {
            nombre += texte[i++];
            des_chiffres = true;
        }
    }
    if (!des_chiffres) {
        return 0.0;
    }
    const std::size_t longueur_mantisse = nombre.size();
    long exposant = 0;
    if (i < texte.size() && (texte[i] == 'e' || texte[i] == 'E')) {
        std::size_t j = i + 1;
        if (j < texte.size() && (texte[j] == '+' || texte[j] == '-')) {
            ++j;
        }
        if (j < texte.size() && chiffre(texte[j])) {
            while (j < texte.size() && chiffre(texte[j])) {
                if (exposant < 100000) {
                    exposant = exposant * 10 + (texte[j] - '0');
                }
                ++j;
            }
            if (texte[i + 1] == '-') {
                exposant = -exposant;
            }
            nombre.append(texte.substr(i, j - i));
        }
    }
    double valeur = 0.0;
    const char* debut = nombre.data();
    const auto resultat =
        std::from_chars(debut, debut + nombre.size(), valeur, std::chars_format::general);
    if (resultat.ec == std::errc::result_out_of_range) {
        valeur = grandeur(std::string_view(nombre).substr(0, longueur_mantisse), exposant) > 0
                     ? HUGE_VAL
                     : 0.0;
    } else if (resultat.ec != std::errc()) {
        valeur = 0.0;
    }
    return negatif ? -valeur : valeur;
}

std::string Nombre_SQL(double valeur) {
    // A value that is no number cannot be written bare; 0 keeps the statement valid.
    if (!std::isfinite(valeur) || valeur == 0.0) {
        return "0";
    }
    char tampon[400];
    const auto [fin, erreur] =
        std::to_chars(tampon, tampon + sizeof tampon, valeur, std::chars_format::fixed);
    if (erreur != std::errc()) {
        return "0";
    }
    return std::string(tampon, fin);
}

std::string Nombre_SQL(std::string_view texte) {
    return Nombre_SQL(Val(texte));
}

std::string Date_SQL(const std::tm& t) {
    return "#" + Format_Date(t, "%m-%d-%Y %H:%M:%S") + "#";
}

std::string Trim(std::string_view texte) {
    const std::size_t debut = texte.find_first_not_of(' ');
    if (debut == std::string_view::npos) {
        return std::string();
    }
    const std::size_t fin = texte.find_last_not_of(' ');
    return std::string(texte.substr(debut, fin - debut + 1));
}

}  // namespace sv140
