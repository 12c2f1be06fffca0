// The parameters of the bridge database and the host's data version.
#pragma once

#include <string>

#include "data/connexions.h"
#include "tools/statut.h"

namespace sv140 {

/// The host schema version: max of Version.Version, 2000 when empty or unreadable.
double Lire_Version_Base(Connexions& c);
/// Whether SCOR is enabled (always False below data version 3500).
bool Lire_SCORActif(Connexions& c);
/// The middleware answer buffer size as configured, 102400 when it is not.
double Lire_Taille_Buffer(Connexions& c);

/// What the professional requests are built from.
struct IdentifiantsPS {
    std::string idNat;    // national identifier
    std::string idFac;    // invoicing identifier: the situation's number and its key
    std::string numSitu;  // situation number, "1" by default
};
/// Reads the professional's identifiers into `ps`. When they cannot be read (missing
/// rows or an unreadable database), a failure whose reason is the host's message, with
/// what had been read left in `ps`.
Statut Lire_Identifiants_PS(Connexions& c, IdentifiantsPS& ps);

}  // namespace sv140
