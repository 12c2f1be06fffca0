// The Vitale card read through a scripted middleware: the beneficiary list the host
// chooses from, then the link of the chosen beneficiary to the host's client.
#include "harnais.h"

namespace bb {
namespace {

// More than 50 characters, with what an SQL statement or an XPath expression must not mistake
// for its own syntax.
const std::string kNomLong = "D'ARTAGNAN \"LE GASCON\" ; ] # DE CASTELMORE-ÉLÉONORE LONGUE";
const std::string kPrenomLong = "Marie-Zoé l'Aînée \"Mimi\" Joséphine-Agnès";  // 40

std::string doubler(const std::string& s) {
    std::string d;
    for (char c : s) {
        d += c == '\'' ? std::string("''") : std::string(1, c);
    }
    return d;
}

class Cartes : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        b.utiliser_script();
    }

    /// DUPONT Jean (1975, rank 1) and the long-named twin pair born 1978-01-01.
    CarteTest famille() {
        CarteTest c{contexte_carte(), {}};
        c.beneficiaires.push_back(beneficiaire("DUPONT", "Jean", "19750512", "1"));
        c.beneficiaires.push_back(beneficiaire(kNomLong, kPrenomLong, "19780101", "1"));
        c.beneficiaires.push_back(beneficiaire("DUPONT", "Léa", "19780101", "2"));
        return c;
    }

    /// Runs f_LireCVitale on this card.
    void lire_carte(const CarteTest& carte) {
        std::remove(b.script("compteur").c_str());
        b.scripter_reponse(1, reponse_carte(carte));
        Execution e = b.operation("f_LireCVitale");
        ASSERT_TRUE(fin_propre(e));
        ASSERT_TRUE(e.boites().empty()) << e.erreurs;
    }

    /// The host leaves exactly the chosen client in T_Etat_Civil.
    void client(int numero, const std::string& date, const std::string& rang,
                const std::string& divers_sql = "NULL") {
        Base hote(b.base_hote());
        hote.executer(
            "DELETE FROM T_Etat_Civil; INSERT INTO T_Etat_Civil ([N°], "
            "[Sécurité sociale], [Date Naissance], RangNaissance, Divers) VALUES (" +
            std::to_string(numero) + ", '150017512345642', '" + date + " 00:00:00', '" +
            doubler(rang) + "', " + divers_sql + ")");
    }

    std::vector<Ligne> cartes_stockees(const std::string& colonnes) {
        Base pont(b.base_pont());
        return pont.lignes("SELECT " + colonnes + " FROM T_InfosCarteVitale ORDER BY Info_CV_ID");
    }
};

TEST_F(Cartes, EveryBeneficiaryIsListedForTheHost) {
    CarteTest c = famille();
    fixer(c.contexte, "NIR_ASS", " 1500175123456 ");
    fixer(c.contexte, "RTT_CAI", " 131 ");
    // The complementary number: the card's own, the fixed numbers of the situation
    // codes 12 to 14, or the mutual's.
    fixer(c.beneficiaires[1], "COD_SEB", "13");
    fixer(c.beneficiaires[1], "BEN_QLT", "06");
    fixer(c.beneficiaires[2], "COD_SEB", "14");
    fixer(c.beneficiaires[2], "MUT/MUT_NUM", "");
    c.beneficiaires.push_back(beneficiaire("MARTIN", "Paul", "20100203", "1"));
    fixer(c.beneficiaires[3], "COD_SEB", "13");
    fixer(c.beneficiaires[3], "COMP/CPL_NU2", "99887766");
    c.beneficiaires.push_back(beneficiaire("MARTIN", "Emma", "20120405", "1"));
    fixer(c.beneficiaires[4], "MUT/MUT_NUM", "");
    fixer(c.beneficiaires[4], "COD_SEB", "12 ");
    c.beneficiaires.push_back(beneficiaire("MARTIN", "Noé", "20140607", "1"));
    fixer(c.beneficiaires[5], "MUT/MUT_NUM", "");
    {
        Base hote(b.base_hote());
        hote.executer("INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('stale')");
    }
    lire_carte(c);

    Base hote(b.base_hote());
    auto rangs = hote.lignes(
        "SELECT [Nom du Verre], Couleur, CAST(Diamètre AS INTEGER), Fournisseur, Rubrique1,"
        " CAST([Plage-Mini] AS INTEGER), Rubrique2, [Code Liaison Vidéo], Cod_Commande,"
        " Num_Adherent FROM [Sélection Verres] ORDER BY rowid");
    auto rang = [](std::string nom, std::string prenom, std::string qualite, std::string naissance,
                   std::string rang, std::string complementaire) {
        return Ligne{nom,  prenom,      qualite,     "150017512345642", naissance,
                     rang, "011310000", "011310000", complementaire,    "ADH" + rang};
    };
    const std::vector<Ligne> attendu{
        rang("DUPONT", "Jean", "0", "19750512", "1", "75500017"),
        rang(stocke_par_regle(premiers(kNomLong, 50)), stocke_par_regle(kPrenomLong), "6",
             "19780101", "1", "22222228"),
        rang("DUPONT", "Léa", "0", "19780101", "2", "33333337"),
        rang("MARTIN", "Paul", "0", "20100203", "1", "99887766"),
        rang("MARTIN", "Emma", "0", "20120405", "1", "11111119"),
        rang("MARTIN", "Noé", "0", "20140607", "1", ""),
    };
    ASSERT_EQ(rangs.size(), attendu.size());
    for (std::size_t i = 0; i < attendu.size(); ++i) {
        EXPECT_EQ(rangs[i], attendu[i]) << "beneficiary " << i + 1;
    }
    Base pont(b.base_pont());
    EXPECT_EQ(pont.compter("T_InfosCarteVitale"), 0) << "the list run stores no card";
}

TEST_F(Cartes, TheChosenBeneficiaryIsLinkedToTheClientThenUpdated) {
    lire_carte(famille());
    client(57, "1978-01-01", "1");
    Execution e = b.operation("f_MettreAJourIdEtc");
    ASSERT_TRUE(fin_propre(e));
    EXPECT_TRUE(e.boites().empty()) << e.erreurs;

    const std::string colonnes =
        "CAST(Info_ETC_ID_FK AS INTEGER), Info_CV_VIT_NSER, Info_CV_NIR_ASS, Info_CV_CLE_ASS, "
        "Info_CV_NOM_USG,"
        " Info_CV_PRM_USG, Info_CV_NAI_BEN, Info_CV_BEN_RNG, Info_CV_NB_BENEF, Info_CV_MUT_NUM,"
        " Info_CV_ID_HOT, Info_CV_NOM_DOM, Info_CV_ADR_LN4, Info_CV_RUF_BEN";
    auto stockees = cartes_stockees(colonnes);
    ASSERT_EQ(stockees.size(), 1u);
    const Ligne attendu{"57",
                        "1234567890 ",
                        "1500175123456",
                        "42",
                        stocke_par_regle(kNomLong),
                        stocke_par_regle(kPrenomLong),
                        "19780101",
                        "1",
                        "2",
                        "75500017",
                        "",
                        "dom",
                        "75011",
                        ""};
    EXPECT_EQ(stockees[0], attendu);

    // A second link of the same card (another client number) updates the same row.
    client(58, "1978-01-01", "1");
    e = b.operation("f_MettreAJourIdEtc");
    ASSERT_TRUE(fin_propre(e));
    stockees = cartes_stockees(colonnes);
    ASSERT_EQ(stockees.size(), 1u);
    Ligne mise_a_jour = attendu;
    mise_a_jour[0] = "58";
    mise_a_jour[1] = "1234567890";
    EXPECT_EQ(stockees[0], mise_a_jour);

    // Her twin is another row.
    client(59, "1978-01-01", "2");
    e = b.operation("f_MettreAJourIdEtc");
    ASSERT_TRUE(fin_propre(e));
    stockees = cartes_stockees("CAST(Info_ETC_ID_FK AS INTEGER), Info_CV_PRM_USG, Info_CV_BEN_RNG");
    EXPECT_EQ(stockees,
              (std::vector<Ligne>{{"58", stocke_par_regle(kPrenomLong), "1"}, {"59", "Léa", "2"}}));
}

TEST_F(Cartes, TheClientIsMatchedByBirthDateAndRank) {
    CarteTest c = famille();
    // A card birth date that no calendar has, as the host keeps it in Divers.
    c.beneficiaires.push_back(beneficiaire("LUNE", "Max", "19501331", "1"));
    struct Cas {
        std::string nom, date, rang, divers_sql, prenom;  // "" when nothing is stored
    };
    const std::vector<Cas> cas{
        {"plain date", "1975-05-12", "1", "NULL", "Jean"},
        {"empty Divers", "1975-05-12", "1", "''", "Jean"},
        {"card date in Divers", "1950-06-15", "1", "'!3113'", "Max"},
        {"card date and a remark", "1950-06-15", "1", "'!3113 l''ami \"x\"'", "Max"},
        {"no such rank", "1975-05-12", "3", "NULL", ""},
        {"rank with a quote", "1975-05-12", "1'", "NULL", ""},
        {"rank breaking out of its literal", "1975-05-12", "1') OR ('1'='1", "NULL", ""},
        {"no such date", "1975-05-13", "1", "NULL", ""},
    };
    lire_carte(c);
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        {
            Base pont(b.base_pont());
            pont.executer("DELETE FROM T_InfosCarteVitale");
        }
        client(60, k.date, k.rang, k.divers_sql);
        Execution e = b.operation("f_MettreAJourIdEtc");
        ASSERT_TRUE(fin_propre(e));
        auto stockees = cartes_stockees("Info_CV_PRM_USG, CAST(Info_ETC_ID_FK AS INTEGER)");
        if (k.prenom.empty()) {
            EXPECT_TRUE(stockees.empty());
        } else {
            EXPECT_EQ(stockees, (std::vector<Ligne>{{k.prenom, "60"}}));
        }
        EXPECT_TRUE(resultat(b.fichier("ZEMO_Response.xml"))) << "no well-formed answer";
    }
}

TEST_F(Cartes, RightsFillNineSlotsFromDataVersion3600) {
    auto periodes = [](int n, const std::string& compte) {
        CarteTest c{contexte_carte(), {beneficiaire("DUPONT", "Jean", "19750512", "1")}};
        Champs& ben = c.beneficiaires[0];
        std::erase_if(ben, [](const auto& ch) { return ch.first.starts_with("DRT_AMO/"); });
        ben.emplace_back("DRT_AMO/NB_DRT_AMO", compte);
        for (int i = 1; i <= n; ++i) {
            ben.emplace_back("DRT_AMO/DAMO_DEB",
                             "2024" + std::string(i < 10 ? "0" : "") + std::to_string(i) + "01");
            ben.emplace_back("DRT_AMO/DAMO_FIN",
                             "2024" + std::string(i < 10 ? "0" : "") + std::to_string(i) + "28");
        }
        return c;
    };
    std::string slots = "CAST(Info_CV_NB_DRT_AMO AS INTEGER)";
    for (int i = 1; i <= 9; ++i) {
        slots += ", Info_CV_DAMO_DEB_" + std::to_string(i);
    }
    slots +=
        ", Info_CV_DAMO_FIN_9, Info_CV_CC_DEB_1, Info_CV_COD_ALD_1, Info_CV_COD_SITU_1,"
        " Info_CV_CC_DEB_2, CAST(Info_CV_NB_DRT_MUT AS INTEGER), Info_CV_DMUT_FIN_1";
    auto ligne = [](const std::string& compte, int remplis, const std::string& fin9) {
        Ligne l{compte};
        for (int i = 1; i <= 9; ++i) {
            l.emplace_back(i <= remplis
                               ? "2024" + std::string(i < 10 ? "0" : "") + std::to_string(i) + "01"
                               : "");
        }
        for (const char* v : {"", "20240101", "A1", "S1", "", "1", "20241231"}) {
            l.emplace_back(v);
        }
        l[10] = fin9;
        return l;
    };
    struct Cas {
        std::string nom;
        int noeuds;
        std::string compte;
        int version;
        std::optional<Ligne> attendu;  // nullopt: the rights are not stored
    };
    const std::vector<Cas> cas{
        {"eleven periods", 11, "11", 3600, ligne("11", 9, "20240928")},
        {"three periods", 3, "3", 3600, ligne("3", 3, "")},
        {"count 0", 4, "0", 3600, ligne("0", 0, "")},
        {"before data version 3600", 3, "3", 3599, std::nullopt},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        b.professionnel("1", k.version);
        {
            Base pont(b.base_pont());
            pont.executer("DELETE FROM T_InfosCarteVitale");
        }
        lire_carte(periodes(k.noeuds, k.compte));
        client(61, "1975-05-12", "1");
        Execution e = b.operation("f_MettreAJourIdEtc");
        ASSERT_TRUE(fin_propre(e));
        auto stockees = cartes_stockees(slots);
        ASSERT_EQ(stockees.size(), 1u);
        if (k.attendu) {
            EXPECT_EQ(stockees[0], *k.attendu);
        } else {
            EXPECT_EQ(stockees[0][0], std::nullopt);
            EXPECT_EQ(stockees[0][1], std::nullopt);
        }
    }
}

}  // namespace
}  // namespace bb
