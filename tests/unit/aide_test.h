// Shared helpers of the unit tests: a fresh folder per test and an interface that
// records the boxes instead of showing them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/ui.h"

namespace sv140::test {

/// A fresh, empty folder removed at the end of the test.
class DossierTemporaire {
  public:
    DossierTemporaire();
    ~DossierTemporaire();
    const std::string& chemin() const { return chemin_; }
    std::string operator/(const std::string& nom) const { return chemin_ + "/" + nom; }

  private:
    std::string chemin_;
};

/// Records every box and answers questions from a list (Cancel when it runs out).
class UiEnregistree : public Ui {
  public:
    struct Boite {
        std::string titre, texte;
        Icone icone;
    };
    std::vector<Boite> boites;
    std::vector<Reponse> reponses;

    void MsgBox(std::string_view texte, std::string_view titre, Icone icone) override {
        boites.push_back({std::string(titre), std::string(texte), icone});
    }
    Reponse Question(std::string_view texte, std::string_view titre, Icone icone) override {
        boites.push_back({std::string(titre), std::string(texte), icone});
        if (reponses.empty()) {
            return Reponse::Annuler;
        }
        Reponse r = reponses.front();
        reponses.erase(reponses.begin());
        return r;
    }
};

std::string lire(const std::string& chemin);
void ecrire(const std::string& chemin, const std::string& octets);

}  // namespace sv140::test
