// The line format of the simulator's books (`factures.txt`, `pieces.txt`): one record
// per line, its kind first, then tab-separated name=value fields read into and written
// from a struct's members through a table of names.
#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace sv140::sim::champs {

template <class T>
using Membre =
    std::variant<std::string T::*, long long T::*, int T::*, bool T::*, std::optional<int> T::*>;

template <class T>
struct Champ {
    std::string_view nom;
    Membre<T> membre;
};

template <class... F>
struct Selon : F... {
    using F::operator()...;
};

/// Tabs and line ends inside a value would cut its record: they are written as blanks.
inline void ajouter_valeur(std::string& sortie, std::string_view valeur) {
    for (char c : valeur) {
        sortie += (c == '\t' || c == '\n' || c == '\r') ? ' ' : c;
    }
}

/// Booleans are written O or N; an absent optional number as an empty value.
template <class T, std::size_t N>
void ecrire_ligne(std::string& sortie, std::string_view genre, const T& objet,
                  const Champ<T> (&champs)[N]) {
    sortie += genre;
    for (const Champ<T>& c : champs) {
        sortie += '\t';
        sortie += c.nom;
        sortie += '=';
        std::visit(Selon{
                       [&](std::string T::*m) { ajouter_valeur(sortie, objet.*m); },
                       [&](long long T::*m) { sortie += std::to_string(objet.*m); },
                       [&](int T::*m) { sortie += std::to_string(objet.*m); },
                       [&](bool T::*m) { sortie += objet.*m ? 'O' : 'N'; },
                       [&](std::optional<int> T::*m) {
                           if (objet.*m) {
                               sortie += std::to_string(*(objet.*m));
                           }
                       },
                   },
                   c.membre);
    }
    sortie += '\n';
}

/// Leaves `valeur` as it was when `texte` is not a number.
template <class N>
void lire_nombre(std::string_view texte, N& valeur) {
    N lu = 0;
    if (std::from_chars(texte.data(), texte.data() + texte.size(), lu).ec == std::errc()) {
        valeur = lu;
    }
}

/// An unknown name is ignored; an optional number whose value is not one (empty) is unset.
template <class T, std::size_t N>
void lire_champ(std::string_view nom, std::string_view valeur, T& objet,
                const Champ<T> (&champs)[N]) {
    for (const Champ<T>& c : champs) {
        if (c.nom == nom) {
            std::visit(Selon{
                           [&](std::string T::*m) { objet.*m = std::string(valeur); },
                           [&](long long T::*m) { lire_nombre(valeur, objet.*m); },
                           [&](int T::*m) { lire_nombre(valeur, objet.*m); },
                           [&](bool T::*m) { objet.*m = valeur != "N"; },
                           [&](std::optional<int> T::*m) {
                               int lu = 0;
                               const auto r = std::from_chars(valeur.data(),
                                                              valeur.data() + valeur.size(), lu);
                               objet.*m =
                                   r.ec == std::errc() ? std::optional<int>(lu) : std::nullopt;
                           },
                       },
                       c.membre);
            return;
        }
    }
}

/// Calls `f(nom, valeur)` for every name=value field of a line after its first field.
template <class F>
void pour_chaque_champ(std::string_view ligne, F&& f) {
    while (!ligne.empty()) {
        const auto tab = ligne.find('\t');
        const std::string_view champ = ligne.substr(0, tab);
        ligne = tab == std::string_view::npos ? std::string_view() : ligne.substr(tab + 1);
        const auto egal = champ.find('=');
        if (egal != std::string_view::npos) {
            f(champ.substr(0, egal), champ.substr(egal + 1));
        }
    }
}

/// Calls `f(genre, champs)` for every line of `texte`: its first field, then the rest
/// of the line from the tab that ends it. A CR before the line end is dropped.
template <class F>
void pour_chaque_ligne(std::string_view texte, F&& f) {
    while (!texte.empty()) {
        const auto fin = texte.find('\n');
        std::string_view ligne = texte.substr(0, fin);
        texte = fin == std::string_view::npos ? std::string_view() : texte.substr(fin + 1);
        if (ligne.ends_with('\r')) {
            ligne.remove_suffix(1);
        }
        const std::string_view genre = ligne.substr(0, ligne.find('\t'));
        f(genre, ligne.substr(genre.size()));
    }
}

}  // namespace sv140::sim::champs
