#include "data/texte_sql.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>

namespace sv140 {
namespace {

TEST(TexteSql, Quoting) {
    const struct {
        std::optional<std::string> valeur;
        std::string doublee, echappee;
    } cas[] = {{std::nullopt, "", ""},
               {"Dupont", "Dupont", "Dupont"},
               {"L'Hôpital \"Le Grand\"", "L''Hôpital \"\"Le Grand\"\"", "L''Hôpital \"Le Grand\""},
               {"\"'", "\"\"''", "\"''"}};
    for (const auto& c : cas) {
        std::optional<std::string> valeur = c.valeur;
        EXPECT_EQ(Doubler_Apostrophes(valeur), c.doublee);
        EXPECT_EQ(valeur, c.doublee) << "the argument receives the result";
        std::string texte = c.valeur.value_or("");
        EXPECT_EQ(Doubler_Apostrophes(texte), c.doublee);
        EXPECT_EQ(texte, c.doublee);
        EXPECT_EQ(Texte_SQL(c.valeur.value_or("")), c.echappee);
    }
    EXPECT_EQ(Trim("  a b  "), "a b");
    EXPECT_EQ(Trim("\t a \n"), "\t a \n") << "blanks only";
}

TEST(TexteSql, Val) {
    const struct {
        const char* texte;
        double attendu;
    } cas[] = {
        {"", 0},       {"abc", 0},          {"   42", 42},    {"000123", 123},
        {"12abc", 12}, {"12.50 EUR", 12.5}, {"-3.25", -3.25}, {"+8", 8},
        {".5", 0.5},   {"5.", 5},           {".", 0},         {"-", 0},
        {"1e3", 1000}, {"2.5E-1x", 0.25},   {"1e", 1},        {"1e+", 1},
        {"12,5", 12},  {" 1 2\t3", 123},    {"1e-400", 0},    {"20240305123456", 20240305123456.0}};
    for (const auto& c : cas) {
        EXPECT_DOUBLE_EQ(Val(c.texte), c.attendu) << '"' << c.texte << '"';
    }
    EXPECT_EQ(Val("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_TRUE(std::isinf(Val("1e400")));
    EXPECT_TRUE(std::isinf(Val(std::string(400, '9'))));
}

TEST(TexteSql, NombreSql) {
    const struct {
        double valeur;
        const char* attendu;
    } cas[] = {
        {0, "0"},
        {-0.0, "0"},
        {-7, "-7"},
        {20240305123456.0, "20240305123456"},
        {1e20, "100000000000000000000"},
        {-0.1, "-0.1"},
        {0.30000000000000004, "0.30000000000000004"},
        {1e-7, "0.0000001"},
        {std::nan(""), "0"},
        {HUGE_VAL, "0"},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(Nombre_SQL(c.valeur), c.attendu) << c.valeur;
    }
    for (const char* texte : {"123.45", "0.07", "99999.99"}) {
        EXPECT_EQ(Nombre_SQL(Val(texte)), texte) << "round trip";
    }
}

}  // namespace
}  // namespace sv140
