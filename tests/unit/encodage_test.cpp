#include "platform/encodage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace sv140 {
namespace {

TEST(Encodage, Cp1252RoundTrip) {
    const struct {
        std::string cp1252, utf8;
    } cas[] = {{"\xE9t\xE9 \xE0 No\xEBl \xC7 N\xB0", "été à Noël Ç N°"},
               {"\x80\xA0\xFF", "€\u00A0ÿ"},
               {"\x91\x92\x93\x94\x96\x97\x85\x8C\x9C\x8A\x9E\x9F\x83", "‘’“”–—…ŒœŠžŸƒ"},
               // The five bytes the code page leaves undefined keep their control character.
               {"\x81\x8D\x8F\x90\x9D", "\u0081\u008D\u008F\u0090\u009D"},
               {std::string("a\0b", 3), std::string("a\0b", 3)}};
    for (const auto& c : cas) {
        EXPECT_EQ(cp1252_vers_utf8(c.cp1252), c.utf8);
        EXPECT_EQ(utf8_vers_cp1252(c.utf8), c.cp1252) << c.utf8;
    }
    std::string octets;
    for (int i = 0; i < 256; ++i) {
        octets += static_cast<char>(i);
    }
    EXPECT_EQ(utf8_vers_cp1252(cp1252_vers_utf8(octets)), octets);
    // One question mark per character the page lacks, C1 controls included.
    EXPECT_EQ(utf8_vers_cp1252("a\u0100b日😀\u0080"), "a?b???");
    EXPECT_EQ(codes_ansi("Aé€ Ā😀"), (std::vector<int>{65, 233, 128, 32, 63, 63}));
}

TEST(Encodage, InvalidUtf8BytesAreWindows1252) {
    const struct {
        std::string entree, utf8;  // utf8: as the UTF-16 round trip gives it back
        std::size_t longueur;
    } cas[] = {{"caf\xE9", "café", 4},
               {"5\x80", "5€", 2},
               {"\xC3(", "Ã(", 2},
               {"\xC0\xAF", "À¯", 2},
               {"\xED\xA0\x80", "í\u00A0€", 3},
               {"\xF4\x90\x80\x80", "ô\u0090€€", 4},
               {"\xE9t\xC3\xA9", "été", 3}};
    for (const auto& c : cas) {
        EXPECT_EQ(utf16_vers_utf8(utf8_vers_utf16(c.entree)), c.utf8) << c.utf8;
        EXPECT_EQ(longueur_caracteres(c.entree), c.longueur) << c.utf8;
        EXPECT_EQ(codes_ansi(c.entree).size(), c.longueur) << c.utf8;
    }
    EXPECT_EQ(utf8_vers_cp1252("caf\xE9 \xC3\xA9"), "caf\xE9 \xE9");
}

TEST(Encodage, Utf16SurrogatePairs) {
    EXPECT_EQ(utf8_vers_utf16("a😀b€\U0010FFFF"), u"a\U0001F600b€\U0010FFFF");
    EXPECT_EQ(utf16_vers_utf8(u"a\U0001F600b€\U0010FFFF"), "a😀b€\U0010FFFF");
    // A surrogate without its pair becomes the replacement character.
    EXPECT_EQ(utf16_vers_utf8(std::u16string{u'a', char16_t{0xD83D}, u'b'}), "a\uFFFDb");
    EXPECT_EQ(utf16_vers_utf8(u"\xDE00"), "\uFFFD");
    EXPECT_EQ(utf16_vers_utf8(u"\xD83D"), "\uFFFD");
}

TEST(Encodage, CharacterCut) {
    EXPECT_EQ(longueur_caracteres("Sélection €😀"), 12u);
    const struct {
        std::string texte;
        std::size_t n;
        std::string gauche;
    } cas[] = {{"Sélection", 2, "Sé"},
               {"a😀b", 2, "a😀"},
               {"abc", 0, ""},
               {"abc", 10, "abc"},
               {"caf\xE9s", 4, "caf\xE9"}};
    for (const auto& c : cas) {
        EXPECT_EQ(gauche_caracteres(c.texte, c.n), c.gauche) << c.texte;
    }
}

}  // namespace
}  // namespace sv140
