// The demo Vitale cards as the bridge reads them from f_LireCVitale answers.
#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "appel_sim.h"
#include "platform/systeme.h"
#include "sim/cartes_demo.h"
#include "sim/etat.h"
#include "sim/fonctions.h"

namespace sv140::sim::test {
namespace {

const char* const kContexte = "/ZRMESSAGE/resultat/donnees/contexteCVitale";

// Every element the bridge reads by name from a card context and from each beneficiary.
const char* const kElementsContexte[] = {
    "TYP_CART",   "VIT_NSER",   "ADM/FDV_CRT", "ADM/RUF1_ADM", "ADM/RUF2_ADM",
    "NIR_ASS",    "CLE_ASS",    "RGG_COD",     "RTT_CAI",      "RTT_UGE",
    "COD_GES",    "RUF_FAM",    "COD_SEF",     "DEB_SEF",      "FIN_SEF",
    "AT/ORG_GE",  "AT/GST_CD",  "AT/IDT_AT",   "AT/ORG_GE1",   "AT/GST_CD1",
    "AT/IDT_AT1", "AT/ORG_GE2", "AT/GST_CD2",  "AT/IDT_AT2",   "NB_BEN"};
const char* const kElementsBeneficiaire[] = {"NOM_USG",
                                             "NOM_PAT",
                                             "PRM_USG",
                                             "ADR_LN1",
                                             "ADR_LN2",
                                             "ADR_LN3",
                                             "ADR_LN4",
                                             "ADR_LN5",
                                             "NIR_CER",
                                             "CLE_CER",
                                             "DAT_CER",
                                             "NAI_BEN",
                                             "BEN_RNG",
                                             "BEN_QLT",
                                             "COD_SEB",
                                             "DEB_SEB",
                                             "FIN_SEB",
                                             "MUT/MUT_NUM",
                                             "MUT/CONT_MUT",
                                             "MUT/TRT_MUT",
                                             "MUT/TYP_MUT",
                                             "MUT/SER_MUT",
                                             "MUT/IND_STS",
                                             "COMP/CPL_NU2",
                                             "COMP/CPL_EDI",
                                             "COMP/ADH_NUM",
                                             "COMP/TRT_AMC",
                                             "COMP/CPL_DEB",
                                             "COMP/CPL_FIN",
                                             "COMP/ROU_FLX",
                                             "COMP/IDT_HOT",
                                             "COMP/NOM_DOM",
                                             "COMP/IND_STS_AMC",
                                             "COMP/TYP_SER",
                                             "COMP/SER_CRT",
                                             "COMP/RUF_COMP",
                                             "DRT_AMO/NB_DRT_AMO",
                                             "DRT_CC/NB_DRT_CC",
                                             "MUT/DRT_MUT/NB_DRT_MUT"};

// Each count element and the repeated elements it counts.
const std::pair<const char*, std::vector<const char*>> kCompteurs[] = {
    {"DRT_AMO/NB_DRT_AMO", {"DRT_AMO/DAMO_DEB", "DRT_AMO/DAMO_FIN"}},
    {"DRT_CC/NB_DRT_CC", {"DRT_CC/CC_DEB", "DRT_CC/CC_FIN", "DRT_CC/COD_ALD", "DRT_CC/COD_SITU"}},
    {"MUT/DRT_MUT/NB_DRT_MUT", {"MUT/DRT_MUT/DMUT_DEB", "MUT/DRT_MUT/DMUT_FIN"}},
};

bool chiffres(const std::string& t, std::size_t n) {
    return t.size() == n && t.find_first_not_of("0123456789") == std::string::npos;
}

class Cartes : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string erreur;
        ASSERT_TRUE(Initialiser_Etat_Demo(zrsim_, erreur)) << erreur;
    }
    Resultat lire(const std::string& id) {
        std::string erreur;
        EXPECT_TRUE(Inserer_Carte(zrsim_, id, erreur)) << erreur;
        Resultat r =
            appeler(zrsim_, requete("f_LireCVitale", "<dateLecture>20240305</dateLecture>"));
        EXPECT_TRUE(r.lisible) << r.brut;
        EXPECT_EQ(r.code(), "0") << r.libelle();
        return r;
    }

    DossierTemporaire dossier_;
    std::string zrsim_ = dossier_.sous("zrsim");
};

TEST_F(Cartes, ChaqueCarteEstCoherente) {
    for (const char* id : kCartesDemo) {
        SCOPED_TRACE(id);
        const Resultat r = lire(id);
        const XmlNoeud contexte = r.doc.selectionner_un(kContexte);
        ASSERT_TRUE(contexte);
        for (const char* e : kElementsContexte) {
            EXPECT_EQ(contexte.selectionner(e).size(), 1u) << e;
        }
        const std::string nir = contexte.texte_de("NIR_ASS");
        EXPECT_TRUE(chiffres(nir, 13)) << nir;
        EXPECT_EQ(contexte.texte_de("CLE_ASS"), cle_nir(nir));

        const auto beneficiaires = contexte.selectionner("Beneficiaire");
        EXPECT_EQ(contexte.texte_de("NB_BEN"), std::to_string(beneficiaires.size()));
        std::set<std::pair<std::string, std::string>> naissances;
        for (const XmlNoeud& b : beneficiaires) {
            for (const char* e : kElementsBeneficiaire) {
                EXPECT_EQ(b.selectionner(e).size(), 1u) << e;
            }
            for (const auto& [compteur, repetes] : kCompteurs) {
                for (const char* repete : repetes) {
                    EXPECT_EQ(b.texte_de(compteur), std::to_string(b.selectionner(repete).size()))
                        << repete;
                }
            }
            EXPECT_TRUE(chiffres(b.texte_de("NAI_BEN"), 8));
            EXPECT_GE(std::stoi(b.texte_de("BEN_RNG")), 1);
            if (!b.texte_de("NIR_CER").empty()) {
                EXPECT_EQ(b.texte_de("CLE_CER"), cle_nir(b.texte_de("NIR_CER")));
            }
            // The bridge picks a beneficiary by birth date and rank: they must be unique.
            EXPECT_TRUE(naissances.emplace(b.texte_de("NAI_BEN"), b.texte_de("BEN_RNG")).second)
                << b.texte_de("PRM_USG");
        }
    }
}

TEST_F(Cartes, CasParticuliers) {
    const struct {
        const char* carte;
        const char* xpath;  // relative to the card context
        std::size_t nombre;
    } cas[] = {
        {"famille", "Beneficiaire", 4},
        {"famille", "Beneficiaire[NAI_BEN='20120914'][BEN_RNG='1']", 1},
        {"famille", "Beneficiaire[NAI_BEN='20120914'][BEN_RNG='2']", 1},
        {"ald", "Beneficiaire/DRT_CC[NB_DRT_CC='2']/COD_ALD[.!='']", 2},
        {"periodes", "Beneficiaire[DRT_AMO/NB_DRT_AMO='11']/DRT_AMO/DAMO_DEB", 11},
        {"accents", "Beneficiaire", 3},
        {"vide", "Beneficiaire", 0},
        {"douze", "Beneficiaire", 12},
        {"mutuelle", "Beneficiaire[COD_SEB='13'][COMP/CPL_NU2=''][MUT/MUT_NUM!='']", 1},
        {"mutuelle", "Beneficiaire[COMP/CPL_NU2!='']", 1},
    };
    for (const auto& c : cas) {
        const Resultat r = lire(c.carte);
        EXPECT_EQ(r.doc.racine()
                      .selectionner_un("resultat/donnees/contexteCVitale")
                      .selectionner(c.xpath)
                      .size(),
                  c.nombre)
            << c.carte << " " << c.xpath;
    }
}

TEST_F(Cartes, AccentsEnOctetsLatin1EtGuillemetsIntacts) {
    const Resultat r = lire("accents");
    EXPECT_NE(r.brut.find("D'ARTAGNAN-LEF\xC8VRE"), std::string::npos);
    EXPECT_NE(r.brut.find("Zo\xE9 \"Zaza\""), std::string::npos);
    EXPECT_EQ(r.brut.find("\xC3"), std::string::npos) << "UTF-8 dans la réponse";
    const XmlNoeud assuree = r.doc.selectionner_un(std::string(kContexte) + "/Beneficiaire[1]");
    EXPECT_EQ(assuree.texte_de("NOM_USG"), "D'ARTAGNAN-LEFÈVRE");
    EXPECT_EQ(assuree.texte_de("PRM_USG"), "Zoé \"Zaza\"");
    std::string adresse;
    for (int i = 1; i <= 5; ++i) {
        adresse += assuree.texte_de("ADR_LN" + std::to_string(i));
    }
    for (const char* c : {";", "]", "#", "'"}) {
        EXPECT_NE(adresse.find(c), std::string::npos) << c;
    }
}

// A developer edits the library by hand, in either encoding the files may declare.
TEST_F(Cartes, CarteEcriteALaMainEnLatin1) {
    const std::string carte =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<contexteCVitale><NIR_ASS>1"
        "</NIR_ASS><NB_BEN>1</NB_BEN><Beneficiaire><NOM_USG>H\xC9LOU\xCF"
        "</NOM_USG></Beneficiaire></contexteCVitale>\n";
    ASSERT_TRUE(ecrire_fichier(joindre(zrsim_, "cartes/maison.xml"), carte));
    EXPECT_EQ(Cartes_Disponibles(zrsim_).size(), std::size(kCartesDemo) + 1);
    const Resultat r = lire("maison");
    EXPECT_NE(r.brut.find("H\xC9LOU\xCF"), std::string::npos);
    EXPECT_EQ(r.doc.selectionner_un("//NOM_USG").texte(), "HÉLOUÏ");
}

TEST_F(Cartes, CarteIllisible) {
    ASSERT_TRUE(ecrire_fichier(joindre(zrsim_, "cartes/abimee.xml"), "<contexteCVitale>"));
    std::string erreur;
    ASSERT_TRUE(Inserer_Carte(zrsim_, "abimee", erreur)) << erreur;
    const Resultat r =
        appeler(zrsim_, requete("f_LireCVitale", "<dateLecture>20240305</dateLecture>"));
    EXPECT_EQ(r.code(), std::to_string(kCarteVitaleIllisible));
}

}  // namespace
}  // namespace sv140::sim::test
