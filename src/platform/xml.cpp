// What both XML implementations share: XPath literals, trimming, the text a document
// may hold and the words of a refusal.
#include "platform/xml.h"

#include <algorithm>

#include "platform/encodage.h"

namespace sv140 {

std::string xpath_litteral(std::string_view valeur) {
    if (valeur.find('\'') == std::string_view::npos) {
        return std::string("'").append(valeur).append("'");
    }
    if (valeur.find('"') == std::string_view::npos) {
        return std::string("\"").append(valeur).append("\"");
    }
    // Both kinds of quotes: glue the pieces between apostrophes back together.
    std::string r = "concat(";
    std::size_t debut = 0;
    for (bool premier = true;; premier = false) {
        auto pos = valeur.find('\'', debut);
        std::string_view morceau = valeur.substr(
            debut, pos == std::string_view::npos ? std::string_view::npos : pos - debut);
        if (!premier) {
            r.append(", ");
        }
        r.append("'").append(morceau).append("'");
        if (pos == std::string_view::npos) {
            break;
        }
        r.append(", \"'\"");
        debut = pos + 1;
    }
    return r.append(")");
}

namespace xml_commun {

std::string rogner(std::string_view texte) {
    const char* blancs = " \t\r\n";
    auto debut = texte.find_first_not_of(blancs);
    if (debut == std::string_view::npos) {
        return {};
    }
    auto fin = texte.find_last_not_of(blancs);
    return std::string(texte.substr(debut, fin - debut + 1));
}

// Whatever a database or a command line holds, the saved document stays readable.
std::u16string texte_document(std::string_view texte) {
    std::u16string large = utf8_vers_utf16(texte);
    std::erase_if(large, [](char16_t c) {
        return (c < 0x20 && c != '\t' && c != '\n' && c != '\r') || c == 0xFFFE || c == 0xFFFF;
    });
    return large;
}

std::string refus(std::string_view raison, long ligne) {
    std::string r = "document mal formé";
    if (ligne > 0) {
        r += ", ligne " + std::to_string(ligne);
    }
    std::string pourquoi = rogner(raison);
    return pourquoi.empty() ? r : r + " : " + pourquoi;
}

namespace {

// The markup of a document as ASCII, whatever its encoding: the low byte of each UTF-16
// unit, the bytes themselves otherwise. Only markup characters are looked at.
std::string squelette(std::string_view octets) {
    const auto u = [&](std::size_t i) { return static_cast<unsigned char>(octets[i]); };
    const bool seize_le =
        octets.size() >= 2 && ((u(0) == 0xFF && u(1) == 0xFE) || (u(0) == '<' && u(1) == 0));
    const bool seize_be =
        octets.size() >= 2 && ((u(0) == 0xFE && u(1) == 0xFF) || (u(0) == 0 && u(1) == '<'));
    if (!seize_le && !seize_be) {
        return std::string(octets);
    }
    std::string s;
    s.reserve(octets.size() / 2);
    for (std::size_t i = seize_le ? 0 : 1; i < octets.size(); i += 2) {
        s += octets[i];
    }
    return s;
}

}  // namespace

bool declare_des_entites(std::string_view octets) {
    const std::string s = squelette(octets);
    std::size_t i = s.find("<!DOCTYPE");
    if (i == std::string::npos) {
        return false;
    }
    // Through the type declaration, its internal subset included, to its closing '>';
    // comments, processing instructions and quoted literals are passed over whole.
    int profondeur = 0;
    for (i += 9; i < s.size(); ++i) {
        if (s.compare(i, 4, "<!--") == 0 || s.compare(i, 2, "<?") == 0) {
            const bool commentaire = s[i + 1] == '!';
            const std::size_t fin = s.find(commentaire ? "-->" : "?>", i + 2);
            if (fin == std::string::npos) {
                return false;  // not well-formed: the parser refuses it
            }
            i = fin + (commentaire ? 2 : 1);
        } else if (s[i] == '"' || s[i] == '\'') {
            i = s.find(s[i], i + 1);
            if (i == std::string::npos) {
                return false;
            }
        } else if (s.compare(i, 8, "<!ENTITY") == 0) {
            return true;
        } else if (s[i] == '[') {
            ++profondeur;
        } else if (s[i] == ']') {
            --profondeur;
        } else if (s[i] == '>' && profondeur <= 0) {
            return false;
        }
    }
    return false;
}

}  // namespace xml_commun
}  // namespace sv140
