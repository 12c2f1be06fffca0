// The query of a patient's rights with a complementary insurer (AMC). The bridge does
// not read the answer: it keeps the exchange under its own names for the host.
#include <string>

#include "cards/cartes.h"
#include "exchange/document.h"
#include "exchange/fichiers.h"
#include "exchange/requete.h"
#include "exchange/run.h"
#include "platform/systeme.h"
#include "tools/outils.h"

namespace sv140 {

Statut Requete_f_LireInfosComplementaire(Run& run) {
    auto entree = Charger_Document(run, fichiers::kRequeteHote, "f_LireInfosComplementaire",
                                   "Impossible de lire ZEMO_Request.xml");
    if (!entree) {
        return Statut::Deja_Repondu("ZEMO_Request.xml illisible");
    }
    Champs beneficiaire{"codeRegime", "codeCaisse", "codeCentre"};
    beneficiaire.lire(*entree, "/BelvaneClassicII/beneficiaire");
    Champs tiers_payant{"numeroMutuelle"};
    tiers_payant.lire(*entree, "/BelvaneClassicII/donneesTP");
    std::string numeroMutuelle = tiers_payant("numeroMutuelle");
    // The host files this insurer with a leading zero that the middleware refuses.
    if (numeroMutuelle == "099999997") {
        numeroMutuelle = "99999997";
    }

    Requete requete("f_LireInfosComplementaire");
    if (Statut ps = requete.ajouter_PS(run, /*avec_numSitu=*/true, /*avec_motDePasse=*/false);
        !ps) {
        return ps;  // the answer says which professional data could not be read
    }
    requete.operation().ajouter("offre", "ITSV");
    XmlNoeud donnees = requete.operation().ajouter("donneesComplementaire");
    donnees.ajouter("numeroComplementaire", numeroMutuelle);
    donnees.ajouter("codeRegime", beneficiaire("codeRegime"));
    donnees.ajouter("codeCaisse", beneficiaire("codeCaisse"));
    donnees.ajouter("codeCentre", beneficiaire("codeCentre"));
    return requete.enregistrer(run);
}

Statut Conserver_Echange_AMC(Run& run) {
    // The host takes the copies for the insurer's answer: an answer that cannot be read
    // is none.
    if (!Charger_Reponse(run, "f_LireInfosComplementaire")) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    const struct {
        const char *source, *copie;
    } copies[] = {{fichiers::kRequete, fichiers::kRequeteAMC},
                  {fichiers::kReponse, fichiers::kReponseAMC}};
    for (const auto& c : copies) {
        if (fichier_existe(run.fichier(c.source))) {
            Copier_Fichier(run.fichier(c.source), run.fichier(c.copie), true);
        }
    }
    return {};
}

}  // namespace sv140
