#include <dlfcn.h>

#include "platform/systeme.h"
#include "sim/module.h"

namespace sv140::sim {

namespace {
// Any address inside the library will do for the loader to name the file.
void repere() {}
}  // namespace

std::string dossier_module() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&repere), &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    return dossier_parent(info.dli_fname);
}

}  // namespace sv140::sim
