#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "aide_test.h"
#include "exchange/echange.h"
#include "exchange/run.h"
#include "platform/ui_console.h"

namespace sv140 {
namespace {

TEST(Echange, TheAnswerBecomesAOneLineDocument) {
    const std::string decl = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
    const struct {
        std::string brute, propre;
    } cas[] = {{"<!DOCTYPE ZRMESSAGE>\r\n<ZRMESSAGE>\r\n<a>1</a>\r\n</ZRMESSAGE>\r\n",
                decl + "<ZRMESSAGE><a>1</a></ZRMESSAGE>"},
               {decl + "\r\n<!DOCTYPE ZRMESSAGE>\r\n<ZRMESSAGE/>", decl + "<ZRMESSAGE/>"},
               {"<?xml version='1.0'?><ZRMESSAGE/>", "<?xml version='1.0'?><ZRMESSAGE/>"},
               {std::string("<ZRMESSAGE/>\0<reste/>", 21), "<ZRMESSAGE/>"},
               {"<ZRMESSAGE>a\nb\rc</ZRMESSAGE>", "<ZRMESSAGE>a\nb\rc</ZRMESSAGE>"},
               {std::string("\0\0", 2), ""}};
    for (const auto& c : cas) {
        EXPECT_EQ(Nettoyer_Reponse(c.brute), c.propre) << c.brute;
    }
}

TEST(Echange, ReturnCodes) {
    test::DossierTemporaire dossier;
    std::istringstream entree;
    std::ostringstream sortie;
    std::vector<std::string> boites;
    sv140::Run run =
        nouveau_run(dossier.chemin(),
                    creer_ui_console([&boites](std::string_view l) { boites.emplace_back(l); },
                                     entree, sortie));
    const struct {
        const char *operation, *code;
        bool retour, boite;  // boite: the optician is told
    } cas[] = {{"f_LireCVitale", "0", true, false},        {"f_LireCVitale", "", true, false},
               {"f_LireCVitale", "abc", true, false},      {"f_LireCVitale", "42", false, true},
               {"f_LireCPS", "99", false, true},           {"f_LireCVitale", "98", false, false},
               {"f_LireCVitale", "297", false, false},     {"f_TransfertPJ", "42", false, false},
               {"f_TransfertPJ_unique", "1", false, false}};
    for (const auto& c : cas) {
        boites.clear();
        run.F_Appel = c.operation;
        test::ecrire(run.fichier("ZEMO_SvResponse.xml"),
                     std::string("<ZRMESSAGE><resultat><codeErreur>") + c.code +
                         "</codeErreur><libelleErreur>Carte absente</libelleErreur></resultat>"
                         "</ZRMESSAGE>");
        EXPECT_EQ(Lire_Reponse(run), c.retour) << c.operation << " " << c.code;
        std::vector<std::string> attendu;
        if (c.boite) {
            attendu.push_back("MsgBox : Erreur dans " + std::string(c.operation) + " : Erreur N° " +
                              c.code + " |  | Carte absente");
        }
        EXPECT_EQ(boites, attendu);
    }
}

}  // namespace
}  // namespace sv140
