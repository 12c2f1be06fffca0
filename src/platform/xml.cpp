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

}  // namespace xml_commun
}  // namespace sv140
