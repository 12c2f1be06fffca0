// One run of the bridge: command line, paths, the two dispatch phases, archive and the
// answer for the host.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "exchange/operation.h"

namespace sv140 {

struct Run;

/// Splits the command-line text into the operation, the data folder and the third
/// word, and sets the run-wide paths. A text without a blank selects the developer
/// defaults.
void Decouper_Ligne_Commande(Run& run, const std::string& ligne);

/// The Windows-1252 codes of the text, each followed by one blank.
std::string Decomposition(const std::string& ligne);

/// The operations in the order the request phase compares them, then in the order the
/// response phase does; each name has its row in one subsystem's operations.
const std::vector<std::string_view>& Ordre_Requetes();
const std::vector<std::string_view>& Ordre_Reponses();
/// The row of an operation, null for a name no subsystem knows.
const Operation* Trouver_Operation(std::string_view nom);

/// A whole run for the command-line text, the log already emptied. Returns false when
/// the run ended before the archive and the copy of the answer (run.interruption).
bool Executer_Run(Run& run, const std::string& ligne);

}  // namespace sv140
