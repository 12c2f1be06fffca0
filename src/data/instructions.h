// Statement shapes every routine uses, the statement texts staying written out by
// their callers.
#pragma once

#include <string_view>

#include "data/connexion.h"
#include "tools/statut.h"

namespace sv140 {

/// The rows of a query positioned on the first one (EOF_() when there is none), or
/// the query's failure.
Resultat<Recordset> Premiere_Ligne(Connexion& c, std::string_view requete);

/// The largest key a query such as "SELECT Max(t.ID) AS Cle FROM t;" gives: the first
/// column of its first row as a number, 0 for an empty table.
Resultat<double> Plus_Grande_Cle(Connexion& c, std::string_view requete);

/// A single-row table: `insertion` when `selection` finds no row, `mise_a_jour`
/// otherwise.
Statut Inserer_Ou_Mettre_A_Jour(Connexion& c, std::string_view selection,
                                std::string_view insertion, std::string_view mise_a_jour);

}  // namespace sv140
