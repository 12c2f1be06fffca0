// One invoice named by the host: read from the middleware, or deleted there and then
// from every table that keeps it.
#include <cstdio>

#include "facturation.h"

namespace bb {
namespace {

class UneFacture : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        professionnel();
    }
    // Invoice 123 and another one, each with a line, a slip and an attachment.
    void semer() {
        sql(pont(),
            "DELETE FROM T_InfosFacture; DELETE FROM T_InfosDetailFacture;"
            "DELETE FROM T_InfosBordereaux; DELETE FROM T_InfosSCor;");
        for (const char* n : {"123", "124"}) {
            sql(pont(),
                std::string("INSERT INTO T_InfosFacture (Info_Facture_NUMFAC) VALUES ('") + n +
                    "');"
                    "INSERT INTO T_InfosDetailFacture (Info_Facture_ID_FK) VALUES "
                    "(last_insert_rowid());"
                    "INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture) VALUES ('" +
                    n + "'); INSERT INTO T_InfosSCor (InfosSCor_NUMFAC) VALUES ('" + n + "');");
        }
    }
    void executer(const std::string& operation, const std::string& numero,
                  const std::string& reponse_zr) {
        utiliser_script();
        ecrire(fichier("ZEMO_Request.xml"),
               "<BelvaneClassicII><donneesFacture><numeroFacture>" + numero +
                   "</numeroFacture></donneesFacture></BelvaneClassicII>");
        scripter(1, reponse_zr);
        EXPECT_TRUE(fin_propre(this->operation(operation)));
    }
    /// The invoice numbers left in each of the four tables.
    Lignes restes() {
        return sql(pont(),
                   "SELECT (SELECT group_concat(Info_Facture_NUMFAC) FROM T_InfosFacture),"
                   " (SELECT count(*) FROM T_InfosDetailFacture),"
                   " (SELECT group_concat(Info_Bordereau_numFacture) FROM T_InfosBordereaux),"
                   " (SELECT group_concat(InfosSCor_NUMFAC) FROM T_InfosSCor)");
    }
};

TEST_F(UneFacture, DeletionRemovesEveryRowOfTheInvoiceOnlyOnceTheMiddlewareAgreed) {
    const Lignes tout = {{"123,124", "2", "123,124", "123,124"}};
    const Lignes sans_123 = {{"124", "1", "124", "124"}};
    const std::string ok = reponse("f_SupprimerFacture", "0", "");
    const std::string incoherent = "\nLe numéro de facture transmis est incohérent : ";
    struct Cas {
        std::string numero, envoye, reponse_zr;
        Textes reponse;
        Lignes restes;
    } cas[] = {
        {"X000123", "000000123", ok, {"f_SupprimerFacture", "0", ""}, sans_123},
        {"0000123", "000000123", ok, {"f_SupprimerFacture", "0", ""}, sans_123},
        {"X123",
         "000000123",
         reponse("f_SupprimerFacture", "163", "Facture déjà envoyée"),
         {"f_SupprimerFacture", "163", "Facture déjà envoyée"},
         tout},
        {"X999", "000000999", ok, {"f_SupprimerFacture", "0", ""}, tout},
        {"ABC", "0000000BC", ok, {"f_SupprimerFacture", "99", incoherent}, tout},
        {"", "000000000", ok, {"f_SupprimerFacture", "99", incoherent}, tout},
        {"X" + std::string(30, '9'), "999999999", ok, {"f_SupprimerFacture", "0", ""}, tout},
    };
    for (const Cas& c : cas) {
        semer();
        executer("f_SupprimerFacture", c.numero, c.reponse_zr);
        EXPECT_EQ(xml(script("requete_1.xml"),
                      "/ZRMESSAGE/requete/fonction/f_SupprimerFacture/numeroFacture"),
                  Textes{c.envoye})
            << c.numero;
        Textes r = resultat(fichier("ZEMO_Response.xml"));
        for (std::string& t : r) {
            std::erase(t, '\r');
        }
        EXPECT_EQ(r, c.reponse) << c.numero;
        EXPECT_EQ(restes(), c.restes) << c.numero;
        EXPECT_TRUE(existe(fichier("ZEMO_Response.xml")));
    }
}

TEST_F(UneFacture, ReadingAsksForTodaysInvoiceAndLeavesTheAnswerToTheHost) {
    const std::string invoice = reponse("f_LireFacture", "0", "",
                                        "<donneesFacture><numeroFacture>123</numeroFacture>"
                                        "</donneesFacture>");
    executer("f_LireFacture", "X123", invoice);
    const std::string f = "/ZRMESSAGE/requete/fonction/f_LireFacture/donneesFacture/";
    EXPECT_EQ(xml(script("requete_1.xml"),
                  f + "dateFacture | " + f + "PS/idNat | " + f + "numeroFacture"),
              (Textes{horloge("%Y%m%d"), "10001234567", "000000123"}));
    EXPECT_EQ(xml(fichier("ZEMO_Response.xml"), "//donneesFacture/numeroFacture"), Textes{"123"});
    // Without the host's document nothing goes to the middleware; the answer names the
    // creation, as the host expects of every invoice request.
    for (const char* operation : {"f_LireFacture", "f_SupprimerFacture"}) {
        utiliser_script();
        std::remove(fichier("ZEMO_Request.xml").c_str());
        EXPECT_TRUE(fin_propre(this->operation(operation)));
        EXPECT_EQ(appels(), 0);
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
                  (Textes{"f_CreerFacture", "99", "Impossible de lire ZEMO_Request.xml"}));
    }
}

}  // namespace
}  // namespace bb
