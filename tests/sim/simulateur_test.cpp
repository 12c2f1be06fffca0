// The middleware simulator on its demo state, called in process: each function's answer and
// the paths the bridge reads in it, long answers, planted failures, the library's exports.
#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "platform/encodage.h"
#include "platform/intergiciel.h"
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

/// Blank-separated paths below /ZRMESSAGE/resultat/donnees, each of which must select a
/// node (exactly `n` of them when `n` is not negative); a word ending in '/' prefixes the
/// words after it.
void verifier_chemins(const Resultat& r, const std::string& chemins, long n = -1) {
    std::istringstream mots(chemins);
    std::string prefixe;
    for (std::string mot; mots >> mot;) {
        if (mot.ends_with('/')) {
            prefixe = mot;
            continue;
        }
        const long trouves =
            r.doc.selectionner("/ZRMESSAGE/resultat/donnees/" + prefixe + mot).size();
        EXPECT_TRUE(n < 0 ? trouves >= 1 : trouves == n) << prefixe + mot << " " << trouves;
    }
}

struct Cas {
    const char* nom;
    std::string requete;
    int code;
    const char* chemins = "";
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
        {"versions sans aucune carte", requete("f_LireVersion"), 0,
         "donneesVersion/ versionDll versionCDC versionReferentiel infosLecteur/constructeur "
         "infosLecteur/typeLecteur infosLecteur/numSerie infosLecteur/typeOS "
         "donneesVersion/infosLecteur/appliSV/ nomAppli numVersion dateAppli heureAppli crcAppli",
         "", false},
        {"CPS", requete("f_LireCPS"), 0,
         "contextePS/ TYP_CPS TYP_IDN NUM_IDN CLE_IDN COD_CIV NOM_PRAT PNOM_PRAT "
         "situation[2]/RAIS_STR situation[NUM_SIT='2']/NUM_IDFACPS situation/CLE_IDFACPS "
         "situation/H_SIGN_LOT"},
        {"CPS absente", requete("f_LireCPS"), kCPSAbsente, "", "", false},
        {"initialisation", init(kIdNat, kIdFac2, "2", kIdNat), 0},
        {"situation 01", init(kIdNat, kIdFac1, "01", kIdNat), 0},
        {"initialisation sans CPS", init(kIdNat, kIdFac2, "2", kIdNat), kCPSAbsente, "", "", false},
        {"sans bloc PS", requete("f_InitialisationPS"), kBlocPSAbsent},
        {"identifiants vides", init("", "", "1"), kIdNatInconnu},
        {"autre idNat", init("991234568", kIdFac2, "2", "991234568"), kIdNatInconnu},
        {"idFac d'une autre situation", init(kIdNat, kIdFac1, "2", kIdNat), kIdFacInconnu},
        {"situation inconnue", init(kIdNat, kIdFac1, "3", kIdNat), kSituationInconnue},
        {"sans numSitu", init(kIdNat, kIdFac1, "", kIdNat), kSituationInconnue},
        {"mot de passe faux", init(kIdNat, kIdFac1, "1", "0000"), kCodePorteurErrone},
        {"versions mises a jour", requete("f_MaJVersion", ps1), 0,
         "donneesVersion/infosLecteur/appliSV/crcAppli"},
        {"factures", requete("f_ListerFactures", bloc_ps(kIdNat, kIdFac2)), 0, "listeFacture"},
        {"factures, idFac tronque", requete("f_ListerFactures", bloc_ps(kIdNat, "99100123")),
         kIdFacInconnu},
        {"carte Vitale sans CPS", requete("f_LireCVitale", kDate), 0, "", "famille", false},
        {"lecteur vide", requete("f_LireCVitale", kDate), kCarteVitaleAbsente},
        {"sans date de lecture", requete("f_LireCVitale"), kDateLectureInvalide, "", "famille"},
        {"carte mise a jour", requete("f_MettreAJourCV"), 0,
         "contexteCVitale/Beneficiaire/DRT_CC/COD_ALD", "ald", false},
        {"mise a jour, lecteur vide", requete("f_MettreAJourCV"), kCarteVitaleAbsente},
        {"complementaire", requete("f_LireInfosComplementaire", ps1 + kAmc), 0,
         "reponseComplementaire[numeroComplementaire='99999997']/droitsAMC/garantie"},
        {"complementaire sans numero",
         requete("f_LireInfosComplementaire",
                 ps1 + "<donneesComplementaire><numeroComplementaire/></donneesComplementaire>"),
         kComplementaireIncomplet},
        {"fonction inconnue", requete("f_Inexistante"), kFonctionInconnue},
        {"sans versionMessage", requete("f_LireVersion", "", false), kVersionMessageAbsente},
        {"pas du XML", "f_LireVersion", kRequeteIllisible},
        {"sans fonction", "<ZRMESSAGE><requete/></ZRMESSAGE>", kFonctionAbsente},
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
        verifier_chemins(r, c.chemins);
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

TEST_F(Sim, PannesInjecteesUneSeuleFois) {
    std::string erreur;
    ASSERT_TRUE(Injecter_Erreur(zrsim_, "f_LireCPS", 260, "Carte CPS bloquée", erreur)) << erreur;
    EXPECT_EQ(appeler(requete("f_LireVersion")).code(), "0");
    const Resultat panne = appeler(requete("f_LireCPS"));
    EXPECT_EQ(panne.code(), "260");
    EXPECT_EQ(panne.texte("libelleErreur"), "Carte CPS bloquée");
    EXPECT_EQ(appeler(requete("f_LireCPS")).code(), "0");

    ASSERT_TRUE(Injecter_Retour(zrsim_, "f_LireVersion", -17, erreur)) << erreur;
    const Resultat echec = appeler(requete("f_LireVersion"));
    EXPECT_EQ(echec.retour, -17);
    EXPECT_TRUE(echec.brut.empty());
    EXPECT_EQ(appeler(requete("f_LireVersion")).retour, 0);
}

TEST_F(Sim, SansDossierDEtatLesCartesManquent) {
    std::filesystem::remove_all(zrsim_);
    EXPECT_EQ(appeler(requete("f_LireCPS")).code(), std::to_string(kCPSAbsente));
    EXPECT_EQ(appeler(requete("f_LireCVitale", kDate)).code(), std::to_string(kCarteVitaleAbsente));
}

// The host loads other libraries beside this one: only the entry point may leave it.
TEST_F(Sim, LaBibliothequeNExporteQueSonPointDEntree) {
    std::ifstream fichier(SV140_BIBLIOTHEQUE_SIMULEE, std::ios::binary);
    const std::string elf{std::istreambuf_iterator<char>(fichier), {}};
    const auto* entete = reinterpret_cast<const Elf64_Ehdr*>(elf.data());
    const auto* sections = reinterpret_cast<const Elf64_Shdr*>(elf.data() + entete->e_shoff);
    std::set<std::string> exportes;
    for (int i = 0; i < entete->e_shnum; ++i) {
        if (sections[i].sh_type != SHT_DYNSYM) {
            continue;
        }
        const char* noms = elf.data() + sections[sections[i].sh_link].sh_offset;
        const auto* s = reinterpret_cast<const Elf64_Sym*>(elf.data() + sections[i].sh_offset);
        for (std::size_t k = 0; k < sections[i].sh_size / sizeof(Elf64_Sym); ++k) {
            const std::string nom = noms + s[k].st_name;
            if (s[k].st_shndx != SHN_UNDEF && ELF64_ST_BIND(s[k].st_info) != STB_LOCAL &&
                !nom.starts_with("__")) {  // the toolchain's own
                exportes.insert(nom);
            }
        }
    }
    EXPECT_EQ(exportes, std::set<std::string>{"ZR_Executer"});

    void* poignee = dlopen(SV140_BIBLIOTHEQUE_SIMULEE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(poignee, nullptr) << dlerror();
    EXPECT_NE(reinterpret_cast<ZR_Executer_t>(dlsym(poignee, "ZR_Executer")), nullptr);
    dlclose(poignee);
}

}  // namespace
}  // namespace sv140::sim::test
