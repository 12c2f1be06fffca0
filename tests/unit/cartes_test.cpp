#include "cards/cartes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "aide_test.h"
#include "data/connexion.h"
#include "data/parametres.h"
#include "main/run.h"
#include "platform/encodage.h"
#include "platform/xml.h"
#include "shop/schema.h"

namespace sv140 {
namespace {

using Lignes = std::vector<std::vector<std::string>>;

// An element of a middleware answer (no text here needs XML escaping).
std::string e(const std::string& nom, const std::string& texte) {
    return "<" + nom + ">" + texte + "</" + nom + ">";
}

// A shop as the host installs it, and runs of the bridge against it.
class Cartes : public ::testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directories(programme);
        std::filesystem::create_directories(donnees);
        std::string erreur;
        ASSERT_TRUE(shop::Creer_Bases(donnees, racine + "/Temporaire.accdb", erreur)) << erreur;
    }

    // One routine run as the bridge runs it: its writes are validated at the end.
    template <class Routine>
    auto lancer(Routine routine) {
        sv140::Run run = nouveau_run(programme, creer_ui_console(nullptr));
        run.Chemin = donnees;
        run.DB_DONNEES = hote;
        run.DB_sv = pont;
        run.DB_temporaire = racine + "/Temporaire.accdb";
        if constexpr (std::is_void_v<decltype(routine(run))>) {
            routine(run);
            Valider_Connexions(run);
        } else {
            auto resultat = routine(run);
            Valider_Connexions(run);
            return resultat;
        }
    }

    void executer(const std::string& base, const std::string& sql) {
        Connexion c;
        ASSERT_TRUE(c.ouvrir(base));
        ASSERT_TRUE(c.Execute(sql)) << c.derniere_erreur() << "\n" << sql;
        ASSERT_TRUE(c.valider());
    }

    Lignes lignes(const std::string& base, const std::string& sql) {
        Connexion c;
        Lignes l;
        EXPECT_TRUE(c.ouvrir(base));
        auto rs = c.Ouvrir(sql);
        EXPECT_TRUE(rs.has_value()) << c.derniere_erreur() << "\n" << sql;
        if (!rs) {
            return l;
        }
        for (rs->MoveFirst(); !rs->EOF_(); rs->MoveNext()) {
            l.emplace_back();
            for (const std::string& colonne : rs->colonnes()) {
                l.back().push_back(rs->champ(colonne).str());
            }
        }
        return l;
    }

    // The middleware's cleaned answer, in its own encoding.
    void reponse(const std::string& donnees_utf8) {
        test::ecrire(programme + "/ZEMO_SvResponse.xml",
                     utf8_vers_cp1252("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                                      "<ZRMESSAGE><appelant>f</appelant><resultat>"
                                      "<codeErreur>0</codeErreur><libelleErreur/><donnees>" +
                                      donnees_utf8 + "</donnees></resultat></ZRMESSAGE>"));
    }

    void client(const std::string& numero, const std::string& secu, const std::string& date,
                const std::string& rang, const std::string& divers) {
        executer(hote, "DELETE FROM T_Etat_Civil;");
        executer(hote,
                 "INSERT INTO T_Etat_Civil ( [N°], [Sécurité sociale], [Date Naissance], "
                 "RangNaissance, Divers ) VALUES ( " +
                     numero + ", '" + secu + "', '" + date + "', " + rang + ", " + divers + " );");
    }

    void version(int v) {
        executer(hote, "DELETE FROM Version;");
        executer(hote, "INSERT INTO Version ( Version ) VALUES ( " + std::to_string(v) + " );");
    }

    test::DossierTemporaire dossier;
    std::string racine = dossier.chemin() + "/Belvane_Classic";
    std::string programme = racine + "/SV140";
    std::string donnees = racine + "/_Magasin";
    std::string hote = donnees + "/Donnees_32.accdb";
    std::string pont = donnees + "/SV140.accdb";
};

// ---------------------------------------------------------------------------------------
// f_LireCVitale: the list of beneficiaries.

TEST_F(Cartes, ListeRemplaceLaPrecedenteEtGardeLOrdreDeLaCarte) {
    struct Cas {
        std::string nom, prenom, cod_seb, mut_num, cpl_nu2;
        std::string nom_ecrit, cod_commande;
    };
    const std::string a60(60, 'A'), p40(40, 'p');
    std::string e60, e50;
    for (int i = 0; i < 60; ++i) {
        e60 += "é";
    }
    for (int i = 0; i < 50; ++i) {
        e50 += "é";
    }
    // Usual names are cut to 50 characters (accented ones too, never inside a
    // character), first names go whole; the names keep the host's quoting rule, which
    // stores each double quote doubled. A complementary number on the card wins over
    // the mutual number or the fixed number of regimes 12, 13 and 14.
    const std::vector<Cas> cas = {
        {a60, p40, "12", "", "", a60.substr(0, 50), "11111119"},
        {"O'Brien \"Jo\" ; ]#", "Zoé", "13", "123", "", "O'Brien \"\"Jo\"\" ; ]#", "22222228"},
        {e60, "Ève", "13", "", "55555555", e50, "55555555"},
        {"Durand", "Léa", "14", "", "", "Durand", "33333337"},
        {"Petit", "Luc", "01", "0123", "", "Petit", "0123"},
        {"Martin", "Jean", "", "", "", "Martin", ""},
    };
    executer(hote, "INSERT INTO [Sélection Verres] ( [Nom du Verre] ) VALUES ( 'ancien' );");

    std::string carte = "<contexteCVitale>" + e("NIR_ASS", "15003751234567") + e("CLE_ASS", "89") +
                        e("RGG_COD", "01") + e("RTT_CAI", "751") + e("RTT_UGE", "0000");
    for (std::size_t i = 0; i < cas.size(); ++i) {
        carte += "<Beneficiaire>" + e("NOM_USG", cas[i].nom) + e("PRM_USG", cas[i].prenom) +
                 e("NAI_BEN", "1980010" + std::to_string(i)) + e("BEN_RNG", std::to_string(i + 1)) +
                 e("BEN_QLT", "0" + std::to_string(i)) + e("COD_SEB", cas[i].cod_seb) + "<MUT>" +
                 e("MUT_NUM", cas[i].mut_num) + "</MUT><COMP>" + e("CPL_NU2", cas[i].cpl_nu2) +
                 e("ADH_NUM", "ADH'\"" + std::to_string(i)) + "</COMP></Beneficiaire>";
    }
    reponse(carte + "</contexteCVitale>");

    EXPECT_TRUE(lancer([](sv140::Run& r) { return Stocker_Liste_Beneficiaires(r); }));

    Lignes l = lignes(hote,
                      "SELECT [Nom du Verre], Couleur, Diamètre, Fournisseur, Rubrique1, "
                      "[Plage-Mini], Rubrique2, [Code Liaison Vidéo], Cod_Commande, Num_Adherent "
                      "FROM [Sélection Verres];");
    ASSERT_EQ(l.size(), cas.size());
    for (std::size_t i = 0; i < cas.size(); ++i) {
        SCOPED_TRACE(i);
        const std::string n = std::to_string(i);
        EXPECT_EQ(l[i],
                  (std::vector<std::string>{cas[i].nom_ecrit, cas[i].prenom, n, "150037512345678",
                                            "1980010" + n, std::to_string(i + 1), "017510000",
                                            "017510000", cas[i].cod_commande, "ADH'\"" + n}));
    }
}

// ---------------------------------------------------------------------------------------
// f_MettreAJourIdEtc: the chosen beneficiary's card.

std::string beneficiaire(const std::string& nai_ben, const std::string& rang,
                         const std::string& prenom, const std::string& droits = "") {
    return "<Beneficiaire>" + e("NOM_USG", "D'Artagnan \"le\" ; ]#") + e("NOM_PAT", "Gascon") +
           e("PRM_USG", prenom) + e("ADR_LN1", "1 rue de l'Église") + e("NAI_BEN", nai_ben) +
           e("BEN_RNG", rang) + e("BEN_QLT", "00") + e("COD_SEB", "13") + "<MUT>" +
           e("MUT_NUM", "0123") + "</MUT><COMP>" + e("CPL_NU2", "7'7") + e("IDT_HOT", "hôte") +
           e("NOM_DOM", "dom\"aine") + e("RUF_COMP", "x'y") + "</COMP>" + droits +
           "</Beneficiaire>";
}

std::string carte_vitale(const std::string& beneficiaires) {
    return "<contexteCVitale>" + e("TYP_CART", "1") + e("VIT_NSER", "12345678") + "<ADM>" +
           e("FDV_CRT", "0") + "</ADM>" + e("NIR_ASS", "1500375123456") + e("CLE_ASS", "89") +
           e("RGG_COD", "01") + "<AT>" + e("ORG_GE1", "AT1") + "</AT>" + e("NB_BEN", "3") +
           beneficiaires + "</contexteCVitale>";
}

constexpr const char* kCarteStockee =
    "SELECT Info_ETC_ID_FK, Info_CV_VIT_NSER, Info_CV_NIR_ASS, Info_CV_CLE_ASS, "
    "Info_CV_NAI_BEN, Info_CV_BEN_RNG, Info_CV_PRM_USG, Info_CV_NOM_USG, Info_CV_ADR_LN1, "
    "Info_CV_NB_BENEF, Info_CV_ORG_GE1, Info_CV_MUT_NUM, Info_CV_CPL_NU2, Info_CV_ID_HOT, "
    "Info_CV_NOM_DOM, Info_CV_RUF_COMP, Info_CV_RUF_ADM FROM T_InfosCarteVitale ORDER BY "
    "Info_CV_ID;";

TEST_F(Cartes, CarteInsereePuisMiseAJour) {
    reponse(carte_vitale(beneficiaire("19500312", "1", "Charles")));
    client("42", "1999999999999 77", "1950-03-12 00:00:00", "1", "NULL");
    EXPECT_TRUE(lancer([](sv140::Run& r) { return Stocker_Carte_Vitale(r); }));

    // Absent elements and the columns never filled are stored empty.
    // clang-format off
    std::vector<std::string> inseree{"42", "12345678 ", "1500375123456", "89", "19500312", "1",
        "Charles", "D'Artagnan \"\"le\"\" ; ]#", "1 rue de l'Église", "3", "AT1", "0123", "7'7",
        "", "dom\"\"aine", "x'y", ""};
    // clang-format on
    EXPECT_EQ(lignes(pont, kCarteStockee), Lignes{inseree});

    // The host links the same card to another client: the row is kept and the serial
    // number is written without the blank the insert left.
    client("43", "", "1950-03-12", "1", "''");
    EXPECT_TRUE(lancer([](sv140::Run& r) { return Stocker_Carte_Vitale(r); }));
    std::vector<std::string> mise_a_jour = inseree;
    mise_a_jour[0] = "43";
    mise_a_jour[1] = "12345678";
    EXPECT_EQ(lignes(pont, kCarteStockee), Lignes{mise_a_jour});
}

TEST_F(Cartes, BeneficiaireChoisiParDateEtRangDuClient) {
    reponse(carte_vitale(
        beneficiaire("19500312", "1", "Premier") + beneficiaire("19501331", "1", "Calendrier") +
        beneficiaire("19500312", "2", "Jumeau") + beneficiaire("1950120'", "1", "Apostrophe") +
        beneficiaire("19500312", "1'\"]", "Guillemets")));
    struct Cas {
        std::string date, rang, divers, prenom;  // "" when no beneficiary matches
    };
    const std::vector<Cas> cas = {
        {"1950-03-12 00:00:00", "1", "NULL", "Premier"},
        {"1950-03-12", "2", "''", "Jumeau"},
        {"1950-03-12", "1", "'Divers !'", "Premier"},
        // The card's own day and month, 31 and 13, that no calendar has.
        {"1950-01-01 00:00:00", "1", "'!3113'", "Calendrier"},
        {"1950-01-01", "1", "'!0''12'", "Apostrophe"},
        {"1950-03-12", "'1''\"]'", "NULL", "Guillemets"},
        {"1950-03-12", "3", "NULL", ""},
        {"1951-03-12", "1", "NULL", ""},
    };
    for (std::size_t i = 0; i < cas.size(); ++i) {
        SCOPED_TRACE(i);
        executer(pont, "DELETE FROM T_InfosCarteVitale;");
        client(std::to_string(i + 1), "", cas[i].date, cas[i].rang, cas[i].divers);
        EXPECT_EQ(lancer([](sv140::Run& r) { return Stocker_Carte_Vitale(r); }),
                  !cas[i].prenom.empty());
        Lignes l = lignes(pont, "SELECT Info_ETC_ID_FK, Info_CV_PRM_USG FROM T_InfosCarteVitale;");
        if (cas[i].prenom.empty()) {
            EXPECT_TRUE(l.empty());
        } else {
            EXPECT_EQ(l, (Lignes{{std::to_string(i + 1), cas[i].prenom}}));
        }
    }
}

TEST_F(Cartes, DroitsDuBeneficiaireDansNeufCreneaux) {
    std::string amo = "<DRT_AMO>" + e("NB_DRT_AMO", "11");
    for (int i = 1; i <= 11; ++i) {
        amo += e("DAMO_DEB", "D" + std::to_string(i)) + e("DAMO_FIN", "F" + std::to_string(i));
    }
    amo += "</DRT_AMO>";
    const std::string cc = "<DRT_CC>" + e("NB_DRT_CC", "0") + e("CC_DEB", "20200101") +
                           e("CC_FIN", "20201231") + e("COD_ALD", "1") + e("COD_SITU", "2") +
                           "</DRT_CC>";
    const std::string mut = "<MUT><DRT_MUT>" + e("NB_DRT_MUT", "2") + e("DMUT_DEB", "M1") +
                            e("DMUT_FIN", "N1") + e("DMUT_DEB", "M'2") + e("DMUT_FIN", "N2") +
                            "</DRT_MUT></MUT>";
    reponse(carte_vitale(beneficiaire("19500312", "1", "Charles", amo + cc + mut)));
    client("7", "", "1950-03-12", "1", "NULL");

    const char* droits =
        "SELECT Info_CV_NB_DRT_AMO, Info_CV_DAMO_DEB_1, Info_CV_DAMO_DEB_9, Info_CV_DAMO_FIN_9, "
        "Info_CV_NB_DRT_CC, Info_CV_CC_DEB_1, Info_CV_COD_SITU_1, Info_CV_NB_DRT_MUT, "
        "Info_CV_DMUT_DEB_2, Info_CV_DMUT_FIN_2, Info_CV_DMUT_DEB_3 FROM T_InfosCarteVitale;";
    struct Cas {
        int version;
        std::vector<std::string> attendu;
    };
    const std::vector<Cas> cas = {
        // Older host databases have no rights columns to fill.
        {3599, {"", "", "", "", "", "", "", "", "", "", ""}},
        // Eleven periods, nine slots; a count of 0 leaves the slots empty even though
        // the card holds periods.
        {3600, {"11", "D1", "D9", "F9", "0", "", "", "2", "M'2", "N2", ""}},
    };
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.version);
        executer(pont, "DELETE FROM T_InfosCarteVitale;");
        version(c.version);
        EXPECT_TRUE(lancer([](sv140::Run& r) { return Stocker_Carte_Vitale(r); }));
        EXPECT_EQ(lignes(pont, droits), Lignes{c.attendu});
    }
}

TEST_F(Cartes, NomDuPorteurPourLaFacture) {
    reponse(carte_vitale(beneficiaire("19500312", "1", "Ché'rie")));
    client("1", "", "1950-03-12", "1", "NULL");
    ASSERT_TRUE(lancer([](sv140::Run& r) { return Stocker_Carte_Vitale(r); }));

    struct Cas {
        std::string nir, date, nom, prenom;
    };
    const std::vector<Cas> cas = {
        {"1500375123456", "19500312", "D'Artagnan \"\"le\"\" ; ]#", "Ché'rie"},
        {"1500375123456", "19500313", "inchangé", "inchangé"},
        {"15003751234'", "19500312", "inchangé", "inchangé"},
    };
    for (const Cas& c : cas) {
        std::string nom = "inchangé", prenom = "inchangé";
        lancer([&](sv140::Run& r) { Lire_Nom_Porteur(r, c.nir, "89", c.date, "1", nom, prenom); });
        EXPECT_EQ(nom, c.nom);
        EXPECT_EQ(prenom, c.prenom);
    }
}

// ---------------------------------------------------------------------------------------
// Unreadable documents: the host reads a code 99 answer instead.

TEST_F(Cartes, DocumentIllisible) {
    struct Cas {
        bool (*routine)(sv140::Run&);
        const char *appelant, *libelle;
    };
    const std::vector<Cas> cas = {
        {Stocker_Liste_Beneficiaires, "f_LireCVitale", "Impossible de lire ZEMO_SvResponse.xml"},
        {Stocker_Carte_Vitale, "f_LireCVitale", "Impossible de lire ZEMO_SvResponse.xml"},
        {Stocker_CPS, "f_LireCPS", "Impossible de lire ZEMO_SvResponse.xml"},
        {Stocker_Version, "f_LireCPS", "Impossible de lire ZEMO_SvResponse.xml"},
        {[](sv140::Run& r) {
             Requete_f_LireInfosComplementaire(r);
             return false;
         },
         "f_LireInfosComplementaire", "Impossible de lire ZEMO_Request.xml"},
    };
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.appelant);
        test::ecrire(programme + "/ZEMO_SvResponse.xml", "<ZRMESSAGE><resultat>");
        test::ecrire(programme + "/ZEMO_Request.xml", "<BelvaneClassicII>");
        EXPECT_FALSE(lancer(c.routine));
        XmlDocument doc;
        ASSERT_TRUE(doc.charger_fichier(programme + "/ZEMO_SvResponse.xml"));
        EXPECT_EQ(doc.racine().texte_de("appelant"), c.appelant);
        EXPECT_EQ(doc.racine().texte_de("resultat/codeErreur"), "99");
        EXPECT_EQ(doc.racine().texte_de("resultat/libelleErreur"), c.libelle);
    }
}

// ---------------------------------------------------------------------------------------
// f_LireCPS and f_LireVersion.

std::string situation(const std::string& numero, const std::string& raison) {
    return "<situation>" + e("NUM_SIT", numero) + e("MODE_EXE", "0") + e("RAIS_STR", raison) +
           e("NUM_IDFACPS", "1234567") + e("CLE_IDFACPS", "8") + e("H_SIGN_LOT", "h'") +
           "</situation>";
}

TEST_F(Cartes, CarteDuProfessionnelEtSesSituations) {
    const char* situations =
        "SELECT InfoSituation_CPS_ID, Info_CPS_ID_FK, InfoSituation_CPS_NUM_SIT, "
        "InfoSituation_RAIS_STR, InfoSituation_H_SIGN_LOT FROM T_InfosSituation_CPS;";
    reponse("<contextePS>" + e("NUM_IDN", "99900012345") + e("PNOM_PRAT", "Zoé") +
            situation("1", "L'Optique d'Élise, au coin de la rue du Marché") +
            situation("2", "Annexe") + "</contextePS>");
    EXPECT_TRUE(lancer([](sv140::Run& r) { return Stocker_CPS(r); }));
    // Apostrophes become blanks, then 30 characters are kept.
    EXPECT_EQ(lignes(pont, situations),
              (Lignes{{"1", "1", "1", "L Optique d Élise, au coin de ", "h'"},
                      {"2", "1", "2", "Annexe", "h'"}}));

    // A second card with fewer situations: only its own remain.
    reponse("<contextePS>" + e("TYP_CPS", "1") + e("NUM_IDN", "99900054321") +
            e("NOM_PRAT", "L'Opticien") + situation("3", "Été'") + "</contextePS>");
    EXPECT_TRUE(lancer([](sv140::Run& r) { return Stocker_CPS(r); }));
    EXPECT_EQ(lignes(pont,
                     "SELECT Info_CPS_ID, Info_CPS_TYP_CPS, Info_CPS_NUM_IDN, Info_CPS_NOM_PRAT, "
                     "Info_CPS_PNOM_PRAT FROM T_InfosCPS;"),
              (Lignes{{"1", "1", "99900054321", "L'Opticien", ""}}));
    EXPECT_EQ(lignes(pont, situations), (Lignes{{"3", "1", "3", "Été ", "h'"}}));
}

TEST_F(Cartes, VersionsInsereesPuisMisesAJour) {
    const char* versions =
        "SELECT Info_Version_ID, Info_Version_VersionDLL, Info_Version_numSerie, "
        "Info_Version_crcAppli FROM T_InfosVersion;";
    for (const std::string dll : {"1.40'a", "1.41"}) {
        reponse("<donneesVersion>" + e("versionDll", dll) + "<infosLecteur>" +
                e("numSerie", "S-" + dll) + "<appliSV>" + e("crcAppli", "ABCD") +
                "</appliSV></infosLecteur></donneesVersion>");
        EXPECT_TRUE(lancer([](sv140::Run& r) { return Stocker_Version(r); }));
        EXPECT_EQ(lignes(pont, versions), (Lignes{{"1", dll, "S-" + dll, "ABCD"}}));
    }
}

// ---------------------------------------------------------------------------------------
// f_LireInfosComplementaire.

TEST_F(Cartes, RequeteComplementaire) {
    executer(pont, "INSERT INTO T_InfosCPS ( Info_CPS_ID, Info_CPS_NUM_IDN ) VALUES ( 1, '999' );");
    executer(pont,
             "INSERT INTO T_InfosSituation_CPS ( InfoSituation_CPS_ID, InfoSituation_CPS_NUM_SIT, "
             "InfoSituation_NUM_IDFACPS, InfoSituation_CLE_IDFACPS ) VALUES ( 1, '1', '1234567', "
             "'8' );");
    struct Cas {
        std::string donneesTP, numero;
    };
    const std::vector<Cas> cas = {
        {e("numeroMutuelle", "099999997"), "99999997"},
        {e("numeroMutuelle", "0999999970"), "0999999970"},
        {"", ""},
    };
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.numero);
        // Two beneficiaries: the codes of the last one are sent.
        test::ecrire(
            programme + "/ZEMO_Request.xml",
            "<BelvaneClassicII><beneficiaire>" + e("codeRegime", "08") + e("codeCaisse", "111") +
                e("codeCentre", "1111") + "</beneficiaire><beneficiaire>" + e("codeRegime", "01") +
                e("codeCaisse", "751") + e("codeCentre", "0000") + "</beneficiaire><donneesTP>" +
                c.donneesTP + "</donneesTP></BelvaneClassicII>");
        lancer([](sv140::Run& r) { Requete_f_LireInfosComplementaire(r); });
        XmlDocument doc;
        ASSERT_TRUE(doc.charger_fichier(programme + "/ZEMO_SvRequest.xml"));
        std::vector<std::string> elements;
        for (const XmlNoeud& n :
             doc.selectionner("/ZRMESSAGE/requete/fonction/f_LireInfosComplementaire//*")) {
            elements.push_back(n.selectionner("*").empty() ? n.nom() + "=" + n.texte() : n.nom());
        }
        EXPECT_EQ(elements,
                  (std::vector<std::string>{
                      "versionMessage=0001", "PS", "idNat=999", "idFac=12345678", "numSitu=1",
                      "offre=ITSV", "donneesComplementaire", "numeroComplementaire=" + c.numero,
                      "codeRegime=01", "codeCaisse=751", "codeCentre=0000"}));
    }
}

TEST_F(Cartes, EchangeComplementaireConserve) {
    test::ecrire(programme + "/ZEMO_SvRequest.xml", "requete");
    test::ecrire(programme + "/ZEMO_SvRequestAMC.xml", "ancienne requete");
    test::ecrire(programme + "/ZEMO_SvResponseAMC.xml", "ancienne reponse");
    lancer(Conserver_Echange_AMC);
    EXPECT_EQ(test::lire(programme + "/ZEMO_SvRequestAMC.xml"), "requete");
    // No answer to keep: the previous copy stays as it was.
    EXPECT_EQ(test::lire(programme + "/ZEMO_SvResponseAMC.xml"), "ancienne reponse");

    test::ecrire(programme + "/ZEMO_SvResponse.xml", "reponse");
    lancer(Conserver_Echange_AMC);
    EXPECT_EQ(test::lire(programme + "/ZEMO_SvResponseAMC.xml"), "reponse");
}

}  // namespace
}  // namespace sv140
