// Where the simulated middleware library was loaded from: its state folder lives
// beside it.
#pragma once

#include <string>

namespace sv140::sim {

/// The folder holding the loaded library (UTF-8), "" when it cannot be found.
std::string dossier_module();

}  // namespace sv140::sim
