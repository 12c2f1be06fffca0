// The shop's databases over ODBC (unixODBC on Linux, odbc32 on Windows), through the
// wide-character entry points only.
#include "data/connexion.h"

#if defined(_WIN32)
#include <windows.h>
#endif
#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "data/access_sql.h"
#include "data/texte_sql.h"
#include "platform/encodage.h"
#include "platform/systeme.h"

namespace sv140 {
namespace {

SQLHENV environnement() {
    static SQLHENV env = [] {
        SQLHENV e = SQL_NULL_HENV;
        if (SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &e))) {
            SQLSetEnvAttr(e, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        }
        return e;
    }();
    return env;
}

// The driver manager's text: on Windows the wide entry points (the Access driver is a
// wide driver); on Linux the narrow ones, in UTF-8, because the SQLite driver has no
// wide entry points and the driver manager would squeeze wide text into Latin-1.
#if defined(_WIN32)
static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "ODBC wide characters are UTF-16");

SQLRETURN executer_direct(SQLHSTMT h, std::string_view utf8) {
    std::u16string s = utf8_vers_utf16(utf8);
    return SQLExecDirectW(h, reinterpret_cast<SQLWCHAR*>(s.data()),
                          static_cast<SQLINTEGER>(s.size()));
}

SQLRETURN connecter_pilote(SQLHDBC dbc, std::string_view chaine) {
    std::u16string c = utf8_vers_utf16(chaine);
    SQLWCHAR sortie[1024];
    SQLSMALLINT longueur = 0;
    return SQLDriverConnectW(dbc, nullptr, reinterpret_cast<SQLWCHAR*>(c.data()),
                             static_cast<SQLSMALLINT>(c.size()), sortie, 1024, &longueur,
                             SQL_DRIVER_NOPROMPT);
}

std::string nom_colonne(SQLHSTMT h, SQLSMALLINT c) {
    SQLWCHAR nom[256];
    SQLSMALLINT longueur = 0, type = 0, decimales = 0, nul = 0;
    SQLULEN taille = 0;
    SQLDescribeColW(h, c, nom, 256, &longueur, &type, &taille, &decimales, &nul);
    // The length can count the bytes of the driver's UTF-8 name rather than its
    // characters (the SQLite driver under Wine does, for "N°"): the name ends at its NUL.
    std::u16string texte(reinterpret_cast<const char16_t*>(nom), std::min<int>(longueur, 255));
    texte.resize(std::min(texte.size(), texte.find(u'\0')));
    return utf16_vers_utf8(texte);
}

using Unite = char16_t;
constexpr SQLSMALLINT kTypeTexte = SQL_C_WCHAR;
std::string vers_utf8(const std::u16string& s) {
    return utf16_vers_utf8(s);
}

std::string diagnostic(SQLSMALLINT type, SQLHANDLE h) {
    std::string texte;
    SQLWCHAR etat[6];
    SQLINTEGER natif = 0;
    SQLWCHAR message[1024];
    SQLSMALLINT longueur = 0;
    for (SQLSMALLINT i = 1;
         SQLGetDiagRecW(type, h, i, etat, &natif, message, 1024, &longueur) == SQL_SUCCESS; ++i) {
        if (!texte.empty()) {
            texte += " ; ";
        }
        texte += utf16_vers_utf8(std::u16string(reinterpret_cast<const char16_t*>(etat), 5)) + " " +
                 utf16_vers_utf8(std::u16string(reinterpret_cast<const char16_t*>(message),
                                                std::min<std::size_t>(longueur, 1023)));
    }
    return texte.empty() ? "erreur ODBC sans diagnostic" : texte;
}
#else
SQLCHAR* u(std::string& s) {
    return reinterpret_cast<SQLCHAR*>(s.data());
}

SQLRETURN executer_direct(SQLHSTMT h, std::string_view utf8) {
    std::string s(utf8);
    return SQLExecDirect(h, u(s), static_cast<SQLINTEGER>(s.size()));
}

SQLRETURN connecter_pilote(SQLHDBC dbc, std::string_view chaine) {
    std::string c(chaine);
    SQLCHAR sortie[1024];
    SQLSMALLINT longueur = 0;
    return SQLDriverConnect(dbc, nullptr, u(c), static_cast<SQLSMALLINT>(c.size()), sortie, 1024,
                            &longueur, SQL_DRIVER_NOPROMPT);
}

std::string nom_colonne(SQLHSTMT h, SQLSMALLINT c) {
    SQLCHAR nom[512];
    SQLSMALLINT longueur = 0, type = 0, decimales = 0, nul = 0;
    SQLULEN taille = 0;
    SQLDescribeCol(h, c, nom, 512, &longueur, &type, &taille, &decimales, &nul);
    return std::string(reinterpret_cast<const char*>(nom), std::min<int>(longueur, 511));
}

using Unite = char;
constexpr SQLSMALLINT kTypeTexte = SQL_C_CHAR;
std::string vers_utf8(const std::string& s) {
    return s;
}

std::string diagnostic(SQLSMALLINT type, SQLHANDLE h) {
    std::string texte;
    SQLCHAR etat[6];
    SQLINTEGER natif = 0;
    SQLCHAR message[1024];
    SQLSMALLINT longueur = 0;
    for (SQLSMALLINT i = 1;
         SQLGetDiagRec(type, h, i, etat, &natif, message, 1024, &longueur) == SQL_SUCCESS; ++i) {
        if (!texte.empty()) {
            texte += " ; ";
        }
        texte += std::string(reinterpret_cast<const char*>(etat), 5) + " " +
                 std::string(reinterpret_cast<const char*>(message),
                             std::min<std::size_t>(longueur, 1023));
    }
    return texte.empty() ? "erreur ODBC sans diagnostic" : texte;
}
#endif

// The SQLite driver's names: as registered in the ODBC configuration, then by the
// library's usual place, for a machine whose driver list was never written.
const char* const kPilotesSQLite[] = {
    "{SQLite3}",
    "/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so",
    "/usr/lib/i386-linux-gnu/odbc/libsqlite3odbc.so",
    "/usr/lib/aarch64-linux-gnu/odbc/libsqlite3odbc.so",
    "{SQLite3 ODBC Driver}",
};
const char kPiloteAccess[] = "{Microsoft Access Driver (*.mdb, *.accdb)}";

bool egal_sans_casse(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

// The drivers read the path from a connection string in which ';' separates the
// attributes and braces are not understood: such a path would open another file.
bool chemin_transmissible(std::string_view chemin) {
    return chemin.find_first_of(";{}") == std::string_view::npos;
}
constexpr const char* kCheminIntransmissible =
    "chemin refusé : les caractères ; { } ne peuvent pas être transmis au pilote ODBC";

std::tm aujourdhui() {
    std::time_t t = std::time(nullptr);
    return *std::localtime(&t);
}

}  // namespace

double Valeur::nombre() const {
    return texte ? Val(*texte) : 0.0;
}

bool Valeur::booleen() const {
    if (!texte) {
        return false;
    }
    if (egal_sans_casse(Trim(*texte), "True") || egal_sans_casse(Trim(*texte), "Vrai")) {
        return true;
    }
    return Val(*texte) != 0.0;
}

Recordset::Recordset(std::vector<std::string> colonnes, std::vector<std::vector<Valeur>> lignes)
    : colonnes_(std::move(colonnes)), lignes_(std::move(lignes)) {}

Valeur Recordset::champ(std::string_view nom) const {
    if (EOF_()) {
        return {};
    }
    auto cherche = [&](std::string_view n) -> std::optional<std::size_t> {
        for (std::size_t i = 0; i < colonnes_.size(); ++i) {
            if (egal_sans_casse(colonnes_[i], n)) {
                return i;
            }
        }
        return std::nullopt;
    };
    auto i = cherche(nom);
    if (!i) {
        // A field asked for as "table.column" is the column of that name.
        auto point = nom.rfind('.');
        if (point != std::string_view::npos) {
            i = cherche(nom.substr(point + 1));
        }
    }
    return i ? lignes_[courante_][*i] : Valeur{};
}

struct Connexion::Impl {
    SQLHDBC dbc = SQL_NULL_HDBC;
    bool connectee = false;

    ~Impl() { deconnecter(); }
    void deconnecter() {
        if (connectee) {
            SQLEndTran(SQL_HANDLE_DBC, dbc, SQL_ROLLBACK);
            SQLDisconnect(dbc);
            connectee = false;
        }
        if (dbc != SQL_NULL_HDBC) {
            SQLFreeHandle(SQL_HANDLE_DBC, dbc);
            dbc = SQL_NULL_HDBC;
        }
    }
    bool connecter(const std::string& chaine, std::string& erreur) {
        if (SQLAllocHandle(SQL_HANDLE_DBC, environnement(), &dbc) != SQL_SUCCESS) {
            erreur = "environnement ODBC indisponible";
            return false;
        }
        SQLRETURN r = connecter_pilote(dbc, chaine);
        if (!SQL_SUCCEEDED(r)) {
            erreur = diagnostic(SQL_HANDLE_DBC, dbc);
            SQLFreeHandle(SQL_HANDLE_DBC, dbc);
            dbc = SQL_NULL_HDBC;
            return false;
        }
        connectee = true;
        return true;
    }
};

Connexion::Connexion(Journal journal) : journal_(std::move(journal)) {}

Connexion::~Connexion() {
    fermer();
}

void Connexion::journaliser(std::string_view message) {
    if (journal_) {
        journal_(message);
    }
}

Moteur Connexion::moteur_du_fichier(const std::string& chemin) {
    std::ifstream f(std::filesystem::path(std::u8string(chemin.begin(), chemin.end())),
                    std::ios::binary);
    if (!f) {
        return Moteur::Aucun;
    }
    char entete[16] = {};
    f.read(entete, 16);
    return (f.gcount() == 16 && std::memcmp(entete, "SQLite format 3\0", 16) == 0) ? Moteur::SQLite
                                                                                   : Moteur::Access;
}

bool Connexion::ouvrir(const std::string& chemin) {
    fermer();
    chemin_ = chemin;
    erreur_.clear();
    Moteur m = moteur_du_fichier(chemin);
    if (!chemin_transmissible(chemin)) {
        erreur_ = kCheminIntransmissible;
        m = Moteur::Aucun;
    } else if (m == Moteur::Aucun) {
        erreur_ = "base de données introuvable";
    }
    if (m == Moteur::Aucun) {
        journaliser("Connexion impossible : " + chemin + " : " + erreur_);
        return false;
    }
    auto impl = std::make_unique<Impl>();
    bool ok = false;
    if (m == Moteur::SQLite) {
        // NoCreat: a database that vanished between the check and the opening must
        // not come back as an empty file.
        const std::string fichier = chemin_pour_pilote(chemin);
        for (const char* pilote : kPilotesSQLite) {
            std::string chaine = std::string("DRIVER=") + pilote + ";Database=" + fichier +
                                 ";NoCreat=1;Timeout=10000;LongNames=0;ShortNames=1;";
            std::string erreur;
            if (impl->connecter(chaine, erreur)) {
                ok = true;
                break;
            }
            erreur_ = erreur;
        }
    } else {
        ok = impl->connecter(std::string("DRIVER=") + kPiloteAccess + ";DBQ=" + chemin + ";",
                             erreur_);
    }
    if (!ok) {
        journaliser("Connexion impossible : " + chemin + " : " + erreur_);
        return false;
    }
    SQLSetConnectAttrW(impl->dbc, SQL_ATTR_AUTOCOMMIT,
                       reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
    erreur_.clear();
    impl_ = std::move(impl);
    moteur_ = m;
    return true;
}

bool Connexion::ouverte() const {
    return impl_ && impl_->connectee;
}

void Connexion::fermer() {
    impl_.reset();
    moteur_ = Moteur::Aucun;
}

namespace {

struct Instruction {
    SQLHSTMT h = SQL_NULL_HSTMT;
    explicit Instruction(SQLHDBC dbc) { SQLAllocHandle(SQL_HANDLE_STMT, dbc, &h); }
    ~Instruction() {
        if (h != SQL_NULL_HSTMT) {
            SQLFreeHandle(SQL_HANDLE_STMT, h);
        }
    }
};

}  // namespace

bool Connexion::Execute(std::string_view sql) {
    if (!ouverte()) {
        erreur_ = "base non ouverte : " + chemin_;
        journaliser("Erreur SQL : " + erreur_ + " : " + std::string(sql));
        return false;
    }
    std::string texte =
        moteur_ == Moteur::SQLite ? Traduire_Access_SQL(sql, aujourdhui()) : std::string(sql);
    Instruction st(impl_->dbc);
    SQLRETURN r = executer_direct(st.h, texte);
    if (r == SQL_NO_DATA || SQL_SUCCEEDED(r)) {
        erreur_.clear();
        return true;
    }
    erreur_ = diagnostic(SQL_HANDLE_STMT, st.h);
    journaliser("Erreur SQL : " + erreur_ + " : " + std::string(sql));
    return false;
}

std::optional<Recordset> Connexion::Ouvrir(std::string_view sql) {
    if (!ouverte()) {
        erreur_ = "base non ouverte : " + chemin_;
        journaliser("Erreur SQL : " + erreur_ + " : " + std::string(sql));
        return std::nullopt;
    }
    std::string texte =
        moteur_ == Moteur::SQLite ? Traduire_Access_SQL(sql, aujourdhui()) : std::string(sql);
    Instruction st(impl_->dbc);
    SQLRETURN r = executer_direct(st.h, texte);
    auto echec = [&]() -> std::optional<Recordset> {
        erreur_ = diagnostic(SQL_HANDLE_STMT, st.h);
        journaliser("Erreur SQL : " + erreur_ + " : " + std::string(sql));
        return std::nullopt;
    };
    if (!SQL_SUCCEEDED(r) && r != SQL_NO_DATA) {
        return echec();
    }
    SQLSMALLINT nb = 0;
    SQLNumResultCols(st.h, &nb);
    std::vector<std::string> colonnes;
    for (SQLSMALLINT c = 1; c <= nb; ++c) {
        colonnes.push_back(nom_colonne(st.h, c));
    }
    std::vector<std::vector<Valeur>> lignes;
    while (nb > 0) {
        r = SQLFetch(st.h);
        if (r == SQL_NO_DATA) {
            break;
        }
        if (!SQL_SUCCEEDED(r)) {
            return echec();
        }
        std::vector<Valeur> ligne;
        for (SQLSMALLINT c = 1; c <= nb; ++c) {
            std::basic_string<Unite> valeur;
            bool nulle = false;
            // Long texts come in pieces; each call returns the next one.
            for (;;) {
                Unite morceau[1024];
                SQLLEN indicateur = 0;
                r = SQLGetData(st.h, c, kTypeTexte, morceau, sizeof(morceau), &indicateur);
                if (r == SQL_NO_DATA) {
                    break;
                }
                if (!SQL_SUCCEEDED(r)) {
                    return echec();
                }
                if (indicateur == SQL_NULL_DATA) {
                    nulle = true;
                    break;
                }
                std::size_t n = (indicateur == SQL_NO_TOTAL ||
                                 indicateur >= static_cast<SQLLEN>(sizeof(morceau)))
                                    ? 1023
                                    : static_cast<std::size_t>(indicateur) / sizeof(Unite);
                valeur.append(morceau, n);
                if (r == SQL_SUCCESS) {
                    break;
                }
            }
            ligne.push_back(nulle ? Valeur{} : Valeur{vers_utf8(valeur)});
        }
        lignes.push_back(std::move(ligne));
    }
    erreur_.clear();
    return Recordset(std::move(colonnes), std::move(lignes));
}

bool Connexion::valider() {
    if (!ouverte()) {
        return false;
    }
    SQLRETURN r = SQLEndTran(SQL_HANDLE_DBC, impl_->dbc, SQL_COMMIT);
    if (!SQL_SUCCEEDED(r)) {
        erreur_ = diagnostic(SQL_HANDLE_DBC, impl_->dbc);
        journaliser("Validation impossible : " + chemin_ + " : " + erreur_);
        return false;
    }
    return true;
}

void Connexion::annuler() {
    if (ouverte()) {
        SQLEndTran(SQL_HANDLE_DBC, impl_->dbc, SQL_ROLLBACK);
    }
}

bool Connexion::point_de_sauvegarde(std::string_view nom) {
    return Execute("SAVEPOINT " + std::string(nom));
}
bool Connexion::liberer(std::string_view nom) {
    return Execute("RELEASE " + std::string(nom));
}
bool Connexion::revenir(std::string_view nom) {
    return Execute("ROLLBACK TO " + std::string(nom));
}

bool Connexion::creer_sqlite(const std::string& chemin, std::string& erreur) {
    if (!chemin_transmissible(chemin)) {
        erreur = std::string(kCheminIntransmissible) + " : " + chemin;
        return false;
    }
    if (moteur_du_fichier(chemin) != Moteur::Aucun) {
        erreur = "le fichier existe déjà : " + chemin;
        return false;
    }
    for (const char* pilote : kPilotesSQLite) {
        Impl impl;
        std::string e;
        if (!impl.connecter(
                std::string("DRIVER=") + pilote + ";Database=" + chemin_pour_pilote(chemin) + ";",
                e)) {
            erreur = e;
            continue;
        }
        // The header is only written with the first page: give the file one.
        Instruction st(impl.dbc);
        SQLRETURN r = executer_direct(st.h, "PRAGMA user_version = 1");
        if (!SQL_SUCCEEDED(r) && r != SQL_NO_DATA) {
            erreur = diagnostic(SQL_HANDLE_STMT, st.h);
            return false;
        }
        SQLEndTran(SQL_HANDLE_DBC, impl.dbc, SQL_COMMIT);
        return true;
    }
    return false;
}

}  // namespace sv140
