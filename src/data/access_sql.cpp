#include "data/access_sql.h"

#include <cstdio>
#include <optional>
#include <vector>

namespace sv140 {

namespace {

enum class Genre {
    Blanc,
    Mot,
    Nombre,
    Chaine,        // '...'
    ChaineDouble,  // "..."
    Date,          // #...#
    Crochets,      // [...]
    Ponctuation,
};

struct Jeton {
    Genre genre;
    std::string_view texte;
};

bool blanc(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}
bool chiffre(char c) {
    return c >= '0' && c <= '9';
}
bool debut_de_mot(char c) {
    // Bytes above 0x7F belong to names such as N° or Sélection.
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}
bool suite_de_mot(char c) {
    return debut_de_mot(c) || chiffre(c);
}

char minuscule(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool meme_mot(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (minuscule(a[i]) != minuscule(b[i])) {
            return false;
        }
    }
    return true;
}

/// The end of a literal opened at `debut` by `fermeture`, where a doubled closing
/// character stands for itself; npos when the literal is never closed.
std::size_t fin_de_litteral(std::string_view sql, std::size_t debut, char fermeture,
                            bool doublable) {
    for (std::size_t i = debut + 1; i < sql.size(); ++i) {
        if (sql[i] != fermeture) {
            continue;
        }
        if (doublable && i + 1 < sql.size() && sql[i + 1] == fermeture) {
            ++i;
            continue;
        }
        return i + 1;
    }
    return std::string_view::npos;
}

/// The statement cut into tokens whose texts, joined, give the statement back byte for
/// byte; nothing when a literal or a bracketed name is left open.
std::optional<std::vector<Jeton>> decouper(std::string_view sql) {
    std::vector<Jeton> jetons;
    std::size_t i = 0;
    while (i < sql.size()) {
        const char c = sql[i];
        std::size_t fin = i + 1;
        Genre genre = Genre::Ponctuation;
        if (blanc(c)) {
            genre = Genre::Blanc;
            while (fin < sql.size() && blanc(sql[fin])) {
                ++fin;
            }
        } else if (c == '\'' || c == '"' || c == '[') {
            genre = c == '\'' ? Genre::Chaine : c == '"' ? Genre::ChaineDouble : Genre::Crochets;
            fin = fin_de_litteral(sql, i, c == '[' ? ']' : c, c != '[');
            if (fin == std::string_view::npos) {
                return std::nullopt;
            }
        } else if (c == '#') {
            // A lone '#' is no date; it is left for the engine to refuse.
            const std::size_t fermeture = sql.find('#', i + 1);
            if (fermeture != std::string_view::npos) {
                genre = Genre::Date;
                fin = fermeture + 1;
            }
        } else if (debut_de_mot(c)) {
            genre = Genre::Mot;
            while (fin < sql.size() && suite_de_mot(sql[fin])) {
                ++fin;
            }
        } else if (chiffre(c) || (c == '.' && i + 1 < sql.size() && chiffre(sql[i + 1]))) {
            genre = Genre::Nombre;
            while (fin < sql.size() && (chiffre(sql[fin]) || sql[fin] == '.')) {
                ++fin;
            }
            if (fin < sql.size() && (sql[fin] == 'e' || sql[fin] == 'E')) {
                std::size_t e = fin + 1;
                if (e < sql.size() && (sql[e] == '+' || sql[e] == '-')) {
                    ++e;
                }
                if (e < sql.size() && chiffre(sql[e])) {
                    while (e < sql.size() && chiffre(sql[e])) {
                        ++e;
                    }
                    fin = e;
                }
            }
        }
        jetons.push_back({genre, sql.substr(i, fin - i)});
        i = fin;
    }
    return jetons;
}

/// Reads an unsigned number of 1 to `max_chiffres` digits at `pos`.
std::optional<int> lire_entier(std::string_view s, std::size_t& pos, std::size_t max_chiffres) {
    const std::size_t debut = pos;
    int valeur = 0;
    while (pos < s.size() && chiffre(s[pos]) && pos - debut < max_chiffres) {
        valeur = valeur * 10 + (s[pos++] - '0');
    }
    if (pos == debut || (pos < s.size() && chiffre(s[pos]))) {
        return std::nullopt;
    }
    return valeur;
}

int jours_du_mois(int annee, int mois) {
    static constexpr int kJours[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool bissextile = (annee % 4 == 0 && annee % 100 != 0) || annee % 400 == 0;
    return mois == 2 && bissextile ? 29 : kJours[mois - 1];
}

std::string forme_stockee(int annee, int mois, int jour, int heure, int minute, int seconde) {
    char tampon[96];
    std::snprintf(tampon, sizeof tampon, "'%04d-%02d-%02d %02d:%02d:%02d'", annee, mois, jour,
                  heure, minute, seconde);
    return tampon;
}

/// The storage form of the date literal `#...#`: month first (m/d/yyyy or m-d-yyyy,
/// one or two digits for month and day) or year first (yyyy-m-d), then an optional
/// time h:n or h:n:s, optionally followed by AM or PM. Nothing when the text is not a
/// valid date the way Access reads it.
std::optional<std::string> date_stockee(std::string_view litteral) {
    std::string_view s = litteral.substr(1, litteral.size() - 2);
    while (!s.empty() && s.front() == ' ') {
        s.remove_prefix(1);
    }
    while (!s.empty() && s.back() == ' ') {
        s.remove_suffix(1);
    }
    std::size_t pos = 0;
    const auto separateur = [&]() {
        if (pos < s.size() && (s[pos] == '/' || s[pos] == '-')) {
            ++pos;
            return true;
        }
        return false;
    };
    int annee = 0;
    int mois = 0;
    int jour = 0;
    const std::size_t debut = pos;
    auto premier = lire_entier(s, pos, 4);
    if (!premier) {
        return std::nullopt;
    }
    if (pos - debut == 4) {
        auto m = separateur() ? lire_entier(s, pos, 2) : std::nullopt;
        auto j = m && separateur() ? lire_entier(s, pos, 2) : std::nullopt;
        if (!j) {
            return std::nullopt;
        }
        annee = *premier;
        mois = *m;
        jour = *j;
    } else {
        if (pos - debut > 2) {
            return std::nullopt;
        }
        auto j = separateur() ? lire_entier(s, pos, 2) : std::nullopt;
        const std::size_t debut_annee = pos + 1;
        auto a = j && separateur() ? lire_entier(s, pos, 4) : std::nullopt;
        if (!a || pos - debut_annee != 4) {
            return std::nullopt;
        }
        mois = *premier;
        jour = *j;
        annee = *a;
    }
    if (mois < 1 || mois > 12 || jour < 1 || jour > jours_du_mois(annee, mois)) {
        return std::nullopt;
    }
    int heure = 0;
    int minute = 0;
    int seconde = 0;
    if (pos < s.size()) {
        if (s[pos] != ' ') {
            return std::nullopt;
        }
        while (pos < s.size() && s[pos] == ' ') {
            ++pos;
        }
        auto h = lire_entier(s, pos, 2);
        if (!h || pos >= s.size() || s[pos++] != ':') {
            return std::nullopt;
        }
        auto n = lire_entier(s, pos, 2);
        if (!n) {
            return std::nullopt;
        }
        heure = *h;
        minute = *n;
        if (pos < s.size() && s[pos] == ':') {
            ++pos;
            auto sec = lire_entier(s, pos, 2);
            if (!sec) {
                return std::nullopt;
            }
            seconde = *sec;
        }
        std::size_t apres = pos;
        while (apres < s.size() && s[apres] == ' ') {
            ++apres;
        }
        const std::string_view suffixe = s.substr(apres);
        if (!suffixe.empty()) {
            const bool apres_midi = meme_mot(suffixe, "PM");
            if ((!apres_midi && !meme_mot(suffixe, "AM")) || heure < 1 || heure > 12) {
                return std::nullopt;
            }
            heure = heure % 12 + (apres_midi ? 12 : 0);
        }
        if (heure > 23 || minute > 59 || seconde > 59) {
            return std::nullopt;
        }
    }
    return forme_stockee(annee, mois, jour, heure, minute, seconde);
}

/// "text" as 'text': the doubled double quotes become single ones, the single quotes
/// are doubled.
std::string chaine_simple(std::string_view litteral) {
    const std::string_view dedans = litteral.substr(1, litteral.size() - 2);
    std::string sortie = "'";
    for (std::size_t i = 0; i < dedans.size(); ++i) {
        sortie += dedans[i];
        if (dedans[i] == '"') {
            ++i;
        } else if (dedans[i] == '\'') {
            sortie += '\'';
        }
    }
    sortie += '\'';
    return sortie;
}

class Traducteur {
  public:
    Traducteur(const std::vector<Jeton>& jetons, const std::tm& aujourdhui)
        : jetons_(jetons),
          aujourdhui_(forme_stockee(aujourdhui.tm_year + 1900, aujourdhui.tm_mon + 1,
                                    aujourdhui.tm_mday, 0, 0, 0)) {}

    std::string traduire() {
        std::size_t debut = 0;
        for (std::size_t i = 0; i < jetons_.size(); ++i) {
            if (est(i, Genre::Ponctuation, ";")) {
                instruction(debut, i);
                sortie_ += jetons_[i].texte;
                debut = i + 1;
            }
        }
        instruction(debut, jetons_.size());
        return std::move(sortie_);
    }

  private:
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    bool est(std::size_t i, Genre genre, std::string_view texte) const {
        if (i >= jetons_.size() || jetons_[i].genre != genre) {
            return false;
        }
        return genre == Genre::Mot ? meme_mot(jetons_[i].texte, texte) : jetons_[i].texte == texte;
    }
    bool est_mot(std::size_t i, std::string_view mot) const { return est(i, Genre::Mot, mot); }
    bool est_nom(std::size_t i) const {
        return i < jetons_.size() &&
               (jetons_[i].genre == Genre::Mot || jetons_[i].genre == Genre::Crochets);
    }

    /// The first token at or after `i` that is not a blank, or `fin`.
    std::size_t suivant(std::size_t i, std::size_t fin) const {
        while (i < fin && jetons_[i].genre == Genre::Blanc) {
            ++i;
        }
        return i;
    }
    /// The last token before `i` that is not a blank, or npos.
    std::size_t precedent(std::size_t i) const {
        while (i > 0) {
            if (jetons_[--i].genre != Genre::Blanc) {
                return i;
            }
        }
        return npos;
    }

    /// The ')' that closes the '(' at `ouvrante`, or npos.
    std::size_t fermante(std::size_t ouvrante, std::size_t fin) const {
        int profondeur = 0;
        for (std::size_t i = ouvrante; i < fin; ++i) {
            if (est(i, Genre::Ponctuation, "(")) {
                ++profondeur;
            } else if (est(i, Genre::Ponctuation, ")") && --profondeur == 0) {
                return i;
            }
        }
        return npos;
    }

    /// The first `mot` outside parentheses in [debut, fin), or npos.
    std::size_t mot_hors_parentheses(std::size_t debut, std::size_t fin,
                                     std::string_view mot) const {
        int profondeur = 0;
        for (std::size_t i = debut; i < fin; ++i) {
            if (est(i, Genre::Ponctuation, "(")) {
                ++profondeur;
            } else if (est(i, Genre::Ponctuation, ")")) {
                --profondeur;
            } else if (profondeur == 0 && est_mot(i, mot)) {
                return i;
            }
        }
        return npos;
    }

    void copier(std::size_t debut, std::size_t fin) {
        for (std::size_t i = debut; i < fin; ++i) {
            sortie_ += jetons_[i].texte;
        }
    }

    void instruction(std::size_t debut, std::size_t fin) {
        const std::size_t verbe = suivant(debut, fin);
        if (est_mot(verbe, "DELETE")) {
            supprimer(debut, verbe, fin);
        } else if (est_mot(verbe, "UPDATE")) {
            mettre_a_jour(debut, fin);
        } else {
            valeurs(debut, fin);
        }
    }

    // SQLite deletes whole rows and takes no column list between DELETE and FROM.
    void supprimer(std::size_t debut, std::size_t verbe, std::size_t fin) {
        const std::size_t from = mot_hors_parentheses(verbe + 1, fin, "FROM");
        if (from == npos || suivant(verbe + 1, fin) == from) {
            valeurs(debut, fin);
            return;
        }
        copier(debut, verbe + 1);
        sortie_ += jetons_[verbe + 1].genre == Genre::Blanc ? jetons_[verbe + 1].texte : " ";
        valeurs(from, fin);
    }

    // SQLite takes bare column names as the targets of SET.
    void mettre_a_jour(std::size_t debut, std::size_t fin) {
        const std::size_t set = mot_hors_parentheses(debut, fin, "SET");
        if (set == npos) {
            valeurs(debut, fin);
            return;
        }
        const std::size_t where = mot_hors_parentheses(set + 1, fin, "WHERE");
        const std::size_t fin_set = where == npos ? fin : where;
        valeurs(debut, set + 1);
        std::size_t affectation = set + 1;
        while (affectation < fin_set) {
            std::size_t virgule = affectation;
            int profondeur = 0;
            for (; virgule < fin_set; ++virgule) {
                if (est(virgule, Genre::Ponctuation, "(")) {
                    ++profondeur;
                } else if (est(virgule, Genre::Ponctuation, ")")) {
                    --profondeur;
                } else if (profondeur == 0 && est(virgule, Genre::Ponctuation, ",")) {
                    break;
                }
            }
            cible(affectation, virgule);
            if (virgule < fin_set) {
                sortie_ += jetons_[virgule].texte;
                ++virgule;
            }
            affectation = virgule;
        }
        valeurs(fin_set, fin);
    }

    /// One `target = value` of a SET list, the target's table qualifier dropped.
    void cible(std::size_t debut, std::size_t fin) {
        const std::size_t table = suivant(debut, fin);
        const std::size_t point = table + 1;
        const std::size_t colonne = table + 2;
        if (colonne < fin && est_nom(table) && est(point, Genre::Ponctuation, ".") &&
            est_nom(colonne) && est(suivant(colonne + 1, fin), Genre::Ponctuation, "=")) {
            copier(debut, table);
            sortie_ += jetons_[colonne].texte;
            valeurs(colonne + 1, fin);
            return;
        }
        valeurs(debut, fin);
    }

    bool qualifie(std::size_t i) const {
        const std::size_t avant = precedent(i);
        return (avant != npos && est(avant, Genre::Ponctuation, ".")) ||
               est(suivant(i + 1, jetons_.size()), Genre::Ponctuation, ".");
    }

    /// Copies [debut, fin), rewriting the literals and the functions SQLite lacks.
    void valeurs(std::size_t debut, std::size_t fin) {
        for (std::size_t i = debut; i < fin;) {
            const Jeton& jeton = jetons_[i];
            if (jeton.genre == Genre::ChaineDouble) {
                sortie_ += chaine_simple(jeton.texte);
            } else if (jeton.genre == Genre::Date) {
                const auto date = date_stockee(jeton.texte);
                sortie_ += date ? std::string_view(*date) : jeton.texte;
            } else if (est(i, Genre::Ponctuation, "@") && est(i + 1, Genre::Ponctuation, "@") &&
                       est_mot(i + 2, "IDENTITY")) {
                // The key the connection's own last insert was given.
                sortie_ += "last_insert_rowid()";
                i += 3;
                continue;
            } else if (jeton.genre == Genre::Mot && !qualifie(i)) {
                const std::size_t apres = fonction(i, fin);
                if (apres != npos) {
                    i = apres;
                    continue;
                }
                const std::size_t avant = precedent(i);
                const bool alias = avant != npos && est_mot(avant, "AS");
                if (!alias && est_mot(i, "True")) {
                    sortie_ += "-1";
                } else if (!alias && est_mot(i, "False")) {
                    sortie_ += "0";
                } else {
                    sortie_ += jeton.texte;
                }
            } else {
                sortie_ += jeton.texte;
            }
            ++i;
        }
    }

    /// Rewrites Date() or Val(x) at `i`; returns the token after the call, or npos when
    /// `i` starts neither.
    std::size_t fonction(std::size_t i, std::size_t fin) {
        const bool date = est_mot(i, "Date");
        if (!date && !est_mot(i, "Val")) {
            return npos;
        }
        const std::size_t ouvrante = suivant(i + 1, fin);
        if (!est(ouvrante, Genre::Ponctuation, "(")) {
            return npos;
        }
        const std::size_t fermeture = fermante(ouvrante, fin);
        if (fermeture == npos) {
            return npos;
        }
        const bool vide = suivant(ouvrante + 1, fermeture) == fermeture;
        if (date != vide) {
            return npos;
        }
        if (date) {
            sortie_ += aujourdhui_;
        } else {
            // Like the host's Val, read the argument as text and keep its leading
            // number (0 when there is none). A whole number comes out as an integer,
            // so that it compares and prints as the host's does ("123", not "123.0").
            sortie_ += "CAST(CAST(";
            valeurs(ouvrante + 1, fermeture);
            sortie_ += " AS TEXT) AS NUMERIC)";
        }
        return fermeture + 1;
    }

    const std::vector<Jeton>& jetons_;
    const std::string aujourdhui_;
    std::string sortie_;
};

}  // namespace

std::string Traduire_Access_SQL(std::string_view access_sql, const std::tm& aujourdhui) {
    const auto jetons = decouper(access_sql);
    if (!jetons) {
        // An open literal is the engine's error to report, on the text as written.
        return std::string(access_sql);
    }
    return Traducteur(*jetons, aujourdhui).traduire();
}

}  // namespace sv140
