#include "platform/systeme.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "aide_test.h"

namespace sv140 {
namespace {

TEST(Systeme, PathsAndCommandLine) {
    const struct {
        const char *chemin, *parent;
    } cas[] = {{"/opt/belvane/bin/", "/opt/belvane"},
               {"C:\\Belvane_Classic\\SV140", "C:\\Belvane_Classic"},
               {"/shop/data\\Sv140", "/shop/data"},
               {"C:\\Shop/Sv140", "C:\\Shop"},
               {"/bin", "/"},
               {"C:\\SV140", "C:\\"},
               {"sv140", ""}};
    for (const auto& c : cas) {
        EXPECT_EQ(dossier_parent(c.chemin), c.parent) << c.chemin;
    }
    char prog[] = "sv140", op[] = "f_LireCVitale", vide[] = "", shop[] = "/shop";
    char* argv[] = {prog, op, vide, shop};
    EXPECT_EQ(ligne_de_commande(4, argv), "f_LireCVitale  /shop") << "empty arguments kept";
}

TEST(Systeme, OneLockAtATime) {
    test::DossierTemporaire d;
    const std::string fichier = d / "sv140.lock";
    // The lock belongs to its holder, not to the process: this one is refused too.
    auto premier = prendre_verrou(fichier, std::chrono::milliseconds(0));
    ASSERT_NE(premier, nullptr);

    auto debut = std::chrono::steady_clock::now();
    EXPECT_EQ(prendre_verrou(fichier, std::chrono::milliseconds(200)), nullptr);
    EXPECT_GE(std::chrono::steady_clock::now() - debut, std::chrono::milliseconds(200));

    // A lock released while another run waits is taken by that run.
    std::thread liberation([&premier] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        premier.reset();
    });
    auto second = prendre_verrou(fichier, std::chrono::seconds(5));
    liberation.join();
    EXPECT_NE(second, nullptr);
}

TEST(Systeme, CommandLinesRunAndGiveTheirExitCode) {
    test::DossierTemporaire d;
    ASSERT_TRUE(creer_dossier(d / "avec blanc"));
    const std::string script = d / "avec blanc/prog.sh";
    ASSERT_TRUE(ecrire_fichier(script, "#!/bin/sh\nexit 5\n"));
    ASSERT_EQ(chmod(script.c_str(), 0755), 0);
    const struct {
        std::string ligne;
        int code;
    } cas[] = {{"/bin/sh -c \"exit 3\"", 3},
               {"/bin/sh -c \"test $# -eq 2\" x \"deux mots\" \"\"", 0},
               {"/bin/sh -c \"test $# -eq 2\" x un deux trois", 1},
               {"\"" + script + "\"", 5},
               {"/bin/sh -c \"kill -9 $$\"", 128 + 9},
               {d / "absent", -1},
               {"sh -c \"exit 3\"", -1},
               {"", -1}};
    for (const auto& c : cas) {
        EXPECT_EQ(lancer_et_attendre_processus(c.ligne), c.code) << c.ligne;
    }
}

/// Sets an environment variable for one scope, then puts back what was there.
class Variable {
  public:
    Variable(const char* nom, const char* valeur) : nom_(nom) {
        if (const char* avant = std::getenv(nom)) {
            avant_ = avant;
        }
        valeur != nullptr ? setenv(nom, valeur, 1) : unsetenv(nom);
    }
    ~Variable() { avant_ ? setenv(nom_, avant_->c_str(), 1) : unsetenv(nom_); }

  private:
    const char* nom_;
    std::optional<std::string> avant_;
};

TEST(Systeme, DocumentsOpenInTheDesktopViewerWithoutWaiting) {
    test::DossierTemporaire d;
    // A viewer that waits for the test to let it go, then notes what it was given: the
    // bridge must not wait for it.
    const std::string vu = d / "vu.txt";
    const std::string va = d / "va";
    ASSERT_TRUE(ecrire_fichier(
        d / "xdg-open", "#!/bin/sh\nwhile [ ! -e '" + va +
                            "' ]; do sleep 0.05; done\nprintf '%s' \"$1\" > '" + vu + "'\n"));
    ASSERT_EQ(chmod((d / "xdg-open").c_str(), 0755), 0);
    const std::string document = d / "l'ordo du 5 mai.jpg";
    Variable chemin("PATH", (d.chemin() + ":/usr/bin:/bin").c_str());

    {
        Variable affichage("DISPLAY", nullptr);
        EXPECT_FALSE(ouvrir_document(document)) << "no display, no viewer";
    }
    Variable affichage("DISPLAY", ":0");
    EXPECT_TRUE(ouvrir_document(document));
    ASSERT_TRUE(ecrire_fichier(va, ""));
    for (int i = 0; i < 100 && !fichier_existe(vu); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    std::string recu;
    EXPECT_TRUE(lire_fichier(vu, recu));
    EXPECT_EQ(recu, document);

    Variable sans_visionneuse("PATH", "/nonexistent");
    EXPECT_FALSE(ouvrir_document(document));
}

}  // namespace
}  // namespace sv140
