// The clock: the bridge reads the time of day from here and nowhere else, so that
// the log, the month folders and the date literals of one run agree.
#pragma once

#include <ctime>

namespace sv140 {

/// The local date and time now, from the system clock. A zeroed `std::tm` when the
/// system cannot convert the time (a clock set beyond what its calendar holds).
std::tm maintenant_local();

}  // namespace sv140
