// Scanning, image conversion and the document forms: one supporting document of a
// kind captured into its JPEG in the program folder, and the windows in which the
// optician reviews the captured documents and names another attachment's nature.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "exchange/operation.h"
#include "platform/scanner.h"

namespace sv140 {

struct Connexions;

/// The operations of this subsystem.
std::span<const Operation> Operations_Scan();

/// The kinds of supporting document, by the names a session asks for them.
inline constexpr std::string_view kOrdo = "ORDO";
inline constexpr std::string_view kCerfa = "CERFA";
inline constexpr std::string_view kAutp = "AUTP";

/// An image at or above this many bytes is refused by the scheme.
inline constexpr long long kTailleMaximaleImage = 196000;

/// How a kind is scanned: the scanner's settings and the JPEG quality.
struct ParametresScan {
    ReglagesScan reglages;
    int qualite = 60;
};
/// The shop's settings for `type` (kOrdo, kCerfa, kAutp) from T_InfoParam, each Null
/// (and for the resolution and the pixel type, each 0) taken as its default. The
/// defaults alone when the row or the database cannot be read.
ParametresScan Lire_Parametres_Scan(Connexions& c, std::string_view type);

/// The file name of a kind's image in the program folder.
const char* Image_Du_Type(std::string_view type);

/// One scan operation: asks the optician for the document of kind `type`, scans it
/// (or takes the collected paper's image) into the kind's image, and sets `mode` ("M"
/// for a collected paper, empty otherwise). Leaves no image when nothing usable came.
void Numeriser(Run& run, std::string_view type, std::string& mode);

/// The transfer modes of a session's three kinds.
struct ModesScor {
    std::string ordonnance, cerfa, autre;
};

/// The review window of a capture session: the optician opens or deletes the scanned
/// images until "Enregistrer".
void Documents_SCOR(Run& run, const ModesScor& modes);
/// The review window of a prescription-only capture.
void Document_Ordo2(Run& run, const std::string& mode_ordonnance);
/// The chooser of another attachment's nature: the chosen entry's code, or nothing
/// when it was closed without a choice.
std::optional<std::string> AutrePJ(Run& run);
/// The code an entry of the nature list gives: what follows its first " - ".
std::string Code_Nature(std::string_view entree);
/// The nature list, in the order it is shown.
std::span<const char* const> Natures_Autre_PJ();

}  // namespace sv140
