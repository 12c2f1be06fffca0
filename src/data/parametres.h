// Connections and the parameters of the bridge database.
#pragma once

#include <string>

namespace sv140 {

struct Run;

/// Opens the host, temporary and bridge databases, in this order, unless this run
/// already did. A database that cannot be opened stays closed (and is logged); the
/// routines that need it then fail like any database error.
void Ouvrir_Connexions(Run& run);
/// Validates the writes of every open database; false when one failed.
bool Valider_Connexions(Run& run);

/// The host schema version: max of Version.Version, 2000 when empty or unreadable.
double Lire_Version_Base(Run& run);
/// Whether SCOR is enabled (always False below data version 3500).
bool Lire_SCORActif(Run& run);
/// The middleware answer buffer size, 102400 when not configured.
long Lire_Taille_Buffer(Run& run);
/// The professional's national identifier, invoicing identifier (number and key) and
/// situation number. When they cannot be read (missing rows or an unreadable
/// database), writes the code 99 error response and returns false with what it had read.
bool Lire_Identifiants_PS(Run& run, std::string& idNat, std::string& idFac, std::string& numSitu);

}  // namespace sv140
