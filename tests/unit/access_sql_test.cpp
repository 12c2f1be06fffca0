#include "data/access_sql.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "aide_test.h"

#ifdef SV140_TEST_SQLITE
#include <sqlite3.h>
#endif

namespace sv140 {
namespace {

const std::tm jour_fixe = test::date(2024, 3, 5, 16, 42, 0);

struct Cas {
    std::string access, sqlite;
};

void verifier(const std::vector<Cas>& cas) {
    for (const Cas& c : cas) {
        EXPECT_EQ(Traduire_Access_SQL(c.access, jour_fixe), c.sqlite) << c.access;
    }
}

TEST(TraduireAccessSql, DeleteAndUpdateShapes) {
    verifier({
        {"DELETE DISTINCTROW [Sélection Verres].[Nom du Verre] FROM [Sélection Verres];",
         "DELETE FROM [Sélection Verres];"},
        {"DELETE * FROM T_InfosSituation_CPS;", "DELETE FROM T_InfosSituation_CPS;"},
        {"DELETE T.*, T.NUMFAC FROM T WHERE (((T.NUMFAC)='000123'));",
         "DELETE FROM T WHERE (((T.NUMFAC)='000123'));"},
        {"DELETE T.Info_ID_FK  FROM T WHERE (((T.Info_ID_FK)=3));",
         "DELETE FROM T WHERE (((T.Info_ID_FK)=3));"},
        {"DELETE FROM t WHERE t.x=True", "DELETE FROM t WHERE t.x=-1"},
        // Only the targets lose their table, never a value or a literal.
        {"UPDATE T SET T.a = T.b + 1, T.c = 'T.d = 1, T.e' WHERE (((T.e)=2));",
         "UPDATE T SET a = T.b + 1, c = 'T.d = 1, T.e' WHERE (((T.e)=2));"},
        {"UPDATE T SET T.a = 1, [T x].[b c] = 'q'", "UPDATE T SET a = 1, [b c] = 'q'"},
        {"UPDATE T SET T.a = Mid(T.b, 1, 2),T.c = 3", "UPDATE T SET a = Mid(T.b, 1, 2),c = 3"},
        {"UPDATE [B M] SET [B M].P = True, [B M].S = False ,[B M].D = Date() WHERE "
         "((([B M].K)=\"F12\"));",
         "UPDATE [B M] SET P = -1, S = 0 ,D = '2024-03-05 00:00:00' WHERE ((([B M].K)='F12'));"},
        {"INSERT INTO T ( a, b ) SELECT 'x' AS v1, #3/5/2024# AS v2;",
         "INSERT INTO T ( a, b ) SELECT 'x' AS v1, '2024-03-05 00:00:00' AS v2;"},
    });
}

TEST(TraduireAccessSql, TokensAndLiterals) {
    verifier({
        {"x>=#03-05-2024 14:30:12#", "x>='2024-03-05 14:30:12'"},
        {"x>=#3/5/2024#", "x>='2024-03-05 00:00:00'"},
        {"x=#12/31/2023 9:05#", "x='2023-12-31 09:05:00'"},
        {"x=#1/2/2024 2:30 PM#", "x='2024-01-02 14:30:00'"},
        {"x=#2/29/2024#", "x='2024-02-29 00:00:00'"},
        {"x=#2024-03-05#", "x='2024-03-05 00:00:00'"},
        // Anything that is no real date stays as written.
        {"x=#2/30/2023#", "x=#2/30/2023#"},
        {"x=#1/2/2024 24:00#", "x=#1/2/2024 24:00#"},
        {"x=#1/2/24#", "x=#1/2/24#"},
        {"x=#abc# # b", "x=#abc# # b"},
        {"WHERE (((T.P)=True) AND ((T.A)=false) AND ((T.X)=TRUE))",
         "WHERE (((T.P)=-1) AND ((T.A)=0) AND ((T.X)=-1))"},
        {"SELECT t.True, True.x, [True], 1 AS False, TrueValue, IsFalse, t.Val(1) FROM t",
         "SELECT t.True, True.x, [True], 1 AS False, TrueValue, IsFalse, t.Val(1) FROM t"},
        {"x = date ( )", "x = '2024-03-05 00:00:00'"},
        {"WHERE (((Trim(Val([NUMFAC])))='123'))",
         "WHERE (((Trim(CAST(CAST([NUMFAC] AS TEXT) AS NUMERIC)))='123'))"},
        {"Val(IIf(a=True, \"1x\", b))", "CAST(CAST(IIf(a=-1, '1x', b) AS TEXT) AS NUMERIC)"},
        {"SELECT @@IDENTITY AS ID;", "SELECT last_insert_rowid() AS ID;"},
        {"SELECT '@@IDENTITY', [@@IDENTITY]", "SELECT '@@IDENTITY', [@@IDENTITY]"},
        // Nothing inside a literal or a bracketed name is rewritten.
        {"SELECT 'True', '#1/2/2024#', 'Date()', 'DELETE * FROM x', 'Val(1)', 'it''s' FROM t",
         "SELECT 'True', '#1/2/2024#', 'Date()', 'DELETE * FROM x', 'Val(1)', 'it''s' FROM t"},
        {"SELECT \"a\"\"b\", \"l'eau\", \"True\", \"#1/2/2024#\", \"\"",
         "SELECT 'a\"b', 'l''eau', 'True', '#1/2/2024#', ''"},
        {"SELECT [True], [Date()], [#1/2/2024#] FROM [DELETE * FROM x]",
         "SELECT [True], [Date()], [#1/2/2024#] FROM [DELETE * FROM x]"},
        // A statement that cannot be read through is left whole.
        {"UPDATE T SET T.a = True WHERE b='x", "UPDATE T SET T.a = True WHERE b='x"},
    });
}

#ifdef SV140_TEST_SQLITE

// The rewritten statements run on a real SQLite engine and give what Access gives.
class MoteurSqlite : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(sqlite3_open(":memory:", &base_), SQLITE_OK);
        executer(
            "CREATE TABLE [B M] (K TEXT, Pointage INTEGER, D TEXT, Total REAL);"
            "INSERT INTO [B M] VALUES ('F1', 0, NULL, 10), ('F2', 0, NULL, 0);"
            "CREATE TABLE S (ID INTEGER PRIMARY KEY, NUMFAC TEXT, ARL INTEGER, G TEXT);"
            "INSERT INTO S VALUES (1, '000123', -1, '2024-03-01 10:00:00'),"
            " (2, '123', -1, '2024-02-28 23:59:59'), (3, '124', 0, '2024-03-05');");
    }
    void TearDown() override { sqlite3_close(base_); }

    void executer(const std::string& access) {
        const std::string sql = Traduire_Access_SQL(access, jour_fixe);
        char* erreur = nullptr;
        EXPECT_EQ(sqlite3_exec(base_, sql.c_str(), nullptr, nullptr, &erreur), SQLITE_OK)
            << sql << ": " << (erreur ? erreur : "");
        sqlite3_free(erreur);
    }

    std::vector<std::string> colonne(const std::string& access) {
        const std::string sql = Traduire_Access_SQL(access, jour_fixe);
        std::vector<std::string> valeurs;
        sqlite3_stmt* requete = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(base_, sql.c_str(), -1, &requete, nullptr), SQLITE_OK)
            << sql << ": " << sqlite3_errmsg(base_);
        while (requete && sqlite3_step(requete) == SQLITE_ROW) {
            const auto* texte = sqlite3_column_text(requete, 0);
            valeurs.emplace_back(texte ? reinterpret_cast<const char*>(texte) : "NULL");
        }
        sqlite3_finalize(requete);
        return valeurs;
    }

    sqlite3* base_ = nullptr;
};

using Colonne = std::vector<std::string>;

TEST_F(MoteurSqlite, StatementsRunAsAccessRunsThem) {
    executer(
        "UPDATE [B M] SET [B M].Pointage = True, [B M].D = Date() WHERE ((([B M].K)=\"F1\") AND "
        "(([B M].Total)>0));");
    EXPECT_EQ(colonne("SELECT K || '|' || Pointage || '|' || IfNull(D, '-') FROM [B M] ORDER BY 1"),
              (Colonne{"F1|-1|2024-03-05 00:00:00", "F2|0|-"}));
    // Val reads leading zeros away and compares with integer columns.
    EXPECT_EQ(colonne("SELECT S.ID FROM S WHERE (((Trim(Val([NUMFAC])))='123')) ORDER BY 1;"),
              (Colonne{"1", "2"}));
    EXPECT_EQ(colonne("SELECT ID FROM S WHERE Val(NUMFAC) = ID + 121;"), (Colonne{"2", "3"}));
    EXPECT_EQ(colonne("SELECT Val('  12.50abc') || '|' || Val('abc') || '|' || Val('-3e2x') || "
                      "'|' || Val(12.0);"),
              (Colonne{"12.5|0|-300|12"}));
    EXPECT_EQ(colonne("SELECT S.NUMFAC FROM S WHERE (((S.ARL)=True) AND ((S.G)>=#3/1/2024#));"),
              (Colonne{"000123"}));
    EXPECT_EQ(
        colonne("SELECT ID FROM S WHERE G < #02-29-2024 00:00:00# OR ARL = False ORDER BY 1;"),
        (Colonne{"2", "3"}));

    executer("DELETE S.*, S.NUMFAC FROM S WHERE (((S.NUMFAC)='124'));");
    executer(
        "INSERT INTO S ( NUMFAC, ARL, G ) SELECT 'l''a' AS v1, False AS v3, "
        "#03-05-2024 14:30:12# AS v4;");
    EXPECT_EQ(colonne("SELECT @@IDENTITY AS Cle;"), colonne("SELECT ID FROM S WHERE ARL = 0;"));
    executer("DELETE DISTINCTROW S.ARL FROM S WHERE ARL = -1;");
    EXPECT_EQ(colonne("SELECT NUMFAC || '|' || ARL || '|' || G FROM S;"),
              (Colonne{"l'a|0|2024-03-05 14:30:12"}));
    executer("DELETE * FROM S;");
    EXPECT_TRUE(colonne("SELECT * FROM S;").empty());
}

#endif

}  // namespace
}  // namespace sv140
