// Whole working days against the middleware simulator and the shop tool's test cards:
// what the middleware answers must end up, unchanged, where the host reads it.
#include <algorithm>
#include <cstdlib>

#include "harnais.h"

namespace bb {
namespace {

class Simulateur : public BoiteNoire {
  protected:
    void SetUp() override {
        BoiteNoire::SetUp();
        ASSERT_TRUE(existe(b.fichier("WebQuintara2.so"))) << "no middleware simulator installed";
    }

    void carte(const std::string& id) {
        Execution e = b.outil({"carte", b.racine, id});
        ASSERT_EQ(e.statut, 0) << "sv140-shop carte " << id << ": " << e.erreurs;
    }

    /// Runs an operation and requires the middleware's success.
    void reussir(const std::string& operation) {
        Execution e = b.operation(operation);
        ASSERT_TRUE(fin_propre(e));
        ASSERT_EQ(code_reponse(b.fichier("ZEMO_Response.xml")), "0") << operation << "\n"
                                                                     << e.erreurs << "\n"
                                                                     << b.log();
        EXPECT_TRUE(e.boites().empty()) << e.erreurs;
    }

    /// The host leaves the chosen client in T_Etat_Civil; the card's birth date goes
    /// through Divers, which carries any day and month the card holds.
    void client(int numero, const std::string& nir, const std::string& naissance,
                const std::string& rang) {
        ASSERT_EQ(naissance.size(), 8u) << naissance;
        Base hote(b.base_hote());
        hote.executer(
            "DELETE FROM T_Etat_Civil; INSERT INTO T_Etat_Civil ([N°], "
            "[Sécurité sociale], [Date Naissance], RangNaissance, Divers) VALUES (" +
            std::to_string(numero) + ", '" + nir + "', '" + naissance.substr(0, 4) +
            "-01-01 00:00:00', '" + rang + "', '!" + naissance.substr(6, 2) +
            naissance.substr(4, 2) + "')");
    }

    /// The beneficiary list as the host reads it: name, first name, birth date, rank, NIR.
    std::vector<Ligne> liste() {
        Base hote(b.base_hote());
        return hote.lignes(
            "SELECT [Nom du Verre], Couleur, Rubrique1, CAST([Plage-Mini] AS INTEGER),"
            " Fournisseur FROM [Sélection Verres] ORDER BY rowid");
    }

    /// Links every listed beneficiary to a client numbered from 100.
    void lier_tous() {
        auto l = liste();
        for (std::size_t i = 0; i < l.size(); ++i) {
            client(100 + static_cast<int>(i), l[i][4].value_or(""), l[i][2].value_or(""),
                   l[i][3].value_or(""));
            reussir("f_MettreAJourIdEtc");
        }
    }
};

TEST_F(Simulateur, VersionsAreStored) {
    reussir("f_LireVersion");
    Xml x(b.fichier("ZEMO_SvResponse.xml"));
    const std::string v = "/ZRMESSAGE/resultat/donnees/donneesVersion/";
    Base pont(b.base_pont());
    auto l = pont.lignes(
        "SELECT Info_Version_VersionDLL, Info_Version_VersionCDC, Info_Version_versionReferentiel,"
        " Info_Version_constructeur, Info_Version_typeLecteur, Info_Version_numSerie,"
        " Info_Version_typeOS, Info_Version_nomAppli, Info_Version_numVersion,"
        " Info_Version_dateAppli, Info_Version_heureAppli, Info_Version_crcAppli FROM"
        " T_InfosVersion WHERE Info_Version_ID = 1");
    ASSERT_EQ(l.size(), 1u);
    Ligne attendu;
    for (const char* e :
         {"versionDll", "versionCDC", "versionReferentiel", "infosLecteur/constructeur",
          "infosLecteur/typeLecteur", "infosLecteur/numSerie", "infosLecteur/typeOS",
          "infosLecteur/appliSV/nomAppli", "infosLecteur/appliSV/numVersion",
          "infosLecteur/appliSV/dateAppli", "infosLecteur/appliSV/heureAppli",
          "infosLecteur/appliSV/crcAppli"}) {
        attendu.emplace_back(x.textes(v + e).empty() ? "" : x.textes(v + e).back());
    }
    EXPECT_EQ(l[0], attendu);
    EXPECT_FALSE(attendu[0].value_or("").empty()) << "the simulator gave no version";
}

TEST_F(Simulateur, TheProfessionalCardIsStoredThenUsedToInitialise) {
    reussir("f_LireCPS");
    Xml x(b.fichier("ZEMO_SvResponse.xml"));
    const std::string ps = "/ZRMESSAGE/resultat/donnees/contextePS";
    const std::string idnat = x.textes(ps + "/NUM_IDN").back();
    {
        Base pont(b.base_pont());
        EXPECT_EQ(pont.valeur("SELECT Info_CPS_NUM_IDN FROM T_InfosCPS WHERE Info_CPS_ID = 1"),
                  idnat);
        EXPECT_EQ(pont.valeur("SELECT Info_CPS_NOM_PRAT FROM T_InfosCPS"),
                  x.textes(ps + "/NOM_PRAT").back());
        auto situations = pont.lignes(
            "SELECT CAST(InfoSituation_CPS_NUM_SIT AS INTEGER), InfoSituation_NUM_IDFACPS,"
            " InfoSituation_RAIS_STR FROM T_InfosSituation_CPS ORDER BY InfoSituation_CPS_ID");
        auto numeros = x.textes(ps + "/situation/NUM_SIT");
        auto factures = x.textes(ps + "/situation/NUM_IDFACPS");
        ASSERT_EQ(situations.size(), numeros.size());
        ASSERT_FALSE(numeros.empty()) << "the simulator's card has no situation";
        for (std::size_t i = 0; i < numeros.size(); ++i) {
            EXPECT_EQ(situations[i][0], std::to_string(std::stoi(numeros[i])));
            EXPECT_EQ(situations[i][1], factures[i]);
            const std::string raison = situations[i][2].value_or("");
            EXPECT_EQ(raison.find('\''), std::string::npos) << raison;
        }
    }

    reussir("f_InitialisationPS");
    Xml r(b.fichier("ZEMO_SvRequest.xml"));
    EXPECT_EQ(r.texte("/ZRMESSAGE/requete/fonction/f_InitialisationPS/PS/idNat"), idnat);
    EXPECT_EQ(r.texte("/ZRMESSAGE/requete/fonction/f_InitialisationPS/PS/motDePasse"), idnat);
}

TEST_F(Simulateur, CardsAreListedForTheHost) {
    struct Cas {
        std::string carte;
        std::size_t min, max;  // beneficiaries on the card
    };
    for (const Cas& c :
         {Cas{"famille", 3, 4}, Cas{"vide", 0, 0}, Cas{"douze", 12, 12}, Cas{"accents", 1, 12}}) {
        SCOPED_TRACE(c.carte);
        {
            Base hote(b.base_hote());
            hote.executer("INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('stale')");
        }
        carte(c.carte);
        Execution e = b.operation("f_LireCVitale");
        ASSERT_TRUE(fin_propre(e));
        Xml x(b.fichier("ZEMO_SvResponse.xml"));
        const std::string ben = "/ZRMESSAGE/resultat/donnees/contexteCVitale/Beneficiaire/";
        auto noms = x.textes(ben + "NOM_USG");
        auto prenoms = x.textes(ben + "PRM_USG");
        EXPECT_GE(noms.size(), c.min);
        EXPECT_LE(noms.size(), c.max);
        auto l = liste();
        ASSERT_EQ(l.size(), noms.size()) << e.erreurs;
        for (std::size_t i = 0; i < l.size(); ++i) {
            EXPECT_EQ(l[i][0], stocke_par_regle(premiers(noms[i], 50)));
            EXPECT_EQ(l[i][1], stocke_par_regle(prenoms[i]));
        }
    }
}

TEST_F(Simulateur, TwinsAreTwoListedRowsAndTwoLinkedCards) {
    carte("famille");
    reussir("f_LireCVitale");
    auto l = liste();
    ASSERT_GE(l.size(), 3u);
    bool jumeaux = false;
    for (std::size_t i = 0; i < l.size(); ++i) {
        for (std::size_t j = i + 1; j < l.size(); ++j) {
            jumeaux |= l[i][2] == l[j][2] && l[i][3] != l[j][3];
        }
    }
    EXPECT_TRUE(jumeaux) << "no two beneficiaries share a birth date";

    lier_tous();
    Base pont(b.base_pont());
    auto cartes = pont.lignes(
        "SELECT CAST(Info_ETC_ID_FK AS INTEGER), Info_CV_NOM_USG, Info_CV_PRM_USG,"
        " Info_CV_NAI_BEN, Info_CV_BEN_RNG FROM T_InfosCarteVitale ORDER BY Info_CV_ID");
    ASSERT_EQ(cartes.size(), l.size());
    for (std::size_t i = 0; i < l.size(); ++i) {
        EXPECT_EQ(cartes[i][0], std::to_string(100 + i));
        EXPECT_EQ(cartes[i][2], l[i][1]);  // both through the quoting rule
        EXPECT_EQ(cartes[i][3], l[i][2]);
    }

    // A second link of the first beneficiary to another client keeps one row.
    client(200, l[0][4].value_or(""), l[0][2].value_or(""), l[0][3].value_or(""));
    reussir("f_MettreAJourIdEtc");
    EXPECT_EQ(pont.compter("T_InfosCarteVitale"), static_cast<long>(l.size()));
    EXPECT_EQ(pont.valeur("SELECT CAST(Info_ETC_ID_FK AS INTEGER) FROM T_InfosCarteVitale"
                          " ORDER BY Info_CV_ID"),
              "200");
}

TEST_F(Simulateur, NamesWithQuotesAndMarksArriveIntact) {
    carte("accents");
    reussir("f_LireCVitale");
    Xml x(b.fichier("ZEMO_SvResponse.xml"));
    const std::string ben = "/ZRMESSAGE/resultat/donnees/contexteCVitale/Beneficiaire/";
    auto noms = x.textes(ben + "NOM_USG");
    auto prenoms = x.textes(ben + "PRM_USG");
    ASSERT_FALSE(noms.empty());
    lier_tous();
    Base pont(b.base_pont());
    auto cartes = pont.lignes(
        "SELECT Info_CV_NOM_USG, Info_CV_PRM_USG FROM T_InfosCarteVitale"
        " ORDER BY Info_CV_ID");
    ASSERT_EQ(cartes.size(), noms.size());
    for (std::size_t i = 0; i < noms.size(); ++i) {
        EXPECT_EQ(cartes[i], (Ligne{stocke_par_regle(noms[i]), stocke_par_regle(prenoms[i])}));
    }
}

TEST_F(Simulateur, RightsAreKeptInNineSlots) {
    struct Groupe {
        std::string compte;               // count element, under the beneficiary
        std::vector<std::string> noeuds;  // repeated elements, under the beneficiary
        std::vector<std::string> colonnes;
        std::string colonne_compte;
    };
    const std::vector<Groupe> groupes{
        {"DRT_AMO/NB_DRT_AMO",
         {"DRT_AMO/DAMO_DEB", "DRT_AMO/DAMO_FIN"},
         {"DAMO_DEB_", "DAMO_FIN_"},
         "NB_DRT_AMO"},
        {"DRT_CC/NB_DRT_CC",
         {"DRT_CC/CC_DEB", "DRT_CC/CC_FIN", "DRT_CC/COD_ALD", "DRT_CC/COD_SITU"},
         {"CC_DEB_", "CC_FIN_", "COD_ALD_", "COD_SITU_"},
         "NB_DRT_CC"},
        {"MUT/DRT_MUT/NB_DRT_MUT",
         {"MUT/DRT_MUT/DMUT_DEB", "MUT/DRT_MUT/DMUT_FIN"},
         {"DMUT_DEB_", "DMUT_FIN_"},
         "NB_DRT_MUT"},
    };
    for (const std::string id : {"periodes", "ald", "mutuelle"}) {
        SCOPED_TRACE(id);
        {
            Base pont(b.base_pont());
            pont.executer("DELETE FROM T_InfosCarteVitale");
        }
        carte(id);
        reussir("f_LireCVitale");
        Xml x(b.fichier("ZEMO_SvResponse.xml"));
        const std::string ben = "/ZRMESSAGE/resultat/donnees/contexteCVitale/Beneficiaire";
        const std::size_t n = x.compter(ben);
        ASSERT_GT(n, 0u);
        std::size_t le_plus = 0;

        // What every beneficiary's row must hold: each count, then nine slots per
        // repeated element, filled in document order only when the count is above 0.
        std::string colonnes;
        std::vector<Ligne> attendu;
        for (std::size_t i = 1; i <= n; ++i) {
            const std::string bi = ben + "[" + std::to_string(i) + "]/";
            Ligne l;
            for (const Groupe& g : groupes) {
                auto comptes = x.textes(bi + g.compte);
                const int compte = comptes.empty() ? 0 : std::atoi(comptes.back().c_str());
                l.emplace_back(std::to_string(compte));
                if (i == 1) {
                    colonnes += std::string(colonnes.empty() ? "" : ", ") + "CAST(Info_CV_" +
                                g.colonne_compte + " AS INTEGER)";
                }
                for (std::size_t k = 0; k < g.noeuds.size(); ++k) {
                    auto valeurs = x.textes(bi + g.noeuds[k]);
                    le_plus = std::max(le_plus, valeurs.size());
                    for (std::size_t slot = 1; slot <= 9; ++slot) {
                        l.emplace_back(compte > 0 && slot <= valeurs.size() ? valeurs[slot - 1]
                                                                            : "");
                        if (i == 1) {
                            colonnes += ", Info_CV_" + g.colonnes[k] + std::to_string(slot);
                        }
                    }
                }
            }
            attendu.push_back(l);
        }
        if (id == "periodes") {
            EXPECT_GT(le_plus, 9u) << "the card has no beneficiary with more than nine periods";
        }

        lier_tous();
        Base pont(b.base_pont());
        auto stockees =
            pont.lignes("SELECT " + colonnes + " FROM T_InfosCarteVitale ORDER BY Info_CV_ID");
        ASSERT_EQ(stockees.size(), n);
        for (std::size_t i = 0; i < n; ++i) {
            EXPECT_EQ(stockees[i], attendu[i]) << "beneficiary " << i + 1;
        }
    }
}

TEST_F(Simulateur, TheComplementaryQueryKeepsItsExchangeForTheHost) {
    carte("mutuelle");
    reussir("f_LireCPS");
    ecrire(b.fichier("ZEMO_Request.xml"),
           "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<BelvaneClassicII>"
           "<beneficiaire><codeRegime>02</codeRegime><codeCaisse>999</codeCaisse>"
           "<codeCentre>0000</codeCentre></beneficiaire>"
           "<beneficiaire><codeRegime>01</codeRegime><codeCaisse>131</codeCaisse>"
           "<codeCentre>0111</codeCentre></beneficiaire>"
           "<donneesTP><numeroMutuelle>099999997</numeroMutuelle></donneesTP>"
           "</BelvaneClassicII>\r\n");
    reussir("f_LireInfosComplementaire");
    Xml r(b.fichier("ZEMO_SvRequest.xml"));
    const std::string f = "/ZRMESSAGE/requete/fonction/f_LireInfosComplementaire";
    EXPECT_EQ(r.enfants(f),
              (std::vector<std::string>{"versionMessage", "PS", "offre", "donneesComplementaire"}));
    EXPECT_EQ(r.texte(f + "/offre"), "ITSV");
    EXPECT_EQ(r.enfants(f + "/donneesComplementaire"),
              (std::vector<std::string>{"numeroComplementaire", "codeRegime", "codeCaisse",
                                        "codeCentre"}));
    EXPECT_EQ(r.texte(f + "/donneesComplementaire/numeroComplementaire"), "99999997");
    EXPECT_EQ(r.texte(f + "/donneesComplementaire/codeRegime"), "01");
    EXPECT_EQ(r.texte(f + "/donneesComplementaire/codeCaisse"), "131");
    EXPECT_EQ(r.texte(f + "/donneesComplementaire/codeCentre"), "0111");
    EXPECT_EQ(lire(b.fichier("ZEMO_SvRequestAMC.xml")), lire(b.fichier("ZEMO_SvRequest.xml")));
    EXPECT_EQ(lire(b.fichier("ZEMO_SvResponseAMC.xml")), lire(b.fichier("ZEMO_SvResponse.xml")));
}

TEST_F(Simulateur, AnInjectedErrorReachesTheHostAndStoresNothing) {
    struct Cas {
        std::string code;
        bool boite;
    };
    for (const Cas& c : {Cas{"5", true}, Cas{"276", false}}) {
        SCOPED_TRACE("code " + c.code);
        carte("famille");
        {
            Base hote(b.base_hote());
            hote.executer(
                "DELETE FROM [Sélection Verres];"
                "INSERT INTO [Sélection Verres] ([Nom du Verre]) VALUES ('earlier')");
        }
        Execution p = b.outil({"panne", b.racine, "f_LireCVitale", c.code, "Lecteur absent"});
        ASSERT_EQ(p.statut, 0) << p.erreurs;
        Execution e = b.operation("f_LireCVitale");
        ASSERT_TRUE(fin_propre(e));
        auto r = resultat(b.fichier("ZEMO_Response.xml"));
        ASSERT_TRUE(r);
        EXPECT_EQ(r->code, c.code);
        EXPECT_EQ(r->libelle, "Lecteur absent");
        std::vector<std::string> boites;
        if (c.boite) {
            boites.push_back("Erreur dans f_LireCVitale : Erreur N° " + c.code +
                             " |  | Lecteur absent");
        }
        EXPECT_EQ(e.boites(), boites) << e.erreurs;
        EXPECT_EQ(liste().size(), 1u) << "the list was touched";

        // The failure happened once.
        reussir("f_LireCVitale");
        EXPECT_GE(liste().size(), 3u);
    }
}

}  // namespace
}  // namespace bb
