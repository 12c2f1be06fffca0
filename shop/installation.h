// A shop installation laid out as on an optician's machine: the host's folder, the
// bridge's program folder inside it, the shop's data folder, the temporary database
// beside the program folder, and the middleware simulator's state.
#pragma once

#include <string>

namespace sv140::shop {

#if defined(_WIN32)
inline constexpr const char* kNomPont = "sv140.exe";
#else
inline constexpr const char* kNomPont = "sv140";
#endif

/// The places of an installation under a chosen folder.
struct Installation {
    std::string racine;      // <dossier>/Belvane_Classic, the host's folder
    std::string programme;   // racine/SV140: the bridge, the middleware, the exchange files
    std::string magasin;     // racine/_Magasin: the shop's data folder
    std::string temporaire;  // racine/Temporaire.accdb
    std::string zrsim;       // programme/zrsim: the simulated reader and cards

    /// The installed bridge.
    std::string pont() const;
};

/// The places under `dossier`.
Installation Disposition(const std::string& dossier);

enum class Issue { Faite, Existe, Echec };

/// Creates the installation under `dossier` (created when missing; its parent must
/// exist): folders, the bridge and the middleware copied from `source`, the databases,
/// and the simulator's demo state. Existe when the host's folder is already there
/// (nothing is touched); Echec with `erreur` when a step fails.
Issue Installer(const std::string& dossier, const std::string& source, std::string& erreur);

}  // namespace sv140::shop
