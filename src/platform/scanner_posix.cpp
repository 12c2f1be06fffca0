// The scanner on Linux: SANE. Each scan opens the library and the device and closes
// both again, so that a device plugged in between two scans is seen and nothing stays
// held while the optician reviews the page.
#include <dlfcn.h>
#include <sane/sane.h>
#include <sane/saneopts.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <type_traits>

#include "platform/scanner.h"
#include "platform/systeme.h"

namespace sv140 {

namespace {

// SANE is loaded at the first scan, not linked: with its backends' USB and device
// libraries it would be mapped and relocated at the start of every run, of every
// operation, for the few that scan.
struct Sane {
    decltype(&::sane_init) init = nullptr;
    decltype(&::sane_exit) exit = nullptr;
    decltype(&::sane_get_devices) get_devices = nullptr;
    decltype(&::sane_open) open = nullptr;
    decltype(&::sane_close) close = nullptr;
    decltype(&::sane_cancel) cancel = nullptr;
    decltype(&::sane_strstatus) strstatus = nullptr;
    decltype(&::sane_get_option_descriptor) get_option_descriptor = nullptr;
    decltype(&::sane_control_option) control_option = nullptr;
    decltype(&::sane_start) start = nullptr;
    decltype(&::sane_get_parameters) get_parameters = nullptr;
    decltype(&::sane_read) read = nullptr;
    bool chargee = false;
};

const Sane& libsane() {
    static const Sane s = [] {
        Sane b;
        // Global, as when it was linked: the backends SANE loads in turn, its test
        // device's reader thread among them, then see what the program sees (under
        // AddressSanitizer a local SANE's reader aborted on a futex error).
        void* h = ::dlopen("libsane.so.1", RTLD_NOW | RTLD_GLOBAL);
        if (h == nullptr) {
            return b;
        }
        auto prendre = [h](auto& fonction, const char* nom) {
            fonction =
                reinterpret_cast<std::remove_reference_t<decltype(fonction)>>(::dlsym(h, nom));
            return fonction != nullptr;
        };
        b.chargee =
            prendre(b.init, "sane_init") && prendre(b.exit, "sane_exit") &&
            prendre(b.get_devices, "sane_get_devices") && prendre(b.open, "sane_open") &&
            prendre(b.close, "sane_close") && prendre(b.cancel, "sane_cancel") &&
            prendre(b.strstatus, "sane_strstatus") &&
            prendre(b.get_option_descriptor, "sane_get_option_descriptor") &&
            prendre(b.control_option, "sane_control_option") && prendre(b.start, "sane_start") &&
            prendre(b.get_parameters, "sane_get_parameters") && prendre(b.read, "sane_read");
        return b;
    }();
    return s;
}

/// sane_init for the life of the object; sane_exit closes whatever is still open.
class SessionSane {
  public:
    SessionSane() {
        pret_ = libsane().chargee && libsane().init(nullptr, nullptr) == SANE_STATUS_GOOD;
    }
    ~SessionSane() {
        if (pret_) {
            libsane().exit();
        }
    }
    SessionSane(const SessionSane&) = delete;
    SessionSane& operator=(const SessionSane&) = delete;
    bool pret() const { return pret_; }

    /// The devices SANE lists, network ones included, as the system's own tools list
    /// them.
    std::vector<const SANE_Device*> appareils() const {
        std::vector<const SANE_Device*> liste;
        const SANE_Device** tous = nullptr;
        if (pret_ && libsane().get_devices(&tous, SANE_FALSE) == SANE_STATUS_GOOD && tous) {
            for (; *tous; ++tous) {
                liste.push_back(*tous);
            }
        }
        return liste;
    }

  private:
    bool pret_ = false;
};

/// An open device; the scan in progress is cancelled and the device closed on
/// destruction.
class Appareil {
  public:
    explicit Appareil(SANE_Handle h) : h_(h) {}
    ~Appareil() {
        libsane().cancel(h_);
        libsane().close(h_);
    }
    Appareil(const Appareil&) = delete;
    Appareil& operator=(const Appareil&) = delete;
    SANE_Handle get() const { return h_; }

  private:
    SANE_Handle h_;
};

std::string statut(SANE_Status s) {
    return libsane().strstatus(s);
}

/// The option named `nom` that can be set now, or -1.
SANE_Int option(SANE_Handle h, const char* nom) {
    for (SANE_Int i = 1;; ++i) {
        const SANE_Option_Descriptor* d = libsane().get_option_descriptor(h, i);
        if (!d) {
            return -1;
        }
        if (d->name && std::string_view(d->name) == nom) {
            return SANE_OPTION_IS_ACTIVE(d->cap) && SANE_OPTION_IS_SETTABLE(d->cap) ? i : -1;
        }
    }
}

/// `valeur` as the option's word (an integer or a fixed-point number), brought within
/// its range or to the nearest value of its list.
SANE_Word mot_permis(const SANE_Option_Descriptor& d, double valeur) {
    const bool fixe = d.type == SANE_TYPE_FIXED;
    SANE_Word mot = fixe ? SANE_FIX(valeur) : static_cast<SANE_Word>(std::lround(valeur));
    if (d.constraint_type == SANE_CONSTRAINT_RANGE && d.constraint.range) {
        mot = std::clamp(mot, d.constraint.range->min, d.constraint.range->max);
    } else if (d.constraint_type == SANE_CONSTRAINT_WORD_LIST && d.constraint.word_list &&
               d.constraint.word_list[0] > 0) {
        const SANE_Word* liste = d.constraint.word_list;
        SANE_Word proche = liste[1];
        for (SANE_Word i = 1; i <= liste[0]; ++i) {
            if (std::llabs(std::int64_t{liste[i]} - mot) < std::llabs(std::int64_t{proche} - mot)) {
                proche = liste[i];
            }
        }
        mot = proche;
    }
    return mot;
}

/// Sets a numeric option (every element of an array option). The value the device
/// kept, which may differ from the one asked for; nothing when it refused.
std::optional<double> regler_nombre(SANE_Handle h, SANE_Int i, double valeur) {
    const SANE_Option_Descriptor* d = i < 0 ? nullptr : libsane().get_option_descriptor(h, i);
    if (!d || (d->type != SANE_TYPE_INT && d->type != SANE_TYPE_FIXED) ||
        d->size < static_cast<SANE_Int>(sizeof(SANE_Word))) {
        return std::nullopt;
    }
    std::vector<SANE_Word> mots(static_cast<std::size_t>(d->size) / sizeof(SANE_Word),
                                mot_permis(*d, valeur));
    // Setting an option may change the others' descriptors, which must then be read
    // again before any of them is used, this one included.
    if (libsane().control_option(h, i, SANE_ACTION_SET_VALUE, mots.data(), nullptr) !=
            SANE_STATUS_GOOD ||
        !libsane().get_option_descriptor(h, i) ||
        libsane().control_option(h, i, SANE_ACTION_GET_VALUE, mots.data(), nullptr) !=
            SANE_STATUS_GOOD) {
        return std::nullopt;
    }
    return d->type == SANE_TYPE_FIXED ? SANE_UNFIX(mots[0]) : double(mots[0]);
}

bool regler_texte(SANE_Handle h, SANE_Int i, const char* valeur) {
    const SANE_Option_Descriptor* d = libsane().get_option_descriptor(h, i);
    if (!d || d->type != SANE_TYPE_STRING || d->size <= 0) {
        return false;
    }
    if (d->constraint_type == SANE_CONSTRAINT_STRING_LIST) {
        bool propose = false;
        for (const SANE_String_Const* s = d->constraint.string_list; s && *s; ++s) {
            propose = propose || std::string_view(*s) == valeur;
        }
        if (!propose) {
            return false;
        }
    }
    std::string tampon(valeur);
    tampon.resize(std::max<std::size_t>(tampon.size() + 1, static_cast<std::size_t>(d->size)));
    return libsane().control_option(h, i, SANE_ACTION_SET_VALUE, tampon.data(), nullptr) ==
           SANE_STATUS_GOOD;
}

/// Sets mode and depth for the shop's pixel type. A device without a "Lineart" mode
/// gives line art as its gray mode at one bit per pixel. The reason of a refusal, or
/// "".
std::string regler_mode(SANE_Handle h, int type_pixel) {
    static const char* const kModes[] = {SANE_VALUE_SCAN_MODE_LINEART, SANE_VALUE_SCAN_MODE_GRAY,
                                         SANE_VALUE_SCAN_MODE_COLOR};
    if (type_pixel < 0 || type_pixel > 2) {
        return "type de pixel inconnu : " + std::to_string(type_pixel);
    }
    const SANE_Int mode = option(h, SANE_NAME_SCAN_MODE);
    if (mode < 0) {
        return type_pixel == 1 ? "" : "le scanner ne propose pas le choix du mode";
    }
    if (regler_texte(h, mode, kModes[type_pixel])) {
        // A depth of 16 bits is of no use to a page stored as an 8-bit image.
        if (type_pixel != 0) {
            regler_nombre(h, option(h, SANE_NAME_BIT_DEPTH), 8);
        }
        return "";
    }
    if (type_pixel == 0 && regler_texte(h, mode, SANE_VALUE_SCAN_MODE_GRAY) &&
        regler_nombre(h, option(h, SANE_NAME_BIT_DEPTH), 1) == 1.0) {
        return "";
    }
    return std::string("le scanner refuse le mode ") + kModes[type_pixel];
}

/// A page as SANE delivered it: one 1-bit or 8-bit gray plane, or 8-bit RGB.
struct Page {
    SANE_Parameters p{};
    int lignes = 0;
    std::string octets;
};

void ajouter_u16(std::string& s, std::uint32_t v) {
    s.push_back(static_cast<char>(v & 0xff));
    s.push_back(static_cast<char>((v >> 8) & 0xff));
}
void ajouter_u32(std::string& s, std::uint32_t v) {
    ajouter_u16(s, v & 0xffff);
    ajouter_u16(s, v >> 16);
}

/// The page as a BMP file: 8-bit gray with a gray palette, or 24-bit colour, rows
/// bottom-up, each padded to four bytes, with the resolution in pixels per metre.
std::string bmp(const Page& page, double dpi) {
    const bool couleur = page.p.format == SANE_FRAME_RGB;
    const std::uint32_t largeur = static_cast<std::uint32_t>(page.p.pixels_per_line);
    const std::uint32_t ligne = ((largeur * (couleur ? 3 : 1)) + 3) & ~3u;
    const std::uint32_t palette = couleur ? 0 : 256 * 4;
    const std::uint32_t debut = 14 + 40 + palette;
    const std::uint32_t taille_image = ligne * static_cast<std::uint32_t>(page.lignes);
    const auto ppm = static_cast<std::uint32_t>(std::lround(dpi / 0.0254));

    std::string f;
    f.reserve(debut + taille_image);
    f += "BM";
    ajouter_u32(f, debut + taille_image);
    ajouter_u32(f, 0);
    ajouter_u32(f, debut);
    ajouter_u32(f, 40);
    ajouter_u32(f, largeur);
    ajouter_u32(f, static_cast<std::uint32_t>(page.lignes));
    ajouter_u16(f, 1);
    ajouter_u16(f, couleur ? 24 : 8);
    ajouter_u32(f, 0);  // no compression
    ajouter_u32(f, taille_image);
    ajouter_u32(f, ppm);
    ajouter_u32(f, ppm);
    ajouter_u32(f, couleur ? 0 : 256);
    ajouter_u32(f, 0);
    for (std::uint32_t i = 0; !couleur && i < 256; ++i) {
        const char g = static_cast<char>(i);
        f += {g, g, g, 0};
    }
    const std::size_t pas = static_cast<std::size_t>(page.p.bytes_per_line);
    for (int y = page.lignes - 1; y >= 0; --y) {
        const auto* src =
            reinterpret_cast<const unsigned char*>(page.octets.data()) + pas * std::size_t(y);
        const std::size_t avant = f.size();
        for (std::uint32_t x = 0; x < largeur; ++x) {
            if (couleur) {
                f += {char(src[3 * x + 2]), char(src[3 * x + 1]), char(src[3 * x])};
            } else if (page.p.depth == 1) {
                // SANE's line art: a set bit is black.
                f.push_back((src[x / 8] >> (7 - x % 8)) & 1 ? '\0' : '\xff');
            } else {
                f.push_back(char(src[x]));
            }
        }
        f.append(ligne - (f.size() - avant), '\0');
    }
    return f;
}

/// Acquires one page. The reason of a failure, or "".
std::string acquerir(SANE_Handle h, Page& page) {
    SANE_Status s = libsane().start(h);
    if (s != SANE_STATUS_GOOD) {
        return "le scanner n'a pas démarré : " + statut(s);
    }
    if ((s = libsane().get_parameters(h, &page.p)) != SANE_STATUS_GOOD) {
        return "paramètres de la page illisibles : " + statut(s);
    }
    const SANE_Parameters& p = page.p;
    const bool gris = p.format == SANE_FRAME_GRAY && (p.depth == 1 || p.depth == 8);
    const bool couleur = p.format == SANE_FRAME_RGB && p.depth == 8;
    if (!p.last_frame || (!gris && !couleur)) {
        return "format de page non pris en charge (trame " + std::to_string(p.format) +
               ", profondeur " + std::to_string(p.depth) + ")";
    }
    const int octets_utiles = couleur        ? 3 * p.pixels_per_line
                              : p.depth == 1 ? (p.pixels_per_line + 7) / 8
                                             : p.pixels_per_line;
    if (p.pixels_per_line <= 0 || p.bytes_per_line < octets_utiles) {
        return "largeur de page incohérente";
    }
    std::vector<SANE_Byte> tampon(65536);
    for (;;) {
        SANE_Int lus = 0;
        s = libsane().read(h, tampon.data(), static_cast<SANE_Int>(tampon.size()), &lus);
        if (s == SANE_STATUS_EOF) {
            break;
        }
        if (s != SANE_STATUS_GOOD) {
            return "lecture interrompue : " + statut(s);
        }
        page.octets.append(reinterpret_cast<const char*>(tampon.data()),
                           static_cast<std::size_t>(lus));
    }
    const std::size_t pas = static_cast<std::size_t>(p.bytes_per_line);
    // A hand-held scanner says its page's length only by stopping.
    page.lignes = p.lines >= 0 ? p.lines : static_cast<int>(page.octets.size() / pas);
    if (page.lignes == 0 || page.octets.size() < pas * std::size_t(page.lignes)) {
        return "page incomplète : " + std::to_string(page.octets.size()) + " octets reçus sur " +
               std::to_string(pas * std::size_t(std::max(page.lignes, 1)));
    }
    return "";
}

class ScannerSane : public Scanner {
  public:
    ResultatScan numeriser(const ReglagesScan& reglages, const std::string& fichier) override {
        SessionSane sane;
        if (!sane.pret()) {
            return {EtatScan::SourceIndisponible, libsane().chargee
                                                      ? "SANE ne s'initialise pas"
                                                      : "SANE introuvable (libsane.so.1)"};
        }
        std::string nom = choisi_;
        if (nom.empty()) {
            nom = variable_environnement("SANE_DEFAULT_DEVICE");
        }
        if (nom.empty()) {
            const auto appareils = sane.appareils();
            if (appareils.empty()) {
                return {EtatScan::SourceIndisponible, "aucun scanner trouvé"};
            }
            nom = appareils.front()->name;
        }
        SANE_Handle h = nullptr;
        const SANE_Status s = libsane().open(nom.c_str(), &h);
        if (s != SANE_STATUS_GOOD || !h) {
            return {EtatScan::SourceIndisponible,
                    "le scanner « " + nom + " » ne s'ouvre pas : " + statut(s)};
        }
        Appareil appareil(h);
        auto echec = [&](const std::string& raison) {
            return ResultatScan{EtatScan::Echec, "scanner « " + nom + " » : " + raison};
        };

        if (std::string raison = regler_mode(h, reglages.type_pixel); !raison.empty()) {
            return echec(raison);
        }
        double dpi = reglages.resolution;
        for (const char* r : {SANE_NAME_SCAN_RESOLUTION, SANE_NAME_SCAN_X_RESOLUTION,
                              SANE_NAME_SCAN_Y_RESOLUTION}) {
            if (const SANE_Int i = option(h, r); i >= 0) {
                const auto garde = regler_nombre(h, i, reglages.resolution);
                if (!garde) {
                    return echec(std::string("résolution refusée (") + r + ")");
                }
                dpi = *garde;
            }
        }
        for (const auto& [nom_option, valeur] :
             {std::pair{SANE_NAME_BRIGHTNESS, reglages.luminosite},
              std::pair{SANE_NAME_CONTRAST, reglages.contraste}}) {
            if (const SANE_Int i = option(h, nom_option); i >= 0 && !regler_nombre(h, i, valeur)) {
                return echec(std::string("réglage refusé : ") + nom_option);
            }
        }

        Page page;
        if (std::string raison = acquerir(h, page); !raison.empty()) {
            return echec(raison);
        }
        // The page replaces the file only once it is whole on disk.
        const std::string provisoire = fichier + ".partiel";
        if (!ecrire_fichier(provisoire, bmp(page, dpi)) ||
            std::rename(provisoire.c_str(), fichier.c_str()) != 0) {
            supprimer_fichier(provisoire);
            return echec("impossible d'écrire " + fichier);
        }
        return {EtatScan::Reussi, ""};
    }

    bool choisir_source(Ui& ui) override {
        SessionSane sane;
        std::vector<EntreeChoix> entrees;
        for (const SANE_Device* d : sane.appareils()) {
            entrees.push_back(
                {std::string(d->name) + " (" + d->vendor + " " + d->model + ")", d->name});
        }
        if (entrees.empty()) {
            return false;
        }
        const auto choix = ui.Choisir(kTitreChoixSource, entrees);
        if (!choix) {
            return false;
        }
        choisi_ = entrees[*choix].code;
        return true;
    }

  private:
    /// The device the optician chose, when they did.
    std::string choisi_;
};

}  // namespace

std::unique_ptr<Scanner> creer_scanner() {
    return std::make_unique<ScannerSane>();
}

}  // namespace sv140
