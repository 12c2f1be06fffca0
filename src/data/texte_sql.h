// Values written into SQL statements, and the numeric reading of texts.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace sv140 {

/// The quoting rule for text put between single quotes: a null becomes "", every
/// double quote is doubled, then every single quote is doubled. The argument itself
/// receives the result, which is also returned.
std::string Doubler_Apostrophes(std::string& valeur);
std::string Doubler_Apostrophes(std::optional<std::string>& valeur);

/// Text written between single quotes that the host does not pass through
/// Doubler_Apostrophes: its single quotes doubled, so that it never breaks out of its
/// literal.
std::string Texte_SQL(std::string_view valeur);
/// Text written between single quotes after Doubler_Apostrophes (the fields the host
/// always stored so), without changing the caller's value.
std::string Texte_Hote_SQL(std::string_view valeur);

/// The numeric value of a text, as the host reads it: blanks, tabs and line ends are
/// ignored wherever they stand, then an optional sign, digits, a decimal point and an
/// exponent; reading stops at the first character that is not part of a number; 0
/// when there is none.
double Val(std::string_view texte);

/// A number written bare into a statement: whole numbers without a decimal point,
/// others with '.' and no exponent.
std::string Nombre_SQL(double valeur);
/// The numeric value of a text, written bare: a value written bare is always a number,
/// never raw text.
std::string Nombre_SQL(std::string_view texte);

/// The date literal "#mm-dd-yyyy hh:mm:ss#".
std::string Date_SQL(const std::tm& t);

/// Leading and trailing blanks removed (blanks only, as the host's Trim does).
std::string Trim(std::string_view texte);

}  // namespace sv140
