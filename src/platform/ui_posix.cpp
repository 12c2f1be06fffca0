// On Linux the optician's boxes, questions and forms are the console's; a document
// opened from a form is named there and also shown in the desktop's viewer when the
// bridge runs with a display.
#include <iostream>
#include <string>
#include <utility>

#include "platform/systeme.h"
#include "platform/ui_console.h"

namespace sv140 {

std::unique_ptr<Ui> creer_ui(Journal journal) {
    return creer_ui_console(std::move(journal), std::cin, std::cerr,
                            [](const std::string& chemin) { ouvrir_document(chemin); });
}

}  // namespace sv140
