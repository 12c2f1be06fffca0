// Whole working days against the middleware simulator and the shop tool's test cards:
// what the middleware answers must end up, unchanged, where the host reads it.
#include "harnais.h"

namespace bb {
namespace {

class Simulateur : public BoiteNoire {
  protected:
    /// Runs an operation (sv140-shop first when `outil` is given) and requires success.
    void reussir(const std::string& operation, const Textes& outil = {}) {
        if (!outil.empty()) {
            Execution o = BoiteNoire::outil(outil);
            ASSERT_EQ(o.statut, 0) << o.erreurs;
        }
        Execution e = BoiteNoire::operation(operation);
        ASSERT_TRUE(fin_propre(e));
        ASSERT_EQ(xml(fichier("ZEMO_Response.xml"), "//codeErreur"), Textes{"0"})
            << operation << "\n"
            << e.erreurs << log();
        EXPECT_EQ(e.boites(), Textes{}) << e.erreurs;
    }

    /// The beneficiary list as the host reads it: name, first name, birth date, rank, NIR.
    Lignes liste() {
        return sql(hote(),
                   "SELECT [Nom du Verre], Couleur, Rubrique1, CAST([Plage-Mini] AS INTEGER),"
                   " Fournisseur FROM [Sélection Verres] ORDER BY rowid");
    }
};

TEST_F(Simulateur, TheProfessionalCardIsStoredThenUsedToInitialise) {
    reussir("f_LireCPS");
    const std::string reponse = fichier("ZEMO_SvResponse.xml");
    const Textes ps = xml(reponse, "//contextePS/NUM_IDN | //contextePS/NOM_PRAT");
    ASSERT_EQ(ps.size(), 2u);
    Lignes situations;
    for (const auto& s : xml(reponse, "//situation/NUM_SIT")) {
        situations.push_back({std::to_string(std::stoi(s)),
                              xml(reponse, "//situation/NUM_IDFACPS").at(situations.size())});
    }
    ASSERT_FALSE(situations.empty()) << "the simulator's card has no situation";
    EXPECT_EQ(sql(pont(), "SELECT Info_CPS_NUM_IDN, Info_CPS_NOM_PRAT FROM T_InfosCPS"),
              Lignes{ps});
    EXPECT_EQ(sql(pont(),
                  "SELECT CAST(InfoSituation_CPS_NUM_SIT AS INTEGER), InfoSituation_NUM_IDFACPS"
                  " FROM T_InfosSituation_CPS ORDER BY InfoSituation_CPS_ID"),
              situations);
    // The host's column holds 30 characters, apostrophes made blanks.
    EXPECT_EQ(sql(pont(),
                  "SELECT InfoSituation_RAIS_STR FROM T_InfosSituation_CPS"
                  " ORDER BY InfoSituation_CPS_ID"),
              (Lignes{{"OPTIQUE DU CENTRE"}, {"LUNETTERIE DE L HÔTEL DE VILLE"}}));

    reussir("f_InitialisationPS");
    EXPECT_EQ(xml(fichier("ZEMO_SvRequest.xml"), "//PS/idNat | //PS/motDePasse"),
              (Textes{ps[0], ps[0]}));
}

TEST_F(Simulateur, EveryCardIsListedThenEachBeneficiaryLinked) {
    struct Cas {
        std::string carte;
        std::size_t min, max;  // beneficiaries on the card
        bool jumeaux;          // two share a birth date
    };
    for (const Cas& c : {Cas{"famille", 3, 4, true}, Cas{"vide", 0, 0, false},
                         Cas{"douze", 12, 12, false}, Cas{"accents", 1, 12, false}}) {
        SCOPED_TRACE(c.carte);
        sql(hote(), "INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('stale')");
        sql(pont(), "DELETE FROM T_InfosCarteVitale");
        reussir("f_LireCVitale", {"carte", racine, c.carte});
        const Textes noms = xml(fichier("ZEMO_SvResponse.xml"), "//Beneficiaire/NOM_USG");
        const Textes prenoms = xml(fichier("ZEMO_SvResponse.xml"), "//Beneficiaire/PRM_USG");
        EXPECT_GE(noms.size(), c.min);
        EXPECT_LE(noms.size(), c.max);
        const Lignes l = liste();
        ASSERT_EQ(l.size(), noms.size());
        // Each beneficiary linked to its own client is its own row, names intact; the
        // card's birth date goes through Divers, which carries any day and month.
        bool jumeaux = false;
        Lignes attendu;
        for (std::size_t i = 0; i < l.size(); ++i) {
            EXPECT_TRUE(stocke(noms[i]).starts_with(l[i][0]) && l[i][0].size() > 0) << l[i][0];
            EXPECT_EQ(l[i][1], stocke(prenoms[i]));
            for (std::size_t j = 0; j < i; ++j) {
                jumeaux |= l[i][2] == l[j][2] && l[i][3] != l[j][3];
            }
            const std::string& date = l[i][2];
            client(std::to_string(100 + i) + ", '" + l[i][4] + "', '" + date.substr(0, 4) +
                   "-01-01 00:00:00', '" + l[i][3] + "', '!" + date.substr(6, 2) +
                   date.substr(4, 2) + "'");
            reussir("f_MettreAJourIdEtc");
            attendu.push_back(
                {std::to_string(100 + i), stocke(noms[i]), stocke(prenoms[i]), date, l[i][3]});
        }
        EXPECT_EQ(jumeaux, c.jumeaux);
        const std::string cartes =
            "SELECT CAST(Info_ETC_ID_FK AS INTEGER), Info_CV_NOM_USG, Info_CV_PRM_USG,"
            " Info_CV_NAI_BEN, Info_CV_BEN_RNG FROM T_InfosCarteVitale ORDER BY Info_CV_ID";
        EXPECT_EQ(sql(pont(), cartes), attendu);
        // Linked again to another client, the last beneficiary keeps its row.
        if (!l.empty()) {
            sql(hote(), "UPDATE T_Etat_Civil SET [N°] = 200");
            reussir("f_MettreAJourIdEtc");
            attendu.back()[0] = "200";
            EXPECT_EQ(sql(pont(), cartes), attendu);
        }
    }
}

TEST_F(Simulateur, TheComplementaryQueryKeepsItsExchangeForTheHost) {
    ecrire(fichier("ZEMO_Request.xml"),
           "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<BelvaneClassicII>"
           "<beneficiaire><codeRegime>02</codeRegime><codeCaisse>999</codeCaisse>"
           "<codeCentre>0000</codeCentre></beneficiaire>"
           "<beneficiaire><codeRegime>01</codeRegime><codeCaisse>131</codeCaisse>"
           "<codeCentre>0111</codeCentre></beneficiaire>"
           "<donneesTP><numeroMutuelle>099999997</numeroMutuelle></donneesTP>"
           "</BelvaneClassicII>\r\n");
    reussir("f_LireCPS", {"carte", racine, "mutuelle"});
    reussir("f_LireInfosComplementaire");
    const std::string requete = fichier("ZEMO_SvRequest.xml");
    const std::string f = "/ZRMESSAGE/requete/fonction/f_LireInfosComplementaire/";
    EXPECT_EQ(xml(requete, f + "*", true),
              (Textes{"versionMessage", "PS", "offre", "donneesComplementaire"}));
    EXPECT_EQ(xml(requete, f + "offre"), Textes{"ITSV"});
    EXPECT_EQ(xml(requete, f + "donneesComplementaire/*", true),
              (Textes{"numeroComplementaire", "codeRegime", "codeCaisse", "codeCentre"}));
    EXPECT_EQ(xml(requete, f + "donneesComplementaire/*"),
              (Textes{"99999997", "01", "131", "0111"}));
    EXPECT_EQ(lire(fichier("ZEMO_SvRequestAMC.xml")), lire(fichier("ZEMO_SvRequest.xml")));
    EXPECT_EQ(lire(fichier("ZEMO_SvResponseAMC.xml")), lire(fichier("ZEMO_SvResponse.xml")));

    // A failed query leaves no copy.
    std::remove(fichier("ZEMO_SvRequestAMC.xml").c_str());
    std::remove(fichier("ZEMO_SvResponseAMC.xml").c_str());
    ASSERT_EQ(outil({"panne", racine, "f_LireInfosComplementaire", "5", "Refus"}).statut, 0);
    ASSERT_TRUE(fin_propre(operation("f_LireInfosComplementaire")));
    EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")),
              (Textes{"f_LireInfosComplementaire", "5", "Refus"}));
    EXPECT_FALSE(existe(fichier("ZEMO_SvRequestAMC.xml")));
    EXPECT_FALSE(existe(fichier("ZEMO_SvResponseAMC.xml")));
}

}  // namespace
}  // namespace bb
