#include "scor/commun.h"

#include "data/connexions.h"
#include "exchange/document.h"
#include "exchange/echange.h"
#include "exchange/fichiers.h"
#include "exchange/requete.h"
#include "exchange/run.h"
#include "tools/outils.h"

namespace sv140::scor {

bool Lire_Nombre(const XmlNoeud& noeud, const std::string& chemin, long long& valeur,
                 std::string& erreur) {
    const std::string texte = noeud.texte_de(chemin);
    long long n = 0;
    for (char c : texte) {
        if (c < '0' || c > '9' || (n = n * 10 + (c - '0')) > kPlusGrandNombre) {
            erreur = "dctsScor.xml : " + chemin + " « " + texte +
                     " » n'est pas un nombre entier de 0 à " + std::to_string(kPlusGrandNombre);
            return false;
        }
    }
    valeur = n;
    return true;
}

std::string Neuf_Chiffres(long long n) {
    std::string texte = std::to_string(n);
    return texte.size() < 9 ? std::string(9 - texte.size(), '0') + texte : texte;
}

std::optional<XmlDocument> Charger_Ordre(Run& run) {
    return Charger_Document(run, fichiers::kOrdreScor, kAppelant, kOrdreIllisible);
}

Statut Identifiants(Run& run, IdentifiantsPS& ps) {
    if (Statut lus = Lire_Identifiants_PS(run.bases(), ps); !lus) {
        Reponse_Erreur(run, "99", lus.raison(), kAppelant);
        return Statut::Deja_Repondu(lus.raison());
    }
    return {};
}

void Terminer_Lectures(Run& run) {
    UniteDeTravail(run.bases()).annuler();
}

Statut Echanger(Run& run, const Requete& requete, std::string_view fonction) {
    if (Statut s = requete.enregistrer(run); !s) {
        return s;
    }
    Envoyer_Et_Recuperer(run, fonction);
    if (run.interruption) {
        return Statut::Deja_Repondu(*run.interruption);
    }
    run.echange_archive =
        Archiver_Echange(*run.ui, run.F_Appel, run.Chemin, run.fichier(fichiers::kRequete),
                         run.fichier(fichiers::kReponse));
    return {};
}

}  // namespace sv140::scor
