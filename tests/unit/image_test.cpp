// The scanner's page converted to the attachment's JPEG, on both platforms (under Wine
// the library is the cross-built one, and paths go through the ANSI code page).
#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <cstdint>
#include <string>

#include "aide_test.h"
#include "platform/image.h"
#include "platform/systeme.h"

namespace sv140 {
namespace {

void mot(std::string& s, std::uint32_t v, int octets) {
    for (int i = 0; i < octets; ++i) {
        s += static_cast<char>((v >> (8 * i)) & 0xff);
    }
}

// A BMP of `bits` 8 (gray palette) or 24, with noise that a low quality smooths away.
std::string page_bmp(int largeur, int hauteur, int bits) {
    const int octets_pixel = bits / 8;
    const int ligne = (largeur * octets_pixel + 3) / 4 * 4;
    const int palette = bits == 8 ? 256 * 4 : 0;
    std::string s = "BM";
    mot(s, 54 + palette + ligne * hauteur, 4);
    mot(s, 0, 4);
    mot(s, 54 + palette, 4);
    for (std::uint32_t v : {40, largeur, hauteur}) {
        mot(s, v, 4);
    }
    mot(s, 1, 2);
    mot(s, bits, 2);
    for (std::uint32_t v : {0, ligne * hauteur, 2835, 2835, bits == 8 ? 256 : 0, 0}) {
        mot(s, v, 4);
    }
    for (int i = 0; i < palette / 4; ++i) {
        mot(s, i * 0x010101u, 4);
    }
    std::uint32_t alea = 12345;
    for (int y = 0; y < hauteur; ++y) {
        std::string octets(ligne, '\0');
        for (int x = 0; x < largeur * octets_pixel; ++x) {
            alea = alea * 1103515245u + 12345u;
            octets[x] = static_cast<char>((x * 4 + y) % 200 + (alea >> 26));
        }
        s += octets;
    }
    return s;
}

struct Jpeg {
    int largeur = 0, hauteur = 0, echantillonnage = -1;
};

Jpeg entete(const std::string& octets) {
    Jpeg j;
    int couleurs = 0;
    tjhandle h = tjInitDecompress();
    tjDecompressHeader3(h, reinterpret_cast<const unsigned char*>(octets.data()), octets.size(),
                        &j.largeur, &j.hauteur, &j.echantillonnage, &couleurs);
    tjDestroy(h);
    return j;
}

TEST(Image, BmpPagesBecomeJpegsOfTheirSize) {
    test::DossierTemporaire d;
    ASSERT_TRUE(creer_dossier(d / "Magasin Éloïse"));
    const struct {
        int bits;
        const char* dossier;
        int echantillonnage;
    } cas[] = {
        {8, ".", TJSAMP_GRAY},
        {24, ".", TJSAMP_420},
        {24, "Magasin Éloïse", TJSAMP_420},
    };
    for (const auto& c : cas) {
        SCOPED_TRACE(testing::Message() << c.bits << " bits in " << c.dossier);
        const std::string bmp = d / (std::string(c.dossier) + "/page.bmp");
        const std::string jpeg = d / (std::string(c.dossier) + "/page.jpg");
        test::ecrire(bmp, page_bmp(123, 77, c.bits));
        std::string raison;
        ASSERT_TRUE(creer_convertisseur_image()->bmp_vers_jpeg(bmp, jpeg, 60, raison)) << raison;
        const Jpeg j = entete(test::lire(jpeg));
        EXPECT_EQ(j.largeur, 123);
        EXPECT_EQ(j.hauteur, 77);
        EXPECT_EQ(j.echantillonnage, c.echantillonnage);
        EXPECT_FALSE(fichier_existe(jpeg + ".tmp"));
    }
}

TEST(Image, QualityIsClampedAndShrinksTheFile) {
    test::DossierTemporaire d;
    test::ecrire(d / "page.bmp", page_bmp(200, 200, 24));
    auto taille = [&](int qualite) {
        std::string raison;
        EXPECT_TRUE(creer_convertisseur_image()->bmp_vers_jpeg(d / "page.bmp", d / "p.jpg", qualite,
                                                               raison));
        return test::lire(d / "p.jpg");
    };
    EXPECT_LT(taille(5).size() * 3, taille(90).size());
    EXPECT_EQ(taille(0), taille(1));
    EXPECT_EQ(taille(250), taille(100));
}

TEST(Image, NoJpegFromWhatIsNotABmpOrCannotBeWritten) {
    test::DossierTemporaire d;
    test::ecrire(d / "texte.bmp", "Ceci n'est pas une image");
    test::ecrire(d / "page.bmp", page_bmp(16, 16, 24));
    const struct {
        const char *bmp, *jpeg;
    } cas[] = {
        {"texte.bmp", "a.jpg"},
        {"absent.bmp", "a.jpg"},
        {"page.bmp", "absent/a.jpg"},
    };
    for (const auto& c : cas) {
        SCOPED_TRACE(c.bmp);
        std::string raison;
        EXPECT_FALSE(creer_convertisseur_image()->bmp_vers_jpeg(d / c.bmp, d / c.jpeg, 60, raison));
        EXPECT_TRUE(raison.starts_with("Conversion en JPEG impossible : ")) << raison;
        EXPECT_FALSE(fichier_existe(d / c.jpeg));
    }
}

}  // namespace
}  // namespace sv140
