// The amounts, counts, dates and numbers invoicing writes for the middleware and the
// databases, and the complementary share each act line takes from the flat allowance.
#include <gtest/gtest.h>

#include "invoicing/factures.h"
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

TEST(Montants, ComplementaryShareSpendsTheAllowanceInOrder) {
    struct Ligne {
        double total, part_amo, montant_amc;
        const char* part;
    };
    const struct {
        const char* nom;
        bool total_amc_nul;
        double forfait;
        std::vector<Ligne> lignes;
    } cas[] = {
        {"no complementary total: the gaps, up to the allowance",
         true,
         50,
         {{40, 0, 0, "40.00"}, {40, 0, 0, "10.00"}, {40, 0, 0, "0.00"}}},
        {"a complementary total topped up by the allowance",
         false,
         15,
         {{40, 0, 30, "40.00"}, {40, 0, 0, "5.00"}, {40, 0, 20, "0.00"}}},
        {"a complementary total, no allowance", false, 0, {{40, 10, 25, "25.00"}}},
    };
    for (const auto& c : cas) {
        Forfait forfait{c.forfait, c.forfait};
        for (const Ligne& l : c.lignes) {
            EXPECT_EQ(
                Part_Complementaire(l.total, c.total_amc_nul, l.part_amo, l.montant_amc, forfait),
                l.part)
                << c.nom;
        }
    }
}

TEST(Montants, RegimeLabels) {
    EXPECT_EQ(Libelle_Regime("01"), "Régime Général");
    EXPECT_EQ(Libelle_Regime("99"), "Sections Locales Mutualistes");
    EXPECT_EQ(Libelle_Regime("11"), "Autres");
    EXPECT_EQ(Libelle_Regime("1"), "Autres");
}

}  // namespace
}  // namespace sv140
