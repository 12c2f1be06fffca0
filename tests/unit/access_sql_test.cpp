#include "data/access_sql.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#ifdef SV140_TEST_SQLITE
#include <sqlite3.h>
#endif

namespace sv140 {
namespace {

std::tm jour_fixe() {
    std::tm jour{};
    jour.tm_year = 2024 - 1900;
    jour.tm_mon = 2;
    jour.tm_mday = 5;
    jour.tm_hour = 16;
    jour.tm_min = 42;
    return jour;
}

struct Cas {
    const char* nom;
    std::string access;
    std::string sqlite;
};

void verifier(const std::vector<Cas>& cas) {
    for (const Cas& c : cas) {
        EXPECT_EQ(Traduire_Access_SQL(c.access, jour_fixe()), c.sqlite) << c.nom;
    }
}

TEST(TraduireAccessSql, DeleteLosesItsColumnList) {
    verifier({
        {"distinctrow, bracketed accented names",
         "DELETE DISTINCTROW [Sélection Verres].[Nom du Verre] FROM [Sélection Verres];",
         "DELETE FROM [Sélection Verres];"},
        {"star", "DELETE * FROM T_InfosSituation_CPS;", "DELETE FROM T_InfosSituation_CPS;"},
        {"table star", "DELETE SCOR_Erreurs.* FROM SCOR_Erreurs;", "DELETE FROM SCOR_Erreurs;"},
        {"one column, where kept",
         "DELETE T_InfosFacture.Info_Facture_ID FROM T_InfosFacture WHERE "
         "(((T_InfosFacture.Info_Facture_ID)=12));",
         "DELETE FROM T_InfosFacture WHERE (((T_InfosFacture.Info_Facture_ID)=12));"},
        {"two blanks before FROM",
         "DELETE T_InfosDetailFacture.Info_Facture_ID_FK  FROM T_InfosDetailFacture WHERE "
         "(((T_InfosDetailFacture.Info_Facture_ID_FK)=3));",
         "DELETE FROM T_InfosDetailFacture WHERE (((T_InfosDetailFacture.Info_Facture_ID_FK)=3));"},
        {"star and column",
         "DELETE T_InfosSCor.*, T_InfosSCor.InfosSCor_NUMFAC FROM T_InfosSCor WHERE "
         "(((T_InfosSCor.InfosSCor_NUMFAC)='000123'));",
         "DELETE FROM T_InfosSCor WHERE (((T_InfosSCor.InfosSCor_NUMFAC)='000123'));"},
        {"bracketed table and column with blanks", "DELETE DISTINCTROW [A b].[c d] FROM [A b]",
         "DELETE FROM [A b]"},
        {"already plain", "DELETE FROM t WHERE t.x=True", "DELETE FROM t WHERE t.x=-1"},
        {"lower case", "delete t.* from t", "delete from t"},
    });
}

TEST(TraduireAccessSql, UpdateTargetsLoseTheirTable) {
    verifier({
        {"qualifier only on the targets",
         "UPDATE T SET T.a = T.b + 1, T.c = 'T.d' WHERE (((T.e)=2));",
         "UPDATE T SET a = T.b + 1, c = 'T.d' WHERE (((T.e)=2));"},
        {"bracketed names", "UPDATE T SET T.a = 1, [T x].[b c] = 'q'",
         "UPDATE T SET a = 1, [b c] = 'q'"},
        {"leading blank",
         " UPDATE T_InfosVersion SET T_InfosVersion.Info_Version_VersionDLL = '5.1', "
         "T_InfosVersion.Info_Version_numSerie = 'A' WHERE "
         "(((T_InfosVersion.Info_Version_ID)=1));",
         " UPDATE T_InfosVersion SET Info_Version_VersionDLL = '5.1', Info_Version_numSerie = "
         "'A' WHERE (((T_InfosVersion.Info_Version_ID)=1));"},
        {"no blank after comma, date and double-quoted key",
         "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Paiement_RC = 12.5, "
         "[Bordereau Mutuelle].Pointage = True, [Bordereau Mutuelle].Solde = False , "
         "[Bordereau Mutuelle].Date_pointage = Date() WHERE ((([Bordereau "
         "Mutuelle].NumFicheCommande)=\"F12\") AND (([Bordereau Mutuelle].TotalMutuelle)>0));",
         "UPDATE [Bordereau Mutuelle] SET Paiement_RC = 12.5, Pointage = -1, Solde = 0 , "
         "Date_pointage = '2024-03-05 00:00:00' WHERE ((([Bordereau "
         "Mutuelle].NumFicheCommande)='F12') AND (([Bordereau Mutuelle].TotalMutuelle)>0));"},
        {"commas inside a call stay in the value", "UPDATE T SET T.a = Mid(T.b, 1, 2),T.c = 3",
         "UPDATE T SET a = Mid(T.b, 1, 2),c = 3"},
        {"unqualified target untouched", "UPDATE T SET a = 1", "UPDATE T SET a = 1"},
        {"literal that looks like a target", "UPDATE T SET T.a = 'T.b = 1, T.c'",
         "UPDATE T SET a = 'T.b = 1, T.c'"},
    });
}

TEST(TraduireAccessSql, DateLiteralsTakeTheStorageForm) {
    verifier({
        {"month-day-year with time", "x>=#03-05-2024 14:30:12#", "x>='2024-03-05 14:30:12'"},
        {"one digit month and day", "x>=#3/5/2024#", "x>='2024-03-05 00:00:00'"},
        {"time without seconds", "x=#12/31/2023 9:05#", "x='2023-12-31 09:05:00'"},
        {"afternoon", "x=#1/2/2024 2:30 PM#", "x='2024-01-02 14:30:00'"},
        {"midnight written 12 AM", "x=#1/2/2024 12:00:00 AM#", "x='2024-01-02 00:00:00'"},
        {"leap day", "x=#2/29/2024#", "x='2024-02-29 00:00:00'"},
        {"year first", "x=#2024-03-05#", "x='2024-03-05 00:00:00'"},
        {"no such day", "x=#2/30/2023#", "x=#2/30/2023#"},
        {"month out of range", "x=#13/1/2024#", "x=#13/1/2024#"},
        {"hour out of range", "x=#1/2/2024 24:00#", "x=#1/2/2024 24:00#"},
        {"two-digit year", "x=#1/2/24#", "x=#1/2/24#"},
        {"not a date", "x=#abc#", "x=#abc#"},
    });
}

TEST(TraduireAccessSql, BooleansAndFunctions) {
    verifier({
        {"booleans in conditions",
         "WHERE (((T.Pointage)=True) AND ((T.ARL)=false) AND ((T.X)=TRUE))",
         "WHERE (((T.Pointage)=-1) AND ((T.ARL)=0) AND ((T.X)=-1))"},
        {"names that are not booleans", "SELECT t.True, True.x, [True], 1 AS False FROM t",
         "SELECT t.True, True.x, [True], 1 AS False FROM t"},
        {"words containing True", "SELECT TrueValue, IsFalse FROM t",
         "SELECT TrueValue, IsFalse FROM t"},
        {"Date() with blanks", "x = date ( )", "x = '2024-03-05 00:00:00'"},
        {"Date column is no call", "SELECT Min([Bordereau Mutuelle].Date) AS MinDeDate FROM b",
         "SELECT Min([Bordereau Mutuelle].Date) AS MinDeDate FROM b"},
        {"Val read as text", "WHERE (((Trim(Val([InfosSCor_NUMFAC])))='123'))",
         "WHERE (((Trim(CAST(CAST([InfosSCor_NUMFAC] AS TEXT) AS NUMERIC)))='123'))"},
        {"Val of an expression with a rewrite inside", "Val(IIf(a=True, \"1x\", b))",
         "CAST(CAST(IIf(a=-1, '1x', b) AS TEXT) AS NUMERIC)"},
        {"qualified Val is a column", "SELECT t.Val(1)", "SELECT t.Val(1)"},
    });
}

TEST(TraduireAccessSql, LiteralsAndNamesStayAsWritten) {
    verifier({
        {"single-quoted look-alikes",
         "SELECT 'True', '#1/2/2024#', 'Date()', 'DELETE * FROM x', 'Val(1)', 'it''s' FROM t",
         "SELECT 'True', '#1/2/2024#', 'Date()', 'DELETE * FROM x', 'Val(1)', 'it''s' FROM t"},
        {"double-quoted are only requoted",
         "SELECT \"a\"\"b\", \"l'eau\", \"True\", \"#1/2/2024#\", \"\"",
         "SELECT 'a\"b', 'l''eau', 'True', '#1/2/2024#', ''"},
        {"bracketed look-alikes", "SELECT [True], [Date()], [#1/2/2024#] FROM [DELETE * FROM x]",
         "SELECT [True], [Date()], [#1/2/2024#] FROM [DELETE * FROM x]"},
        {"accented names and spacing",
         "SELECT T_Etat_Civil.N°,\tT_Etat_Civil.[Sécurité sociale]\r\nFROM T_Etat_Civil;",
         "SELECT T_Etat_Civil.N°,\tT_Etat_Civil.[Sécurité sociale]\r\nFROM T_Etat_Civil;"},
        {"insert from select without FROM",
         "INSERT INTO T_InfosFacture ( a, b, c, d ) SELECT 'x' AS v1, 2.5 as v1b, #3/5/2024# "
         "AS v2, -1 AS v14;",
         "INSERT INTO T_InfosFacture ( a, b, c, d ) SELECT 'x' AS v1, 2.5 as v1b, "
         "'2024-03-05 00:00:00' AS v2, -1 AS v14;"},
        {"unterminated quote leaves all as is", "UPDATE T SET T.a = True WHERE b='x",
         "UPDATE T SET T.a = True WHERE b='x"},
        {"unterminated bracket", "DELETE * FROM [x", "DELETE * FROM [x"},
        {"lone number sign", "SELECT a # b", "SELECT a # b"},
        {"empty", "", ""},
    });
}

#ifdef SV140_TEST_SQLITE

// The rewritten statements run on a real SQLite engine and give what Access gives.
class MoteurSqlite : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(sqlite3_open(":memory:", &base_), SQLITE_OK);
        executer(
            "CREATE TABLE [Bordereau Mutuelle] (NumFicheCommande TEXT, Pointage INTEGER, "
            "Date_pointage TEXT, TotalMutuelle REAL, Paiement_RC REAL);"
            "INSERT INTO [Bordereau Mutuelle] VALUES ('F1', 0, NULL, 10, 0), ('F2', 0, NULL, 0, 0);"
            "CREATE TABLE T_InfosSCor (InfosSCor_ID INTEGER PRIMARY KEY, InfosSCor_NUMFAC TEXT, "
            "C_Statut INTEGER, InfosSCor_ARL INTEGER, InfosSCor_DateGeneration TEXT);"
            "INSERT INTO T_InfosSCor VALUES (1, '000123', 0, -1, '2024-03-01 10:00:00'),"
            " (2, '123', 0, -1, '2024-02-28 23:59:59'), (3, '124', 0, 0, '2024-03-05');");
    }
    void TearDown() override { sqlite3_close(base_); }

    void executer(const std::string& access) {
        const std::string sql = Traduire_Access_SQL(access, jour_fixe());
        char* erreur = nullptr;
        const int rc = sqlite3_exec(base_, sql.c_str(), nullptr, nullptr, &erreur);
        EXPECT_EQ(rc, SQLITE_OK) << sql << ": " << (erreur ? erreur : "");
        sqlite3_free(erreur);
    }

    std::vector<std::string> colonne(const std::string& access) {
        const std::string sql = Traduire_Access_SQL(access, jour_fixe());
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

TEST_F(MoteurSqlite, PaymentReconciliationUpdate) {
    executer(
        "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Paiement_RC = 10, "
        "[Bordereau Mutuelle].Pointage = True, [Bordereau Mutuelle].Date_pointage = Date() "
        "WHERE ((([Bordereau Mutuelle].NumFicheCommande)=\"F1\") AND "
        "(([Bordereau Mutuelle].TotalMutuelle)>0));");
    EXPECT_EQ(colonne("SELECT NumFicheCommande || '|' || Pointage || '|' || "
                      "IfNull(Date_pointage, '-') FROM [Bordereau Mutuelle] ORDER BY 1;"),
              (std::vector<std::string>{"F1|-1|2024-03-05 00:00:00", "F2|0|-"}));
}

TEST_F(MoteurSqlite, ValMatchesLeadingZerosAndIntegerColumns) {
    EXPECT_EQ(colonne("SELECT T_InfosSCor.InfosSCor_ID FROM T_InfosSCor WHERE "
                      "(((Trim(Val([InfosSCor_NUMFAC])))='123')) ORDER BY 1;"),
              (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(colonne("SELECT InfosSCor_ID FROM T_InfosSCor WHERE Val(InfosSCor_NUMFAC) = "
                      "InfosSCor_ID + 121;"),
              (std::vector<std::string>{"2", "3"}));
    EXPECT_EQ(colonne("SELECT Val('  12.50abc') || '|' || Val('abc') || '|' || Val('-3e2x') || "
                      "'|' || Val(12.0);"),
              (std::vector<std::string>{"12.5|0|-300|12"}));
}

TEST_F(MoteurSqlite, DatesAndBooleansFilter) {
    EXPECT_EQ(colonne("SELECT T_InfosSCor.InfosSCor_NUMFAC FROM T_InfosSCor WHERE "
                      "(((T_InfosSCor.InfosSCor_ARL)=True) AND "
                      "((T_InfosSCor.InfosSCor_DateGeneration)>=#3/1/2024#)) GROUP BY "
                      "T_InfosSCor.InfosSCor_NUMFAC;"),
              (std::vector<std::string>{"000123"}));
    EXPECT_EQ(colonne("SELECT InfosSCor_ID FROM T_InfosSCor WHERE InfosSCor_DateGeneration < "
                      "#02-29-2024 00:00:00# OR InfosSCor_ARL = False ORDER BY 1;"),
              (std::vector<std::string>{"2", "3"}));
}

TEST_F(MoteurSqlite, DeleteAndInsertShapes) {
    executer(
        "DELETE T_InfosSCor.*, T_InfosSCor.InfosSCor_NUMFAC FROM T_InfosSCor WHERE "
        "(((T_InfosSCor.InfosSCor_NUMFAC)='124'));");
    executer(
        "INSERT INTO T_InfosSCor ( InfosSCor_NUMFAC, C_Statut, InfosSCor_ARL, "
        "InfosSCor_DateGeneration ) SELECT 'l''a' AS v1, 3 AS v2, False AS v3, "
        "#03-05-2024 14:30:12# AS v4;");
    executer("DELETE DISTINCTROW T_InfosSCor.C_Statut FROM T_InfosSCor WHERE C_Statut = 0;");
    EXPECT_EQ(colonne("SELECT InfosSCor_NUMFAC || '|' || InfosSCor_ARL || '|' || "
                      "InfosSCor_DateGeneration FROM T_InfosSCor;"),
              (std::vector<std::string>{"l'a|0|2024-03-05 14:30:12"}));
    executer("DELETE * FROM T_InfosSCor;");
    EXPECT_TRUE(colonne("SELECT * FROM T_InfosSCor;").empty());
}

#endif

}  // namespace
}  // namespace sv140
