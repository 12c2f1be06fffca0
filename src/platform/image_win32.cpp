// BMP to JPEG on Windows: no encoder is linked yet (TurboJPEG comes with the
// capture session), so every conversion fails and says so.
#include "platform/image.h"

namespace sv140 {

namespace {

class ConvertisseurAbsent : public ConvertisseurImage {
  public:
    bool bmp_vers_jpeg(const std::string&, const std::string&, int, std::string& raison) override {
        raison =
            "Conversion en JPEG impossible : aucun encodeur n'est encore disponible sur ce poste";
        return false;
    }
};

}  // namespace

std::unique_ptr<ConvertisseurImage> creer_convertisseur_image() {
    return std::make_unique<ConvertisseurAbsent>();
}

}  // namespace sv140
