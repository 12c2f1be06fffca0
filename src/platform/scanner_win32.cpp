// The scanner on Windows: no device is driven yet (TWAIN comes with the capture
// session), so every scan finds its source not available and there is nothing to
// choose from.
#include "platform/scanner.h"

namespace sv140 {

namespace {

class ScannerAbsent : public Scanner {
  public:
    ResultatScan numeriser(const ReglagesScan&, const std::string&) override {
        return {EtatScan::SourceIndisponible,
                "Aucun scanner : la numérisation n'est pas encore prise en charge sur ce poste"};
    }
    bool choisir_source(Ui&) override { return false; }
};

}  // namespace

std::unique_ptr<Scanner> creer_scanner() {
    return std::make_unique<ScannerAbsent>();
}

}  // namespace sv140
