// The scanner: one page at a time into a BMP file of the program folder, set up with
// the shop's settings for the kind of document.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/ui.h"

namespace sv140 {

/// How a page is scanned, as the shop's settings give it for a kind of document.
struct ReglagesScan {
    /// Dots per inch, across and down.
    int resolution = 200;
    /// 0 lineart, 1 gray, 2 color (the numbering of the shop's settings); any other
    /// value makes the scan fail.
    int type_pixel = 1;
    /// Brightness and contrast, set only on a device that has them.
    int luminosite = 0;
    int contraste = 0;
};

enum class EtatScan {
    Reussi,
    /// No device, or the device cannot be opened: the optician may choose another
    /// source and scan again.
    SourceIndisponible,
    /// Any other failure (a setting refused, the page not delivered, the file not
    /// written).
    Echec,
};

struct ResultatScan {
    EtatScan etat = EtatScan::Echec;
    /// Why it failed, in French, for the log; empty on success.
    std::string raison;
};

class Scanner {
  public:
    virtual ~Scanner() = default;
    /// Sets the chosen source (or the default one) up with `reglages` and scans one
    /// page into the BMP file `bmp`, replaced. When the result is not Reussi, `bmp`
    /// holds no new page.
    virtual ResultatScan numeriser(const ReglagesScan& reglages, const std::string& bmp) = 0;
    /// Lets the optician choose the source the next scans use: the system's own chooser
    /// where the platform has one and the interface is not the console; otherwise the
    /// sources' names are listed with `ui.Choisir` under the title
    /// kTitreChoixSource. False when no source was chosen (none to choose from, the
    /// chooser closed).
    virtual bool choisir_source(Ui& ui) = 0;
};

/// The caption of the source chooser.
inline constexpr const char* kTitreChoixSource = "Sélection de la source";

/// The platform's scanner.
std::unique_ptr<Scanner> creer_scanner();

}  // namespace sv140
