// The call contract (buffer size, recovery of long answers, return values), the planted
// failures and the state folder.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "appel_sim.h"
#include "platform/systeme.h"
#include "sim/etat.h"
#include "sim/fonctions.h"

namespace sv140::sim::test {
namespace {

class Etat : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string erreur;
        ASSERT_TRUE(Initialiser_Etat_Demo(zrsim_, erreur)) << erreur;
    }
    void inserer(const std::string& id) {
        std::string erreur;
        ASSERT_TRUE(Inserer_Carte(zrsim_, id, erreur)) << erreur;
    }
    Resultat lire_carte(int taille = 102400) {
        return appeler(zrsim_, requete("f_LireCVitale", "<dateLecture>20240305</dateLecture>"),
                       taille);
    }
    Resultat recuperer(const std::string& ordre, int taille) {
        return appeler(zrsim_,
                       requete("f_RecupMessage", "<ordreEnErreur>" + ordre + "</ordreEnErreur>"),
                       taille);
    }

    DossierTemporaire dossier_;
    std::string zrsim_ = dossier_.sous("zrsim");
};

/// The size the bridge asks for after a code 271: the expected size read after
/// "Attendue:", times 1.1, rounded, plus one.
int taille_relance(const std::string& libelle) {
    const auto pos = libelle.find("Attendue:");
    EXPECT_NE(pos, std::string::npos) << libelle;
    EXPECT_NE(libelle.find("Trouvée:"), std::string::npos) << libelle;
    return static_cast<int>(std::nearbyint(std::stod(libelle.substr(pos + 9)) * 1.1)) + 1;
}

TEST_F(Etat, ReponseTropLongueRecupereeEnEntier) {
    inserer("douze");
    const std::string complete = lire_carte().brut;

    const Resultat court = lire_carte(1024);
    ASSERT_EQ(court.retour, 0);
    ASSERT_TRUE(court.lisible) << court.brut;
    EXPECT_EQ(court.code(), "271");
    EXPECT_EQ(court.appelant(), "f_LireCVitale");
    EXPECT_EQ(court.libelle(), "Taille de réponse insuffisante. Attendue: " +
                                   std::to_string(complete.size()) + " Trouvée: 1024");

    const Resultat encore_court = recuperer("f_LireCVitale", 2048);
    EXPECT_EQ(encore_court.code(), "271");
    EXPECT_EQ(encore_court.appelant(), "f_RecupMessage");

    const Resultat r = recuperer("f_LireCVitale", taille_relance(court.libelle()));
    ASSERT_TRUE(r.lisible) << r.brut;
    EXPECT_EQ(r.brut, complete);
    EXPECT_EQ(r.code(), "0");
    EXPECT_EQ(r.nombre("/ZRMESSAGE/resultat/donnees/contexteCVitale/Beneficiaire"), 12u);

    // Delivered once: the kept answer is gone.
    EXPECT_EQ(recuperer("f_LireCVitale", 102400).code(), std::to_string(kAucunMessage));
}

TEST_F(Etat, TailleAuPlusJuste) {
    inserer("famille");
    const std::string complete = lire_carte().brut;
    const int n = static_cast<int>(complete.size());

    const Resultat juste = lire_carte(n);
    EXPECT_EQ(juste.brut, complete) << "tampon plein, sans NUL final";
    EXPECT_EQ(juste.code(), "0");
    EXPECT_EQ(lire_carte(n - 1).code(), "271");
}

TEST_F(Etat, ValeursDeRetourDeLAppel) {
    char tampon[16] = {};
    int taille = sizeof tampon;
    const std::string texte = requete("f_LireVersion");
    EXPECT_EQ(appeler(zrsim_, texte, 40).retour, kRetourTamponTropPetit);
    EXPECT_EQ(Executer(zrsim_, nullptr, tampon, &taille), kRetourArgumentInvalide);
    EXPECT_EQ(Executer(zrsim_, texte.c_str(), nullptr, &taille), kRetourArgumentInvalide);
    EXPECT_EQ(Executer(zrsim_, texte.c_str(), tampon, nullptr), kRetourArgumentInvalide);
    taille = 0;
    EXPECT_EQ(Executer(zrsim_, texte.c_str(), tampon, &taille), kRetourArgumentInvalide);
}

TEST_F(Etat, ErreurInjecteeUneSeuleFois) {
    std::string erreur;
    ASSERT_TRUE(Injecter_Erreur(zrsim_, "f_LireCPS", 260, "Carte CPS bloquée", erreur)) << erreur;

    const Resultat panne = appeler(zrsim_, requete("f_LireCPS"));
    ASSERT_TRUE(panne.lisible) << panne.brut;
    EXPECT_EQ(panne.code(), "260");
    EXPECT_EQ(panne.libelle(), "Carte CPS bloquée");
    EXPECT_EQ(panne.appelant(), "f_LireCPS");
    EXPECT_EQ(appeler(zrsim_, requete("f_LireCPS")).code(), "0");
}

TEST_F(Etat, InjectionAttendSaFonction) {
    std::string erreur;
    ASSERT_TRUE(Injecter_Erreur(zrsim_, "f_LireVersion", 297, "Lecteur occupé", erreur));
    EXPECT_EQ(appeler(zrsim_, requete("f_LireCPS")).code(), "0");
    EXPECT_EQ(appeler(zrsim_, requete("f_LireVersion")).code(), "297");
}

TEST_F(Etat, RetourInjecteUneSeuleFois) {
    std::string erreur;
    EXPECT_FALSE(Injecter_Retour(zrsim_, "f_LireVersion", 0, erreur));
    EXPECT_FALSE(Injecter_Retour(zrsim_, "", 5, erreur));
    ASSERT_TRUE(Injecter_Retour(zrsim_, "f_LireVersion", -17, erreur)) << erreur;

    const Resultat panne = appeler(zrsim_, requete("f_LireVersion"));
    EXPECT_EQ(panne.retour, -17);
    EXPECT_TRUE(panne.brut.empty()) << "rien n'est écrit quand l'appel échoue";
    EXPECT_EQ(appeler(zrsim_, requete("f_LireVersion")).retour, 0);
}

TEST_F(Etat, LecteurEtBibliotheque) {
    std::vector<std::string> attendues(std::begin(kCartesDemo), std::end(kCartesDemo));
    std::sort(attendues.begin(), attendues.end());
    EXPECT_EQ(Cartes_Disponibles(zrsim_), attendues);

    std::string erreur;
    EXPECT_FALSE(Inserer_Carte(zrsim_, "inconnue", erreur));
    EXPECT_FALSE(erreur.empty());
    EXPECT_FALSE(Inserer_Carte(zrsim_, "../cps", erreur));

    inserer("ald");
    EXPECT_EQ(lire_carte().code(), "0");
    inserer("");
    EXPECT_EQ(lire_carte().code(), std::to_string(kCarteVitaleAbsente));
}

TEST_F(Etat, ReinitialiserEffaceAttentesEtPannes) {
    inserer("douze");
    ASSERT_EQ(lire_carte(1024).code(), "271");
    std::string erreur;
    ASSERT_TRUE(Injecter_Erreur(zrsim_, "f_LireCPS", 260, "bloquée", erreur));
    ASSERT_TRUE(Initialiser_Etat_Demo(zrsim_, erreur)) << erreur;

    EXPECT_EQ(recuperer("f_LireCVitale", 102400).code(), std::to_string(kAucunMessage));
    EXPECT_EQ(appeler(zrsim_, requete("f_LireCPS")).code(), "0");
    EXPECT_EQ(lire_carte().code(), std::to_string(kCarteVitaleAbsente));
}

TEST(EtatAbsent, AucuneCarteSansDossier) {
    DossierTemporaire dossier;
    const std::string zrsim = dossier.sous("absent");
    EXPECT_TRUE(Cartes_Disponibles(zrsim).empty());
    EXPECT_EQ(appeler(zrsim, requete("f_LireCPS")).code(), std::to_string(kCPSAbsente));
    EXPECT_EQ(
        appeler(zrsim, requete("f_LireCVitale", "<dateLecture>20240305</dateLecture>")).code(),
        std::to_string(kCarteVitaleAbsente));
    EXPECT_EQ(appeler(zrsim, requete("f_ListerFactures", bloc_ps(kIdNat, kIdFacSituation1))).code(),
              std::to_string(kCPSAbsente));
    std::string erreur;
    EXPECT_FALSE(Inserer_Carte(zrsim, "famille", erreur));
    EXPECT_FALSE(Initialiser_Etat_Demo(joindre(zrsim, "sous/dossier"), erreur));
    EXPECT_FALSE(erreur.empty());
}

}  // namespace
}  // namespace sv140::sim::test
