// What every Windows file of the platform layer shares: the system headers, trimmed,
// and the conversions between the bridge's UTF-8 and the wide system interfaces.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string>
#include <string_view>

#include "platform/encodage.h"

namespace sv140 {

inline std::wstring large(std::string_view utf8) {
    const std::u16string texte = utf8_vers_utf16(utf8);
    return std::wstring(reinterpret_cast<const wchar_t*>(texte.data()), texte.size());
}

inline std::string etroit(const wchar_t* texte, std::size_t longueur) {
    return utf16_vers_utf8(std::u16string_view(reinterpret_cast<const char16_t*>(texte), longueur));
}

}  // namespace sv140
