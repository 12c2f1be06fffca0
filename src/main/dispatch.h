// One run of the bridge: command line, paths, the two dispatch phases, archive and the
// answer for the host.
#pragma once

#include <string>

namespace sv140 {

struct Run;

/// Splits the command-line text into the operation, the data folder and the third
/// word, and sets the run-wide paths. A text without a blank selects the developer
/// defaults.
void Decouper_Ligne_Commande(Run& run, const std::string& ligne);

/// The Windows-1252 codes of the text, each followed by one blank.
std::string Decomposition(const std::string& ligne);

/// A whole run for the command-line text, the log already emptied.
void Executer_Run(Run& run, const std::string& ligne);

}  // namespace sv140
