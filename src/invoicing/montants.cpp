#include "invoicing/montants.h"

#include <cmath>
#include <cstdio>

#include "data/texte_sql.h"

namespace sv140 {

long long Centimes(double euros) {
    if (!std::isfinite(euros)) {
        return 0;
    }
    // An amount typed 12.345 is held as 12.34499...: the nudge, far below a cent, lets
    // its half round up as the optician expects.
    const double centimes = euros * 100.0;
    return std::llround(centimes + std::copysign(1e-6, centimes));
}

std::string Sept_Chiffres(long long centimes) {
    char tampon[32];
    std::snprintf(tampon, sizeof tampon, "%07lld", centimes < 0 ? -centimes : centimes);
    return (centimes < 0 ? "-" : "") + std::string(tampon);
}

std::string Deux_Chiffres(double nombre) {
    const long long n = std::isfinite(nombre) ? std::llround(nombre) : 0;
    char tampon[32];
    std::snprintf(tampon, sizeof tampon, "%02lld", n < 0 ? -n : n);
    return (n < 0 ? "-" : "") + std::string(tampon);
}

std::string Format_Euros(double euros) {
    const long long c = Centimes(euros);
    const long long a = c < 0 ? -c : c;
    char tampon[40];
    std::snprintf(tampon, sizeof tampon, "%s%lld.%02lld", c < 0 ? "-" : "", a / 100, a % 100);
    return tampon;
}

std::string Numero_Sans_Zeros(std::string_view numero) {
    std::string sans_blancs;
    for (char c : numero) {
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n') {
            sans_blancs += c;
        }
    }
    std::size_t i = 0;
    if (i < sans_blancs.size() && sans_blancs[i] == '+') {
        ++i;
    }
    std::size_t fin = i;
    while (fin < sans_blancs.size() && sans_blancs[fin] >= '0' && sans_blancs[fin] <= '9') {
        ++fin;
    }
    const bool entier =
        fin > i && (fin == sans_blancs.size() ||
                    std::string_view(".eEdD").find(sans_blancs[fin]) == std::string_view::npos);
    if (!entier) {
        // A sign, a decimal part or an exponent: the number's usual form.
        return Nombre_SQL(Val(sans_blancs));
    }
    const std::size_t premier = sans_blancs.find_first_not_of('0', i);
    return premier >= fin ? "0" : sans_blancs.substr(premier, fin - premier);
}

namespace {

bool chiffres(std::string_view t) {
    for (char c : t) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return !t.empty();
}

int entier(std::string_view t) {
    int n = 0;
    for (char c : t) {
        n = n * 10 + (c - '0');
    }
    return n;
}

}  // namespace

std::string Date_AAAAMMJJ(std::string_view texte) {
    const std::string t = Trim(texte);
    std::string_view a, m, j;
    if (t.size() == 10 && t[2] == '/' && t[5] == '/') {
        j = std::string_view(t).substr(0, 2);
        m = std::string_view(t).substr(3, 2);
        a = std::string_view(t).substr(6, 4);
    } else if (t.size() == 10 && t[4] == '-' && t[7] == '-') {
        a = std::string_view(t).substr(0, 4);
        m = std::string_view(t).substr(5, 2);
        j = std::string_view(t).substr(8, 2);
    } else if (t.size() == 8) {
        a = std::string_view(t).substr(0, 4);
        m = std::string_view(t).substr(4, 2);
        j = std::string_view(t).substr(6, 2);
    } else {
        return {};
    }
    if (!chiffres(a) || !chiffres(m) || !chiffres(j)) {
        return {};
    }
    const int annee = entier(a), mois = entier(m), jour = entier(j);
    static constexpr int jours[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool bissextile = (annee % 4 == 0 && annee % 100 != 0) || annee % 400 == 0;
    if (annee < 1 || mois < 1 || mois > 12 || jour < 1 ||
        jour > jours[mois - 1] + (mois == 2 && bissextile ? 1 : 0)) {
        return {};
    }
    return std::string(a) + std::string(m) + std::string(j);
}

}  // namespace sv140
