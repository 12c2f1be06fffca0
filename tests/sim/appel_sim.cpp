#include "appel_sim.h"

#include <filesystem>
#include <random>
#include <vector>

#include "platform/encodage.h"
#include "platform/systeme.h"
#include "sim/etat.h"

namespace sv140::sim::test {

DossierTemporaire::DossierTemporaire() {
    std::random_device alea;
    const auto base = std::filesystem::temp_directory_path();
    for (;;) {
        const auto essai = base / ("sv140-sim-" + std::to_string(alea()));
        if (std::filesystem::create_directory(essai)) {
            chemin_ = essai.string();
            return;
        }
    }
}

DossierTemporaire::~DossierTemporaire() {
    std::error_code ec;
    std::filesystem::remove_all(chemin_, ec);
}

std::string DossierTemporaire::sous(std::string_view nom) const {
    return joindre(chemin_, nom);
}

std::string requete(std::string_view operation, std::string_view parametres, bool avec_version) {
    const std::string op(operation);
    std::string texte =
        "<?xml version='1.0' encoding='ISO-8859-1'?>\r\n<ZRMESSAGE>\r\n"
        "<programme>Belvane_Classic II</programme>\r\n<requete>\r\n<fonction>\r\n<" +
        op + ">\r\n";
    if (avec_version) {
        texte += "<versionMessage>0001</versionMessage>\r\n";
    }
    texte +=
        std::string(parametres) + "</" + op + ">\r\n</fonction>\r\n</requete>\r\n</ZRMESSAGE>\r\n";
    return utf8_vers_cp1252(texte);
}

std::string bloc_ps(std::string_view idNat, std::string_view idFac, std::string_view numSitu,
                    std::string_view motDePasse) {
    std::string b =
        "<PS><idNat>" + std::string(idNat) + "</idNat><idFac>" + std::string(idFac) + "</idFac>";
    if (!numSitu.empty()) {
        b += "<numSitu>" + std::string(numSitu) + "</numSitu>";
    }
    if (!motDePasse.empty()) {
        b += "<motDePasse>" + std::string(motDePasse) + "</motDePasse>";
    }
    return b + "</PS>";
}

namespace {
void remplacer(std::string& texte, std::string_view quoi, std::string_view par) {
    for (auto pos = texte.find(quoi); pos != std::string::npos; pos = texte.find(quoi, pos)) {
        texte.replace(pos, quoi.size(), par);
        pos += par.size();
    }
}
}  // namespace

std::string nettoyer(std::string_view tampon) {
    std::string texte(tampon.substr(0, tampon.find('\0')));
    if (texte.find("<?xml version=") == std::string::npos) {
        remplacer(texte, "<!DOCTYPE ZRMESSAGE>", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>");
    } else {
        remplacer(texte, "<!DOCTYPE ZRMESSAGE>", "");
    }
    remplacer(texte, "\r\n", "");
    return texte;
}

Resultat appeler(const std::string& dossier_zrsim, const std::string& texte_requete, int taille) {
    std::vector<char> tampon(static_cast<std::size_t>(taille), '\0');
    int n = taille;
    Resultat r;
    r.retour = Executer(dossier_zrsim, texte_requete.c_str(), tampon.data(), &n);
    const std::string_view vue(tampon.data(), tampon.size());
    r.brut = std::string(vue.substr(0, vue.find('\0')));
    r.lisible = r.retour == 0 && r.doc.charger_texte(nettoyer(vue));
    return r;
}

}  // namespace sv140::sim::test
