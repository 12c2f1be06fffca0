// What the SCOR operations share among themselves: the host's order file, the numbers
// read from it, the professional's identifiers read once, and one middleware exchange.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "data/parametres.h"
#include "platform/xml.h"
#include "tools/statut.h"

namespace sv140 {

struct Run;
class Requete;

namespace scor {

/// The caller the host's SCOR screens read their answers under.
inline constexpr const char* kAppelant = "f_Scor";
inline constexpr const char* kOrdreIllisible = "Impossible de lire dctsScor.xml";
inline constexpr const char* kSucces = "La fonction s'est déroulée avec succès";

/// The largest number the host's dossiers, invoices, counters and rows take.
inline constexpr long long kPlusGrandNombre = 2147483647;

/// A number of the host's order: digits only, at most kPlusGrandNombre; an empty or
/// missing element is 0. False with `erreur` naming the element and what it held.
bool Lire_Nombre(const XmlNoeud& noeud, const std::string& chemin, long long& valeur,
                 std::string& erreur);

/// `n` written with at least nine digits, as the scheme numbers invoices and counters.
std::string Neuf_Chiffres(long long n);

/// dctsScor.xml of the program folder, or nullopt once "Impossible de lire
/// dctsScor.xml" is answered.
std::optional<XmlDocument> Charger_Ordre(Run& run);

/// The professional's identifiers, read once before a run's exchanges; the failure is
/// answered (99, the reason) when they cannot be read.
Statut Identifiants(Run& run, IdentifiantsPS& ps);

/// Ends the read transactions of the run's databases: nothing stays open while the
/// middleware works.
void Terminer_Lectures(Run& run);

/// Saves `requete` and hands it to the middleware as `fonction`; the exchange is then
/// archived. A failure when the request could not be saved, or when the run must stop
/// (the request file vanished under the bridge: answered already).
Statut Echanger(Run& run, const Requete& requete, std::string_view fonction);

}  // namespace scor
}  // namespace sv140
