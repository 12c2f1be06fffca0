// ODBC text on Linux: the narrow entry points, carrying UTF-8.
#include <algorithm>

#include "platform/odbc_texte.h"

namespace sv140::odbc {
namespace {

SQLCHAR* u(std::string& s) {
    return reinterpret_cast<SQLCHAR*>(s.data());
}

}  // namespace

SQLRETURN connecter(SQLHDBC dbc, std::string_view chaine) {
    std::string c(chaine);
    SQLCHAR sortie[1024];
    SQLSMALLINT longueur = 0;
    return SQLDriverConnect(dbc, nullptr, u(c), static_cast<SQLSMALLINT>(c.size()), sortie, 1024,
                            &longueur, SQL_DRIVER_NOPROMPT);
}

SQLRETURN executer(SQLHSTMT instruction, std::string_view utf8) {
    std::string s(utf8);
    return SQLExecDirect(instruction, u(s), static_cast<SQLINTEGER>(s.size()));
}

std::string nom_colonne(SQLHSTMT instruction, SQLSMALLINT colonne) {
    SQLCHAR nom[512];
    SQLSMALLINT longueur = 0, type = 0, decimales = 0, nul = 0;
    SQLULEN taille = 0;
    SQLDescribeCol(instruction, colonne, nom, 512, &longueur, &type, &taille, &decimales, &nul);
    return std::string(reinterpret_cast<const char*>(nom), std::clamp<int>(longueur, 0, 511));
}

std::string diagnostic(SQLSMALLINT type, SQLHANDLE handle) {
    std::string texte;
    SQLCHAR etat[6];
    SQLINTEGER natif = 0;
    SQLCHAR message[1024];
    SQLSMALLINT longueur = 0;
    for (SQLSMALLINT i = 1;
         SQLGetDiagRec(type, handle, i, etat, &natif, message, 1024, &longueur) == SQL_SUCCESS;
         ++i) {
        if (!texte.empty()) {
            texte += " ; ";
        }
        texte += std::string(reinterpret_cast<const char*>(etat), 5) + " " +
                 std::string(reinterpret_cast<const char*>(message),
                             std::clamp<std::size_t>(longueur, 0, 1023));
    }
    return texte.empty() ? "erreur ODBC sans diagnostic" : texte;
}

SQLRETURN lire_texte(SQLHSTMT instruction, SQLUSMALLINT colonne,
                     std::optional<std::string>& valeur) {
    return lire_unites<char>(instruction, colonne, SQL_C_CHAR, valeur);
}

}  // namespace sv140::odbc
