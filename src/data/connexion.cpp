// The shop's databases over ODBC (unixODBC on Linux, odbc32 on Windows); how text
// crosses the driver manager is the platform's (platform/odbc_texte.h).
#include "data/connexion.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "data/access_sql.h"
#include "data/texte_sql.h"
#include "platform/horloge.h"
#include "platform/odbc_texte.h"
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
        SQLRETURN r = odbc::connecter(dbc, chaine);
        if (!SQL_SUCCEEDED(r)) {
            erreur = odbc::diagnostic(SQL_HANDLE_DBC, dbc);
            SQLFreeHandle(SQL_HANDLE_DBC, dbc);
            dbc = SQL_NULL_HDBC;
            return false;
        }
        connectee = true;
        return true;
    }
};

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

// A statement run as it is, outside any unit of work (the connection's settings).
bool reglage(SQLHDBC dbc, std::string_view sql, std::string& erreur) {
    Instruction st(dbc);
    const SQLRETURN r = odbc::executer(st.h, sql);
    if (SQL_SUCCEEDED(r) || r == SQL_NO_DATA) {
        return true;
    }
    erreur = odbc::diagnostic(SQL_HANDLE_STMT, st.h);
    return false;
}

}  // namespace

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
    const std::filesystem::path p(std::u8string(chemin.begin(), chemin.end()));
    std::error_code ec;
    if (!std::filesystem::is_regular_file(p, ec)) {
        return Moteur::Aucun;
    }
    std::ifstream f(p, std::ios::binary);
    if (!f) {
        return Moteur::Aucun;
    }
    char entete[16] = {};
    f.read(entete, 16);
    return (f.gcount() == 16 && std::memcmp(entete, "SQLite format 3\0", 16) == 0) ? Moteur::SQLite
                                                                                   : Moteur::Access;
}

void Connexion::ouvrir_a_la_demande(const std::string& chemin) {
    if (moteur_du_fichier(chemin) == Moteur::Aucun || !chemin_transmissible(chemin)) {
        (void)ouvrir(chemin);
        return;
    }
    fermer();
    chemin_ = chemin;
    differee_ = chemin;
}

void Connexion::ouvrir_si_differee() {
    if (differee_) {
        const std::string chemin = std::move(*differee_);
        differee_.reset();
        (void)ouvrir(chemin);
    }
}

Statut Connexion::ouvrir(const std::string& chemin) {
    fermer();
    chemin_ = chemin;
    refus_.clear();
    Moteur m = moteur_du_fichier(chemin);
    if (!chemin_transmissible(chemin)) {
        refus_ = kCheminIntransmissible;
    } else if (m == Moteur::Aucun) {
        refus_ = dossier_existe(chemin) ? "un dossier porte le nom de la base de données"
                                        : "base de données introuvable";
    }
    auto impl = std::make_unique<Impl>();
    if (refus_.empty() && m == Moteur::SQLite) {
        // NoCreat: a database that vanished between the check and the opening must
        // not come back as an empty file. The driver waits its Timeout twice for a write
        // that finds the database locked (measured: 5000 gives up after 10 seconds), so
        // half of the 5 seconds a workstation waits for another's write.
        const std::string fichier = chemin_pour_pilote(chemin);
        for (const char* pilote : kPilotesSQLite) {
            refus_.clear();
            if (impl->connecter(std::string("DRIVER=") + pilote + ";Database=" + fichier +
                                    ";NoCreat=1;Timeout=2500;LongNames=0;ShortNames=1;",
                                refus_)) {
                break;
            }
        }
        // The journal mode is the file's own and is set outside any transaction. A
        // file that cannot take it (read-only) is still read; its writes will fail.
        std::string erreur;
        if (impl->connectee && !(reglage(impl->dbc, "PRAGMA journal_mode=WAL", erreur) &&
                                 reglage(impl->dbc, "PRAGMA synchronous=NORMAL", erreur))) {
            journaliser("Mode WAL refusé : " + chemin + " : " + erreur);
        }
    } else if (refus_.empty()) {
        impl->connecter(std::string("DRIVER=") + kPiloteAccess + ";DBQ=" + chemin + ";", refus_);
    }
    // Without this, each statement would be committed as it runs and no unit of work
    // could be rolled back.
    if (impl->connectee &&
        !SQL_SUCCEEDED(SQLSetConnectAttr(impl->dbc, SQL_ATTR_AUTOCOMMIT,
                                         reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0))) {
        refus_ =
            "transactions refusées par le pilote : " + odbc::diagnostic(SQL_HANDLE_DBC, impl->dbc);
        impl->deconnecter();
    }
    if (!impl->connectee) {
        journaliser("Connexion impossible : " + chemin + " : " + refus_);
        return Statut::Echec_Base(chemin + " : " + refus_);
    }
    refus_.clear();
    impl_ = std::move(impl);
    moteur_ = m;
    return {};
}

bool Connexion::ouverte() const {
    return impl_ && impl_->connectee;
}

void Connexion::fermer() {
    differee_.reset();
    impl_.reset();
    transaction_ = Transaction::Aucune;
    moteur_ = Moteur::Aucun;
}

Statut Connexion::echec_instruction(std::string_view raison, std::string_view sql) {
    journaliser("Erreur SQL : " + chemin_ + " : " + std::string(raison) + " : " + std::string(sql));
    return Statut::Echec_Base(chemin_ + " : " + std::string(raison));
}

Statut Connexion::Execute(std::string_view sql) {
    ouvrir_si_differee();
    if (!ouverte()) {
        return echec_instruction(refus_.empty() ? "base non ouverte" : refus_, sql);
    }
    std::string texte =
        moteur_ == Moteur::SQLite ? Traduire_Access_SQL(sql, maintenant_local()) : std::string(sql);
    if (moteur_ == Moteur::SQLite && transaction_ == Transaction::Lecture) {
        // Nothing written yet: the write begins a transaction of its own, which waits for
        // the database's write lock rather than failing on a stale read.
        SQLEndTran(SQL_HANDLE_DBC, impl_->dbc, SQL_ROLLBACK);
    }
    Instruction st(impl_->dbc);
    SQLRETURN r = odbc::executer(st.h, texte);
    if (r == SQL_NO_DATA || SQL_SUCCEEDED(r)) {
        transaction_ = Transaction::Ecriture;
        return {};
    }
    if (transaction_ != Transaction::Ecriture) {
        transaction_ = Transaction::Lecture;
    }
    return echec_instruction(odbc::diagnostic(SQL_HANDLE_STMT, st.h), sql);
}

Resultat<Recordset> Connexion::Ouvrir(std::string_view sql) {
    ouvrir_si_differee();
    if (!ouverte()) {
        return echec_instruction(refus_.empty() ? "base non ouverte" : refus_, sql);
    }
    std::string texte =
        moteur_ == Moteur::SQLite ? Traduire_Access_SQL(sql, maintenant_local()) : std::string(sql);
    Instruction st(impl_->dbc);
    SQLRETURN r = odbc::executer(st.h, texte);
    if (transaction_ == Transaction::Aucune) {
        transaction_ = Transaction::Lecture;
    }
    if (!SQL_SUCCEEDED(r) && r != SQL_NO_DATA) {
        return echec_instruction(odbc::diagnostic(SQL_HANDLE_STMT, st.h), sql);
    }
    SQLSMALLINT nb = 0;
    SQLNumResultCols(st.h, &nb);
    std::vector<std::string> colonnes;
    for (SQLSMALLINT c = 1; c <= nb; ++c) {
        colonnes.push_back(odbc::nom_colonne(st.h, c));
    }
    std::vector<std::vector<Valeur>> lignes;
    while (nb > 0) {
        r = SQLFetch(st.h);
        if (r == SQL_NO_DATA) {
            break;
        }
        if (!SQL_SUCCEEDED(r)) {
            return echec_instruction(odbc::diagnostic(SQL_HANDLE_STMT, st.h), sql);
        }
        std::vector<Valeur> ligne;
        for (SQLSMALLINT c = 1; c <= nb; ++c) {
            std::optional<std::string> valeur;
            if (!SQL_SUCCEEDED(odbc::lire_texte(st.h, static_cast<SQLUSMALLINT>(c), valeur))) {
                return echec_instruction(odbc::diagnostic(SQL_HANDLE_STMT, st.h), sql);
            }
            ligne.push_back(Valeur{std::move(valeur)});
        }
        lignes.push_back(std::move(ligne));
    }
    return Recordset(std::move(colonnes), std::move(lignes));
}

Statut Connexion::valider() {
    if (!ouverte()) {
        return Statut::Echec_Base(chemin_ + " : " + (refus_.empty() ? "base non ouverte" : refus_));
    }
    if (SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, impl_->dbc, SQL_COMMIT))) {
        transaction_ = Transaction::Aucune;
        return {};
    }
    const std::string erreur = odbc::diagnostic(SQL_HANDLE_DBC, impl_->dbc);
    journaliser("Validation impossible : " + chemin_ + " : " + erreur);
    annuler();
    return Statut::Echec_Base(chemin_ + " : " + erreur);
}

void Connexion::annuler() {
    if (ouverte()) {
        SQLEndTran(SQL_HANDLE_DBC, impl_->dbc, SQL_ROLLBACK);
    }
    transaction_ = Transaction::Aucune;
}

Statut Connexion::creer_sqlite(const std::string& chemin) {
    if (!chemin_transmissible(chemin)) {
        return Statut::Echec(std::string(kCheminIntransmissible) + " : " + chemin);
    }
    if (fichier_existe(chemin) || dossier_existe(chemin)) {
        return Statut::Echec("le fichier existe déjà : " + chemin);
    }
    std::string erreur = "pilote SQLite introuvable";
    for (const char* pilote : kPilotesSQLite) {
        Impl impl;
        if (!impl.connecter(
                std::string("DRIVER=") + pilote + ";Database=" + chemin_pour_pilote(chemin) + ";",
                erreur)) {
            continue;
        }
        // The header is only written with the first page: give the file one. The
        // shop's databases are in WAL mode from the start, as the bridge keeps them.
        if (!reglage(impl.dbc, "PRAGMA user_version = 1", erreur) ||
            !reglage(impl.dbc, "PRAGMA journal_mode=WAL", erreur)) {
            return Statut::Echec(chemin + " : " + erreur);
        }
        SQLEndTran(SQL_HANDLE_DBC, impl.dbc, SQL_COMMIT);
        return {};
    }
    return Statut::Echec(chemin + " : " + erreur);
}

}  // namespace sv140
