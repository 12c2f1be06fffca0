// The card-information form. Not shown yet: the host is answered "Fonction non
// disponible".
#include "exchange/echange.h"
#include "scan/scan.h"

namespace sv140 {
std::span<const Operation> Operations_Scan() {
    static const Operation operations[] = {
        {"f_infosSV", Fonction_Non_Disponible, Suite::Verifier, Rien},
    };
    return operations;
}

}  // namespace sv140
