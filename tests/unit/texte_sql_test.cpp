#include "data/texte_sql.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>

namespace sv140 {
namespace {

TEST(DoublerApostrophes, QuotesDoubledAndArgumentUpdated) {
    struct Cas {
        std::optional<std::string> valeur;
        std::string attendu;
    };
    const Cas cas[] = {
        {std::nullopt, ""},   {"", ""},
        {"Dupont", "Dupont"}, {"L'Hôpital \"Le Grand\"", "L''Hôpital \"\"Le Grand\"\""},
        {"''", "''''"},       {"\"'", "\"\"''"},
    };
    for (const Cas& c : cas) {
        std::optional<std::string> valeur = c.valeur;
        EXPECT_EQ(Doubler_Apostrophes(valeur), c.attendu);
        EXPECT_EQ(valeur, c.attendu) << "the argument receives the result";
        std::string texte = c.valeur.value_or("");
        EXPECT_EQ(Doubler_Apostrophes(texte), c.attendu);
        EXPECT_EQ(texte, c.attendu);
    }
}

TEST(EchapperApostrophes, OnlySingleQuotes) {
    EXPECT_EQ(Echapper_Apostrophes("l'a \"b\" ''"), "l''a \"b\" ''''");
    EXPECT_EQ(Echapper_Apostrophes(""), "");
}

TEST(Val, LeadingNumberOfTheText) {
    struct Cas {
        const char* texte;
        double attendu;
    };
    const Cas cas[] = {
        {"", 0},         {"abc", 0},    {"   42", 42},       {"\t7", 7},
        {"000123", 123}, {"12abc", 12}, {"12.50 EUR", 12.5}, {"-3.25", -3.25},
        {"+8", 8},       {".5", 0.5},   {"5.", 5},           {".", 0},
        {"-", 0},        {"1e3", 1000}, {"2.5E-1x", 0.25},   {"1e", 1},
        {"1e+", 1},      {"12,5", 12},  {"1 2", 1},          {"20240305123456", 20240305123456.0},
        {"1e-400", 0},
    };
    for (const Cas& c : cas) {
        EXPECT_DOUBLE_EQ(Val(c.texte), c.attendu) << '"' << c.texte << '"';
    }
    EXPECT_TRUE(std::isinf(Val("1e400")));
    EXPECT_TRUE(std::isinf(Val(std::string(400, '9'))));
    EXPECT_EQ(Val("0." + std::string(400, '0') + "1"), 0.0);
}

TEST(NombreSql, WholeNumbersBareOthersWithPoint) {
    struct Cas {
        double valeur;
        const char* attendu;
    };
    const Cas cas[] = {
        {0, "0"},
        {-0.0, "0"},
        {42, "42"},
        {-7, "-7"},
        {102400, "102400"},
        {20240305123456.0, "20240305123456"},
        {1e20, "100000000000000000000"},
        {12.5, "12.5"},
        {-0.1, "-0.1"},
        {0.1 + 0.2, "0.30000000000000004"},
        {1e-7, "0.0000001"},
        {std::numeric_limits<double>::quiet_NaN(), "0"},
        {std::numeric_limits<double>::infinity(), "0"},
    };
    for (const Cas& c : cas) {
        EXPECT_EQ(Nombre_SQL(c.valeur), c.attendu) << c.valeur;
    }
    for (const char* texte : {"123.45", "0.07", "99999.99"}) {
        EXPECT_EQ(Nombre_SQL(Val(texte)), texte) << "round trip";
    }
}

TEST(Trim, BlanksOnly) {
    EXPECT_EQ(Trim(" 2 "), "2");
    EXPECT_EQ(Trim("   "), "");
    EXPECT_EQ(Trim(""), "");
    EXPECT_EQ(Trim("\t a b \n"), "\t a b \n");
    EXPECT_EQ(Trim("  a b  "), "a b");
}

}  // namespace
}  // namespace sv140
