// One run at a time in a program folder: the exchange files have fixed names.
#include <sys/wait.h>

#include <chrono>
#include <thread>

#include "harnais.h"

namespace bb {
namespace {

TEST_F(BoiteNoire, ASecondRunLeavesTheRunningOneAlone) {
    b.utiliser_script();
    b.scripter_fichier(1, ".attend", "");
    b.scripter_reponse(1, reponse_version("3.3"));
    ecrire(b.fichier("ZEMO_Response.xml"), reponse("f_LireCPS", "0", "earlier answer"));

    const pid_t premier = b.demarrer({"f_LireVersion", b.magasin}, "", "premier");
    // The first run is inside the middleware call once its request is recorded.
    for (int i = 0; i < 1200 && !existe(b.script("requete_1.xml")); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    ASSERT_TRUE(existe(b.script("requete_1.xml"))) << "the first run never called the middleware";

    const std::vector<std::string> fichiers{"LogsSV.txt", "ZEMO_SvRequest.xml",
                                            "ZEMO_SvResponse.xml", "ZEMO_Response.xml"};
    std::vector<std::optional<std::string>> avant;
    for (const auto& f : fichiers) {
        avant.push_back(lire(b.fichier(f)));
    }

    Execution second = b.lancer({"f_LireCPS", b.magasin});
    siginfo_t etat{};
    waitid(P_PID, static_cast<id_t>(premier), &etat, WEXITED | WNOHANG | WNOWAIT);
    const bool premier_en_cours = etat.si_pid == 0;
    std::vector<std::optional<std::string>> apres;
    for (const auto& f : fichiers) {
        apres.push_back(lire(b.fichier(f)));
    }
    ecrire(b.script("reveil"), "");
    Execution e1 = b.attendre(premier, "premier");

    EXPECT_TRUE(premier_en_cours)
        << "the second run only ended after the first one had finished: its wait for the "
           "lock did not end by itself under the fixed clock";
    EXPECT_TRUE(fin_propre(second));
    EXPECT_FALSE(second.erreurs.empty()) << "the second run ends without a word";
    EXPECT_EQ(b.appels(), 1) << "the second run called the middleware";
    for (std::size_t i = 0; i < fichiers.size(); ++i) {
        EXPECT_EQ(apres[i], avant[i]) << fichiers[i] << " changed under the running operation";
    }

    ASSERT_TRUE(fin_propre(e1));
    EXPECT_EQ(code_reponse(b.fichier("ZEMO_Response.xml")), "0");
    Base pont(b.base_pont());
    EXPECT_EQ(pont.valeur("SELECT Info_Version_VersionDLL FROM T_InfosVersion"), "3.3");
}

}  // namespace
}  // namespace bb
