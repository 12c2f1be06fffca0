#include "harnais.h"

#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace fs = std::filesystem;

namespace bb {

namespace {

const std::string kBin = SV140_BIN_DIR;
const std::string kScript = ZR_SCRIPT_SO;

// A run that takes longer than this is stuck: the harness kills it and says so.
constexpr auto kDelaiMax = std::chrono::seconds(180);

std::string echapper(std::string_view texte) {
    std::string s;
    for (char c : texte) {
        switch (c) {
            case '&':
                s += "&amp;";
                break;
            case '<':
                s += "&lt;";
                break;
            case '>':
                s += "&gt;";
                break;
            default:
                s += c;
        }
    }
    return s;
}

void ecrire_champs(std::string& sortie, const Champs& champs) {
    std::size_t i = 0;
    while (i < champs.size()) {
        const std::string& chemin = champs[i].first;
        auto barre = chemin.find('/');
        if (barre == std::string::npos) {
            sortie += "<" + chemin + ">" + echapper(champs[i].second) + "</" + chemin + ">\r\n";
            ++i;
            continue;
        }
        const std::string tete = chemin.substr(0, barre + 1);
        Champs sous;
        while (i < champs.size() && champs[i].first.starts_with(tete)) {
            sous.emplace_back(champs[i].first.substr(tete.size()), champs[i].second);
            ++i;
        }
        const std::string nom = tete.substr(0, tete.size() - 1);
        sortie += "<" + nom + ">\r\n";
        ecrire_champs(sortie, sous);
        sortie += "</" + nom + ">\r\n";
    }
}

std::string texte_noeud(xmlNodePtr n) {
    xmlChar* c = xmlNodeGetContent(n);
    std::string s = c ? reinterpret_cast<const char*>(c) : "";
    xmlFree(c);
    return s;
}

std::vector<xmlNodePtr> noeuds(void* doc, const std::string& xpath) {
    std::vector<xmlNodePtr> resultat;
    if (doc == nullptr) {
        return resultat;
    }
    xmlXPathContextPtr ctx = xmlXPathNewContext(static_cast<xmlDocPtr>(doc));
    xmlXPathObjectPtr obj = xmlXPathEvalExpression(BAD_CAST xpath.c_str(), ctx);
    if (obj != nullptr && obj->nodesetval != nullptr) {
        for (int i = 0; i < obj->nodesetval->nodeNr; ++i) {
            resultat.push_back(obj->nodesetval->nodeTab[i]);
        }
    }
    xmlXPathFreeObject(obj);
    xmlXPathFreeContext(ctx);
    return resultat;
}

std::atomic<int> g_compteur{0};

// Starts `argv` in `dossier` with standard input from `entree`, its outputs going to
// files named after `etiquette`.
pid_t lancer_programme(const std::vector<std::string>& argv, const std::string& dossier,
                       const std::string& entree, const std::string& etiquette) {
    ecrire(etiquette + ".entree", entree);
    pid_t pid = fork();
    if (pid != 0) {
        return pid;
    }
    setpgid(0, 0);
    if (chdir(dossier.c_str()) != 0) {
        _exit(126);
    }
    int in = open((etiquette + ".entree").c_str(), O_RDONLY);
    int out = open((etiquette + ".sortie").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int err = open((etiquette + ".erreurs").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (in < 0 || out < 0 || err < 0) {
        _exit(126);
    }
    dup2(in, 0);
    dup2(out, 1);
    dup2(err, 2);
    // libfaketime is preloaded ahead of a sanitized bridge's runtime.
    std::string asan = "verify_asan_link_order=0";
    if (const char* e = std::getenv("ASAN_OPTIONS"); e != nullptr && *e != '\0') {
        asan = std::string(e) + ":" + asan;
    }
    setenv("ASAN_OPTIONS", asan.c_str(), 1);
    unsetenv("SANE_DEFAULT_DEVICE");
    std::vector<char*> args;
    for (const auto& a : argv) {
        args.push_back(const_cast<char*>(a.c_str()));
    }
    args.push_back(nullptr);
    execvp(args[0], args.data());
    _exit(127);
}

Execution attendre_programme(pid_t pid, const std::string& etiquette) {
    Execution e;
    int statut = 0;
    auto debut = std::chrono::steady_clock::now();
    while (true) {
        pid_t fini = waitpid(pid, &statut, WNOHANG);
        if (fini == pid) {
            break;
        }
        if (fini < 0) {
            statut = -1;
            break;
        }
        if (std::chrono::steady_clock::now() - debut > kDelaiMax) {
            e.delai_depasse = true;
            kill(-pid, SIGKILL);
            waitpid(pid, &statut, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    if (WIFEXITED(statut)) {
        e.statut = WEXITSTATUS(statut);
    } else if (WIFSIGNALED(statut)) {
        e.signal = WTERMSIG(statut);
    }
    e.sortie = lire(etiquette + ".sortie").value_or("");
    e.erreurs = lire(etiquette + ".erreurs").value_or("");
    return e;
}

bool valide_utf8(std::string_view s) {
    std::size_t i = 0;
    while (i < s.size()) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        std::size_t suite = c < 0x80             ? 0
                            : (c & 0xE0) == 0xC0 ? 1
                            : (c & 0xF0) == 0xE0 ? 2
                            : (c & 0xF8) == 0xF0 ? 3
                                                 : 4;
        if (suite == 4 || i + suite >= s.size() + (suite == 0 ? 1 : 0)) {
            return false;
        }
        for (std::size_t k = 1; k <= suite; ++k) {
            if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) {
                return false;
            }
        }
        i += suite + 1;
    }
    return true;
}

// How the shop's SQLite files hold text: the bridge and sv140-shop agree on one form,
// told by the host database's own table names (Sélection Verres, N°...).
std::atomic<bool> g_bases_latin1{false};

std::string depuis_latin1(std::string_view octets) {
    std::string s;
    for (unsigned char c : octets) {
        if (c < 0x80) {
            s += static_cast<char>(c);
        } else {
            s += static_cast<char>(0xC0 | (c >> 6));
            s += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return s;
}

}  // namespace

// --- Execution -----------------------------------------------------------------------

std::vector<std::string> Execution::boites() const {
    std::vector<std::string> b;
    for (const auto& l : lignes(erreurs)) {
        if (l.starts_with("MsgBox : ")) {
            b.push_back(l.substr(9));
        }
    }
    return b;
}

::testing::AssertionResult fin_propre(const Execution& e) {
    if (e.delai_depasse) {
        return ::testing::AssertionFailure() << "the run never ended (killed)\n" << e.erreurs;
    }
    if (e.signal != 0) {
        return ::testing::AssertionFailure() << "ended by signal " << e.signal << "\n" << e.erreurs;
    }
    for (const char* marque : {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer", "runtime error:",
                               "terminate called", "ASan runtime does not come first"}) {
        if (e.erreurs.find(marque) != std::string::npos) {
            return ::testing::AssertionFailure() << "standard error holds \"" << marque << "\"\n"
                                                 << e.erreurs;
        }
    }
    return ::testing::AssertionSuccess();
}

// --- files -------------------------------------------------------------------------

bool existe(const std::string& chemin) {
    std::error_code ec;
    return fs::exists(chemin, ec);
}

std::optional<std::string> lire(const std::string& chemin) {
    std::ifstream f(chemin, std::ios::binary);
    if (!f) {
        return std::nullopt;
    }
    std::ostringstream tout;
    tout << f.rdbuf();
    return tout.str();
}

void ecrire(const std::string& chemin, std::string_view octets) {
    std::ofstream f(chemin, std::ios::binary | std::ios::trunc);
    f.write(octets.data(), static_cast<std::streamsize>(octets.size()));
}

void copier(const std::string& source, const std::string& destination) {
    std::error_code ec;
    fs::copy_file(source, destination, fs::copy_options::overwrite_existing, ec);
    ASSERT_FALSE(ec) << source << " -> " << destination << ": " << ec.message();
}

std::vector<std::string> lignes(std::string_view texte) {
    std::vector<std::string> l;
    std::size_t debut = 0;
    while (debut < texte.size()) {
        auto fin = texte.find('\n', debut);
        if (fin == std::string_view::npos) {
            fin = texte.size();
        }
        std::string ligne(texte.substr(debut, fin - debut));
        if (!ligne.empty() && ligne.back() == '\r') {
            ligne.pop_back();
        }
        l.push_back(ligne);
        debut = fin + 1;
    }
    return l;
}

std::string premiers(const std::string& utf8, std::size_t n) {
    std::size_t i = 0;
    for (std::size_t compte = 0; i < utf8.size() && compte < n; ++compte) {
        ++i;
        while (i < utf8.size() && (static_cast<unsigned char>(utf8[i]) & 0xC0) == 0x80) {
            ++i;
        }
    }
    return utf8.substr(0, i);
}

std::string stocke_par_regle(const std::string& texte) {
    std::string s;
    for (char c : texte) {
        s += c == '"' ? std::string("\"\"") : std::string(1, c);
    }
    return s;
}

std::string latin1(std::string_view utf8) {
    std::string s;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(utf8[i]);
        if (c < 0x80) {
            s += static_cast<char>(c);
        } else if ((c & 0xE0) == 0xC0 && i + 1 < utf8.size()) {
            unsigned code = ((c & 0x1Fu) << 6) | (static_cast<unsigned char>(utf8[i + 1]) & 0x3Fu);
            s += code < 0x100 ? static_cast<char>(code) : '?';
            ++i;
        } else {
            s += '?';
            while (i + 1 < utf8.size() &&
                   (static_cast<unsigned char>(utf8[i + 1]) & 0xC0) == 0x80) {
                ++i;
            }
        }
    }
    return s;
}

// --- XML ---------------------------------------------------------------------------

Xml::Xml(const std::string& chemin) {
    if (existe(chemin)) {
        doc_ = xmlReadFile(chemin.c_str(), nullptr,
                           XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    }
}

Xml::~Xml() {
    xmlFreeDoc(static_cast<xmlDocPtr>(doc_));
}

std::string Xml::encodage() const {
    auto d = static_cast<xmlDocPtr>(doc_);
    return d && d->encoding ? reinterpret_cast<const char*>(d->encoding) : "";
}

std::optional<std::string> Xml::texte(const std::string& xpath) const {
    auto n = noeuds(doc_, xpath);
    if (n.empty()) {
        return std::nullopt;
    }
    return texte_noeud(n.front());
}

std::vector<std::string> Xml::textes(const std::string& xpath) const {
    std::vector<std::string> t;
    for (auto n : noeuds(doc_, xpath)) {
        t.push_back(texte_noeud(n));
    }
    return t;
}

std::vector<std::string> Xml::enfants(const std::string& xpath) const {
    std::vector<std::string> e;
    auto n = noeuds(doc_, xpath);
    if (n.empty()) {
        return e;
    }
    for (xmlNodePtr c = n.front()->children; c != nullptr; c = c->next) {
        if (c->type == XML_ELEMENT_NODE) {
            e.emplace_back(reinterpret_cast<const char*>(c->name));
        }
    }
    return e;
}

std::size_t Xml::compter(const std::string& xpath) const {
    return noeuds(doc_, xpath).size();
}

std::optional<Resultat> resultat(const std::string& chemin) {
    Xml x(chemin);
    if (!x.ok()) {
        return std::nullopt;
    }
    Resultat r;
    r.appelant = x.texte("/ZRMESSAGE/appelant").value_or("");
    r.code = x.texte("/ZRMESSAGE/resultat/codeErreur").value_or("");
    r.libelle = x.texte("/ZRMESSAGE/resultat/libelleErreur").value_or("");
    return r;
}

std::string code_reponse(const std::string& chemin) {
    auto r = resultat(chemin);
    return r ? r->code : "<none>";
}

// --- SQLite ------------------------------------------------------------------------

Base::Base(const std::string& chemin) : chemin_(chemin) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(chemin.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        sqlite3_close(db);
        ADD_FAILURE() << "cannot open " << chemin;
        return;
    }
    sqlite3_busy_timeout(db, 5000);
    db_ = db;
}

Base::~Base() {
    sqlite3_close(static_cast<sqlite3*>(db_));
}

void Base::executer(const std::string& sql) {
    ASSERT_NE(db_, nullptr) << chemin_;
    char* message = nullptr;
    const std::string texte_sql = g_bases_latin1 ? latin1(sql) : sql;
    int rc =
        sqlite3_exec(static_cast<sqlite3*>(db_), texte_sql.c_str(), nullptr, nullptr, &message);
    std::string texte = message ? message : "";
    sqlite3_free(message);
    ASSERT_EQ(rc, SQLITE_OK) << chemin_ << ": " << (g_bases_latin1 ? depuis_latin1(texte) : texte)
                             << "\n"
                             << sql;
}

std::vector<Ligne> Base::lignes(const std::string& sql) {
    std::vector<Ligne> resultat;
    if (db_ == nullptr) {
        ADD_FAILURE() << "no database " << chemin_;
        return resultat;
    }
    sqlite3_stmt* st = nullptr;
    const std::string texte_sql = g_bases_latin1 ? latin1(sql) : sql;
    if (sqlite3_prepare_v2(static_cast<sqlite3*>(db_), texte_sql.c_str(), -1, &st, nullptr) !=
        SQLITE_OK) {
        std::string m = sqlite3_errmsg(static_cast<sqlite3*>(db_));
        ADD_FAILURE() << chemin_ << ": " << (g_bases_latin1 ? depuis_latin1(m) : m) << "\n" << sql;
        return resultat;
    }
    while (sqlite3_step(st) == SQLITE_ROW) {
        Ligne l;
        for (int i = 0; i < sqlite3_column_count(st); ++i) {
            if (sqlite3_column_type(st, i) == SQLITE_NULL) {
                l.emplace_back(std::nullopt);
            } else {
                std::string v = reinterpret_cast<const char*>(sqlite3_column_text(st, i));
                l.emplace_back(g_bases_latin1 ? depuis_latin1(v) : v);
            }
        }
        resultat.push_back(std::move(l));
    }
    sqlite3_finalize(st);
    return resultat;
}

std::optional<std::string> Base::valeur(const std::string& sql) {
    auto l = lignes(sql);
    if (l.empty() || l.front().empty()) {
        return std::nullopt;
    }
    return l.front().front();
}

long Base::compter(const std::string& table) {
    return std::stol(valeur("SELECT count(*) FROM [" + table + "]").value_or("-1"));
}

std::string Base::instantane() {
    std::string s;
    for (const auto& t : lignes("SELECT name, sql FROM sqlite_master ORDER BY name")) {
        s += "== " + t[0].value_or("") + " " + t[1].value_or("") + "\n";
        if (t[1] && t[1]->starts_with("CREATE TABLE") && !t[0]->starts_with("sqlite_")) {
            for (const auto& l : lignes("SELECT * FROM [" + *t[0] + "] ORDER BY rowid")) {
                for (const auto& v : l) {
                    s += v ? "'" + *v + "'|" : "NULL|";
                }
                s += "\n";
            }
        }
    }
    return s;
}

// --- card responses ------------------------------------------------------------------

void fixer(Champs& champs, const std::string& chemin, const std::string& valeur) {
    for (auto& [c, v] : champs) {
        if (c == chemin) {
            v = valeur;
            return;
        }
    }
    champs.emplace_back(chemin, valeur);
}

Champs contexte_carte() {
    return {{"TYP_CART", "1"},      {"VIT_NSER", "1234567890"}, {"ADM/FDV_CRT", "20991231"},
            {"ADM/RUF1_ADM", "R1"}, {"ADM/RUF2_ADM", "R2"},     {"NIR_ASS", "1500175123456"},
            {"CLE_ASS", "42"},      {"RGG_COD", "01"},          {"RTT_CAI", "131"},
            {"RTT_UGE", "0000"},    {"COD_GES", "10"},          {"RUF_FAM", ""},
            {"COD_SEF", "01"},      {"DEB_SEF", "20240101"},    {"FIN_SEF", "20241231"},
            {"AT/ORG_GE", ""},      {"AT/GST_CD", ""},          {"AT/IDT_AT", ""},
            {"AT/ORG_GE1", ""},     {"AT/GST_CD1", ""},         {"AT/IDT_AT1", ""},
            {"AT/ORG_GE2", ""},     {"AT/GST_CD2", ""},         {"AT/IDT_AT2", ""},
            {"NB_BEN", "2"}};
}

Champs beneficiaire(const std::string& nom, const std::string& prenom, const std::string& naissance,
                    const std::string& rang) {
    return {{"NOM_USG", nom},
            {"NOM_PAT", nom},
            {"PRM_USG", prenom},
            {"ADR_LN1", "12 rue des Lilas"},
            {"ADR_LN2", ""},
            {"ADR_LN3", ""},
            {"ADR_LN4", "75011"},
            {"ADR_LN5", "PARIS"},
            {"NIR_CER", ""},
            {"CLE_CER", ""},
            {"DAT_CER", ""},
            {"NAI_BEN", naissance},
            {"BEN_RNG", rang},
            {"BEN_QLT", "00"},
            {"COD_SEB", "01"},
            {"DEB_SEB", "20240101"},
            {"FIN_SEB", "20241231"},
            {"MUT/MUT_NUM", "75500017"},
            {"MUT/CONT_MUT", "C1"},
            {"MUT/TRT_MUT", "T"},
            {"MUT/TYP_MUT", "1"},
            {"MUT/SER_MUT", "S"},
            {"MUT/IND_STS", "0"},
            {"MUT/DRT_MUT/NB_DRT_MUT", "1"},
            {"MUT/DRT_MUT/DMUT_DEB", "20240101"},
            {"MUT/DRT_MUT/DMUT_FIN", "20241231"},
            {"COMP/CPL_NU2", ""},
            {"COMP/CPL_EDI", ""},
            {"COMP/ADH_NUM", "ADH" + rang},
            {"COMP/TRT_AMC", ""},
            {"COMP/CPL_DEB", ""},
            {"COMP/CPL_FIN", ""},
            {"COMP/ROU_FLX", ""},
            {"COMP/IDT_HOT", "HOT"},
            {"COMP/NOM_DOM", "dom"},
            {"COMP/IND_STS_AMC", ""},
            {"COMP/TYP_SER", ""},
            {"COMP/SER_CRT", ""},
            {"COMP/RUF_COMP", ""},
            {"DRT_AMO/NB_DRT_AMO", "1"},
            {"DRT_AMO/DAMO_DEB", "20240101"},
            {"DRT_AMO/DAMO_FIN", "20241231"},
            {"DRT_CC/NB_DRT_CC", "1"},
            {"DRT_CC/CC_DEB", "20240101"},
            {"DRT_CC/CC_FIN", "20241231"},
            {"DRT_CC/COD_ALD", "A1"},
            {"DRT_CC/COD_SITU", "S1"}};
}

std::string reponse(const std::string& appelant, const std::string& code,
                    const std::string& libelle, const std::string& donnees) {
    std::string s = "<!DOCTYPE ZRMESSAGE>\r\n<ZRMESSAGE>\r\n<appelant>" + echapper(appelant) +
                    "</appelant>\r\n<resultat>\r\n<codeErreur>" + code +
                    "</codeErreur>\r\n<libelleErreur>" + echapper(libelle) +
                    "</libelleErreur>\r\n<donnees>\r\n" + donnees +
                    "</donnees>\r\n</resultat>\r\n</ZRMESSAGE>\r\n";
    return latin1(s);
}

std::string reponse_carte(const CarteTest& carte) {
    std::string d = "<contexteCVitale>\r\n";
    ecrire_champs(d, carte.contexte);
    for (const auto& b : carte.beneficiaires) {
        d += "<Beneficiaire>\r\n";
        ecrire_champs(d, b);
        d += "</Beneficiaire>\r\n";
    }
    d += "</contexteCVitale>\r\n";
    return reponse("f_LireCVitale", "0", "", d);
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

std::string reponse_version(const std::string& dll) {
    return reponse("f_LireVersion", "0", "", donnees_version(dll));
}

// --- Boutique ------------------------------------------------------------------------

Boutique::Boutique() {
    std::string modele = (fs::temp_directory_path() / "sv140-bb-XXXXXX").string();
    if (mkdtemp(modele.data()) == nullptr) {
        ADD_FAILURE() << "mkdtemp: " << std::strerror(errno);
    }
    racine = modele;
    programme = racine + "/Belvane_Classic/SV140";
    magasin = racine + "/Belvane_Classic/_Magasin";
    temporaire = racine + "/Belvane_Classic/Temporaire.accdb";
}

Boutique::~Boutique() {
    if (!garder && !racine.empty()) {
        std::error_code ec;
        fs::remove_all(racine, ec);
    }
}

bool Boutique::installer(std::string& erreur) {
    if (!existe(kBin + "/sv140")) {
        erreur = "the bridge is not built: " + kBin + "/sv140";
        return false;
    }
    if (!existe(kBin + "/sv140-shop")) {
        erreur = "the shop tool is not built: " + kBin + "/sv140-shop";
        return false;
    }
    Execution e = outil({"init", racine});
    if (e.statut != 0 || !existe(programme) || !existe(base_pont()) || !existe(base_hote())) {
        erreur = "sv140-shop init failed (" + std::to_string(e.statut) + "): " + e.erreurs;
        return false;
    }
    {
        sqlite3* db = nullptr;
        if (sqlite3_open_v2(base_hote().c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
            sqlite3_stmt* st = nullptr;
            std::string noms;
            if (sqlite3_prepare_v2(db, "SELECT group_concat(sql) FROM sqlite_master", -1, &st,
                                   nullptr) == SQLITE_OK &&
                sqlite3_step(st) == SQLITE_ROW && sqlite3_column_text(st, 0) != nullptr) {
                noms = reinterpret_cast<const char*>(sqlite3_column_text(st, 0));
            }
            sqlite3_finalize(st);
            g_bases_latin1 = !valide_utf8(noms);
        }
        sqlite3_close(db);
    }
    std::error_code ec;
    fs::copy_file(kBin + "/sv140", fichier("sv140"), fs::copy_options::overwrite_existing, ec);
    if (ec) {
        erreur = "copy of sv140: " + ec.message();
        return false;
    }
    return true;
}

void Boutique::utiliser_script() {
    copier(kScript, fichier("WebQuintara2.so"));
    std::error_code ec;
    fs::create_directories(programme + "/zrscript", ec);
}

void Boutique::scripter(int appel, int retour, std::string_view reponse) {
    scripter_fichier(appel, ".ret", std::to_string(retour));
    scripter_fichier(appel, ".rsp", reponse);
}

void Boutique::scripter_retour(int appel, int retour) {
    scripter_fichier(appel, ".ret", std::to_string(retour));
}

void Boutique::scripter_toujours(int retour, std::string_view reponse) {
    ecrire(script("toujours.ret"), std::to_string(retour));
    ecrire(script("toujours.rsp"), reponse);
}

void Boutique::scripter_fichier(int appel, const std::string& suffixe, std::string_view contenu) {
    ecrire(script("appel_" + std::to_string(appel) + suffixe), contenu);
}

void Boutique::professionnel(const std::string& num_situ, int version) {
    {
        Base pont(base_pont());
        pont.executer(
            "DELETE FROM T_InfosCPS; DELETE FROM T_InfosSituation_CPS;"
            "INSERT INTO T_InfosCPS (Info_CPS_ID, Info_CPS_NUM_IDN, Info_CPS_NOM_PRAT)"
            " VALUES (1, '10001234567', 'OPTIC');"
            "INSERT INTO T_InfosSituation_CPS (InfoSituation_CPS_ID, Info_CPS_ID_FK,"
            " InfoSituation_CPS_NUM_SIT, InfoSituation_NUM_IDFACPS, InfoSituation_CLE_IDFACPS)"
            " VALUES (1, 1, '1', '12345678', '9'), (2, 1, '2', '87654321', '0');"
            "UPDATE T_InfoParam SET Num_Situ = '" +
            num_situ + "' WHERE Info_Param_ID = 1;");
    }
    Base hote(base_hote());
    hote.executer("DELETE FROM Version; INSERT INTO Version (Version) VALUES (" +
                  std::to_string(version) + ");");
}

int Boutique::appels() const {
    auto t = lire(script("compteur"));
    return t ? std::atoi(t->c_str()) : 0;
}

std::string Boutique::requete(int appel) const {
    return lire(script("requete_" + std::to_string(appel) + ".xml")).value_or("");
}

long Boutique::taille(int appel) const {
    auto t = lire(script("taille_" + std::to_string(appel) + ".txt"));
    return t ? std::atol(t->c_str()) : -1;
}

Execution Boutique::outil(const std::vector<std::string>& arguments) {
    std::vector<std::string> argv{kBin + "/sv140-shop"};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    const std::string etiquette = racine + "/.outil" + std::to_string(++g_compteur);
    return attendre_programme(lancer_programme(argv, racine, "", etiquette), etiquette);
}

pid_t Boutique::demarrer(const std::vector<std::string>& arguments, const std::string& entree,
                         const std::string& etiquette) {
    std::vector<std::string> argv{"faketime", "-f", kHorloge, fichier("sv140")};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return lancer_programme(argv, racine, entree, racine + "/." + etiquette);
}

Execution Boutique::attendre(pid_t pid, const std::string& etiquette) {
    return attendre_programme(pid, racine + "/." + etiquette);
}

Execution Boutique::lancer(const std::vector<std::string>& arguments, const std::string& entree) {
    const std::string etiquette = "run" + std::to_string(++g_compteur);
    return attendre(demarrer(arguments, entree, etiquette), etiquette);
}

bool Boutique::log_finit_par(const std::string& message) const {
    const std::string l1 = latin1(message);
    for (const auto& l : lignes(log())) {
        if (l.ends_with(message) || l.ends_with(l1)) {
            return true;
        }
    }
    return false;
}

bool Boutique::log_contient(const std::string& morceau) const {
    const std::string texte = log();
    return texte.find(morceau) != std::string::npos ||
           texte.find(latin1(morceau)) != std::string::npos;
}

// --- fixture -------------------------------------------------------------------------

void BoiteNoire::SetUp() {
    std::string erreur;
    ASSERT_TRUE(b.installer(erreur)) << erreur;
    // The archive root of a shop in use: its first creation is announced by a box
    // that only the archive test is about.
    std::error_code ec;
    std::filesystem::create_directories(b.magasin + "/Sv140", ec);
}

void BoiteNoire::TearDown() {
    if (HasFailure()) {
        b.garder = true;
        std::printf("shop kept for inspection: %s\n", b.racine.c_str());
    }
}

}  // namespace bb
