#include "data/connexions.h"

namespace sv140 {

void Ouvrir_Connexions(Connexions& c, const std::string& hote, const std::string& temporaire,
                       const std::string& pont) {
    if (c.ouvertes) {
        return;
    }
    c.ouvertes = true;
    // Each failure is logged by the connection and given again to every statement
    // sent to it: only a routine that needs that database fails.
    (void)c.hote.ouvrir(hote);
    // No operation sends the temporary database a statement today: connecting to it
    // would cost a short run a third of its time.
    c.temporaire.ouvrir_a_la_demande(temporaire);
    (void)c.pont.ouvrir(pont);
}

UniteDeTravail::~UniteDeTravail() {
    if (!termine_) {
        annuler();
    }
}

Statut UniteDeTravail::valider() {
    termine_ = true;
    for (Connexion* base : {&c_.pont, &c_.hote, &c_.temporaire}) {
        if (!base->ouverte()) {
            continue;
        }
        if (Statut s = base->valider(); !s) {
            annuler();
            return s;
        }
    }
    return {};
}

void UniteDeTravail::annuler() {
    termine_ = true;
    for (Connexion* base : {&c_.pont, &c_.hote, &c_.temporaire}) {
        base->annuler();
    }
}

Statut Enregistrer_Par_Unite(Connexions& c, std::size_t nombre,
                             const std::function<Statut(std::size_t)>& enregistrer,
                             const std::function<std::string(std::size_t)>& nom) {
    std::string echecs;
    std::string premiere_raison;
    for (std::size_t i = 0; i < nombre; ++i) {
        UniteDeTravail unite(c);
        Statut s = enregistrer(i);
        if (s) {
            s = unite.valider();
        }
        if (!s) {
            echecs += (echecs.empty() ? "" : ", ") + nom(i);
            if (premiere_raison.empty()) {
                premiere_raison = s.raison();
            }
        }
    }
    if (echecs.empty()) {
        return {};
    }
    return Statut::Echec("non enregistré : " + echecs + " (" + premiere_raison + ")");
}

}  // namespace sv140
