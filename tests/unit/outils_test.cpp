#include "tools/outils.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include "main/run.h"
#include "platform/systeme.h"

namespace sv140 {
namespace {

// The suite starts itself again under a fixed clock to archive at a chosen moment;
// such a copy only archives and ends, before any test runs.
const int archivage_sous_horloge_fixe = [] {
    const char* dossiers = std::getenv("SV140_ESSAI_ARCHIVE");
    if (dossiers == nullptr) {
        return 0;
    }
    const std::string texte(dossiers);
    const std::size_t barre = texte.find('|');
    sv140::Run run;
    run.dossier_programme = texte.substr(0, barre);
    run.ui = creer_ui_console(nullptr);
    Archiver_Echange(run, "f_LireCVitale", texte.substr(barre + 1));
    std::cerr.flush();
    std::_Exit(0);
}();

std::tm date(int annee, int mois, int jour, int h, int m, int s) {
    std::tm t{};
    t.tm_year = annee - 1900;
    t.tm_mon = mois - 1;
    t.tm_mday = jour;
    t.tm_hour = h;
    t.tm_min = m;
    t.tm_sec = s;
    return t;
}

std::size_t caracteres(const std::string& utf8) {
    std::size_t n = 0;
    for (unsigned char c : utf8) {
        n += (c & 0xC0) != 0x80;
    }
    return n;
}

class UiEnregistree : public Ui {
  public:
    explicit UiEnregistree(std::vector<std::string>& boites) : boites_(boites) {}
    void MsgBox(std::string_view texte, std::string_view, Icone) override {
        boites_.emplace_back(texte);
    }
    Reponse Question(std::string_view, std::string_view, Icone) override {
        return Reponse::Annuler;
    }

  private:
    std::vector<std::string>& boites_;
};

class OutilsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char modele[] = "/tmp/sv140-outils-XXXXXX";
        ASSERT_NE(mkdtemp(modele), nullptr);
        dossier_ = modele;
        programme_ = joindre(dossier_, "programme");
        donnees_ = joindre(dossier_, "magasin");
        ASSERT_TRUE(creer_dossier(programme_));
        ASSERT_TRUE(creer_dossier(donnees_));
    }
    void TearDown() override { std::filesystem::remove_all(dossier_); }

    std::string lire(const std::string& chemin) const {
        std::string octets;
        EXPECT_TRUE(lire_fichier(chemin, octets)) << chemin;
        return octets;
    }
    std::set<std::string> noms(const std::string& dossier) const {
        std::set<std::string> n;
        for (const auto& e : std::filesystem::directory_iterator(dossier)) {
            n.insert(e.path().filename().string());
        }
        return n;
    }

    std::string dossier_, programme_, donnees_;
};

TEST(Outils, LigneDuJournalEnZonesDe14Colonnes) {
    const struct {
        std::tm t;
        const char* message;
        const char* ligne;
    } cas[] = {
        {date(2024, 3, 5, 14, 30, 12), "Chaine_Command : f_LireCVitale /shop",
         "05/03/2024    14:30:12      Chaine_Command : f_LireCVitale /shop"},
        {date(1999, 12, 31, 0, 0, 0), "Récupération Chemin",
         "31/12/1999    00:00:00      Récupération Chemin"},
        {date(2024, 1, 1, 9, 5, 7), "", "01/01/2024    09:05:07      "},
    };
    for (const auto& c : cas) {
        const std::string ligne = Ligne_Log(c.t, c.message);
        EXPECT_EQ(ligne, c.ligne);
        EXPECT_EQ(ligne.substr(28), c.message);
    }
}

TEST(Outils, DateSQLMoisEnPremier) {
    EXPECT_EQ(Date_SQL(date(2024, 3, 5, 14, 30, 12)), "#03-05-2024 14:30:12#");
    EXPECT_EQ(Date_SQL(date(2000, 12, 1, 0, 0, 0)), "#12-01-2000 00:00:00#");
}

TEST_F(OutilsTest, JournalAjouteEtSeVide) {
    const std::string log = joindre(programme_, "LogsSV.txt");
    Vider_Log(programme_);
    EXPECT_EQ(lire(log), "");
    Ecrire_Log(programme_, "un");
    Ecrire_Log(programme_, "deux");
    const std::string texte = lire(log);
    ASSERT_EQ(texte.size(), 2 * 28 + 3 + 5);
    EXPECT_EQ(texte.substr(28, 3), "un\n");
    EXPECT_EQ(texte.substr(28 + 3 + 28), "deux\n");
    Vider_Log(programme_);
    EXPECT_EQ(lire(log), "");

    // A log in a folder that does not exist is skipped without a word.
    Ecrire_Log(joindre(dossier_, "absent"), "perdu");
    EXPECT_FALSE(dossier_existe(joindre(dossier_, "absent")));
}

TEST_F(OutilsTest, ArchiveDuJourDansLeDossierDuMois) {
    std::vector<std::string> boites;
    sv140::Run run;
    run.dossier_programme = programme_;
    run.ui = std::make_unique<UiEnregistree>(boites);
    ASSERT_TRUE(ecrire_fichier(joindre(programme_, "ZEMO_SvResponse.xml"), "<reponse/>"));

    const std::tm avant = Maintenant();
    Archiver_Echange(run, "f_LireCPS", donnees_);
    const std::tm apres = Maintenant();

    EXPECT_EQ(boites, std::vector<std::string>{"Le répertoire n'existe pas"});
    std::set<std::string> possibles;
    for (const std::tm& t : {avant, apres}) {
        possibles.insert(joindre(joindre(joindre(donnees_, "Sv140"), Format_Date(t, "%Y%m")),
                                 "RSP_f_LireCPS_" + Format_Date(t, "%Y%m%d_%H%M%S") + ".xml"));
    }
    std::vector<std::string> trouves;
    for (const auto& e : std::filesystem::recursive_directory_iterator(donnees_)) {
        if (e.is_regular_file()) {
            trouves.push_back(e.path().string());
        }
    }
    // Only the response existed, so only the response is archived.
    ASSERT_EQ(trouves.size(), 1u);
    EXPECT_EQ(possibles.count(trouves[0]), 1u) << trouves[0];
    EXPECT_EQ(lire(trouves[0]), "<reponse/>");
    EXPECT_TRUE(fichier_existe(joindre(programme_, "ZEMO_SvResponse.xml")));

    // The root folder now exists: no box the second time.
    Archiver_Echange(run, "f_LireCPS", donnees_);
    EXPECT_EQ(boites.size(), 1u);

    // A data folder that cannot hold the archive is announced and skipped.
    Archiver_Echange(run, "f_LireCPS", joindre(dossier_, "absent"));
    EXPECT_EQ(boites.size(), 2u);
    EXPECT_FALSE(dossier_existe(joindre(dossier_, "absent")));
}

TEST_F(OutilsTest, ArchiveSousHorlogeFixe) {
    if (!fichier_existe("/usr/bin/faketime")) {
        GTEST_SKIP() << "faketime is not installed";
    }
    char executable[4096];
    const ssize_t n = readlink("/proc/self/exe", executable, sizeof executable - 1);
    ASSERT_GT(n, 0);
    executable[n] = '\0';
    const std::string erreurs = joindre(dossier_, "stderr.txt");
    const auto archiver = [&](const char* moment, const char* reponse, const char* requete) {
        ASSERT_TRUE(ecrire_fichier(joindre(programme_, "ZEMO_SvResponse.xml"), reponse));
        ASSERT_TRUE(ecrire_fichier(joindre(programme_, "ZEMO_SvRequest.xml"), requete));
        const std::string commande = "ASAN_OPTIONS=verify_asan_link_order=0 SV140_ESSAI_ARCHIVE='" +
                                     programme_ + "|" + donnees_ + "' /usr/bin/faketime -f '" +
                                     moment + "' '" + executable + "' 2>'" + erreurs + "'";
        ASSERT_EQ(std::system(commande.c_str()), 0) << commande;
    };
    const std::string racine = joindre(donnees_, "Sv140");

    archiver("2024-02-29 23:59:59", "r1", "q1");
    EXPECT_EQ(lire(erreurs), "MsgBox : SV140 : Le répertoire n'existe pas\n");
    archiver("2024-03-01 00:00:05", "r2", "q2");
    EXPECT_EQ(lire(erreurs), "");
    // Two archives in the same second: the later one replaces the earlier.
    archiver("2024-03-01 00:00:05", "r3", "q3");

    EXPECT_EQ(noms(racine), (std::set<std::string>{"202402", "202403"}));
    const std::string fevrier = joindre(racine, "202402");
    const std::string mars = joindre(racine, "202403");
    EXPECT_EQ(noms(fevrier), (std::set<std::string>{"REQ_f_LireCVitale_20240229_235959.xml",
                                                    "RSP_f_LireCVitale_20240229_235959.xml"}));
    EXPECT_EQ(noms(mars), (std::set<std::string>{"REQ_f_LireCVitale_20240301_000005.xml",
                                                 "RSP_f_LireCVitale_20240301_000005.xml"}));
    EXPECT_EQ(lire(joindre(fevrier, "RSP_f_LireCVitale_20240229_235959.xml")), "r1");
    EXPECT_EQ(lire(joindre(mars, "RSP_f_LireCVitale_20240301_000005.xml")), "r3");
    EXPECT_EQ(lire(joindre(mars, "REQ_f_LireCVitale_20240301_000005.xml")), "q3");
}

TEST_F(OutilsTest, CheminsDe261CaracteresRefuses) {
    // Accented folder names make the byte length far larger than the character
    // length: the limit counts characters.
    std::string accents;
    for (int k = 0; k < 100; ++k) {
        accents += "é";
    }
    std::string sous_dossier = dossier_;
    for (int i = 0; i < 2; ++i) {
        sous_dossier = joindre(sous_dossier, accents);
        ASSERT_TRUE(creer_dossier(sous_dossier));
    }
    const auto chemin_de = [&](std::size_t longueur, char lettre) {
        return joindre(sous_dossier, std::string(longueur - caracteres(sous_dossier) - 1, lettre));
    };
    const std::string court = joindre(dossier_, "court.xml");
    ASSERT_TRUE(ecrire_fichier(court, "court"));

    const struct {
        bool source_longue;
        std::size_t longueur;
        bool copie;
    } cas[] = {
        {false, 260, true},
        {false, 261, false},
        {true, 260, true},
        {true, 261, false},
    };
    for (const auto& c : cas) {
        const std::string long_chemin = chemin_de(c.longueur, c.source_longue ? 's' : 'd');
        ASSERT_EQ(caracteres(long_chemin), c.longueur);
        ASSERT_GT(long_chemin.size(), c.longueur + 100);
        if (c.source_longue) {
            ASSERT_TRUE(ecrire_fichier(long_chemin, "long"));
            EXPECT_EQ(Copier_Fichier(long_chemin, court, true), c.copie) << c.longueur;
            EXPECT_EQ(lire(court), c.copie ? "long" : "court");
            ASSERT_TRUE(ecrire_fichier(court, "court"));
        } else {
            EXPECT_EQ(Copier_Fichier(court, long_chemin, true), c.copie) << c.longueur;
            EXPECT_EQ(fichier_existe(long_chemin), c.copie);
        }
    }
}

TEST_F(OutilsTest, CopieEcraseOuNon) {
    const std::string source = joindre(programme_, "ZEMO_SvResponse.xml");
    const std::string destination = joindre(programme_, "ZEMO_Response.xml");
    const struct {
        bool presente;
        bool ecraser;
        bool copie;
        const char* apres;
    } cas[] = {
        {false, false, true, "neuve"},
        {true, true, true, "neuve"},
        {true, false, false, "ancienne"},
    };
    ASSERT_TRUE(ecrire_fichier(source, "neuve"));
    for (const auto& c : cas) {
        supprimer_fichier(destination);
        if (c.presente) {
            ASSERT_TRUE(ecrire_fichier(destination, "ancienne"));
        }
        EXPECT_EQ(Copier_Fichier(source, destination, c.ecraser), c.copie);
        EXPECT_EQ(lire(destination), c.apres);
    }
    EXPECT_FALSE(Copier_Fichier(joindre(programme_, "absent.xml"), destination, true));
}

TEST_F(OutilsTest, LancerEtAttendreAttendLaFin) {
    const std::string trace = joindre(dossier_, "fini.txt");
    Lancer_Et_Attendre("/bin/sh -c \"sleep 0.2; echo fini > '" + trace + "'\"");
    EXPECT_EQ(lire(trace), "fini\n");
    Lancer_Et_Attendre(joindre(dossier_, "absent"));
}

}  // namespace
}  // namespace sv140
