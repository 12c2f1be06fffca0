// Text encodings at the bridge's borders.
//
// Inside the bridge every string is UTF-8. The middleware, the request and response
// documents and the Windows "ANSI" code page speak Windows-1252 (a superset of
// ISO-8859-1 for every printable character); these helpers convert at the border.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sv140 {

/// UTF-8 to Windows-1252. A character the code page lacks becomes '?'.
std::string utf8_vers_cp1252(std::string_view utf8);

/// Windows-1252 (or ISO-8859-1) bytes to UTF-8. Never fails: the five bytes that
/// Windows-1252 leaves undefined are taken as their ISO-8859-1 control characters.
std::string cp1252_vers_utf8(std::string_view octets);

/// The Windows-1252 code of each character of a UTF-8 text, in order (63 for a
/// character outside the code page, as the ANSI conversion gives '?').
std::vector<int> codes_ansi(std::string_view utf8);

/// UTF-8 to UTF-16 and back, for the wide-character system interfaces.
std::u16string utf8_vers_utf16(std::string_view utf8);
std::string utf16_vers_utf8(std::u16string_view utf16);

/// Length of a UTF-8 text in characters, and its first `n` characters (the
/// character counts of the host's text fields, not byte counts).
std::size_t longueur_caracteres(std::string_view utf8);
std::string gauche_caracteres(std::string_view utf8, std::size_t n);

}  // namespace sv140
