// On Linux the optician's boxes and questions are the console's.
#include "platform/ui.h"

#include <utility>

namespace sv140 {

std::unique_ptr<Ui> creer_ui(Journal journal) {
    return creer_ui_console(std::move(journal));
}

}  // namespace sv140
