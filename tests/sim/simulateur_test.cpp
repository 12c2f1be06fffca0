// The middleware simulator on its demo state, called in process: each function's result
// code, and long answers fetched again. What the bridge reads in the answers is checked
// by the black-box flows and the demo.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "platform/encodage.h"
#include "platform/systeme.h"
#include "platform/xml.h"
#include "sim/etat.h"
#include "sim/fonctions.h"

namespace sv140::sim::test {
namespace {

/// The demo professional: national identifier, invoicing numbers of situations 1 and 2.
const std::string kIdNat = "991234567", kIdFac1 = "991001231", kIdFac2 = "991004565";

const std::string kDate = "<dateLecture>20240305</dateLecture>";

/// A request as the bridge sends it: declaration, CR LF line ends, Windows-1252.
std::string requete(const std::string& op, const std::string& parametres = "",
                    bool avec_version = true) {
    return utf8_vers_cp1252(
        "<?xml version='1.0' encoding='ISO-8859-1'?>\r\n<ZRMESSAGE>\r\n<programme>Belvane_Classic "
        "II</programme>\r\n<requete>\r\n<fonction>\r\n<" +
        op + ">\r\n" + (avec_version ? "<versionMessage>0001</versionMessage>\r\n" : "") +
        parametres + "</" + op + ">\r\n</fonction>\r\n</requete>\r\n</ZRMESSAGE>\r\n");
}

/// The professional block; an empty `numSitu` or `motDePasse` is left out.
std::string bloc_ps(const std::string& idNat, const std::string& idFac,
                    const std::string& numSitu = "", const std::string& motDePasse = "") {
    return "<PS><idNat>" + idNat + "</idNat><idFac>" + idFac + "</idFac>" +
           (numSitu.empty() ? "" : "<numSitu>" + numSitu + "</numSitu>") +
           (motDePasse.empty() ? "" : "<motDePasse>" + motDePasse + "</motDePasse>") + "</PS>";
}

struct Resultat {
    int retour = 0;
    std::string brut;  // the buffer up to its first NUL, all of it when none
    XmlDocument doc;
    std::string texte(const std::string& chemin) const {
        return doc.selectionner_un("/ZRMESSAGE/resultat/" + chemin).texte();
    }
    std::string code() const { return texte("codeErreur"); }
};

/// A fresh demo state for each test, in `zrsim_`.
class Sim : public ::testing::Test {
  protected:
    void SetUp() override {
        dossier_ = std::filesystem::temp_directory_path() /
                   ("sv140-sim-" + std::to_string(std::random_device{}()));
        std::filesystem::create_directories(dossier_);
        zrsim_ = (dossier_ / "zrsim").string();
        std::string erreur;
        ASSERT_TRUE(Initialiser_Etat_Demo(zrsim_, erreur)) << erreur;
    }
    void TearDown() override { std::filesystem::remove_all(dossier_); }

    /// One call with a NUL-filled buffer of `taille` bytes. The answer is read as the
    /// bridge reads it: a declaration is put before a bare document type line.
    Resultat appeler(const std::string& texte, int taille = 102400) {
        std::vector<char> tampon(static_cast<std::size_t>(taille), '\0');
        Resultat r;
        r.retour = Executer(zrsim_, texte.c_str(), tampon.data(), &taille);
        r.brut = std::string(tampon.begin(), std::find(tampon.begin(), tampon.end(), '\0'));
        const std::string declaration = "<?xml version='1.0' encoding='ISO-8859-1'?>";
        EXPECT_TRUE(
            r.retour != 0 ||
            r.doc.charger_texte(r.brut.starts_with("<?xml") ? r.brut : declaration + r.brut))
            << r.brut;
        return r;
    }
    Resultat lire_carte(const std::string& carte, int taille = 102400) {
        std::string erreur;
        EXPECT_TRUE(Inserer_Carte(zrsim_, carte, erreur)) << erreur;
        return appeler(requete("f_LireCVitale", kDate), taille);
    }

    std::filesystem::path dossier_;
    std::string zrsim_;
};

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
