// Days as the simulated middleware counts them: the simulated day that the insurers'
// answers follow, and the yyyymmdd text its books keep days in.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "sim/depot.h"

namespace sv140::sim {

/// The simulated day: the local date plus the state's day offset.
std::chrono::sys_days jour_simule(const Depot& depot);

/// The day as yyyymmdd.
std::string texte_jour(std::chrono::sys_days jour);

/// A date written yyyymmdd, dd/mm/yyyy or yyyy-mm-dd; nothing when it is none.
std::optional<std::chrono::sys_days> lire_jour(const std::string& t);

}  // namespace sv140::sim
