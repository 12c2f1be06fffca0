// The console interface with its streams given, for tests and for front ends that
// read answers from somewhere other than standard input.
#pragma once

#include <istream>
#include <memory>
#include <ostream>

#include "platform/ui.h"

namespace sv140 {

/// The console interface writing its lines to `sortie` and the log, and reading
/// answers from `entree`. Both streams must outlive the interface.
std::unique_ptr<Ui> creer_ui_console(Journal journal, std::istream& entree, std::ostream& sortie);

}  // namespace sv140
