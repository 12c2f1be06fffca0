// What the simulator's tests share: a fresh demo state per test and calls through the
// library's entry point, with requests written as the bridge writes them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "platform/encodage.h"
#include "platform/systeme.h"
#include "platform/xml.h"
#include "sim/etat.h"
#include "sim/fonctions.h"

namespace sv140::sim::test {

/// The demo professional: national identifier, invoicing numbers of situations 1 and 2.
inline const std::string kIdNat = "991234567", kIdFac1 = "991001231", kIdFac2 = "991004565";

inline const std::string kDate = "<dateLecture>20240305</dateLecture>";

/// A request as the bridge sends it: declaration, CR LF line ends, Windows-1252.
inline std::string requete(const std::string& op, const std::string& parametres = "",
                           bool avec_version = true) {
    return utf8_vers_cp1252(
        "<?xml version='1.0' encoding='ISO-8859-1'?>\r\n<ZRMESSAGE>\r\n<programme>Belvane_Classic "
        "II</programme>\r\n<requete>\r\n<fonction>\r\n<" +
        op + ">\r\n" + (avec_version ? "<versionMessage>0001</versionMessage>\r\n" : "") +
        parametres + "</" + op + ">\r\n</fonction>\r\n</requete>\r\n</ZRMESSAGE>\r\n");
}

/// The professional block; an empty `numSitu` or `motDePasse` is left out.
inline std::string bloc_ps(const std::string& idNat, const std::string& idFac,
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
    /// The texts of every node `chemin` selects under `resultat`, in document order.
    std::vector<std::string> textes(const std::string& chemin) const {
        std::vector<std::string> t;
        for (const XmlNoeud& n : doc.selectionner("/ZRMESSAGE/resultat/" + chemin)) {
            t.push_back(n.texte());
        }
        return t;
    }
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

}  // namespace sv140::sim::test
