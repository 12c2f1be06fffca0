// The Vitale card read through a scripted middleware, value by value: the beneficiary
// list the host chooses from, then the link of the chosen beneficiary to its client.
#include <algorithm>

#include "harnais.h"

namespace bb {
namespace {

// More than 50 characters, with what an SQL statement or an XPath expression must not
// mistake for its own syntax; the list keeps the first 50.
const std::string kNom = "D'ARTAGNAN \"LE GASCON\" ; ] # DE CASTELMORE-ÉLÉONORE LONGUE";
const std::string kNom50 = "D'ARTAGNAN \"LE GASCON\" ; ] # DE CASTELMORE-ÉLÉONOR";
const std::string kPrenom = "Marie-Zoé l'Aînée \"Mimi\" Joséphine-Agnès";

class Cartes : public BoiteNoire {
  protected:
    void lire_carte(const std::vector<Champs>& beneficiaires) {
        utiliser_script();
        scripter(1, reponse_carte(beneficiaires));
        Execution e = operation("f_LireCVitale");
        ASSERT_TRUE(fin_propre(e));
        ASSERT_EQ(e.boites(), Textes{}) << e.erreurs;
    }

    /// Links the host's client `numero`, born on `date`, of this rank and Divers.
    void lier(int numero, const std::string& date, const std::string& rang = "'1'",
              const std::string& divers = "NULL") {
        client(std::to_string(numero) + ", '150017512345642', '" + date + " 00:00:00', " + rang +
               ", " + divers);
        Execution e = operation("f_MettreAJourIdEtc");
        ASSERT_TRUE(fin_propre(e));
        EXPECT_EQ(e.boites(), Textes{}) << e.erreurs;
    }

    Lignes cartes(const std::string& colonnes) {
        return sql(pont(), "SELECT " + colonnes + " FROM T_InfosCarteVitale ORDER BY Info_CV_ID");
    }

    /// DUPONT Jean (1975, rank 1) and the twins born 1978-01-01.
    const std::vector<Champs> famille{beneficiaire("DUPONT", "Jean", "19750512", "1"),
                                      beneficiaire(kNom, kPrenom, "19780101", "1"),
                                      beneficiaire("DUPONT", "Léa", "19780101", "2")};
};

TEST_F(Cartes, EveryBeneficiaryIsListedForTheHost) {
    // The complementary number: the card's own, the fixed numbers of the situation
    // codes 12 to 14, or the mutual's.
    sql(hote(), "INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('stale')");
    lire_carte({famille[0], beneficiaire(kNom, kPrenom, "19780101", "1", "COD_SEB=13;BEN_QLT=06"),
                beneficiaire("DUPONT", "Léa", "19780101", "2", "COD_SEB=14;MUT/MUT_NUM="),
                beneficiaire("MARTIN", "Paul", "20100203", "1", "COD_SEB=13;COMP/CPL_NU2=99887766"),
                beneficiaire("MARTIN", "Emma", "20120405", "1", "COD_SEB=12 ;MUT/MUT_NUM="),
                beneficiaire("MARTIN", "Noé", "20140607", "1", "MUT/MUT_NUM=")});
    auto rang = [](std::string nom, std::string prenom, std::string qualite, std::string naissance,
                   std::string rang, std::string complementaire) {
        return Textes{nom,  prenom,      qualite,     "150017512345642", naissance,
                      rang, "011310000", "011310000", complementaire,    "ADH" + rang};
    };
    EXPECT_EQ(sql(hote(),
                  "SELECT [Nom du Verre], Couleur, CAST(Diamètre AS INTEGER), Fournisseur,"
                  " Rubrique1, CAST([Plage-Mini] AS INTEGER), Rubrique2, [Code Liaison Vidéo],"
                  " Cod_Commande, Num_Adherent FROM [Sélection Verres] ORDER BY rowid"),
              (Lignes{rang("DUPONT", "Jean", "0", "19750512", "1", "75500017"),
                      rang(stocke(kNom50), stocke(kPrenom), "6", "19780101", "1", "22222228"),
                      rang("DUPONT", "Léa", "0", "19780101", "2", "33333337"),
                      rang("MARTIN", "Paul", "0", "20100203", "1", "99887766"),
                      rang("MARTIN", "Emma", "0", "20120405", "1", "11111119"),
                      rang("MARTIN", "Noé", "0", "20140607", "1", "")}));
    EXPECT_EQ(cartes("*"), Lignes{}) << "the list run stores no card";
}

TEST_F(Cartes, TheChosenBeneficiaryIsLinkedThenUpdated) {
    lire_carte(famille);
    lier(57, "1978-01-01");
    const std::string colonnes =
        "CAST(Info_ETC_ID_FK AS INTEGER), Info_CV_VIT_NSER, Info_CV_NIR_ASS, Info_CV_CLE_ASS,"
        " Info_CV_NOM_USG, Info_CV_PRM_USG, Info_CV_NAI_BEN, Info_CV_BEN_RNG, Info_CV_NB_BENEF,"
        " Info_CV_MUT_NUM, Info_CV_ID_HOT, Info_CV_NOM_DOM, Info_CV_ADR_LN4, Info_CV_RUF_BEN";
    Textes attendu{
        "57", "1234567890 ", "1500175123456", "42", stocke(kNom), stocke(kPrenom), "19780101",
        "1",  "2",           "75500017",      "",   "dom",        "75011",         ""};
    EXPECT_EQ(cartes(colonnes), Lignes{attendu});

    // A second link of the same beneficiary (another client) updates the same row.
    lier(58, "1978-01-01");
    attendu[0] = "58";
    attendu[1] = "1234567890";
    EXPECT_EQ(cartes(colonnes), Lignes{attendu});

    // Her twin is another row.
    lier(59, "1978-01-01", "'2'");
    EXPECT_EQ(cartes("CAST(Info_ETC_ID_FK AS INTEGER), Info_CV_PRM_USG, Info_CV_BEN_RNG"),
              (Lignes{{"58", stocke(kPrenom), "1"}, {"59", "Léa", "2"}}));
}

TEST_F(Cartes, TheClientIsMatchedByBirthDateAndRank) {
    // A card birth date that no calendar has, as the host keeps it in Divers.
    auto c = famille;
    c.push_back(beneficiaire("LUNE", "Max", "19501331", "1"));
    lire_carte(c);
    struct Cas {
        std::string nom, date, rang, divers, prenom;  // as SQL; "" when nothing is stored
    };
    for (const Cas& k : std::vector<Cas>{
             {"plain date", "1975-05-12", "'1'", "NULL", "Jean"},
             {"empty Divers", "1975-05-12", "'1'", "''", "Jean"},
             {"card date in Divers", "1950-06-15", "'1'", "'!3113'", "Max"},
             {"card date and a remark", "1950-06-15", "'1'", "'!3113 l''ami \"x\"'", "Max"},
             {"no such rank", "1975-05-12", "'3'", "NULL", ""},
             {"rank with a quote", "1975-05-12", "'1'''", "NULL", ""},
             {"rank breaking out of its literal", "1975-05-12", "'1'') OR (''1''=''1'", "NULL", ""},
             {"no such date", "1975-05-13", "'1'", "NULL", ""}}) {
        SCOPED_TRACE(k.nom);
        sql(pont(), "DELETE FROM T_InfosCarteVitale");
        lier(60, k.date, k.rang, k.divers);
        EXPECT_EQ(cartes("Info_CV_PRM_USG, CAST(Info_ETC_ID_FK AS INTEGER)"),
                  (k.prenom.empty() ? Lignes{} : Lignes{{k.prenom, "60"}}));
        EXPECT_EQ(resultat(fichier("ZEMO_Response.xml")).size(), 3u) << "no well-formed answer";
    }
}

TEST_F(Cartes, RightsFillNineSlotsFromDataVersion3600) {
    const std::vector<std::pair<std::string, Textes>> groupes{
        {"DRT_AMO/NB_DRT_AMO", {"DAMO_DEB", "DAMO_FIN"}},
        {"DRT_CC/NB_DRT_CC", {"CC_DEB", "CC_FIN", "COD_ALD", "COD_SITU"}},
        {"MUT/DRT_MUT/NB_DRT_MUT", {"DMUT_DEB", "DMUT_FIN"}}};
    // Period p's element e holds the day 2024, month p, day 10 + e.
    auto valeur = [](int p, std::size_t e) {
        return "2024" + std::string(p < 10 ? "0" : "") + std::to_string(p) + std::to_string(10 + e);
    };
    struct Cas {
        int periodes;
        std::string compte;
        int version;
    };
    for (const Cas& k :
         {Cas{11, "11", 3600}, Cas{3, "3", 3600}, Cas{4, "0", 3600}, Cas{3, "3", 3599}}) {
        SCOPED_TRACE(k.compte + " of " + std::to_string(k.periodes) + ", version " +
                     std::to_string(k.version));
        professionnel("1", k.version);
        sql(pont(), "DELETE FROM T_InfosCarteVitale");
        // Every group of rights with its periods, in place of the one it had.
        Champs b = beneficiaire("DUPONT", "Jean", "19750512", "1");
        std::string colonnes;
        Textes attendu;
        for (const auto& [compte, elements] : groupes) {
            const std::string tete = compte.substr(0, compte.rfind('/') + 1);
            auto debut = std::find_if(b.begin(), b.end(),
                                      [&](const auto& ch) { return ch.first.starts_with(tete); });
            Champs droits{{compte, k.compte}};
            for (int p = 1; p <= k.periodes; ++p) {
                for (std::size_t e = 0; e < elements.size(); ++e) {
                    droits.emplace_back(tete + elements[e], valeur(p, e));
                }
            }
            b.insert(b.erase(debut, debut + 1 + static_cast<long>(elements.size())), droits.begin(),
                     droits.end());
            colonnes += ", CAST(Info_CV_" + compte.substr(tete.size()) + " AS INTEGER)";
            attendu.push_back(k.version < 3600 ? "NULL" : k.compte);
            for (std::size_t e = 0; e < elements.size(); ++e) {
                for (int slot = 1; slot <= 9; ++slot) {
                    colonnes += ", Info_CV_" + elements[e] + "_" + std::to_string(slot);
                    attendu.push_back(k.version < 3600                        ? "NULL"
                                      : slot <= k.periodes && k.compte != "0" ? valeur(slot, e)
                                                                              : "");
                }
            }
        }
        lire_carte({b});
        lier(61, "1975-05-12");
        EXPECT_EQ(cartes(colonnes.substr(2)), Lignes{attendu});
    }
}

}  // namespace
}  // namespace bb
