#include "platform/encodage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace sv140 {
namespace {

TEST(Encodage, Cp1252AndUtf8) {
    struct Cas {
        const char* nom;
        std::string cp1252;
        std::string utf8;
    };
    const Cas cas[] = {
        {"ascii", "Dupont 12", "Dupont 12"},
        {"accents", "\xE9t\xE9 \xE0 No\xEBl \xC7", "été à Noël Ç"},
        {"degree sign of N°", "N\xB0", "N°"},
        {"euro", "\x80", "€"},
        {"upper half edges", "\xA0\xFF", "\u00A0ÿ"},
        {"quotes and dashes", "\x91\x92\x93\x94\x96\x97\x85", "‘’“”–—…"},
        {"ligatures and carons", "\x8C\x9C\x8A\x9A\x8E\x9E\x9F\x83", "ŒœŠšŽžŸƒ"},
        {"undefined bytes keep their control character", "\x81\x8D\x8F\x90\x9D",
         "\u0081\u008D\u008F\u0090\u009D"},
        {"nul byte", std::string("a\0b", 3), std::string("a\0b", 3)},
    };
    for (const Cas& c : cas) {
        EXPECT_EQ(cp1252_vers_utf8(c.cp1252), c.utf8) << c.nom;
        EXPECT_EQ(utf8_vers_cp1252(c.utf8), c.cp1252) << c.nom;
    }
}

TEST(Encodage, EveryByteSurvivesTheRoundTrip) {
    std::string octets;
    for (int i = 0; i < 256; ++i) {
        octets += static_cast<char>(i);
    }
    EXPECT_EQ(utf8_vers_cp1252(cp1252_vers_utf8(octets)), octets);
}

TEST(Encodage, CharactersOutsideThePage) {
    EXPECT_EQ(utf8_vers_cp1252("a\u0100b"), "a?b");
    EXPECT_EQ(utf8_vers_cp1252("日本"), "??");
    EXPECT_EQ(utf8_vers_cp1252("😀"), "?") << "one character, one question mark";
    EXPECT_EQ(utf8_vers_cp1252("\u0080\u0082"), "??") << "C1 controls Windows-1252 lacks";
}

TEST(Encodage, InvalidUtf8BytesAreWindows1252) {
    struct Cas {
        const char* nom;
        std::string entree;
        std::string utf8;  // as the UTF-16 round trip gives it back
        std::size_t longueur;
    };
    const Cas cas[] = {
        {"lone Latin-1 byte", "caf\xE9", "café", 4},
        {"lone euro byte", "5\x80", "5€", 2},
        {"truncated sequence", "\xC3", "Ã", 1},
        {"bad continuation", "\xC3(", "Ã(", 2},
        {"overlong slash", "\xC0\xAF", "À¯", 2},
        {"encoded surrogate", "\xED\xA0\x80", "í\u00A0€", 3},
        {"beyond U+10FFFF", "\xF4\x90\x80\x80", "ô\u0090€€", 4},
        {"valid after invalid", "\xE9t\xC3\xA9", "été", 3},
    };
    for (const Cas& c : cas) {
        EXPECT_EQ(utf16_vers_utf8(utf8_vers_utf16(c.entree)), c.utf8) << c.nom;
        EXPECT_EQ(longueur_caracteres(c.entree), c.longueur) << c.nom;
        EXPECT_EQ(codes_ansi(c.entree).size(), c.longueur) << c.nom;
    }
    EXPECT_EQ(utf8_vers_cp1252("caf\xE9 \xC3\xA9"), "caf\xE9 \xE9");
}

TEST(Encodage, Utf16WithSurrogatePairs) {
    struct Cas {
        std::string utf8;
        std::u16string utf16;
    };
    const Cas cas[] = {
        {"", u""},
        {"Noël €", u"Noël €"},
        {"😀", u"\xD83D\xDE00"},
        {"a𝄞b", u"a\U0001D11Eb"},
        {"\U0010FFFF", u"\xDBFF\xDFFF"},
        {"\uFFFF", u"\xFFFF"},
    };
    for (const Cas& c : cas) {
        EXPECT_EQ(utf8_vers_utf16(c.utf8), c.utf16) << c.utf8;
        EXPECT_EQ(utf16_vers_utf8(c.utf16), c.utf8) << c.utf8;
    }
    const std::u16string haut_seul{u'a', char16_t{0xD83D}, u'b'};
    EXPECT_EQ(utf16_vers_utf8(haut_seul), "a\uFFFDb") << "high surrogate alone";
    EXPECT_EQ(utf16_vers_utf8(u"\xDE00"), "\uFFFD") << "low surrogate alone";
    EXPECT_EQ(utf16_vers_utf8(u"\xD83D"), "\uFFFD") << "high surrogate at the end";
}

TEST(Encodage, CodesAnsi) {
    EXPECT_EQ(codes_ansi("Aé€ Ā😀"), (std::vector<int>{65, 233, 128, 32, 63, 63}));
    EXPECT_EQ(codes_ansi("\u0081"), (std::vector<int>{0x81}));
    EXPECT_TRUE(codes_ansi("").empty());
}

TEST(Encodage, LengthAndLeftCutCountCharacters) {
    struct Cas {
        std::string texte;
        std::size_t n;
        std::string gauche;
    };
    EXPECT_EQ(longueur_caracteres("Sélection €😀"), 12u);
    const Cas cas[] = {
        {"Sélection", 2, "Sé"}, {"€uro", 1, "€"},   {"a😀b", 2, "a😀"},
        {"abc", 0, ""},         {"abc", 10, "abc"}, {"caf\xE9s", 4, "caf\xE9"},
    };
    for (const Cas& c : cas) {
        EXPECT_EQ(gauche_caracteres(c.texte, c.n), c.gauche) << c.texte;
    }
}

}  // namespace
}  // namespace sv140
