#include "harnais.h"

#include "platform/encodage.h"

#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <linux/fs.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace fs = std::filesystem;

namespace bb {

namespace {

std::atomic<int> g_runs{0};

// The fixed clock of the runs, in the local time faketime takes it in.
constexpr const char* kHorloge = "2024-03-05 14:30:12";

std::time_t horloge_fixe() {
    std::tm t{};
    std::istringstream(kHorloge) >> std::get_time(&t, "%Y-%m-%d %H:%M:%S");
    t.tm_isdst = -1;
    return std::mktime(&t);
}

std::string formater(std::time_t instant, const char* format) {
    std::tm t{};
    localtime_r(&instant, &t);
    char texte[128];
    return std::string(texte, std::strftime(texte, sizeof texte, format, &t));
}

std::string variable(const char* nom) {
    const char* v = std::getenv(nom);
    return v != nullptr ? v : "";
}

// Fields sharing a first path element are written inside one element of that name.
void ecrire_champs(std::string& sortie, const Champs& champs) {
    for (std::size_t i = 0; i < champs.size();) {
        const auto barre = champs[i].first.find('/');
        const std::string nom = champs[i].first.substr(0, barre);
        if (barre == std::string::npos) {
            sortie += "<" + nom + ">" + champs[i++].second + "</" + nom + ">\r\n";
            continue;
        }
        Champs sous;
        for (; i < champs.size() && champs[i].first.starts_with(nom + "/"); ++i) {
            sous.emplace_back(champs[i].first.substr(barre + 1), champs[i].second);
        }
        sortie += "<" + nom + ">\r\n";
        ecrire_champs(sortie, sous);
        sortie += "</" + nom + ">\r\n";
    }
}

// A beneficiary's fields, path=value, with one period of each right.
const char* const kBeneficiaire =
    "NOM_USG=;NOM_PAT=;PRM_USG=;ADR_LN1=12 rue des Lilas;ADR_LN2=;ADR_LN3=;ADR_LN4=75011;"
    "ADR_LN5=PARIS;NIR_CER=;CLE_CER=;DAT_CER=;NAI_BEN=;BEN_RNG=;BEN_QLT=00;COD_SEB=01;"
    "DEB_SEB=20240101;FIN_SEB=20241231;MUT/MUT_NUM=75500017;MUT/CONT_MUT=C1;MUT/TRT_MUT=T;"
    "MUT/TYP_MUT=1;MUT/SER_MUT=S;MUT/IND_STS=0;MUT/DRT_MUT/NB_DRT_MUT=1;"
    "MUT/DRT_MUT/DMUT_DEB=20240101;MUT/DRT_MUT/DMUT_FIN=20241231;COMP/CPL_NU2=;COMP/CPL_EDI=;"
    "COMP/ADH_NUM=;COMP/TRT_AMC=;COMP/CPL_DEB=;COMP/CPL_FIN=;COMP/ROU_FLX=;COMP/IDT_HOT=HOT;"
    "COMP/NOM_DOM=dom;COMP/IND_STS_AMC=;COMP/TYP_SER=;COMP/SER_CRT=;COMP/RUF_COMP=;"
    "DRT_AMO/NB_DRT_AMO=1;DRT_AMO/DAMO_DEB=20240101;DRT_AMO/DAMO_FIN=20241231;"
    "DRT_CC/NB_DRT_CC=1;DRT_CC/CC_DEB=20240101;DRT_CC/CC_FIN=20241231;DRT_CC/COD_ALD=A1;"
    "DRT_CC/COD_SITU=S1";

// The card's own fields.
const char* const kContexte =
    "TYP_CART=1;VIT_NSER=1234567890;ADM/FDV_CRT=20991231;ADM/RUF1_ADM=R1;ADM/RUF2_ADM=R2;"
    "NIR_ASS= 1500175123456 ;CLE_ASS=42;RGG_COD=01;RTT_CAI= 131 ;RTT_UGE=0000;COD_GES=10;"
    "RUF_FAM=;COD_SEF=01;DEB_SEF=20240101;FIN_SEF=20241231;AT/ORG_GE=;AT/GST_CD=;AT/IDT_AT=;"
    "AT/ORG_GE1=;AT/GST_CD1=;AT/IDT_AT1=;AT/ORG_GE2=;AT/GST_CD2=;AT/IDT_AT2=;NB_BEN=2";

// A word for the shell, quoted.
std::string mot(const std::string& texte) {
    std::string s = "'";
    for (char c : texte) {
        s += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return s + "'";
}

// The Wine prefix of the runs: WINEPREFIX, or the suite's own under /tmp. The first
// test to need it makes it while the others, run in parallel, wait on its lock.
const std::string& prefixe_wine() {
    static const std::string prefixe = [] {
        std::string p = variable("WINEPREFIX");
        if (p.empty()) {
            p = (fs::temp_directory_path() / ("sv140-bb-wine-" + std::to_string(getuid())))
                    .string();
        }
        const int verrou = open((p + ".verrou").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
        flock(verrou, LOCK_EX);
        if (!fs::exists(p + "/system.reg")) {
            // wineserver -w: the registry is on disk once the server has gone.
            std::system(("export WINEPREFIX=" + mot(p) +
                         " WINEDEBUG=-all; wineboot -i </dev/null >/dev/null 2>&1;"
                         " wineserver -w")
                            .c_str());
        }
#ifdef SOURCE_TWAIN_DS
        // The test tree's TWAIN source, under the one name Wine's source manager loads
        // that Debian's Wine leaves unused. Renamed into place: a bridge of another
        // test process may have the previous copy loaded.
        const std::string dossier = p + "/drive_c/windows/twain_32";
        fs::create_directories(dossier);
        const std::string copie = dossier + "/sane.ds." + std::to_string(getpid());
        fs::copy_file(SOURCE_TWAIN_DS, copie, fs::copy_options::overwrite_existing);
        fs::rename(copie, dossier + "/sane.ds");
#endif
        close(verrou);
        return p;
    }();
    return prefixe;
}

}  // namespace

bool sous_wine() {
    static const bool wine = variable("SV140_CIBLE") == "win32";
    return wine;
}

std::string chemin_du_pont(const std::string& chemin) {
    if (!sous_wine()) {
        return chemin;
    }
    std::string windows = "Z:" + chemin;
    std::replace(windows.begin(), windows.end(), '/', '\\');
    return windows;
}

Textes Execution::boites() const {
    Textes b;
    for (const auto& l : lignes(erreurs)) {
        if (l.starts_with("MsgBox : ")) {
            b.push_back(l.substr(9));
        }
    }
    return b;
}

::testing::AssertionResult fin_propre(const Execution& e) {
    bool propre = e.statut < 128;  // not ended by a signal (nor by the watchdog)
    // Under Wine a crash ends with a small status: only its report tells.
    for (const char* marque :
         {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer", "runtime error:", "terminate called",
          "ASan runtime does not come first", "Unhandled exception", "Unhandled page fault",
          "in an unusual way"}) {
        propre = propre && e.erreurs.find(marque) == std::string::npos;
    }
    return propre ? ::testing::AssertionSuccess()
                  : ::testing::AssertionFailure() << "status " << e.statut << " (137: killed)\n"
                                                  << e.erreurs;
}

std::optional<std::string> lire(const std::string& chemin) {
    std::ifstream f(chemin, std::ios::binary);
    std::ostringstream tout;
    tout << f.rdbuf();
    return f ? std::optional(tout.str()) : std::nullopt;
}

void ecrire(const std::string& chemin, const std::string& octets) {
    std::ofstream(chemin, std::ios::binary) << octets;
}

bool existe(const std::string& chemin) {
    return access(chemin.c_str(), F_OK) == 0;
}

Textes lignes(const std::string& texte) {
    Textes l;
    std::istringstream flux(texte);
    for (std::string ligne; std::getline(flux, ligne);) {
        if (ligne.ends_with('\r')) {
            ligne.pop_back();
        }
        l.push_back(ligne);
    }
    return l;
}

std::string stocke(const std::string& texte) {
    std::string s;
    for (char c : texte) {
        s += c == '"' ? std::string("\"\"") : std::string(1, c);
    }
    return s;
}

Lignes sql(const std::string& base, const std::string& requete) {
    Lignes rangs;
    sqlite3* db = nullptr;
    char* erreur = nullptr;
    if (sqlite3_open_v2(base.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
        sqlite3_busy_timeout(db, 5000);
        sqlite3_exec(
            db, requete.c_str(),
            [](void* r, int n, char** valeurs, char**) {
                auto& rang = static_cast<Lignes*>(r)->emplace_back();
                for (int i = 0; i < n; ++i) {
                    rang.emplace_back(valeurs[i] != nullptr ? valeurs[i] : "NULL");
                }
                return 0;
            },
            &rangs, &erreur);
    }
    if (erreur != nullptr || sqlite3_errcode(db) != SQLITE_OK) {
        ADD_FAILURE() << base << ": " << sqlite3_errmsg(db) << "\n" << requete;
    }
    sqlite3_free(erreur);
    sqlite3_close(db);
    return rangs;
}

Lignes instantane(const Textes& bases) {
    Lignes tout;
    for (const auto& base : bases) {
        tout.push_back({base});
        std::error_code ec;
        if (!fs::exists(base, ec) || fs::is_directory(base, ec)) {
            tout.push_back({fs::exists(base, ec) ? "(dossier)" : "(rien)"});
            continue;
        }
        // Only a file that says it is a database is opened: SQLite would read an empty
        // file as an empty database.
        const std::string octets = lire(base).value_or("");
        sqlite3* db = nullptr;
        bool lue = octets.starts_with(std::string("SQLite format 3\0", 16)) &&
                   sqlite3_open_v2(base.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK;
        Lignes tables;
        auto rang = [](void* r, int n, char** valeurs, char**) {
            auto& ligne = static_cast<Lignes*>(r)->emplace_back();
            for (int i = 0; i < n; ++i) {
                ligne.emplace_back(valeurs[i] != nullptr ? valeurs[i] : "NULL");
            }
            return 0;
        };
        lue = lue && sqlite3_exec(db, "SELECT name FROM sqlite_master WHERE type = 'table'", rang,
                                  &tables, nullptr) == SQLITE_OK;
        Lignes lignes;
        for (std::size_t i = 0; lue && i < tables.size(); ++i) {
            lignes.push_back(tables[i]);
            lue = sqlite3_exec(db, ("SELECT * FROM [" + tables[i][0] + "]").c_str(), rang, &lignes,
                               nullptr) == SQLITE_OK;
        }
        sqlite3_close(db);
        if (lue) {
            tout.insert(tout.end(), lignes.begin(), lignes.end());
        } else {
            tout.push_back({octets});
        }
    }
    return tout;
}

EcritureEnCours::EcritureEnCours(const std::string& base) {
    if (sqlite3_open_v2(base.c_str(), &db_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK ||
        sqlite3_exec(db_, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) != SQLITE_OK) {
        ADD_FAILURE() << base << ": " << sqlite3_errmsg(db_);
    }
}

EcritureEnCours::~EcritureEnCours() {
    sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(db_);
}

namespace {

// What chattr +i and -i do.
bool marquer_immuable(const std::string& chemin, bool immuable) {
    const int f = open(chemin.c_str(), O_RDONLY | O_CLOEXEC);
    int drapeaux = 0;
    bool fait = f >= 0 && ioctl(f, FS_IOC_GETFLAGS, &drapeaux) == 0;
    drapeaux = immuable ? drapeaux | FS_IMMUTABLE_FL : drapeaux & ~FS_IMMUTABLE_FL;
    fait = fait && ioctl(f, FS_IOC_SETFLAGS, &drapeaux) == 0;
    if (f >= 0) {
        close(f);
    }
    return fait;
}

}  // namespace

Immuable::Immuable(std::string chemin)
    : chemin_(std::move(chemin)), pris_(marquer_immuable(chemin_, true)) {}

Immuable::~Immuable() {
    // Left immutable, the file could not be removed with the shop.
    if (pris_ && !marquer_immuable(chemin_, false)) {
        ADD_FAILURE() << "chattr -i " << chemin_ << " failed: the shop cannot be removed";
    }
}

Textes xml(const std::string& fichier, const std::string& xpath, bool noms) {
    Textes t;
    xmlDocPtr doc = xmlReadFile(fichier.c_str(), nullptr, XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (doc == nullptr) {
        return t;
    }
    xmlXPathContextPtr ctx = xmlXPathNewContext(doc);
    xmlXPathObjectPtr obj = xmlXPathEvalExpression(BAD_CAST xpath.c_str(), ctx);
    for (int i = 0; obj != nullptr && obj->nodesetval != nullptr && i < obj->nodesetval->nodeNr;
         ++i) {
        xmlNodePtr n = obj->nodesetval->nodeTab[i];
        xmlChar* texte = xmlNodeGetContent(n);
        t.emplace_back(reinterpret_cast<const char*>(noms ? n->name : texte));
        xmlFree(texte);
    }
    xmlXPathFreeObject(obj);
    xmlXPathFreeContext(ctx);
    xmlFreeDoc(doc);
    return t;
}

Champs champs(const std::string& table) {
    Champs c;
    std::istringstream flux(table);
    for (std::string champ; std::getline(flux, champ, ';');) {
        c.emplace_back(champ.substr(0, champ.find('=')), champ.substr(champ.find('=') + 1));
    }
    return c;
}

std::string reponse(const std::string& appelant, const std::string& code,
                    const std::string& libelle, const std::string& donnees) {
    return sv140::utf8_vers_cp1252("<!DOCTYPE ZRMESSAGE>\r\n<ZRMESSAGE>\r\n<appelant>" + appelant +
                                   "</appelant>\r\n<resultat>\r\n<codeErreur>" + code +
                                   "</codeErreur>\r\n<libelleErreur>" + libelle +
                                   "</libelleErreur>\r\n<donnees>\r\n" + donnees +
                                   "</donnees>\r\n</resultat>\r\n</ZRMESSAGE>\r\n");
}

std::string donnees_version(const std::string& dll) {
    return "<donneesVersion><versionDll>" + dll +
           "</versionDll><versionCDC>1.40</versionCDC><versionReferentiel>R12"
           "</versionReferentiel><infosLecteur><constructeur>Lect</constructeur>"
           "<typeLecteur>T2</typeLecteur><numSerie>SN1</numSerie><typeOS>L</typeOS>"
           "<appliSV><nomAppli>App</nomAppli><numVersion>0301</numVersion>"
           "<dateAppli>20230102</dateAppli><heureAppli>1015</heureAppli>"
           "<crcAppli>ABCD</crcAppli></appliSV></infosLecteur></donneesVersion>\r\n";
}

Textes version_stockee(const std::string& dll) {
    return {"1", dll,   "1.40", "R12",      "Lect", "T2",  "SN1",
            "L", "App", "0301", "20230102", "1015", "ABCD"};
}

Champs beneficiaire(const std::string& nom, const std::string& prenom, const std::string& naissance,
                    const std::string& rang, const std::string& retouches) {
    Champs b = champs(kBeneficiaire), r = champs(retouches);
    r.insert(r.begin(), {{"NOM_USG", nom},
                         {"NOM_PAT", nom},
                         {"PRM_USG", prenom},
                         {"NAI_BEN", naissance},
                         {"BEN_RNG", rang},
                         {"COMP/ADH_NUM", "ADH" + rang}});
    for (auto& [chemin, valeur] : b) {
        for (const auto& [c, v] : r) {
            valeur = c == chemin ? v : valeur;
        }
    }
    return b;
}

std::string reponse_carte(const std::vector<Champs>& beneficiaires) {
    std::string d = "<contexteCVitale>\r\n";
    ecrire_champs(d, champs(kContexte));
    for (const auto& b : beneficiaires) {
        d += "<Beneficiaire>\r\n";
        ecrire_champs(d, b);
        d += "</Beneficiaire>\r\n";
    }
    return reponse("f_LireCVitale", "0", "", d + "</contexteCVitale>\r\n");
}

void BoiteNoire::SetUp() {
    racine = (fs::temp_directory_path() / "sv140-bb-XXXXXX").string();
    ASSERT_NE(mkdtemp(racine.data()), nullptr);
    programme = racine + "/Belvane_Classic/SV140";
    magasin = racine + "/Belvane_Classic/_Magasin";
    Execution e = outil({"init", racine});
    ASSERT_EQ(e.statut, 0) << "sv140-shop init: " << e.erreurs;
    if (sous_wine()) {
        // The Windows build's folder: the environment's, else the one configured.
        std::string windows = variable("SV140_WIN32_BIN");
#ifdef SV140_WIN32_BIN
        windows = windows.empty() ? SV140_WIN32_BIN : windows;
#endif
        ASSERT_TRUE(existe(windows + "/sv140.exe"))
            << "SV140_WIN32_BIN: no sv140.exe in '" << windows << "'";
        for (const char* nom : {"sv140.exe", "WebQuintara2.dll", "Scor.exe"}) {
            fs::copy_file(windows + "/" + nom, fichier(nom), fs::copy_options::overwrite_existing);
        }
        prefixe_wine();
    } else {
        fs::copy_file(SV140_BIN_DIR "/sv140", fichier("sv140"),
                      fs::copy_options::overwrite_existing);
    }
    // The archive root of a shop in use: only the archiving test is about its creation.
    fs::create_directories(magasin + "/Sv140");
}

void BoiteNoire::TearDown() {
    if (HasFailure()) {
        std::printf("shop kept for inspection: %s\n", racine.c_str());
    } else {
        fs::remove_all(racine);
    }
}

Execution BoiteNoire::lancer(const Textes& arguments, const std::string& entree) {
    if (!sous_wine()) {
        debut_ = fin_ = horloge_fixe();
        // The library itself rather than the faketime command, whose shared semaphore
        // is named after the process id and refuses a name an earlier run left behind.
        return executer(
            {"env", "LD_PRELOAD=/usr/$LIB/faketime/libfaketime.so.1",
             std::string("FAKETIME=") + (horloge_figee ? "" : "@") + kHorloge, fichier("sv140")},
            arguments, entree);
    }
    // A server kept between runs spares each run the start of Wine's services; it is
    // the one of the first run, or started here when it has gone.
    const std::string environnement = "WINEPREFIX=" + prefixe_wine();
    std::system(
        ("export " + mot(environnement) + "; wineserver -p120 </dev/null >/dev/null 2>&1").c_str());
    // UTF-8 arguments reach the Windows command line as the host's text.
    debut_ = std::time(nullptr);
    Execution e = executer({"env", environnement, "WINEDEBUG=-all", "LANG=C.UTF-8",
                            "SV140_UI=console", "wine", fichier("sv140.exe")},
                           arguments, entree);
    fin_ = std::time(nullptr);
    return e;
}

std::string BoiteNoire::poste(const std::string& nom) {
    const std::string dossier = racine + "/Belvane_Classic/" + nom;
    fs::copy(programme, dossier, fs::copy_options::recursive);
    return dossier;
}

Execution BoiteNoire::operation_du_poste(const std::string& dossier, const std::string& nom) {
    const Textes arguments = {nom, chemin_du_pont(magasin)};
    if (!sous_wine()) {
        return executer(
            {"env", "LD_PRELOAD=/usr/$LIB/faketime/libfaketime.so.1",
             std::string("FAKETIME=") + (horloge_figee ? "" : "@") + kHorloge, dossier + "/sv140"},
            arguments, "");
    }
    const std::string environnement = "WINEPREFIX=" + prefixe_wine();
    std::system(
        ("export " + mot(environnement) + "; wineserver -p120 </dev/null >/dev/null 2>&1").c_str());
    return executer({"env", environnement, "WINEDEBUG=-all", "LANG=C.UTF-8", "SV140_UI=console",
                     "wine", dossier + "/sv140.exe"},
                    arguments, "");
}

std::string BoiteNoire::horloge(const char* format) const {
    return formater(debut_, format);
}

std::optional<std::string> BoiteNoire::archive(const std::string& prefixe) const {
    // The latest first: a run before this one may have archived in its first second, and
    // under the fixed clock every run archives in the same second (_2, _3… after the
    // first).
    for (std::time_t t = fin_; t >= debut_; --t) {
        const std::string nom = magasin + "/Sv140/" + formater(t, "%Y%m") + "/" + prefixe +
                                formater(t, "%Y%m%d_%H%M%S");
        std::optional<std::string> dernier;
        for (int n = 1; existe(nom + (n == 1 ? "" : "_" + std::to_string(n)) + ".xml"); ++n) {
            dernier = nom + (n == 1 ? "" : "_" + std::to_string(n)) + ".xml";
        }
        if (dernier) {
            return lire(*dernier);
        }
    }
    return std::nullopt;
}

std::string BoiteNoire::log() const {
    const std::string texte = lire(fichier("LogsSV.txt")).value_or("");
    if (!sous_wine()) {
        return texte;
    }
    std::string lf;
    for (std::size_t i = 0; i < texte.size(); ++i) {
        if (texte[i] != '\r' || i + 1 == texte.size() || texte[i + 1] != '\n') {
            lf += texte[i];
        }
    }
    return sv140::cp1252_vers_utf8(lf);
}

Execution BoiteNoire::executer(Textes argv, const Textes& arguments, const std::string& entree) {
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    const std::string base = racine + "/.run" + std::to_string(++g_runs);
    ecrire(base + ".in", entree);
    // The watchdog ends a stuck run; libfaketime is preloaded ahead of a sanitized
    // bridge's runtime.
    std::string ligne = "cd " + mot(racine) +
                        " && ASAN_OPTIONS=$ASAN_OPTIONS:verify_asan_link_order=0 timeout -s KILL " +
                        (tuer_apres > 0 ? std::to_string(tuer_apres) : std::string("180"));
    for (const auto& a : argv) {
        ligne += " " + mot(a);
    }
    const int statut = std::system(
        (ligne + " <" + mot(base + ".in") + " >/dev/null 2>" + mot(base + ".err")).c_str());
    return {WIFEXITED(statut) ? WEXITSTATUS(statut) : 128, lire(base + ".err").value_or("")};
}

void BoiteNoire::utiliser_script() {
#ifdef ZR_SCRIPT_DLL
    const char* script = sous_wine() ? ZR_SCRIPT_DLL : ZR_SCRIPT_SO;
#else
    ASSERT_FALSE(sous_wine()) << "configured without SV140_WIN32_BIN: no scripted DLL";
    const char* script = ZR_SCRIPT_SO;
#endif
    fs::copy_file(script, bibliotheque(), fs::copy_options::overwrite_existing);
    fs::remove_all(programme + "/zrscript");
    fs::create_directories(programme + "/zrscript");
}

void BoiteNoire::scripter(int appel, const std::string& reponse, int retour) {
    ecrire(script(std::to_string(appel) + ".ret"), std::to_string(retour));
    ecrire(script(std::to_string(appel) + ".rsp"), reponse);
}

int BoiteNoire::appels() const {
    return std::atoi(lire(script("compteur")).value_or("0").c_str());
}

void BoiteNoire::professionnel(const std::string& num_situ, int version) {
    sql(pont(),
        "DELETE FROM T_InfosCPS; DELETE FROM T_InfosSituation_CPS;"
        "INSERT INTO T_InfosCPS (Info_CPS_ID, Info_CPS_NUM_IDN, Info_CPS_NOM_PRAT)"
        " VALUES (1, '10001234567', 'OPTIC');"
        "INSERT INTO T_InfosSituation_CPS (InfoSituation_CPS_ID, Info_CPS_ID_FK,"
        " InfoSituation_CPS_NUM_SIT, InfoSituation_NUM_IDFACPS, InfoSituation_CLE_IDFACPS)"
        " VALUES (1, 1, '1', '12345678', '9'), (2, 1, '2', '87654321', '0');"
        "UPDATE T_InfoParam SET Num_Situ = '" +
            num_situ + "' WHERE Info_Param_ID = 1;");
    sql(hote(), "DELETE FROM Version; INSERT INTO Version (Version) VALUES (" +
                    std::to_string(version) + ");");
}

}  // namespace bb
