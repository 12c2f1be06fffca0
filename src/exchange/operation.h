// One operation of the host, as the dispatcher runs it: what its request phase does,
// whether the middleware is then called, and what its response phase stores. Each
// subsystem lists its own operations beside their request builders and store routines.
#pragma once

#include <span>
#include <string_view>

#include "tools/statut.h"

namespace sv140 {

struct Run;

/// A step of an operation. A failure is rolled back and answered 99 under the
/// operation's name (unless the step already answered).
using Etape = Statut (*)(Run&);

enum class Suite {
    Envoyer,   // the request step wrote ZEMO_SvRequest.xml: send it, then check
    Verifier,  // the request step did its own work: go straight to the check
};

struct Operation {
    std::string_view nom;
    Etape requete;  // null: nothing before the check
    Suite suite;
    Etape reponse;  // after a successful check; null: nothing to store
};

/// A step with nothing to do.
inline Statut Rien(Run&) {
    return {};
}

}  // namespace sv140
