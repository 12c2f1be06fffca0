#include "platform/encodage.h"

#include <array>

namespace sv140 {

namespace {

// The characters of bytes 0x80 to 0x9F. The five bytes Windows-1252 leaves undefined
// keep their ISO-8859-1 control character, so that any byte read from the host's
// files survives a round trip.
constexpr std::array<char16_t, 32> kPlage80 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80-87
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88-8F
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90-97
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98-9F
};

constexpr int kInconnu = '?';

char32_t caractere_cp1252(unsigned char octet) {
    if (octet >= 0x80 && octet <= 0x9F) {
        return kPlage80[octet - 0x80];
    }
    return octet;
}

/// The Windows-1252 byte of a character, or -1 when the code page lacks it.
int octet_cp1252(char32_t code) {
    if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) {
        return static_cast<int>(code);
    }
    for (std::size_t i = 0; i < kPlage80.size(); ++i) {
        if (kPlage80[i] == code) {
            return static_cast<int>(0x80 + i);
        }
    }
    return -1;
}

struct Caractere {
    char32_t code;
    std::size_t octets;
};

// One character at `pos`. A byte that does not start a well-formed UTF-8 sequence
// (truncated, overlong, surrogate, beyond U+10FFFF) is taken alone as its
// Windows-1252 character: the host's files reach us as raw bytes.
Caractere lire_caractere(std::string_view texte, std::size_t pos) {
    const auto octet = [&](std::size_t i) { return static_cast<unsigned char>(texte[i]); };
    const unsigned char premier = octet(pos);
    const Caractere seul{caractere_cp1252(premier), 1};
    if (premier < 0x80) {
        return seul;
    }
    std::size_t suite;
    char32_t code;
    char32_t minimum;
    if (premier >= 0xC2 && premier <= 0xDF) {
        suite = 1;
        code = premier & 0x1F;
        minimum = 0x80;
    } else if (premier >= 0xE0 && premier <= 0xEF) {
        suite = 2;
        code = premier & 0x0F;
        minimum = 0x800;
    } else if (premier >= 0xF0 && premier <= 0xF4) {
        suite = 3;
        code = premier & 0x07;
        minimum = 0x10000;
    } else {
        return seul;
    }
    if (pos + suite >= texte.size()) {
        return seul;
    }
    for (std::size_t i = 1; i <= suite; ++i) {
        const unsigned char o = octet(pos + i);
        if ((o & 0xC0) != 0x80) {
            return seul;
        }
        code = (code << 6) | (o & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        return seul;
    }
    return {code, suite + 1};
}

void ecrire_utf8(std::string& sortie, char32_t code) {
    if (code < 0x80) {
        sortie += static_cast<char>(code);
    } else if (code < 0x800) {
        sortie += static_cast<char>(0xC0 | (code >> 6));
        sortie += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        sortie += static_cast<char>(0xE0 | (code >> 12));
        sortie += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        sortie += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        sortie += static_cast<char>(0xF0 | (code >> 18));
        sortie += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        sortie += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        sortie += static_cast<char>(0x80 | (code & 0x3F));
    }
}

}  // namespace

std::string utf8_vers_cp1252(std::string_view utf8) {
    std::string sortie;
    sortie.reserve(utf8.size());
    for (std::size_t pos = 0; pos < utf8.size();) {
        const Caractere c = lire_caractere(utf8, pos);
        const int octet = octet_cp1252(c.code);
        sortie += static_cast<char>(octet < 0 ? kInconnu : octet);
        pos += c.octets;
    }
    return sortie;
}

std::string cp1252_vers_utf8(std::string_view octets) {
    std::string sortie;
    sortie.reserve(octets.size() + octets.size() / 4);
    for (const char octet : octets) {
        ecrire_utf8(sortie, caractere_cp1252(static_cast<unsigned char>(octet)));
    }
    return sortie;
}

std::vector<int> codes_ansi(std::string_view utf8) {
    std::vector<int> codes;
    for (std::size_t pos = 0; pos < utf8.size();) {
        const Caractere c = lire_caractere(utf8, pos);
        const int octet = octet_cp1252(c.code);
        codes.push_back(octet < 0 ? kInconnu : octet);
        pos += c.octets;
    }
    return codes;
}

std::u16string utf8_vers_utf16(std::string_view utf8) {
    std::u16string sortie;
    sortie.reserve(utf8.size());
    for (std::size_t pos = 0; pos < utf8.size();) {
        const Caractere c = lire_caractere(utf8, pos);
        if (c.code >= 0x10000) {
            const char32_t reste = c.code - 0x10000;
            sortie += static_cast<char16_t>(0xD800 + (reste >> 10));
            sortie += static_cast<char16_t>(0xDC00 + (reste & 0x3FF));
        } else {
            sortie += static_cast<char16_t>(c.code);
        }
        pos += c.octets;
    }
    return sortie;
}

std::string utf16_vers_utf8(std::u16string_view utf16) {
    constexpr char32_t kRemplacement = 0xFFFD;
    std::string sortie;
    sortie.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        const char32_t unite = utf16[i];
        if (unite >= 0xD800 && unite <= 0xDBFF) {
            if (i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 && utf16[i + 1] <= 0xDFFF) {
                const char32_t bas = utf16[++i];
                ecrire_utf8(sortie, 0x10000 + ((unite - 0xD800) << 10) + (bas - 0xDC00));
            } else {
                ecrire_utf8(sortie, kRemplacement);
            }
        } else if (unite >= 0xDC00 && unite <= 0xDFFF) {
            ecrire_utf8(sortie, kRemplacement);
        } else {
            ecrire_utf8(sortie, unite);
        }
    }
    return sortie;
}

std::size_t longueur_caracteres(std::string_view utf8) {
    std::size_t n = 0;
    for (std::size_t pos = 0; pos < utf8.size(); ++n) {
        pos += lire_caractere(utf8, pos).octets;
    }
    return n;
}

std::string gauche_caracteres(std::string_view utf8, std::size_t n) {
    std::size_t pos = 0;
    for (std::size_t pris = 0; pris < n && pos < utf8.size(); ++pris) {
        pos += lire_caractere(utf8, pos).octets;
    }
    return std::string(utf8.substr(0, pos));
}

}  // namespace sv140
