// Each middleware function against the demo state: what a request must hold, and the
// element paths the bridge reads in each answer.
#include <gtest/gtest.h>

#include <vector>

#include "appel_sim.h"
#include "platform/systeme.h"
#include "sim/etat.h"
#include "sim/fonctions.h"

namespace sv140::sim::test {
namespace {

enum class Cps { Presente, Absente };

struct Cas {
    const char* nom;
    Cps cps;
    const char* carte;  // in the reader, "" for none
    std::string requete;
    int code;
    std::vector<std::string> chemins;  // each must select at least one node
};

const std::string kDate = "<dateLecture>20240305</dateLecture>";
const std::string kAmc =
    "<offre>ITSV</offre><donneesComplementaire><numeroComplementaire>99999997"
    "</numeroComplementaire><codeRegime>01</codeRegime><codeCaisse>751</codeCaisse>"
    "<codeCentre>0441</codeCentre></donneesComplementaire>";
const std::string kAmcSansNumero =
    "<offre>ITSV</offre><donneesComplementaire><numeroComplementaire></numeroComplementaire>"
    "<codeRegime>01</codeRegime></donneesComplementaire>";

const std::string kVersion = "/ZRMESSAGE/resultat/donnees/donneesVersion/";
const std::string kPs = "/ZRMESSAGE/resultat/donnees/contextePS/";
const std::string kCv = "/ZRMESSAGE/resultat/donnees/contexteCVitale/";

std::vector<Cas> cas() {
    const std::string ps_init = bloc_ps(kIdNat, kIdFacSituation2, "2", kIdNat);
    return {
        {"version sans aucun etat",
         Cps::Absente,
         "",
         requete("f_LireVersion"),
         0,
         {kVersion + "versionDll", kVersion + "versionCDC", kVersion + "versionReferentiel",
          kVersion + "infosLecteur/constructeur", kVersion + "infosLecteur/typeLecteur",
          kVersion + "infosLecteur/numSerie", kVersion + "infosLecteur/typeOS",
          kVersion + "infosLecteur/appliSV/nomAppli", kVersion + "infosLecteur/appliSV/numVersion",
          kVersion + "infosLecteur/appliSV/dateAppli", kVersion + "infosLecteur/appliSV/heureAppli",
          kVersion + "infosLecteur/appliSV/crcAppli"}},
        {"CPS lue",
         Cps::Presente,
         "",
         requete("f_LireCPS"),
         0,
         {kPs + "TYP_CPS", kPs + "TYP_IDN", kPs + "NUM_IDN", kPs + "CLE_IDN", kPs + "COD_CIV",
          kPs + "NOM_PRAT", kPs + "PNOM_PRAT", kPs + "situation[2]/RAIS_STR",
          kPs + "situation[NUM_SIT='2']/NUM_IDFACPS", kPs + "situation/CLE_IDFACPS",
          kPs + "situation/H_SIGN_LOT"}},
        {"CPS absente", Cps::Absente, "", requete("f_LireCPS"), kCPSAbsente, {}},
        {"initialisation situation 2",
         Cps::Presente,
         "",
         requete("f_InitialisationPS", ps_init),
         0,
         {"/ZRMESSAGE/resultat/donnees"}},
        {"initialisation situation 1 sur 01",
         Cps::Presente,
         "",
         requete("f_InitialisationPS", bloc_ps(kIdNat, kIdFacSituation1, "01", kIdNat)),
         0,
         {}},
        {"initialisation sans CPS",
         Cps::Absente,
         "",
         requete("f_InitialisationPS", ps_init),
         kCPSAbsente,
         {}},
        {"initialisation sans bloc PS",
         Cps::Presente,
         "",
         requete("f_InitialisationPS"),
         kBlocPSAbsent,
         {}},
        {"identifiants vides (CPS jamais lue par le pont)",
         Cps::Presente,
         "",
         requete("f_InitialisationPS", bloc_ps("", "", "1", "")),
         kIdNatInconnu,
         {}},
        {"idNat d'un autre professionnel",
         Cps::Presente,
         "",
         requete("f_InitialisationPS", bloc_ps("991234568", kIdFacSituation2, "2", "991234568")),
         kIdNatInconnu,
         {}},
        {"idFac d'une autre situation",
         Cps::Presente,
         "",
         requete("f_InitialisationPS", bloc_ps(kIdNat, kIdFacSituation1, "2", kIdNat)),
         kIdFacInconnu,
         {}},
        {"situation inconnue",
         Cps::Presente,
         "",
         requete("f_InitialisationPS", bloc_ps(kIdNat, kIdFacSituation1, "3", kIdNat)),
         kSituationInconnue,
         {}},
        {"initialisation sans numSitu",
         Cps::Presente,
         "",
         requete("f_InitialisationPS", bloc_ps(kIdNat, kIdFacSituation1, "", kIdNat)),
         kSituationInconnue,
         {}},
        {"mot de passe faux",
         Cps::Presente,
         "",
         requete("f_InitialisationPS", bloc_ps(kIdNat, kIdFacSituation1, "1", "0000")),
         kCodePorteurErrone,
         {}},
        {"mise a jour des versions",
         Cps::Presente,
         "",
         requete("f_MaJVersion", bloc_ps(kIdNat, kIdFacSituation1, "1")),
         0,
         {kVersion + "infosLecteur/appliSV/crcAppli"}},
        {"liste des factures, idFac d'une des situations",
         Cps::Presente,
         "",
         requete("f_ListerFactures", bloc_ps(kIdNat, kIdFacSituation2)),
         0,
         {"/ZRMESSAGE/resultat/donnees/listeFacture"}},
        {"liste des factures, idFac tronque",
         Cps::Presente,
         "",
         requete("f_ListerFactures", bloc_ps(kIdNat, "99100123")),
         kIdFacInconnu,
         {}},
        {"carte Vitale lue",
         Cps::Absente,
         "famille",
         requete("f_LireCVitale", kDate),
         0,
         {kCv + "VIT_NSER", kCv + "ADM/FDV_CRT", kCv + "NIR_ASS", kCv + "AT/IDT_AT2",
          kCv + "NB_BEN", kCv + "Beneficiaire[4]/COMP/RUF_COMP"}},
        {"lecteur vide",
         Cps::Presente,
         "",
         requete("f_LireCVitale", kDate),
         kCarteVitaleAbsente,
         {}},
        {"date de lecture absente",
         Cps::Absente,
         "famille",
         requete("f_LireCVitale"),
         kDateLectureInvalide,
         {}},
        {"mise a jour de la carte",
         Cps::Absente,
         "ald",
         requete("f_MettreAJourCV"),
         0,
         {kCv + "Beneficiaire/DRT_CC/COD_ALD"}},
        {"mise a jour sans carte",
         Cps::Presente,
         "",
         requete("f_MettreAJourCV"),
         kCarteVitaleAbsente,
         {}},
        {"complementaire",
         Cps::Presente,
         "",
         requete("f_LireInfosComplementaire", bloc_ps(kIdNat, kIdFacSituation1, "1") + kAmc),
         0,
         {"/ZRMESSAGE/resultat/donnees/reponseComplementaire[numeroComplementaire='99999997']"
          "/droitsAMC/garantie"}},
        {"complementaire sans numero",
         Cps::Presente,
         "",
         requete("f_LireInfosComplementaire",
                 bloc_ps(kIdNat, kIdFacSituation1, "1") + kAmcSansNumero),
         kComplementaireIncomplet,
         {}},
        {"fonction inconnue", Cps::Presente, "", requete("f_Inexistante"), kFonctionInconnue, {}},
        {"versionMessage absent",
         Cps::Presente,
         "",
         requete("f_LireVersion", "", false),
         kVersionMessageAbsente,
         {}},
        {"requete qui n'est pas du XML", Cps::Presente, "", "f_LireVersion", kRequeteIllisible, {}},
        {"requete sans fonction",
         Cps::Presente,
         "",
         "<?xml version='1.0' encoding='ISO-8859-1'?><ZRMESSAGE><requete/></ZRMESSAGE>",
         kFonctionAbsente,
         {}},
        {"recuperation sans message en attente",
         Cps::Presente,
         "",
         requete("f_RecupMessage", "<ordreEnErreur>f_LireCVitale</ordreEnErreur>"),
         kAucunMessage,
         {}},
    };
}

TEST(Fonctions, RequetesEtReponses) {
    for (const Cas& c : cas()) {
        SCOPED_TRACE(c.nom);
        DossierTemporaire dossier;
        const std::string zrsim = dossier.sous("zrsim");
        std::string erreur;
        ASSERT_TRUE(Initialiser_Etat_Demo(zrsim, erreur)) << erreur;
        ASSERT_TRUE(Inserer_Carte(zrsim, c.carte, erreur)) << erreur;
        if (c.cps == Cps::Absente) {
            supprimer_fichier(joindre(zrsim, "cps.xml"));
        }

        const Resultat r = appeler(zrsim, c.requete);
        ASSERT_EQ(r.retour, 0);
        ASSERT_TRUE(r.lisible) << r.brut;
        EXPECT_EQ(r.code(), std::to_string(c.code)) << r.libelle();
        EXPECT_EQ(r.libelle().empty(), c.code == 0) << r.libelle();
        for (const std::string& chemin : c.chemins) {
            EXPECT_GE(r.nombre(chemin), 1u) << chemin;
        }
        if (c.code != 0) {
            EXPECT_EQ(r.nombre("/ZRMESSAGE/resultat/donnees"), 0u);
        }
    }
}

TEST(Fonctions, RequeteSansDeclarationLueDansLaPageDeCodeDuPoste) {
    DossierTemporaire dossier;
    const std::string zrsim = dossier.sous("zrsim");
    std::string erreur;
    ASSERT_TRUE(Initialiser_Etat_Demo(zrsim, erreur)) << erreur;
    std::string texte = requete("f_LireInfosComplementaire",
                                bloc_ps(kIdNat, kIdFacSituation1, "1") +
                                    "<offre>ITSV</offre><donneesComplementaire>"
                                    "<numeroComplementaire>Mutuelle €é</numeroComplementaire>"
                                    "</donneesComplementaire>");
    texte.erase(0, texte.find("<ZRMESSAGE>"));
    const Resultat r = appeler(zrsim, texte);
    ASSERT_TRUE(r.lisible) << r.brut;
    EXPECT_EQ(r.code(), "0") << r.libelle();
    EXPECT_EQ(r.doc.selectionner_un("//numeroComplementaire").texte(), "Mutuelle €é");
}

// The bridge keeps the middleware's prolog as it finds it: the three forms it meets
// must all occur, and every answer must survive its cleaning.
TEST(Fonctions, EnveloppesVariees) {
    DossierTemporaire dossier;
    const std::string zrsim = dossier.sous("zrsim");
    std::string erreur;
    ASSERT_TRUE(Initialiser_Etat_Demo(zrsim, erreur)) << erreur;
    bool doctype_seul = false, declaration_seule = false, les_deux = false;
    for (const char* op : {"f_LireCPS", "f_LireVersion", "f_LireInfosComplementaire"}) {
        const Resultat r = appeler(zrsim, requete(op));
        ASSERT_TRUE(r.lisible) << r.brut;
        const bool doctype = r.brut.find("<!DOCTYPE ZRMESSAGE>\r\n") != std::string::npos;
        const bool declaration = r.brut.starts_with("<?xml version=");
        doctype_seul |= doctype && !declaration;
        declaration_seule |= declaration && !doctype;
        les_deux |= declaration && doctype;
        EXPECT_NE(r.brut.find("</appelant>\r\n<resultat>\r\n"), std::string::npos) << r.brut;
    }
    EXPECT_TRUE(doctype_seul);
    EXPECT_TRUE(declaration_seule);
    EXPECT_TRUE(les_deux);
}

}  // namespace
}  // namespace sv140::sim::test
