// The middleware simulator on its demo state, called in process: each function's result
// code, and long answers fetched again. What the bridge reads in the answers is checked
// by the black-box flows and the demo.
#include "banc.h"

namespace sv140::sim::test {
namespace {

struct Cas {
    const char* nom;
    std::string requete;
    int code;
    const char* carte = "";  // the Vitale card in the reader
    bool cps = true;         // the professional card in its reader
};

const std::string kAmc =
    "<offre>ITSV</offre><donneesComplementaire><numeroComplementaire>99999997</"
    "numeroComplementaire><codeRegime>01</codeRegime><codeCaisse>751</codeCaisse><codeCentre>0441"
    "</codeCentre></donneesComplementaire>";

TEST_F(Sim, RequetesEtReponses) {
    const auto init = [](auto... ps) { return requete("f_InitialisationPS", bloc_ps(ps...)); };
    const std::string ps1 = bloc_ps(kIdNat, kIdFac1, "1");
    const Cas cas[] = {
        {"versions sans aucune carte", requete("f_LireVersion"), 0, "", false},
        {"CPS", requete("f_LireCPS"), 0},
        {"CPS absente", requete("f_LireCPS"), kCPSAbsente, "", false},
        {"initialisation", init(kIdNat, kIdFac2, "2", kIdNat), 0},
        {"sans bloc PS", requete("f_InitialisationPS"), kBlocPSAbsent},
        {"autre idNat", init("991234568", kIdFac2, "2", "991234568"), kIdNatInconnu},
        {"idFac d'une autre situation", init(kIdNat, kIdFac1, "2", kIdNat), kIdFacInconnu},
        {"situation inconnue", init(kIdNat, kIdFac1, "3", kIdNat), kSituationInconnue},
        {"mot de passe faux", init(kIdNat, kIdFac1, "1", "0000"), kCodePorteurErrone},
        {"versions mises a jour", requete("f_MaJVersion", ps1), 0},
        {"factures", requete("f_ListerFactures", bloc_ps(kIdNat, kIdFac2)), 0},
        {"carte Vitale sans CPS", requete("f_LireCVitale", kDate), 0, "famille", false},
        {"lecteur vide", requete("f_LireCVitale", kDate), kCarteVitaleAbsente},
        {"sans date de lecture", requete("f_LireCVitale"), kDateLectureInvalide, "famille"},
        {"carte mise a jour", requete("f_MettreAJourCV"), 0, "ald", false},
        {"complementaire", requete("f_LireInfosComplementaire", ps1 + kAmc), 0},
        {"complementaire sans numero",
         requete("f_LireInfosComplementaire",
                 ps1 + "<donneesComplementaire><numeroComplementaire/></donneesComplementaire>"),
         kComplementaireIncomplet},
        {"fonction inconnue", requete("f_Inexistante"), kFonctionInconnue},
        {"sans versionMessage", requete("f_LireVersion", "", false), kVersionMessageAbsente},
        {"pas du XML", "f_LireVersion", kRequeteIllisible},
    };
    const std::string cps = joindre(zrsim_, "cps.xml");
    for (const Cas& c : cas) {
        SCOPED_TRACE(c.nom);
        std::string erreur;
        ASSERT_TRUE(Inserer_Carte(zrsim_, c.carte, erreur)) << erreur;
        std::error_code deja_en_place;  // the professional card is moved aside when absent
        std::filesystem::rename(c.cps ? cps + "-" : cps, c.cps ? cps : cps + "-", deja_en_place);
        const Resultat r = appeler(c.requete);
        ASSERT_EQ(r.retour, 0);
        EXPECT_EQ(r.code(), std::to_string(c.code)) << r.texte("libelleErreur");
        EXPECT_EQ(r.texte("libelleErreur").empty(), c.code == 0);
        EXPECT_EQ(r.doc.selectionner("/ZRMESSAGE/resultat/donnees").size(), c.code == 0 ? 1u : 0u);
    }
}

TEST_F(Sim, ReponseTropLongueRecupereeEnEntier) {
    const std::string complete = lire_carte("douze").brut;
    const int n = static_cast<int>(complete.size());

    const Resultat court = lire_carte("douze", 1024);
    EXPECT_EQ(court.code(), "271");
    EXPECT_EQ(court.texte("../appelant"), "f_LireCVitale");
    EXPECT_EQ(court.texte("libelleErreur"),
              "Taille de réponse insuffisante. Attendue: " + std::to_string(n) + " Trouvée: 1024");
    const std::string recup =
        requete("f_RecupMessage", "<ordreEnErreur>f_LireCVitale</ordreEnErreur>");
    EXPECT_EQ(appeler(recup, n - 1).code(), "271");
    // Exactly the announced size: the whole answer, no room left for a NUL.
    const Resultat r = appeler(recup, n);
    EXPECT_EQ(r.brut, complete);
    EXPECT_EQ(r.doc.selectionner("//Beneficiaire").size(), 12u);
    EXPECT_EQ(appeler(recup).code(), std::to_string(kAucunMessage)) << "rendue une seule fois";
}

}  // namespace
}  // namespace sv140::sim::test
