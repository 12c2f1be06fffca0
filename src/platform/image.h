// Image conversion: the scanner's BMP page to the JPEG that the claim's attachment
// carries.
#pragma once

#include <memory>
#include <string>

namespace sv140 {

class ConvertisseurImage {
  public:
    virtual ~ConvertisseurImage() = default;
    /// Writes the BMP file `bmp` as the JPEG file `jpeg` (replaced) at `qualite`, from
    /// 1 (smallest) to 100 (best); a value outside is taken as the nearest bound,
    /// since the shop's settings allow 0. False with `raison` in French when `bmp`
    /// cannot be read as a BMP or `jpeg` cannot be written; `jpeg` is then not left
    /// half written.
    virtual bool bmp_vers_jpeg(const std::string& bmp, const std::string& jpeg, int qualite,
                               std::string& raison) = 0;
};

/// The platform's converter.
std::unique_ptr<ConvertisseurImage> creer_convertisseur_image();

}  // namespace sv140
