// One run at a time in a program folder: the exchange files have fixed names.
#include <chrono>
#include <future>
#include <thread>

#include "harnais.h"

namespace bb {
namespace {

TEST_F(BoiteNoire, ASecondRunLeavesTheRunningOneAlone) {
    utiliser_script();
    ecrire(script("1.attend"), "");
    scripter(1, reponse_version("3.3"));
    ecrire(fichier("ZEMO_Response.xml"), reponse("f_LireCPS", "0", "earlier answer"));
    auto premier = std::async(std::launch::async, [this] { return operation("f_LireVersion"); });
    // The first run is inside the middleware call once its request is recorded.
    for (int i = 0; i < 1200 && !existe(script("requete_1.xml")); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    ASSERT_TRUE(existe(script("requete_1.xml"))) << "the first run never called the middleware";
    auto fichiers = [&] {
        std::vector<std::optional<std::string>> f;
        for (const char* nom :
             {"LogsSV.txt", "ZEMO_SvRequest.xml", "ZEMO_SvResponse.xml", "ZEMO_Response.xml"}) {
            f.push_back(lire(fichier(nom)));
        }
        return f;
    };
    const auto avant = fichiers();

    Execution second = operation("f_LireCPS");
    EXPECT_EQ(premier.wait_for(std::chrono::seconds(0)), std::future_status::timeout)
        << "the second run only ended after the first one: its wait for the lock did not end "
           "by itself under the fixed clock";
    EXPECT_EQ(fichiers(), avant) << "files changed under the running operation";
    ecrire(script("reveil"), "");
    EXPECT_TRUE(fin_propre(second));
    EXPECT_NE(second.erreurs, "") << "the second run ends without a word";
    EXPECT_TRUE(fin_propre(premier.get()));
    EXPECT_EQ(appels(), 1) << "the second run called the middleware";
    EXPECT_EQ(xml(fichier("ZEMO_Response.xml"), "//codeErreur"), Textes{"0"});
    EXPECT_EQ(versions(), Lignes{version_stockee("3.3")});
}

}  // namespace
}  // namespace bb
