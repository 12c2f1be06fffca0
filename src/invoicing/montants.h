// How invoicing writes amounts, counts, dates and invoice numbers: into the middleware's
// requests (whole cents on seven digits) and into statements (numbers with a point,
// whatever the user's locale).
#pragma once

#include <string>
#include <string_view>

namespace sv140 {

/// Euros as whole cents, halves rounded away from zero (12.345 gives 1235).
long long Centimes(double euros);
/// Cents written on seven digits at least ("0001234"); a negative amount keeps its sign
/// in front ("-0001234").
std::string Sept_Chiffres(long long centimes);
/// Euros as the middleware reads an amount: whole cents on seven digits.
inline std::string Montant_Requete(double euros) {
    return Sept_Chiffres(Centimes(euros));
}
/// A count on two digits at least ("02").
std::string Deux_Chiffres(double nombre);
/// Euros on two decimals with a point ("40.00"), halves rounded away from zero.
std::string Format_Euros(double euros);

/// The numeric value of an invoice number written back as the host keeps it: leading
/// zeros and blanks dropped ("000000123" gives "123"). Every digit of a long number is
/// kept; a text that does not begin with a number gives "0".
std::string Numero_Sans_Zeros(std::string_view numero);

/// A date the host writes as dd/mm/yyyy, yyyy-mm-dd or yyyymmdd, as "yyyymmdd"; "" when
/// the text is no such date (31/02/2026 included).
std::string Date_AAAAMMJJ(std::string_view texte);

}  // namespace sv140
