// The built library, loaded the way the bridge loads it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "appel_sim.h"
#include "platform/intergiciel.h"
#include "platform/systeme.h"
#include "sim/etat.h"

namespace sv140::sim::test {
namespace {

class Module : public ::testing::Test {
  protected:
    void SetUp() override {
        // A copy in a folder of its own: the library must find its state beside itself.
        const std::string copie = dossier_.sous(kNomIntergiciel);
        std::filesystem::copy_file(SV140_BIBLIOTHEQUE_SIMULEE, copie);
        std::string erreur;
        ASSERT_TRUE(Initialiser_Etat_Demo(dossier_.sous("zrsim"), erreur)) << erreur;
        poignee_ = dlopen(copie.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(poignee_, nullptr) << dlerror();
        executer_ = reinterpret_cast<ZR_Executer_t>(dlsym(poignee_, "ZR_Executer"));
        ASSERT_NE(executer_, nullptr);
    }
    void TearDown() override {
        if (poignee_ != nullptr) {
            dlclose(poignee_);
        }
    }

    DossierTemporaire dossier_;
    void* poignee_ = nullptr;
    ZR_Executer_t executer_ = nullptr;
};

TEST_F(Module, RepondAvecLEtatVoisin) {
    const std::string texte = requete("f_LireCPS");
    std::vector<char> tampon(102400, '\0');
    int taille = static_cast<int>(tampon.size());
    ASSERT_EQ(executer_(texte.c_str(), tampon.data(), &taille), 0);
    XmlDocument doc;
    ASSERT_TRUE(doc.charger_texte(nettoyer(std::string_view(tampon.data(), tampon.size()))));
    EXPECT_EQ(doc.selectionner_un("/ZRMESSAGE/resultat/codeErreur").texte(), "0");
    EXPECT_EQ(doc.selectionner("/ZRMESSAGE/resultat/donnees/contextePS/situation").size(), 2u);
}

TEST_F(Module, RetourInjecteTraverseLAppel) {
    std::string erreur;
    ASSERT_TRUE(Injecter_Retour(dossier_.sous("zrsim"), "f_LireVersion", 42, erreur)) << erreur;
    const std::string texte = requete("f_LireVersion");
    char tampon[4096] = {};
    int taille = sizeof tampon;
    EXPECT_EQ(executer_(texte.c_str(), tampon, &taille), 42);
    EXPECT_EQ(executer_(texte.c_str(), tampon, &taille), 0);
    EXPECT_EQ(executer_(texte.c_str(), nullptr, &taille), kRetourArgumentInvalide);
}

// The host loads other libraries beside this one; nothing of ours may leak out.
TEST_F(Module, SeulLePointDEntreeEstExporte) {
    EXPECT_EQ(
        dlsym(poignee_, "_ZN5sv1407joindreB5cxx11ESt17basic_string_viewIcSt11char_traitsIcEES3_"),
        nullptr);
    EXPECT_EQ(dlsym(poignee_,
                    "_ZN5sv1403sim8ExecuterERKNSt7__cxx1112basic_stringIcSt11char_"
                    "traitsIcESaIcEEEPKcPcPi"),
              nullptr);
}

}  // namespace
}  // namespace sv140::sim::test
