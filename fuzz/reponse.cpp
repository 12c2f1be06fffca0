// A middleware answer through the check and the store routine of each operation: the
// first byte picks the operation (Cas_Operations), the rest is what the middleware
// answers to every call of the run.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "magasin.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t taille) {
    using namespace sv140::fuzz;
    if (taille == 0) {
        return 0;
    }
    const auto operations = Cas_Operations();
    const Cas& cas = operations[octets[0] % operations.size()];
    const std::string_view reponse(reinterpret_cast<const char*>(octets) + 1, taille - 1);
    Executer(cas, cas.document.empty() ? "" : Fichier_Fuzz("magasin/" + std::string(cas.modele)),
             reponse);
    return 0;
}
