// The scanner on Windows: TWAIN, through the system's data source manager
// (twain_32.dll of the Windows folder). One page per scan, delivered as a native
// transfer (a DIB in global memory) and written as a BMP file.
#include <chrono>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "platform/encodage.h"
#include "platform/scanner.h"
#include "platform/systeme.h"
#include "platform/twain_win32.h"
#include "platform/windows_win32.h"

namespace sv140 {

namespace {

using namespace twain;

// A source that never says its page is ready must not hold the run forever; a real
// scanner announces the page well within this.
constexpr auto kAttentePage = std::chrono::minutes(2);

std::string nom_source(const Identite& source) {
    return cp1252_vers_utf8(std::string_view(source.produit, strnlen(source.produit, 34)));
}

// The bytes of the BMP file holding the DIB `dib` (its header, palette and pixels).
// A one-bit page is widened to eight bits with the same colours, which the JPEG
// converter reads.
std::string fichier_bmp(const BITMAPINFOHEADER* dib, std::size_t taille) {
    std::size_t couleurs = dib->biClrUsed;
    if (couleurs == 0 && dib->biBitCount <= 8) {
        couleurs = std::size_t{1} << dib->biBitCount;
    }
    const std::size_t masques = dib->biCompression == BI_BITFIELDS ? 3 : 0;
    const char* octets = reinterpret_cast<const char*>(dib);
    std::string entete(dib->biSize + (couleurs + masques) * 4, '\0');
    if (entete.size() > taille) {
        return std::string();
    }
    std::memcpy(entete.data(), octets, entete.size());
    std::string pixels(octets + entete.size(), taille - entete.size());

    if (dib->biBitCount == 1 && dib->biCompression == BI_RGB) {
        const long largeur = dib->biWidth, hauteur = std::labs(dib->biHeight);
        const long ligne1 = (largeur + 31) / 32 * 4, ligne8 = (largeur + 3) / 4 * 4;
        if (static_cast<std::size_t>(ligne1 * hauteur) > pixels.size()) {
            return std::string();
        }
        std::string larges(static_cast<std::size_t>(ligne8 * hauteur), '\0');
        for (long y = 0; y < hauteur; ++y) {
            for (long x = 0; x < largeur; ++x) {
                const auto octet = static_cast<unsigned char>(pixels[y * ligne1 + x / 8]);
                larges[y * ligne8 + x] = static_cast<char>((octet >> (7 - x % 8)) & 1);
            }
        }
        pixels = std::move(larges);
        auto* large = reinterpret_cast<BITMAPINFOHEADER*>(entete.data());
        large->biBitCount = 8;
        large->biClrUsed = static_cast<DWORD>(couleurs);  // the same two-colour palette
        large->biSizeImage = static_cast<DWORD>(pixels.size());
    }

    BITMAPFILEHEADER fichier{};
    fichier.bfType = 0x4d42;  // "BM"
    fichier.bfOffBits = static_cast<DWORD>(sizeof fichier + entete.size());
    fichier.bfSize = static_cast<DWORD>(fichier.bfOffBits + pixels.size());
    return std::string(reinterpret_cast<const char*>(&fichier), sizeof fichier) + entete + pixels;
}

// One conversation with the data source manager, stepped back down to nothing by the
// destructor from wherever it stopped: transfer ended, source disabled, source
// closed, manager closed, library released.
class Session {
  public:
    Session() {
        application_.version = {1, 0, kLangueFrancais, kPaysFrance, "1.0"};
        application_.protocole_majeur = kProtocoleMajeur;
        application_.protocole_mineur = kProtocoleMineur;
        application_.groupes = DG_CONTROL | DG_IMAGE;
        std::strcpy(application_.fabricant, "SV140");
        std::strcpy(application_.famille, "SV140");
        std::strcpy(application_.produit, "SV140");
    }

    ~Session() {
        if (transfert_en_cours_) {
            TransfertsEnAttente attente{};
            appeler_source(DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER, &attente);
            if (attente.nombre != 0) {
                appeler_source(DG_CONTROL, DAT_PENDINGXFERS, MSG_RESET, &attente);
            }
        }
        if (source_active_) {
            InterfaceUtilisateur iu{0, 0, fenetre_};
            appeler_source(DG_CONTROL, DAT_USERINTERFACE, MSG_DISABLEDS, &iu);
        }
        if (source_ouverte_) {
            appeler(nullptr, DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS, &source_);
        }
        if (gestionnaire_ouvert_) {
            appeler(nullptr, DG_CONTROL, DAT_PARENT, MSG_CLOSEDSM, &fenetre_);
        }
        if (fenetre_ != nullptr) {
            ::DestroyWindow(fenetre_);
        }
        if (module_ != nullptr) {
            ::FreeLibrary(module_);
        }
    }

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Loads the manager and opens it with a hidden window of ours as its parent.
    bool ouvrir(std::string& raison) {
        wchar_t windows[MAX_PATH];
        const UINT n = ::GetSystemWindowsDirectoryW(windows, MAX_PATH);
        const std::wstring chemin = std::wstring(windows, n < MAX_PATH ? n : 0) + L"\\twain_32.dll";
        module_ = ::LoadLibraryW(chemin.c_str());
        entree_ = module_ == nullptr ? nullptr
                                     : reinterpret_cast<Entree>(reinterpret_cast<void*>(
                                           ::GetProcAddress(module_, "DSM_Entry")));
        if (entree_ == nullptr) {
            raison = "Aucun gestionnaire de sources TWAIN (" +
                     etroit(chemin.c_str(), chemin.size()) + ") sur ce poste";
            return false;
        }
        // A hidden top-level window owns the manager's chooser; where none can be made
        // (Wine without a display) a message-only one still carries the messages.
        for (HWND parent : {HWND(nullptr), HWND_MESSAGE}) {
            if (fenetre_ == nullptr) {
                fenetre_ =
                    ::CreateWindowExW(0, L"STATIC", L"SV140 TWAIN", parent ? 0 : WS_POPUP, 0, 0, 0,
                                      0, parent, nullptr, ::GetModuleHandleW(nullptr), nullptr);
            }
        }
        if (fenetre_ == nullptr ||
            appeler(nullptr, DG_CONTROL, DAT_PARENT, MSG_OPENDSM, &fenetre_) != TWRC_SUCCESS) {
            raison = "Le gestionnaire de sources TWAIN ne peut être ouvert";
            return false;
        }
        gestionnaire_ouvert_ = true;
        return true;
    }

    /// The manager's sources, in its order.
    std::vector<Identite> sources() {
        std::vector<Identite> liste;
        Identite source{};
        for (Uint16 message = MSG_GETFIRST;
             appeler(nullptr, DG_CONTROL, DAT_IDENTITY, message, &source) == TWRC_SUCCESS;
             message = MSG_GETNEXT) {
            liste.push_back(source);
            source = Identite{};
        }
        return liste;
    }

    /// The manager's own chooser; the source chosen, or nothing when it was closed.
    std::optional<Identite> choisir() {
        Identite source{};
        // Wine's manager also says success when its dialog could not be shown at all.
        if (appeler(nullptr, DG_CONTROL, DAT_IDENTITY, MSG_USERSELECT, &source) != TWRC_SUCCESS ||
            source.produit[0] == '\0') {
            return std::nullopt;
        }
        return source;
    }

    /// Opens `choisie`, or the manager's default source.
    bool ouvrir_source(const std::optional<Identite>& choisie, std::string& raison) {
        if (choisie) {
            source_ = *choisie;
        } else if (appeler(nullptr, DG_CONTROL, DAT_IDENTITY, MSG_GETDEFAULT, &source_) !=
                   TWRC_SUCCESS) {
            raison = "Aucune source TWAIN sur ce poste";
            return false;
        }
        // The manager numbers the source anew each time it opens it.
        source_.id = 0;
        if (appeler(nullptr, DG_CONTROL, DAT_IDENTITY, MSG_OPENDS, &source_) != TWRC_SUCCESS) {
            raison = "La source TWAIN \"" + nom_source(source_) + "\" ne peut être ouverte (code " +
                     std::to_string(condition(false)) + ")";
            return false;
        }
        source_ouverte_ = true;
        return true;
    }

    /// Sets a capability to one value; the source's return code.
    Uint16 regler(Uint16 cap, Uint16 type, Uint32 valeur) {
        HGLOBAL conteneur = ::GlobalAlloc(GHND, sizeof(UneValeur));
        if (conteneur == nullptr) {
            return TWRC_FAILURE;
        }
        auto* une = static_cast<UneValeur*>(::GlobalLock(conteneur));
        une->type = type;
        une->valeur = valeur;
        ::GlobalUnlock(conteneur);
        Capacite capacite{cap, TWON_ONEVALUE, conteneur};
        const Uint16 rc = appeler_source(DG_CONTROL, DAT_CAPABILITY, MSG_SET, &capacite);
        ::GlobalFree(conteneur);
        return rc;
    }

    /// Enables the source without its own window and waits for its page; the DIB's
    /// handle, or null with `raison`.
    HGLOBAL acquerir(std::string& raison) {
        InterfaceUtilisateur iu{0, 0, fenetre_};
        if (appeler_source(DG_CONTROL, DAT_USERINTERFACE, MSG_ENABLEDS, &iu) != TWRC_SUCCESS) {
            raison = "La source TWAIN refuse de numériser (code " +
                     std::to_string(condition(true)) + ")";
            return nullptr;
        }
        source_active_ = true;
        if (!attendre_page(raison)) {
            return nullptr;
        }
        transfert_en_cours_ = true;
        Uint32 dib = 0;
        if (appeler_source(DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET, &dib) != TWRC_XFERDONE ||
            dib == 0) {
            raison = "La source TWAIN n'a pas livré la page (code " +
                     std::to_string(condition(true)) + ")";
            if (dib != 0) {
                ::GlobalFree(reinterpret_cast<HGLOBAL>(dib));
            }
            return nullptr;
        }
        return reinterpret_cast<HGLOBAL>(dib);
    }

  private:
    Uint16 appeler(Identite* destination, Uint32 groupe, Uint16 donnee, Uint16 message,
                   void* contenu) {
        return entree_(&application_, destination, groupe, donnee, message, contenu);
    }
    Uint16 appeler_source(Uint32 groupe, Uint16 donnee, Uint16 message, void* contenu) {
        return appeler(&source_, groupe, donnee, message, contenu);
    }

    /// The condition code of the last failure, the source's or the manager's.
    Uint16 condition(bool de_la_source) {
        Etat etat{};
        appeler(de_la_source ? &source_ : nullptr, DG_CONTROL, DAT_STATUS, MSG_GET, &etat);
        return etat.condition;
    }

    // Every message of this thread goes to the source first, as the protocol wants,
    // until it says the page is ready or asks to be closed.
    bool attendre_page(std::string& raison) {
        const auto fin = std::chrono::steady_clock::now() + kAttentePage;
        for (;;) {
            MSG msg;
            while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
                Evenement evenement{&msg, MSG_NULL};
                if (appeler_source(DG_CONTROL, DAT_EVENT, MSG_PROCESSEVENT, &evenement) ==
                    TWRC_DSEVENT) {
                    if (evenement.message_twain == MSG_XFERREADY) {
                        return true;
                    }
                    if (evenement.message_twain == MSG_CLOSEDSREQ ||
                        evenement.message_twain == MSG_CLOSEDSOK) {
                        raison = "La numérisation a été abandonnée par la source TWAIN";
                        return false;
                    }
                } else {
                    ::TranslateMessage(&msg);
                    ::DispatchMessageW(&msg);
                }
            }
            const auto reste = std::chrono::duration_cast<std::chrono::milliseconds>(
                fin - std::chrono::steady_clock::now());
            if (reste.count() <= 0) {
                raison = "La source TWAIN n'a livré aucune page dans le délai";
                return false;
            }
            ::MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(reste.count()),
                                        QS_ALLINPUT);
        }
    }

    Identite application_{};
    Identite source_{};
    HMODULE module_ = nullptr;
    Entree entree_ = nullptr;
    HWND fenetre_ = nullptr;
    bool gestionnaire_ouvert_ = false;
    bool source_ouverte_ = false;
    bool source_active_ = false;
    bool transfert_en_cours_ = false;
};

Uint32 fix32(int valeur) {
    const Fix32 f{static_cast<Int16>(valeur), 0};
    Uint32 brut = 0;
    std::memcpy(&brut, &f, sizeof f);
    return brut;
}

class ScannerTwain : public Scanner {
  public:
    ResultatScan numeriser(const ReglagesScan& reglages, const std::string& bmp) override {
        if (reglages.type_pixel < 0 || reglages.type_pixel > 2) {
            return {EtatScan::Echec,
                    "Type de pixel inconnu : " + std::to_string(reglages.type_pixel)};
        }
        ResultatScan resultat{EtatScan::SourceIndisponible, ""};
        Session session;
        if (!session.ouvrir(resultat.raison) ||
            !session.ouvrir_source(source_choisie_, resultat.raison)) {
            return resultat;
        }

        resultat.etat = EtatScan::Echec;
        const struct {
            Uint16 cap;
            const char* nom;
            Uint16 type;
            Uint32 valeur;
            bool facultatif;  // a source without it scans all the same
        } reglages_source[] = {
            {ICAP_UNITS, "ICAP_UNITS", TWTY_UINT16, TWUN_INCHES, false},
            {ICAP_XRESOLUTION, "ICAP_XRESOLUTION", TWTY_FIX32, fix32(reglages.resolution), false},
            {ICAP_YRESOLUTION, "ICAP_YRESOLUTION", TWTY_FIX32, fix32(reglages.resolution), false},
            {ICAP_BRIGHTNESS, "ICAP_BRIGHTNESS", TWTY_FIX32, fix32(reglages.luminosite), true},
            {ICAP_CONTRAST, "ICAP_CONTRAST", TWTY_FIX32, fix32(reglages.contraste), true},
            {ICAP_PIXELTYPE, "ICAP_PIXELTYPE", TWTY_UINT16,
             static_cast<Uint32>(reglages.type_pixel), false},
        };
        for (const auto& r : reglages_source) {
            const Uint16 rc = session.regler(r.cap, r.type, r.valeur);
            if (rc != TWRC_SUCCESS && rc != TWRC_CHECKSTATUS && !r.facultatif) {
                resultat.raison = std::string("La source TWAIN refuse le réglage ") + r.nom;
                return resultat;
            }
        }

        HGLOBAL dib = session.acquerir(resultat.raison);
        if (dib == nullptr) {
            return resultat;
        }
        const auto* entete = static_cast<const BITMAPINFOHEADER*>(::GlobalLock(dib));
        const std::string octets =
            entete == nullptr ? std::string() : fichier_bmp(entete, ::GlobalSize(dib));
        ::GlobalUnlock(dib);
        ::GlobalFree(dib);
        if (octets.empty()) {
            resultat.raison = "La page livrée par la source TWAIN n'est pas une image lisible";
            return resultat;
        }
        // Written beside the page's file and renamed onto it: a failure never leaves
        // half a page to convert.
        const std::string temporaire = bmp + ".tmp";
        if (!ecrire_fichier(temporaire, octets) || !remplacer_fichier(temporaire, bmp)) {
            supprimer_fichier(temporaire);
            resultat.raison = "Le fichier " + bmp + " ne peut être écrit";
            return resultat;
        }
        return {EtatScan::Reussi, ""};
    }

    bool choisir_source(Ui& ui) override {
        Session session;
        std::string raison;
        if (!session.ouvrir(raison)) {
            return false;
        }
        std::optional<Identite> choisie;
        if (variable_environnement("SV140_UI") == "console") {
            const std::vector<Identite> sources = session.sources();
            std::vector<EntreeChoix> entrees;
            for (const Identite& s : sources) {
                entrees.push_back({nom_source(s), ""});
            }
            if (entrees.empty()) {
                return false;
            }
            if (const auto i = ui.Choisir(kTitreChoixSource, entrees)) {
                choisie = sources[*i];
            }
        } else {
            choisie = session.choisir();
        }
        if (!choisie) {
            return false;
        }
        source_choisie_ = choisie;
        return true;
    }

  private:
    // The source the optician chose, used by the later scans of this scanner.
    std::optional<Identite> source_choisie_;
};

}  // namespace

std::unique_ptr<Scanner> creer_scanner() {
    return std::make_unique<ScannerTwain>();
}

}  // namespace sv140
