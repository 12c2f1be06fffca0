// The amounts, counts, dates and numbers invoicing writes for the middleware and the
// databases, where the claims of the black-box tests do not reach: halves, signs, long
// numbers, calendar dates.
#include <gtest/gtest.h>

#include "invoicing/factures.h"  // Numero_Requete
#include "invoicing/montants.h"

namespace sv140 {
namespace {

TEST(Montants, CentsOnSevenDigitsHalvesAwayFromZero) {
    const struct {
        double euros;
        const char* requete;
        const char* euros_texte;
    } cas[] = {
        {12.34, "0001234", "12.34"}, {12.345, "0001235", "12.35"},
        {0.005, "0000001", "0.01"},  {-12.345, "-0001235", "-12.35"},
        {0, "0000000", "0.00"},      {123456.78, "12345678", "123456.78"},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(Montant_Requete(c.euros), c.requete) << c.euros;
        EXPECT_EQ(Format_Euros(c.euros), c.euros_texte) << c.euros;
    }
    EXPECT_EQ(Deux_Chiffres(2), "02");
    EXPECT_EQ(Deux_Chiffres(123), "123");
}

TEST(Montants, InvoiceNumbersWithoutLeadingZeros) {
    const std::pair<const char*, const char*> cas[] = {
        {"000000123", "123"},
        {" 0 12 3", "123"},
        {"123abc", "123"},
        {"0000", "0"},
        {"", "0"},
        {"ABC", "0"},
        {"999999999999999999999999999999", "999999999999999999999999999999"},
        {"12.50", "12.5"},
    };
    for (const auto& [numero, attendu] : cas) {
        EXPECT_EQ(Numero_Sans_Zeros(numero), attendu) << numero;
    }
    EXPECT_EQ(Numero_Requete("X123"), "000000123");
    EXPECT_EQ(Numero_Requete("X1234567890"), "234567890");
    EXPECT_EQ(Numero_Requete(""), "000000000");
}

TEST(Montants, DatesTheHostWrites) {
    const std::pair<const char*, const char*> cas[] = {
        {"15/03/2024", "20240315"},
        {"2024-03-15", "20240315"},
        {"20240315", "20240315"},
        {"29/02/2024", "20240229"},
        {"29/02/2023", ""},
        {"31/04/2024", ""},
        {"2024-13-01", ""},
        {"15-03-2024", ""},
        {"hier", ""},
        {"", ""},
    };
    for (const auto& [texte, attendu] : cas) {
        EXPECT_EQ(Date_AAAAMMJJ(texte), attendu) << texte;
    }
}

}  // namespace
}  // namespace sv140
