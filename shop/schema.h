// The shop's databases as the bridge and the host expect to find them: every table and
// column that either reads or writes, the indexes its look-ups go through, with the rows a
// new shop starts with.
//
// The databases are SQLite files that keep the Access names and the Access types in
// their SQLite storage (Yes/No as -1/0, dates as text, AutoNumber keys), so that the
// statements the bridge writes for the shop's Access files run unchanged against them.
#pragma once

#include <string>

namespace sv140::shop {

/// Names of the database files. The bridge's and the host's live in the shop's data
/// folder; the temporary one beside the program folder.
inline constexpr const char* kBasePont = "SV140.accdb";
inline constexpr const char* kBaseHote = "Donnees_32.accdb";
inline constexpr const char* kBaseTemporaire = "Temporaire.accdb";

/// Creates SV140.accdb and Donnees_32.accdb in `dossier_magasin` (which must exist) and
/// the temporary database at `chemin_temporaire`, with their tables and starting rows.
/// False with `erreur` when one of the files already exists (nothing is touched then)
/// or when a file cannot be created or a statement fails; the files this call created
/// are removed again on failure.
bool Creer_Bases(const std::string& dossier_magasin, const std::string& chemin_temporaire,
                 std::string& erreur);

}  // namespace sv140::shop
