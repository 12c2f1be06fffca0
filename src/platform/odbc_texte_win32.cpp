// ODBC text on Windows: the wide entry points, UTF-16 on the driver's side.
#include <algorithm>

#include "platform/encodage.h"
#include "platform/odbc_texte.h"

namespace sv140::odbc {
namespace {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "ODBC wide characters are UTF-16");

SQLWCHAR* w(std::u16string& s) {
    return reinterpret_cast<SQLWCHAR*>(s.data());
}

std::string texte(const SQLWCHAR* s, std::size_t n) {
    return utf16_vers_utf8(std::u16string_view(reinterpret_cast<const char16_t*>(s), n));
}

}  // namespace

SQLRETURN connecter(SQLHDBC dbc, std::string_view chaine) {
    std::u16string c = utf8_vers_utf16(chaine);
    SQLWCHAR sortie[1024];
    SQLSMALLINT longueur = 0;
    return SQLDriverConnectW(dbc, nullptr, w(c), static_cast<SQLSMALLINT>(c.size()), sortie, 1024,
                             &longueur, SQL_DRIVER_NOPROMPT);
}

SQLRETURN executer(SQLHSTMT instruction, std::string_view utf8) {
    std::u16string s = utf8_vers_utf16(utf8);
    return SQLExecDirectW(instruction, w(s), static_cast<SQLINTEGER>(s.size()));
}

std::string nom_colonne(SQLHSTMT instruction, SQLSMALLINT colonne) {
    SQLWCHAR nom[256] = {};
    SQLSMALLINT longueur = 0, type = 0, decimales = 0, nul = 0;
    SQLULEN taille = 0;
    SQLDescribeColW(instruction, colonne, nom, 256, &longueur, &type, &taille, &decimales, &nul);
    // The length can count the bytes of the driver's UTF-8 name rather than its
    // characters (the SQLite driver under Wine does, for "N°"): the name ends at its NUL.
    std::size_t n = std::clamp<int>(longueur, 0, 255);
    n = std::min<std::size_t>(
        n, std::char_traits<char16_t>::length(reinterpret_cast<const char16_t*>(nom)));
    return texte(nom, n);
}

std::string diagnostic(SQLSMALLINT type, SQLHANDLE handle) {
    std::string resultat;
    SQLWCHAR etat[6];
    SQLINTEGER natif = 0;
    SQLWCHAR message[1024];
    SQLSMALLINT longueur = 0;
    for (SQLSMALLINT i = 1;
         SQLGetDiagRecW(type, handle, i, etat, &natif, message, 1024, &longueur) == SQL_SUCCESS;
         ++i) {
        if (!resultat.empty()) {
            resultat += " ; ";
        }
        resultat +=
            texte(etat, 5) + " " + texte(message, std::clamp<std::size_t>(longueur, 0, 1023));
    }
    return resultat.empty() ? "erreur ODBC sans diagnostic" : resultat;
}

SQLRETURN lire_texte(SQLHSTMT instruction, SQLUSMALLINT colonne,
                     std::optional<std::string>& valeur) {
    std::optional<std::u16string> large;
    const SQLRETURN r = lire_unites<char16_t>(instruction, colonne, SQL_C_WCHAR, large);
    valeur.reset();
    if (large) {
        valeur = utf16_vers_utf8(*large);
    }
    return r;
}

}  // namespace sv140::odbc
