// How text crosses the ODBC driver manager on this platform. ODBC is one API on every
// platform, but not its text: on Windows the wide entry points (the Access driver is a
// wide driver), on Linux the narrow ones in UTF-8, because the SQLite driver has no wide
// entry points and the driver manager would squeeze wide text into Latin-1. Only the
// database connection of data/ uses this header.
#pragma once

#if defined(_WIN32)
#include "platform/windows_win32.h"  // the ODBC headers need its types there
#endif
#include <sql.h>
#include <sqlext.h>

#include <optional>
#include <string>
#include <string_view>

namespace sv140::odbc {

/// SQLDriverConnect with a connection string, without prompting.
SQLRETURN connecter(SQLHDBC dbc, std::string_view chaine);
/// SQLExecDirect of a UTF-8 statement.
SQLRETURN executer(SQLHSTMT instruction, std::string_view utf8);
/// The name of a result column, in UTF-8.
std::string nom_colonne(SQLHSTMT instruction, SQLSMALLINT colonne);
/// The driver's diagnostics of a handle, "STATE message" joined with " ; ".
std::string diagnostic(SQLSMALLINT type, SQLHANDLE handle);
/// The whole text of a column of the current row, in UTF-8; nullopt for a null.
/// Returns the failing call's code, or SQL_SUCCESS.
SQLRETURN lire_texte(SQLHSTMT instruction, SQLUSMALLINT colonne,
                     std::optional<std::string>& valeur);

/// The text of a column in pieces of the platform's character unit: long texts come in
/// pieces, each call giving the next one.
template <class Unite>
SQLRETURN lire_unites(SQLHSTMT instruction, SQLUSMALLINT colonne, SQLSMALLINT type,
                      std::optional<std::basic_string<Unite>>& valeur) {
    std::basic_string<Unite> texte;
    for (;;) {
        Unite morceau[1024];
        SQLLEN indicateur = 0;
        const SQLRETURN r =
            SQLGetData(instruction, colonne, type, morceau, sizeof(morceau), &indicateur);
        if (r == SQL_NO_DATA) {
            break;
        }
        if (!SQL_SUCCEEDED(r)) {
            return r;
        }
        if (indicateur == SQL_NULL_DATA) {
            valeur.reset();
            return SQL_SUCCESS;
        }
        const std::size_t n =
            (indicateur == SQL_NO_TOTAL || indicateur >= static_cast<SQLLEN>(sizeof(morceau)))
                ? 1023
                : static_cast<std::size_t>(indicateur) / sizeof(Unite);
        texte.append(morceau, n);
        if (r == SQL_SUCCESS) {
            break;
        }
    }
    valeur = std::move(texte);
    return SQL_SUCCESS;
}

}  // namespace sv140::odbc
