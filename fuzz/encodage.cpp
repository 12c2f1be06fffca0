// The Windows-1252 and UTF-16 conversions, on any bytes taken as either encoding. What
// the middleware sends in Windows-1252 must come back unchanged from UTF-8, and a text
// cut to n characters must stay a prefix of n characters.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/encodage.h"

namespace {
void exiger(bool condition) {
    if (!condition) {
        std::abort();
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t taille) {
    using namespace sv140;
    const std::string_view brut(reinterpret_cast<const char*>(octets), taille);

    // The bytes as any text the bridge is given in UTF-8, valid or not.
    utf8_vers_cp1252(brut);
    utf16_vers_utf8(utf8_vers_utf16(brut));
    codes_ansi(brut);
    gauche_caracteres(brut, longueur_caracteres(brut) / 2);

    // The bytes as the middleware's Windows-1252.
    const std::string utf8 = cp1252_vers_utf8(brut);
    exiger(utf8_vers_cp1252(utf8) == brut);
    exiger(utf16_vers_utf8(utf8_vers_utf16(utf8)) == utf8);
    exiger(longueur_caracteres(utf8) == taille);
    exiger(codes_ansi(utf8).size() == taille);
    const std::size_t n = taille / 2;
    const std::string debut = gauche_caracteres(utf8, n);
    exiger(utf8.starts_with(debut) && longueur_caracteres(debut) == n);
    return 0;
}
