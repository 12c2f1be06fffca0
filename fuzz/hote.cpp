// The host's documents: the first byte picks an operation that reads ZEMO_Request.xml
// (the claim, the invoice to read or delete, the complementary query) or dctsScor.xml
// (a SCOR order); the rest is that document. The middleware gives its usual answer.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "magasin.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t taille) {
    using namespace sv140::fuzz;
    static const std::vector<Cas> lecteurs = [] {
        std::vector<Cas> v;
        for (const Cas& cas : Cas_Operations()) {
            if (!cas.document.empty()) {
                v.push_back(cas);
            }
        }
        return v;
    }();
    if (taille == 0) {
        return 0;
    }
    const Cas& cas = lecteurs[octets[0] % lecteurs.size()];
    const std::string_view document(reinterpret_cast<const char*>(octets) + 1, taille - 1);
    Executer(cas, document, Fichier_Fuzz("reponses/" + std::string(cas.reponse)));
    return 0;
}
