// A scanned page as a one-page PDF: the JPEG embedded as it is, on an A4 page.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sv140::scorpdf {

/// What a PDF must say of a JPEG to show it, read from its frame header.
struct ImageJpeg {
    int largeur = 0;
    int hauteur = 0;
    /// 1 gray, 3 RGB, 4 CMYK.
    int composantes = 0;
};

/// The frame header of a baseline or progressive JPEG of 8-bit samples. Nothing, with
/// `raison` in French, for any other file.
std::optional<ImageJpeg> lire_jpeg(std::string_view octets, std::string& raison);

/// The document's information: its title and subject.
struct Informations {
    std::string titre;
    std::string sujet;
};

/// A PDF 1.4 file of one A4 page showing `jpeg` (whose header is `image`) as large as
/// the page allows, centred, without re-encoding it.
std::string pdf_de_jpeg(std::string_view jpeg, const ImageJpeg& image, const Informations& infos);

/// A PDF text string: a literal string for ASCII text, otherwise UTF-16BE hex with its
/// byte-order mark.
std::string chaine_pdf(std::string_view utf8);

}  // namespace sv140::scorpdf
