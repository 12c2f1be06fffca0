#include "tools/outils.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "aide_test.h"
#include "data/texte_sql.h"
#include "platform/encodage.h"
#include "platform/systeme.h"

namespace sv140 {
namespace {

TEST(Outils, LogLineInZonesOf14Columns) {
    const struct {
        std::tm t;
        const char *message, *ligne;
    } cas[] = {{test::date(2024, 3, 5, 14, 30, 12), "Chaine_Command : f_LireCVitale /shop",
                "05/03/2024    14:30:12      Chaine_Command : f_LireCVitale /shop"},
               {test::date(1999, 12, 31, 0, 0, 0), "Récupération Chemin",
                "31/12/1999    00:00:00      Récupération Chemin"},
               {test::date(2024, 1, 1, 9, 5, 7), "", "01/01/2024    09:05:07      "}};
    for (const auto& c : cas) {
        EXPECT_EQ(Ligne_Log(c.t, c.message), c.ligne);
    }
    EXPECT_EQ(Date_SQL(test::date(2024, 3, 5, 14, 30, 12)), "#03-05-2024 14:30:12#");
}

TEST(Outils, CopyRefusesPathsOf261Characters) {
    // Accented folder names make the byte length far larger than the character
    // length: the limit counts characters.
    test::DossierTemporaire dossier;
    std::string accents;
    for (int k = 0; k < 100; ++k) {
        accents += "é";
    }
    std::string sous_dossier = dossier.chemin();
    for (int i = 0; i < 2; ++i) {
        sous_dossier = joindre(sous_dossier, accents);
        ASSERT_TRUE(creer_dossier(sous_dossier));
    }
    const std::string court = dossier / "court.xml";
    const struct {
        bool source_longue;
        std::size_t longueur;
        bool copie;
    } cas[] = {{false, 260, true}, {false, 261, false}, {true, 260, true}, {true, 261, false}};
    for (const auto& c : cas) {
        const std::string long_chemin =
            joindre(sous_dossier, std::string(c.longueur - longueur_caracteres(sous_dossier) - 1,
                                              c.source_longue ? 's' : 'd'));
        ASSERT_GT(long_chemin.size(), c.longueur + 100);
        ASSERT_TRUE(ecrire_fichier(court, "court"));
        if (c.source_longue) {
            ASSERT_TRUE(ecrire_fichier(long_chemin, "long"));
            EXPECT_EQ(Copier_Fichier(long_chemin, court, true), c.copie) << c.longueur;
            EXPECT_EQ(test::lire(court), c.copie ? "long" : "court");
        } else {
            EXPECT_EQ(Copier_Fichier(court, long_chemin, true), c.copie) << c.longueur;
            EXPECT_EQ(fichier_existe(long_chemin), c.copie);
        }
    }
}

TEST(Outils, CopyOverwritesOrNot) {
    test::DossierTemporaire dossier;
    const std::string source = dossier / "ZEMO_SvResponse.xml";
    const std::string destination = dossier / "ZEMO_Response.xml";
    const struct {
        bool presente, ecraser, copie;
        const char* apres;
    } cas[] = {{false, false, true, "neuve"},
               {true, true, true, "neuve"},
               {true, false, false, "ancienne"}};
    ASSERT_TRUE(ecrire_fichier(source, "neuve"));
    for (const auto& c : cas) {
        supprimer_fichier(destination);
        if (c.presente) {
            ASSERT_TRUE(ecrire_fichier(destination, "ancienne"));
        }
        EXPECT_EQ(Copier_Fichier(source, destination, c.ecraser), c.copie);
        EXPECT_EQ(test::lire(destination), c.apres);
        // No temporary copy is left behind.
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dossier.chemin()), {}), 2);
    }
    ASSERT_TRUE(creer_dossier(dossier / "dossier"));
    EXPECT_FALSE(Copier_Fichier(dossier / "absent.xml", destination, true));
    EXPECT_FALSE(Copier_Fichier(dossier / "dossier", destination, true));
    EXPECT_FALSE(Copier_Fichier(source, dossier / "manque/dst.xml", true));
}

}  // namespace
}  // namespace sv140
