#include <windows.h>

#include "platform/encodage.h"
#include "platform/systeme.h"
#include "sim/module.h"

namespace sv140::sim {

namespace {
// Any address inside the library will do for the loader to name the file.
void repere() {}
}  // namespace

std::string dossier_module() {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(&repere), &module)) {
        return {};
    }
    std::wstring chemin(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n =
            GetModuleFileNameW(module, chemin.data(), static_cast<DWORD>(chemin.size()));
        if (n == 0) {
            return {};
        }
        if (n < chemin.size()) {
            chemin.resize(n);
            break;
        }
        chemin.resize(chemin.size() * 2);
    }
    const std::u16string utf16(chemin.begin(), chemin.end());
    return dossier_parent(utf16_vers_utf8(utf16));
}

}  // namespace sv140::sim
