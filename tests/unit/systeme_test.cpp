#include "platform/systeme.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace sv140 {
namespace {

class SystemeTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char modele[] = "/tmp/sv140-systeme-XXXXXX";
        ASSERT_NE(mkdtemp(modele), nullptr);
        dossier_ = modele;
    }
    void TearDown() override { std::filesystem::remove_all(dossier_); }

    std::string chemin(const std::string& nom) const { return joindre(dossier_, nom); }
    std::string contenu(const std::string& nom) const {
        std::string octets;
        EXPECT_TRUE(lire_fichier(chemin(nom), octets)) << nom;
        return octets;
    }
    std::size_t nombre_de_fichiers() const {
        std::size_t n = 0;
        for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(dossier_)) {
            ++n;
        }
        return n;
    }

    std::string dossier_;
};

TEST(Chemins, DossierParentReconnaitLesDeuxSeparateurs) {
    const struct {
        const char* chemin;
        const char* parent;
    } cas[] = {
        {"/opt/belvane/bin", "/opt/belvane"},
        {"/opt/belvane/bin/", "/opt/belvane"},
        {"C:\\Belvane_Classic\\SV140", "C:\\Belvane_Classic"},
        {"/shop/data\\Sv140", "/shop/data"},
        {"C:\\Shop/Sv140", "C:\\Shop"},
        {"/bin", "/"},
        {"C:\\SV140", "C:\\"},
        {"sv140", ""},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(dossier_parent(c.chemin), c.parent) << c.chemin;
    }
}

TEST(Chemins, JoindreAvecLeSeparateurDuSysteme) {
    EXPECT_EQ(separateur(), '/');
    EXPECT_EQ(joindre("/shop", "SV140.accdb"), "/shop/SV140.accdb");
}

TEST(Chemins, LigneDeCommandeGardeLesArgumentsVides) {
    char prog[] = "sv140", op[] = "f_LireCVitale", vide[] = "", shop[] = "/shop";
    char* complet[] = {prog, op, vide, shop};
    EXPECT_EQ(ligne_de_commande(4, complet), "f_LireCVitale  /shop");
    EXPECT_EQ(ligne_de_commande(1, complet), "");
}

TEST_F(SystemeTest, FichiersEtDossiers) {
    EXPECT_FALSE(fichier_existe(chemin("a.txt")));
    std::string octets;
    EXPECT_FALSE(lire_fichier(chemin("a.txt"), octets));

    EXPECT_TRUE(ecrire_fichier(chemin("a.txt"), "un"));
    EXPECT_TRUE(ajouter_au_fichier(chemin("a.txt"), std::string("\0deux", 5)));
    EXPECT_TRUE(ajouter_au_fichier(chemin("b.txt"), "cree"));
    EXPECT_EQ(contenu("a.txt"), std::string("un\0deux", 7));
    EXPECT_EQ(contenu("b.txt"), "cree");
    EXPECT_TRUE(ecrire_fichier(chemin("a.txt"), "remplace"));
    EXPECT_EQ(contenu("a.txt"), "remplace");

    EXPECT_TRUE(fichier_existe(chemin("a.txt")));
    EXPECT_FALSE(dossier_existe(chemin("a.txt")));
    EXPECT_TRUE(supprimer_fichier(chemin("a.txt")));
    EXPECT_FALSE(supprimer_fichier(chemin("a.txt")));

    EXPECT_FALSE(creer_dossier(chemin("manque/mois")));
    EXPECT_TRUE(creer_dossier(chemin("Sv140")));
    EXPECT_TRUE(creer_dossier(chemin("Sv140")));
    EXPECT_TRUE(dossier_existe(chemin("Sv140")));
    EXPECT_FALSE(fichier_existe(chemin("Sv140")));
    EXPECT_FALSE(ecrire_fichier(chemin("manque/a.txt"), "x"));
}

TEST_F(SystemeTest, CopieAvecEtSansEchecSiExiste) {
    const struct {
        bool destination_presente;
        bool echec_si_existe;
        bool copie;
        const char* apres;
    } cas[] = {
        {false, true, true, "source"},
        {false, false, true, "source"},
        {true, false, true, "source"},
        {true, true, false, "ancienne"},
    };
    for (const auto& c : cas) {
        ASSERT_TRUE(ecrire_fichier(chemin("src.xml"), "source"));
        supprimer_fichier(chemin("dst.xml"));
        if (c.destination_presente) {
            ASSERT_TRUE(ecrire_fichier(chemin("dst.xml"), "ancienne"));
        }
        EXPECT_EQ(copier_fichier_systeme(chemin("src.xml"), chemin("dst.xml"), c.echec_si_existe),
                  c.copie);
        EXPECT_EQ(contenu("dst.xml"), c.apres);
        // No temporary copy is left behind.
        EXPECT_EQ(nombre_de_fichiers(), 2u);
    }
}

TEST_F(SystemeTest, CopieImpossible) {
    ASSERT_TRUE(ecrire_fichier(chemin("src.xml"), "source"));
    ASSERT_TRUE(creer_dossier(chemin("dossier")));
    EXPECT_FALSE(copier_fichier_systeme(chemin("absent.xml"), chemin("dst.xml"), false));
    EXPECT_FALSE(copier_fichier_systeme(chemin("dossier"), chemin("dst.xml"), false));
    EXPECT_FALSE(copier_fichier_systeme(chemin("src.xml"), chemin("manque/dst.xml"), false));
    EXPECT_FALSE(copier_fichier_systeme(chemin("src.xml"), chemin("dossier"), false));
    EXPECT_FALSE(fichier_existe(chemin("dst.xml")));
    EXPECT_EQ(nombre_de_fichiers(), 2u);
}

TEST_F(SystemeTest, UnSeulVerrouALaFois) {
    const std::string fichier = chemin("sv140.lock");
    auto premier = prendre_verrou(fichier, std::chrono::milliseconds(0));
    ASSERT_NE(premier, nullptr);

    auto debut = std::chrono::steady_clock::now();
    EXPECT_EQ(prendre_verrou(fichier, std::chrono::milliseconds(150)), nullptr);
    EXPECT_GE(std::chrono::steady_clock::now() - debut, std::chrono::milliseconds(150));

    // Another process is refused too.
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        _exit(prendre_verrou(fichier, std::chrono::milliseconds(50)) == nullptr ? 0 : 1);
    }
    int statut = 0;
    ASSERT_EQ(waitpid(pid, &statut, 0), pid);
    EXPECT_TRUE(WIFEXITED(statut) && WEXITSTATUS(statut) == 0);

    // A lock released while another run waits is taken by that run.
    std::thread liberation([&premier] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        premier.reset();
    });
    auto second = prendre_verrou(fichier, std::chrono::seconds(5));
    liberation.join();
    EXPECT_NE(second, nullptr);
    EXPECT_EQ(prendre_verrou(chemin("manque/sv140.lock"), std::chrono::milliseconds(0)), nullptr);
}

TEST_F(SystemeTest, LancerEtAttendreRendLeCodeDeSortie) {
    ASSERT_TRUE(creer_dossier(chemin("avec blanc")));
    const std::string script = chemin("avec blanc/prog.sh");
    ASSERT_TRUE(ecrire_fichier(script, "#!/bin/sh\nexit 5\n"));
    ASSERT_EQ(chmod(script.c_str(), 0755), 0);

    const struct {
        std::string ligne;
        int code;
    } cas[] = {
        {"/bin/sh -c \"exit 3\"", 3},
        {"/bin/sh -c \"exit 0\"", 0},
        {"/bin/sh -c \"test $# -eq 2\" x \"deux mots\" \"\"", 0},
        {"/bin/sh -c \"test $# -eq 2\" x un deux trois", 1},
        {"\"" + script + "\"", 5},
        {"/bin/sh -c \"kill -9 $$\"", 128 + 9},
        {chemin("absent"), -1},
        {"sh -c \"exit 3\"", -1},
        {"", -1},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(lancer_et_attendre_processus(c.ligne), c.code) << c.ligne;
    }
}

TEST_F(SystemeTest, LancerProgrammeTransmetChaqueArgumentTelQuel) {
    // The script writes each argument it received between bars into the file $0.
    const std::string script = "printf '%s|' \"$@\" > \"$0\"";
    const struct {
        std::vector<std::string> arguments;
        const char* recu;
    } cas[] = {
        {{"a b", "c\"d", ""}, "a b|c\"d||"},
        {{"C:\\Shop\\", "\\\"", "'"}, "C:\\Shop\\|\\\"|'|"},
        {{"*", "$HOME", "; exit 9"}, "*|$HOME|; exit 9|"},
        {{"\t\n", "éàç"}, "\t\n|éàç|"},
    };
    for (const auto& c : cas) {
        Lancement lancement;
        lancement.arguments = {"-c", script, chemin("recu.txt")};
        lancement.arguments.insert(lancement.arguments.end(), c.arguments.begin(),
                                   c.arguments.end());
        EXPECT_EQ(lancer_programme("/bin/sh", lancement), 0) << c.recu;
        EXPECT_EQ(contenu("recu.txt"), c.recu);
    }
}

TEST_F(SystemeTest, LancerProgrammeEntreeSortieEtEnvironnement) {
    ASSERT_EQ(setenv("SV140_UI", "fenetre", 1), 0);
    ASSERT_EQ(setenv("SV140_GARDEE", "oui", 1), 0);
    // This process's own input has something to read, so that a child reading it
    // instead of the null device shows.
    ASSERT_TRUE(ecrire_fichier(chemin("entree.txt"), "saisie\n"));
    const int entree_du_test = dup(0);
    const int entree = open(chemin("entree.txt").c_str(), O_RDONLY);
    ASSERT_GE(entree, 0);
    ASSERT_EQ(dup2(entree, 0), 0);
    close(entree);
    const struct {
        const char* script;
        bool entree_vide;
        std::vector<std::string> environnement;
        int code;
        const char* sortie;
    } cas[] = {
        {"echo un; echo deux >&2; echo trois; exit 4", true, {}, 4, "un\ndeux\ntrois\n"},
        // A program reading its input finds the end at once instead of waiting.
        {"cat; echo fin", true, {}, 0, "fin\n"},
        {"cat; echo fin", false, {}, 0, "saisie\nfin\n"},
        {"echo \"$SV140_UI $SV140_GARDEE $SV140_NOUVELLE\"",
         true,
         {"SV140_UI=console", "SV140_NOUVELLE=1"},
         0,
         "console oui 1\n"},
        {"echo \"[$SV140_UI]\"", true, {"SV140_UI="}, 0, "[]\n"},
        {"echo \"$SV140_UI\"", true, {}, 0, "fenetre\n"},
    };
    for (const auto& c : cas) {
        ASSERT_TRUE(ecrire_fichier(chemin("console.txt"), "ancien contenu remplacé\n"));
        Lancement lancement;
        lancement.arguments = {"-c", c.script};
        lancement.sortie = chemin("console.txt");
        lancement.entree_vide = c.entree_vide;
        lancement.environnement = c.environnement;
        EXPECT_EQ(lancer_programme("/bin/sh", lancement), c.code) << c.script;
        EXPECT_EQ(contenu("console.txt"), c.sortie) << c.script;
    }
    // The additions went to the child only.
    EXPECT_EQ(variable_environnement("SV140_UI"), "fenetre");
    EXPECT_EQ(variable_environnement("SV140_NOUVELLE"), "");
    unsetenv("SV140_UI");
    unsetenv("SV140_GARDEE");
    dup2(entree_du_test, 0);
    close(entree_du_test);
}

TEST_F(SystemeTest, LancerProgrammeQuiNePeutDemarrer) {
    const std::string copie = chemin("copie.sh");
    ASSERT_TRUE(ecrire_fichier(copie, "#!/bin/sh\nexit 6\n"));
    Lancement dans_un_dossier_absent;
    dans_un_dossier_absent.sortie = chemin("manque/console.txt");

    EXPECT_EQ(lancer_programme(chemin("absent"), Lancement{}), -1);
    EXPECT_EQ(lancer_programme("sh", Lancement{}), -1);
    EXPECT_EQ(lancer_programme("/bin/true", dans_un_dossier_absent), -1);
    // A copied program runs only once it has been made runnable.
    EXPECT_EQ(lancer_programme(copie, Lancement{}), -1);
    EXPECT_TRUE(rendre_executable(copie));
    EXPECT_EQ(lancer_programme(copie, Lancement{}), 6);
    EXPECT_FALSE(rendre_executable(chemin("absent")));
}

TEST(Chemins, CheminAbsoluPartDuDossierCourant) {
    const std::string courant = std::filesystem::current_path().string();
    const std::string dedans = courant == "/" ? "/" : courant + "/";
    const struct {
        std::string chemin;
        std::string absolu;
    } cas[] = {
        {"/opt/belvane/Sv140", "/opt/belvane/Sv140"},
        {"/opt/belvane/Sv140//", "/opt/belvane/Sv140"},
        {"/", "/"},
        {"boutique", dedans + "boutique"},
        {"./././boutique/", dedans + "boutique"},
        {"boutique/Sv140", dedans + "boutique/Sv140"},
        {".", courant},
        {"", courant},
    };
    for (const auto& c : cas) {
        EXPECT_EQ(chemin_absolu(c.chemin), c.absolu) << c.chemin;
    }
}

TEST_F(SystemeTest, BibliothequeIntrouvableDonneUneRaison) {
    ASSERT_TRUE(ecrire_fichier(chemin("faux.so"), "pas une bibliotheque"));
    for (const std::string& fichier : {chemin("WebQuintara2.so"), chemin("faux.so")}) {
        std::string raison;
        EXPECT_EQ(charger_bibliotheque(fichier, raison), nullptr);
        EXPECT_NE(raison.find(fichier), std::string::npos) << raison;
    }
}

}  // namespace
}  // namespace sv140
