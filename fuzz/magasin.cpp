#include "magasin.h"

#include <sqlite3.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>

#include "exchange/echange.h"
#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "main/dispatch.h"
#include "platform/intergiciel.h"
#include "platform/systeme.h"
#include "platform/ui_console.h"
#include "shop/schema.h"
#include "tools/outils.h"

namespace sv140::fuzz {
namespace fs = std::filesystem;
namespace {

constexpr const char* kPieceEnAttente = "20261124040421_000000002_ORDN_991001231_000000003.pdf";

// What the middleware answers to the current input's calls.
std::string_view g_reponse;

int ZR_APPEL repondre(const char*, char* reponse, int* taille) {
    // As a middleware does, never past the buffer it was given.
    const std::size_t n =
        std::min<std::size_t>(g_reponse.size(), static_cast<std::size_t>(*taille));
    std::memcpy(reponse, g_reponse.data(), n);
    return 0;
}

class IntergicielFuzz : public Bibliotheque {
  public:
    void* symbole(const char* nom) override {
        return std::strcmp(nom, "ZR_Executer") == 0 ? reinterpret_cast<void*>(&repondre) : nullptr;
    }
};

void remplir(const std::string& base, const std::string& lignes) {
    sqlite3* db = nullptr;
    char* erreur = nullptr;
    if (sqlite3_open(base.c_str(), &db) != SQLITE_OK ||
        sqlite3_exec(db, lignes.c_str(), nullptr, nullptr, &erreur) != SQLITE_OK) {
        std::string raison = erreur ? erreur : sqlite3_errmsg(db);
        sqlite3_free(erreur);
        sqlite3_close(db);
        throw std::runtime_error(base + " : " + raison);
    }
    sqlite3_close(db);
}

std::string lire(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

void ecrire(const fs::path& p, std::string_view octets) {
    std::ofstream(p, std::ios::binary)
        .write(octets.data(), static_cast<std::streamsize>(octets.size()));
}

// The shop's folders, and its databases' bytes as each input starts with them.
class Magasin {
  public:
    Magasin() {
        std::random_device alea;
        do {
            racine_ = fs::temp_directory_path() / ("sv140-fuzz-" + std::to_string(alea()));
        } while (fs::exists(racine_));
        const fs::path modele = racine_ / "modele";
        fs::create_directories(modele);
        std::string erreur;
        if (!shop::Creer_Bases(modele.string(), (modele / shop::kBaseTemporaire).string(),
                               erreur)) {
            throw std::runtime_error(erreur);
        }
        const std::string lignes = Fichier_Fuzz("magasin/lignes.sql");
        const std::size_t hote = lignes.find("-- hote");
        remplir((modele / shop::kBasePont).string(), lignes.substr(0, hote));
        remplir((modele / shop::kBaseHote).string(), lignes.substr(hote));
        for (const char* base : {shop::kBasePont, shop::kBaseHote, shop::kBaseTemporaire}) {
            bases_.emplace_back(base, lire(modele / base));
        }
        fs::remove_all(modele);
    }
    ~Magasin() {
        std::error_code ec;
        fs::remove_all(racine_, ec);
    }

    // Every file of the previous input gone: the databases as they started, the
    // exchange files, the archives and the log emptied.
    void remettre() {
        const fs::path classic = racine_ / "Belvane_Classic";
        fs::remove_all(classic);
        fs::create_directories(programme());
        fs::create_directories(donnees());
        fs::create_directories(donnees() / "Sv140Scor" / "202611");
        ecrire(donnees() / "Sv140Scor" / "202611" / kPieceEnAttente, "%PDF-1.4\n%%EOF\n");
        for (const auto& [nom, octets] : bases_) {
            ecrire((nom == shop::kBaseTemporaire ? classic : donnees()) / nom, octets);
        }
    }

    fs::path programme() const { return racine_ / "Belvane_Classic" / "SV140"; }
    fs::path donnees() const { return racine_ / "Belvane_Classic" / "_Magasin"; }

  private:
    fs::path racine_;
    std::vector<std::pair<std::string, std::string>> bases_;
};

Magasin& magasin() {
    static Magasin m;
    return m;
}

}  // namespace

std::span<const Cas> Cas_Operations() {
    using fichiers::kOrdreScor;
    using fichiers::kRequeteHote;
    static const Cas cas[] = {
        {"f_LireCVitale", "", "", "f_LireCVitale"},
        {"f_MettreAJourIdEtc", "", "", "f_LireCVitale"},
        {"f_LireCPS", "", "", "f_LireCPS"},
        {"f_LireVersion", "", "", "f_LireVersion"},
        {"f_CreerFacture", kRequeteHote, "facture.xml", "f_CreerFacture"},
        {"f_SupprimerFacture", kRequeteHote, "numero.xml", "succes"},
        {"f_LireFacture", kRequeteHote, "numero.xml", "succes"},
        {"f_EnvoyerToutesFactures", "", "", "f_EnvoyerToutesFactures"},
        {"retour_f_EnvoyerToutesFacturestest", "", "", "f_EnvoyerToutesFactures"},
        {"f_ListerFactures", "", "", "f_ListerFactures"},
        {"f_LireInfosRetourFacture", kRequeteHote, "periode.xml", "f_LireInfosRetourFacture"},
        {"f_LireInfosComplementaire", kRequeteHote, "complementaire.xml",
         "f_LireInfosComplementaire"},
        {"f_TransfertPJ", "", "", "f_TransfertPJ_accepte"},
        {"f_TransfertPJ_unique", kOrdreScor, "ordre_transfert.xml", "f_TransfertPJ_accepte"},
        {"f_LireInfosRetourPJ", kOrdreScor, "ordre_statuts.xml", "f_LireInfosRetourPJ"},
        {"f_mettreajourStatut", kOrdreScor, "ordre_mise_a_jour.xml", "f_LireInfosRetourPJ"},
        {"f_ControlePJ", "", "", "f_ControlePJ"},
        {"f_deldctsSCOR", kOrdreScor, "ordre_suppression.xml", "f_deldctsSCOR"},
    };
    return cas;
}

const std::string& Fichier_Fuzz(std::string_view chemin) {
    static std::map<std::string, std::string, std::less<>> lus;
    auto it = lus.find(chemin);
    if (it == lus.end()) {
        const fs::path p = fs::path(SV140_FUZZ_DOSSIER) / chemin;
        if (!fs::is_regular_file(p)) {
            throw std::runtime_error("missing " + p.string());
        }
        it = lus.emplace(chemin, lire(p)).first;
    }
    return it->second;
}

void Executer(const Cas& cas, std::string_view hote, std::string_view reponse) {
    Magasin& m = magasin();
    m.remettre();
    const std::string programme = m.programme().string();
    if (!cas.document.empty()) {
        ecrire(m.programme() / cas.document, hote);
    }
    g_reponse = reponse;
    // Questions are answered Cancel and nothing is printed: only the log sees them.
    static std::istringstream entree;
    static std::ostream sortie(nullptr);
    entree.clear();
    Run run = nouveau_run(programme, creer_ui_console(nullptr, entree, sortie));
    run.intergiciel = std::make_unique<IntergicielFuzz>();
    // The answer an operation without a middleware call reads is the last run's.
    Ecrire_Reponse(run, reponse);
    try {
        Executer_Run(run, std::string(cas.operation) + " " + m.donnees().string());
    } catch (const std::logic_error&) {
        throw;  // a routine's own mistake (a bad index, a field it never asked for)
    } catch (const std::exception&) {
        // The entry point answers the host 99 for what the system refused (memory, a
        // file): no fault of the bridge's.
    }
}

}  // namespace sv140::fuzz
