#include "exchange/document.h"

#include <stdexcept>

#include "exchange/echange.h"
#include "exchange/fichiers.h"
#include "exchange/run.h"

namespace sv140 {

std::optional<XmlDocument> Charger_Document(Run& run, std::string_view nom,
                                            std::string_view appelant, std::string_view message) {
    XmlDocument doc;
    if (doc.charger_fichier(run.fichier(nom))) {
        return doc;
    }
    run.log(std::string(nom) + " illisible : " + doc.erreur());
    Reponse_Erreur(run, "99", message, appelant);
    return std::nullopt;
}

std::optional<XmlDocument> Charger_Reponse(Run& run, std::string_view appelant) {
    return Charger_Document(run, fichiers::kReponse, appelant, kReponseIllisible);
}

Champs::Champs(std::initializer_list<std::string_view> chemins) {
    for (std::string_view c : chemins) {
        valeurs_.emplace(std::string(c), std::string());
    }
}

std::size_t Champs::lire(const XmlDocument& doc, std::string_view groupe) {
    const std::vector<XmlNoeud> noeuds = doc.selectionner(groupe);
    if (!noeuds.empty()) {
        lire(noeuds.back());
    }
    return noeuds.size();
}

void Champs::lire(const XmlNoeud& noeud) {
    for (auto& [chemin, valeur] : valeurs_) {
        valeur = noeud.texte_de(chemin);
    }
}

const std::string& Champs::operator()(std::string_view chemin) const {
    auto it = valeurs_.find(chemin);
    if (it == valeurs_.end()) {
        throw std::logic_error("champ non demandé : " + std::string(chemin));
    }
    return it->second;
}

}  // namespace sv140
