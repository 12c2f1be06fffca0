// The console interface with its streams given, for tests and for front ends that
// read answers from somewhere other than standard input.
#pragma once

#include <functional>
#include <istream>
#include <memory>
#include <ostream>
#include <string>

#include "platform/ui.h"

namespace sv140 {

/// What opening a document does besides the console's line naming it.
using Visionneuse = std::function<void(const std::string& chemin)>;

/// The console interface writing its lines to `sortie` and the log, and reading
/// answers from `entree`. Both streams must outlive the interface. Ouvrir writes a
/// line naming the document, then hands it to `visionneuse` when there is one.
std::unique_ptr<Ui> creer_ui_console(Journal journal, std::istream& entree, std::ostream& sortie,
                                     Visionneuse visionneuse = nullptr);

}  // namespace sv140
