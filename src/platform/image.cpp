// BMP to JPEG with TurboJPEG, the same on both platforms: Linux links Debian's library,
// Windows the same source cross-built (scripts/libjpeg-turbo-win32.sh).
#include "platform/image.h"

#include <turbojpeg.h>

#include <algorithm>
#include <string_view>

#include "platform/systeme.h"

namespace sv140 {

namespace {

// TurboJPEG's buffers, freed with its own allocator.
struct Tampon {
    unsigned char* octets = nullptr;
    ~Tampon() { tjFree(octets); }
};

struct Poignee {
    tjhandle h;
    ~Poignee() {
        if (h != nullptr) {
            tjDestroy(h);
        }
    }
};

class ConvertisseurTurboJpeg : public ConvertisseurImage {
  public:
    bool bmp_vers_jpeg(const std::string& bmp, const std::string& jpeg, int qualite,
                       std::string& raison) override {
        if (!fichier_existe(bmp)) {
            raison = "Conversion en JPEG impossible : le fichier " + bmp + " est introuvable";
            return false;
        }
        // A gray-palette page loads as gray and is encoded with one component; any
        // other page loads as RGB.
        int largeur = 0, hauteur = 0, format = TJPF_UNKNOWN;
        Tampon pixels;
        pixels.octets = tjLoadImage(chemin_ansi(bmp).c_str(), &largeur, 1, &hauteur, &format, 0);
        if (pixels.octets == nullptr) {
            raison = "Conversion en JPEG impossible : " + bmp +
                     " n'est pas une image BMP lisible (" + tjGetErrorStr2(nullptr) + ")";
            return false;
        }

        Poignee compresseur{tjInitCompress()};
        Tampon sortie;
        unsigned long taille = 0;
        const bool gris = format == TJPF_GRAY;
        if (compresseur.h == nullptr ||
            tjCompress2(compresseur.h, pixels.octets, largeur, 0, hauteur, format, &sortie.octets,
                        &taille, gris ? TJSAMP_GRAY : TJSAMP_420, std::clamp(qualite, 1, 100),
                        0) != 0) {
            raison =
                std::string("Conversion en JPEG impossible : ") + tjGetErrorStr2(compresseur.h);
            return false;
        }

        // Written beside the result and renamed onto it: a failure never leaves a
        // truncated image for the size check or the PDF.
        const std::string temporaire = jpeg + ".tmp";
        if (!ecrire_fichier(
                temporaire,
                std::string_view(reinterpret_cast<const char*>(sortie.octets), taille)) ||
            !remplacer_fichier(temporaire, jpeg)) {
            supprimer_fichier(temporaire);
            raison = "Conversion en JPEG impossible : le fichier " + jpeg + " ne peut être écrit";
            return false;
        }
        raison.clear();
        return true;
    }
};

}  // namespace

std::unique_ptr<ConvertisseurImage> creer_convertisseur_image() {
    return std::make_unique<ConvertisseurTurboJpeg>();
}

}  // namespace sv140
