#include "scorpdf/pdf.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "platform/encodage.h"

namespace sv140::scorpdf {

namespace {

// A4 in points, and the white margin kept around the page's image.
constexpr double kLargeurPage = 595;
constexpr double kHauteurPage = 842;
constexpr double kMarge = 18;

unsigned octet(std::string_view s, std::size_t i) {
    return static_cast<unsigned char>(s[i]);
}

unsigned mot(std::string_view s, std::size_t i) {
    return octet(s, i) << 8 | octet(s, i + 1);
}

std::string nombre(double v) {
    char tampon[32];
    std::snprintf(tampon, sizeof tampon, "%.2f", v);
    return tampon;
}

}  // namespace

std::optional<ImageJpeg> lire_jpeg(std::string_view s, std::string& raison) {
    if (s.size() < 4 || octet(s, 0) != 0xFF || octet(s, 1) != 0xD8) {
        raison = "ce n'est pas une image JPEG";
        return std::nullopt;
    }
    std::size_t i = 2;
    while (i + 4 <= s.size()) {
        if (octet(s, i) != 0xFF) {
            break;
        }
        const unsigned marqueur = octet(s, i + 1);
        if (marqueur == 0xFF) {  // fill byte
            ++i;
            continue;
        }
        if (marqueur == 0x01 || (marqueur >= 0xD0 && marqueur <= 0xD7)) {  // no length
            i += 2;
            continue;
        }
        if (marqueur == 0xD9 || marqueur == 0xDA) {  // end of image, or its data
            break;
        }
        const std::size_t longueur = mot(s, i + 2);
        if (longueur < 2 || i + 2 + longueur > s.size()) {
            break;
        }
        const bool trame = marqueur >= 0xC0 && marqueur <= 0xCF && marqueur != 0xC4 &&
                           marqueur != 0xC8 && marqueur != 0xCC;
        if (trame) {
            if (longueur < 8) {
                break;
            }
            // Baseline, extended and progressive Huffman frames are what a PDF reader
            // decodes; lossless and arithmetic-coded ones are not.
            if (marqueur > 0xC2 || octet(s, i + 4) != 8) {
                raison = "codage JPEG non pris en charge";
                return std::nullopt;
            }
            ImageJpeg image{static_cast<int>(mot(s, i + 7)), static_cast<int>(mot(s, i + 5)),
                            static_cast<int>(octet(s, i + 9))};
            if (image.largeur == 0 || image.hauteur == 0 ||
                (image.composantes != 1 && image.composantes != 3 && image.composantes != 4)) {
                raison = "dimensions ou couleurs de l'image JPEG non prises en charge";
                return std::nullopt;
            }
            return image;
        }
        i += 2 + longueur;
    }
    raison = "image JPEG tronquée ou sans en-tête d'image";
    return std::nullopt;
}

std::string chaine_pdf(std::string_view utf8) {
    const bool ascii =
        std::all_of(utf8.begin(), utf8.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
    if (ascii) {
        std::string s = "(";
        for (char c : utf8) {
            if (c == '(' || c == ')' || c == '\\') {
                s += '\\';
            }
            s += c;
        }
        return s + ")";
    }
    std::string s = "<FEFF";
    char tampon[8];
    for (char16_t c : utf8_vers_utf16(utf8)) {
        std::snprintf(tampon, sizeof tampon, "%04X", static_cast<unsigned>(c));
        s += tampon;
    }
    return s + ">";
}

std::string pdf_de_jpeg(std::string_view jpeg, const ImageJpeg& image, const Informations& infos) {
    const double echelle = std::min((kLargeurPage - 2 * kMarge) / image.largeur,
                                    (kHauteurPage - 2 * kMarge) / image.hauteur);
    const double l = image.largeur * echelle;
    const double h = image.hauteur * echelle;
    const std::string dessin = "q " + nombre(l) + " 0 0 " + nombre(h) + " " +
                               nombre((kLargeurPage - l) / 2) + " " +
                               nombre((kHauteurPage - h) / 2) + " cm /Im1 Do Q\n";
    const char* espace = image.composantes == 1   ? "/DeviceGray"
                         : image.composantes == 3 ? "/DeviceRGB"
                                                  : "/DeviceCMYK /Decode [1 0 1 0 1 0 1 0]";

    std::string pdf = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";
    std::vector<std::size_t> positions;
    auto objet = [&](const std::string& corps) {
        positions.push_back(pdf.size());
        pdf += std::to_string(positions.size()) + " 0 obj\n" + corps + "\nendobj\n";
    };
    objet("<< /Type /Catalog /Pages 2 0 R >>");
    objet("<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    objet(
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Resources << /XObject << /Im1 "
        "4 0 R >> /ProcSet [/PDF /ImageB /ImageC] >> /Contents 5 0 R >>");
    objet("<< /Type /XObject /Subtype /Image /Width " + std::to_string(image.largeur) +
          " /Height " + std::to_string(image.hauteur) + " /ColorSpace " + espace +
          " /BitsPerComponent 8 /Filter /DCTDecode /Length " + std::to_string(jpeg.size()) +
          " >>\nstream\n" + std::string(jpeg) + "\nendstream");
    objet("<< /Length " + std::to_string(dessin.size()) + " >>\nstream\n" + dessin + "endstream");
    objet("<< /Title " + chaine_pdf(infos.titre) + " /Subject " + chaine_pdf(infos.sujet) +
          " /Producer (sv140 Scor) >>");

    const std::size_t xref = pdf.size();
    pdf += "xref\n0 " + std::to_string(positions.size() + 1) + "\n0000000000 65535 f \n";
    char entree[24];
    for (std::size_t p : positions) {
        std::snprintf(entree, sizeof entree, "%010llu 00000 n \n",
                      static_cast<unsigned long long>(p));
        pdf += entree;
    }
    pdf += "trailer\n<< /Size " + std::to_string(positions.size() + 1) +
           " /Root 1 0 R /Info 6 0 R >>\nstartxref\n" + std::to_string(xref) + "\n%%EOF\n";
    return pdf;
}

}  // namespace sv140::scorpdf
