// A TWAIN data source for the tests of the Windows programs under Wine, whose own
// sources cannot reach a scanner. It answers the messages the bridge's scanner sends
// and delivers, as a native transfer, a generated page the size of an A4-like sheet
// (8.27 x 11.69 inches) at the resolution it was set to: 1-bit for lineart, 8-bit gray
// with its palette, 24-bit for colour. The page carries lines of text-like marks on
// paper with a little noise, so that its JPEG grows with the resolution as a real
// scan does.
//
// Environment (read by the source in the process that loads it):
//   SV140_TWAIN_JOURNAL  a file to which each capability set is appended, one line
//                        each, "ICAP_XRESOLUTION=200" (values in the units sent).
//   SV140_TWAIN_TEST     "indisponible": the source cannot be opened (MSG_OPENDS
//                        fails); "echec": the page transfer fails (DAT_IMAGENATIVEXFER
//                        returns TWRC_FAILURE).
//
// Wine's source manager loads exactly two data sources, C:\windows\twain_32\sane.ds
// and gphoto2.ds; Debian's Wine has no working sane.ds, so the tests install this one
// under that name.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "platform/twain_win32.h"

namespace {

using namespace sv140::twain;

Identite g_source{};
Identite g_application{};
Uint16 g_condition = TWCC_SUCCESS;
int g_resolution = 200;
Uint16 g_type = TWPT_GRAY;

std::wstring variable(const wchar_t* nom) {
    wchar_t valeur[1024];
    const DWORD n = ::GetEnvironmentVariableW(nom, valeur, 1024);
    return n > 0 && n < 1024 ? std::wstring(valeur, n) : std::wstring();
}

void journaliser(const std::string& ligne) {
    const std::wstring chemin = variable(L"SV140_TWAIN_JOURNAL");
    if (chemin.empty()) {
        return;
    }
    HANDLE h = ::CreateFileW(chemin.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                             OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h != INVALID_HANDLE_VALUE) {
        const std::string texte = ligne + "\n";
        DWORD ecrits = 0;
        ::WriteFile(h, texte.data(), static_cast<DWORD>(texte.size()), &ecrits, nullptr);
        ::CloseHandle(h);
    }
}

const char* nom_capacite(Uint16 cap) {
    switch (cap) {
        case ICAP_UNITS:
            return "ICAP_UNITS";
        case ICAP_XRESOLUTION:
            return "ICAP_XRESOLUTION";
        case ICAP_YRESOLUTION:
            return "ICAP_YRESOLUTION";
        case ICAP_BRIGHTNESS:
            return "ICAP_BRIGHTNESS";
        case ICAP_CONTRAST:
            return "ICAP_CONTRAST";
        case ICAP_PIXELTYPE:
            return "ICAP_PIXELTYPE";
        default:
            return nullptr;
    }
}

Uint16 regler(const Capacite& capacite) {
    const char* nom = nom_capacite(capacite.cap);
    if (nom == nullptr || capacite.conteneur_type != TWON_ONEVALUE) {
        g_condition = TWCC_CAPUNSUPPORTED;
        return TWRC_FAILURE;
    }
    const auto* une = static_cast<const UneValeur*>(::GlobalLock(capacite.conteneur));
    if (une == nullptr) {
        g_condition = TWCC_BADVALUE;
        return TWRC_FAILURE;
    }
    long valeur = static_cast<long>(une->valeur);
    if (une->type == TWTY_FIX32) {
        Fix32 f;
        std::memcpy(&f, &une->valeur, sizeof f);
        valeur = f.entier;  // whole units: the bridge sends no fractions
    }
    ::GlobalUnlock(capacite.conteneur);
    journaliser(std::string(nom) + "=" + std::to_string(valeur));
    if (capacite.cap == ICAP_XRESOLUTION) {
        if (valeur < 10 || valeur > 1200) {
            g_condition = TWCC_BADVALUE;
            return TWRC_FAILURE;
        }
        g_resolution = static_cast<int>(valeur);
    } else if (capacite.cap == ICAP_PIXELTYPE) {
        if (valeur > TWPT_RGB) {
            g_condition = TWCC_BADVALUE;
            return TWRC_FAILURE;
        }
        g_type = static_cast<Uint16>(valeur);
    }
    return TWRC_SUCCESS;
}

// The noise's amplitude, in levels.
constexpr std::uint32_t kBruit = 6;

// The page as a packed DIB (header, palette, rows bottom-up) in global memory.
HGLOBAL page() {
    const int largeur = (827 * g_resolution + 50) / 100;
    const int hauteur = (1169 * g_resolution + 50) / 100;
    const int bits = g_type == TWPT_RGB ? 24 : g_type == TWPT_GRAY ? 8 : 1;
    const int couleurs = bits == 24 ? 0 : 1 << bits;
    const int ligne = (largeur * bits + 31) / 32 * 4;
    const std::size_t debut = sizeof(BITMAPINFOHEADER) + couleurs * 4;
    HGLOBAL dib = ::GlobalAlloc(GHND, debut + static_cast<std::size_t>(ligne) * hauteur);
    auto* octets = static_cast<unsigned char*>(::GlobalLock(dib));
    if (octets == nullptr) {
        return nullptr;
    }
    auto* entete = reinterpret_cast<BITMAPINFOHEADER*>(octets);
    entete->biSize = sizeof(BITMAPINFOHEADER);
    entete->biWidth = largeur;
    entete->biHeight = hauteur;
    entete->biPlanes = 1;
    entete->biBitCount = static_cast<WORD>(bits);
    entete->biCompression = BI_RGB;
    entete->biSizeImage = static_cast<DWORD>(ligne * hauteur);
    entete->biXPelsPerMeter = entete->biYPelsPerMeter =
        static_cast<LONG>(g_resolution / 0.0254 + 0.5);
    auto* palette = reinterpret_cast<RGBQUAD*>(octets + sizeof(BITMAPINFOHEADER));
    for (int i = 0; i < couleurs; ++i) {
        const auto gris = static_cast<BYTE>(i * 255 / (couleurs - 1));
        palette[i] = {gris, gris, gris, 0};
    }

    // Marks of a 5 x 7 grid, 0.09 x 0.12 inch, in words along lines 0.4 inch apart,
    // inside one-inch margins; then noise on every pixel.
    std::uint32_t alea = 20240501;
    auto tirer = [&alea](std::uint32_t n) {
        alea = alea * 1664525u + 1013904223u;
        return (alea >> 8) % n;
    };
    std::vector<unsigned char> encre(static_cast<std::size_t>(largeur) * hauteur, 0);
    const double pouce = g_resolution;
    for (double y = 1.0; y + 0.12 < 11.69 - 1.0; y += 0.4) {
        double x = 1.0;
        while (x < 7.27 - 0.6) {
            const auto lettres = 2 + tirer(8);
            for (std::uint32_t l = 0; l < lettres && x < 7.27; ++l, x += 0.12) {
                std::uint64_t motif = 0;
                for (int b = 0; b < 35; ++b) {
                    motif |= static_cast<std::uint64_t>(tirer(100) < 45) << b;
                }
                const int x0 = static_cast<int>(x * pouce), y0 = static_cast<int>(y * pouce);
                const int w = static_cast<int>(0.09 * pouce), h = static_cast<int>(0.12 * pouce);
                for (int dy = 0; dy < h; ++dy) {
                    for (int dx = 0; dx < w; ++dx) {
                        if ((motif >> ((dy * 7 / h) * 5 + dx * 5 / w)) & 1) {
                            encre[static_cast<std::size_t>(y0 + dy) * largeur + x0 + dx] = 1;
                        }
                    }
                }
            }
            x += 0.1;
        }
    }
    unsigned char* pixels = octets + debut;
    for (int y = 0; y < hauteur; ++y) {
        // DIB rows run from the bottom of the page.
        unsigned char* rangee = pixels + static_cast<std::size_t>(hauteur - 1 - y) * ligne;
        for (int x = 0; x < largeur; ++x) {
            const bool noir = encre[static_cast<std::size_t>(y) * largeur + x] != 0;
            const int fond = noir ? 40 : 228;
            if (bits == 1) {
                rangee[x / 8] |= static_cast<unsigned char>((noir ? 0 : 1) << (7 - x % 8));
            } else if (bits == 8) {
                rangee[x] = static_cast<unsigned char>(fond + tirer(kBruit));
            } else {
                rangee[3 * x] =
                    static_cast<unsigned char>(fond - kBruit / 2 + tirer(kBruit));  // blue
                rangee[3 * x + 1] = static_cast<unsigned char>(fond + tirer(kBruit));
                rangee[3 * x + 2] = static_cast<unsigned char>(fond + tirer(kBruit));
            }
        }
    }
    ::GlobalUnlock(dib);
    return dib;
}

void remplir_identite(Identite& identite) {
    const Uint32 id = identite.id;
    identite = Identite{};
    identite.id = id;
    identite.version = {1, 0, kLangueFrancais, kPaysFrance, "1.0"};
    identite.protocole_majeur = kProtocoleMajeur;
    identite.protocole_mineur = kProtocoleMineur;
    identite.groupes = DG_CONTROL | DG_IMAGE;
    std::strcpy(identite.fabricant, "SV140");
    std::strcpy(identite.famille, "Tests");
    std::strcpy(identite.produit, "SV140 Source de test");
}

// The page is ready as soon as the source is enabled: tell the application through
// the manager, as a scanner does once its page is read.
void page_prete() {
    HMODULE gestionnaire = ::GetModuleHandleW(L"twain_32.dll");
    auto entree = reinterpret_cast<Entree>(
        reinterpret_cast<void*>(::GetProcAddress(gestionnaire, "DSM_Entry")));
    if (entree != nullptr) {
        entree(&g_source, &g_application, DG_CONTROL, DAT_NULL, MSG_XFERREADY, nullptr);
    }
}

}  // namespace

extern "C" __declspec(dllexport) Uint16 WINAPI
    DS_Entry(Identite* origine, Uint32 groupe, Uint16 donnee, Uint16 message, void* contenu) {
    const std::wstring essai = variable(L"SV140_TWAIN_TEST");
    const auto triplet = (static_cast<std::uint64_t>(groupe) << 32) | (donnee << 16) | message;
    auto code = [](Uint32 g, Uint16 d, Uint16 m) {
        return (static_cast<std::uint64_t>(g) << 32) | (d << 16) | m;
    };
    if (triplet == code(DG_CONTROL, DAT_IDENTITY, MSG_GET)) {
        remplir_identite(*static_cast<Identite*>(contenu));
    } else if (triplet == code(DG_CONTROL, DAT_IDENTITY, MSG_OPENDS)) {
        if (essai == L"indisponible") {
            g_condition = TWCC_OPERATIONERROR;
            return TWRC_FAILURE;
        }
        g_source = *static_cast<Identite*>(contenu);
        g_application = *origine;
        g_resolution = 200;
        g_type = TWPT_GRAY;
    } else if (triplet == code(DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS) ||
               triplet == code(DG_CONTROL, DAT_USERINTERFACE, MSG_DISABLEDS)) {
    } else if (triplet == code(DG_CONTROL, DAT_CAPABILITY, MSG_SET)) {
        return regler(*static_cast<Capacite*>(contenu));
    } else if (triplet == code(DG_CONTROL, DAT_USERINTERFACE, MSG_ENABLEDS)) {
        page_prete();
    } else if (triplet == code(DG_CONTROL, DAT_EVENT, MSG_PROCESSEVENT)) {
        static_cast<Evenement*>(contenu)->message_twain = MSG_NULL;
        return TWRC_NOTDSEVENT;
    } else if (triplet == code(DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET)) {
        HGLOBAL dib = essai == L"echec" ? nullptr : page();
        if (dib == nullptr) {
            g_condition = TWCC_BUMMER;
            return TWRC_FAILURE;
        }
        *static_cast<Uint32*>(contenu) = reinterpret_cast<Uint32>(dib);
        return TWRC_XFERDONE;
    } else if (triplet == code(DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER) ||
               triplet == code(DG_CONTROL, DAT_PENDINGXFERS, MSG_RESET)) {
        static_cast<TransfertsEnAttente*>(contenu)->nombre = 0;
    } else if (triplet == code(DG_CONTROL, DAT_STATUS, MSG_GET)) {
        static_cast<Etat*>(contenu)->condition = g_condition;
        g_condition = TWCC_SUCCESS;
    } else {
        g_condition = TWCC_BADPROTOCOL;
        return TWRC_FAILURE;
    }
    return TWRC_SUCCESS;
}
