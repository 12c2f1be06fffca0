// The query of a patient's rights with a complementary insurer (AMC). The bridge does
// not read the answer: it keeps the exchange under its own names for the host.
#include <string>

#include "cards/cartes.h"
#include "exchange/echange.h"
#include "exchange/requete.h"
#include "main/run.h"
#include "platform/systeme.h"
#include "platform/xml.h"
#include "tools/outils.h"

namespace sv140 {

bool Requete_f_LireInfosComplementaire(Run& run) {
    XmlDocument entree;
    if (!entree.charger_fichier(run.fichier("ZEMO_Request.xml"))) {
        Reponse_Erreur(run, "99", "Impossible de lire ZEMO_Request.xml",
                       "f_LireInfosComplementaire");
        return false;
    }

    std::string codeRegime, codeCaisse, codeCentre, numeroMutuelle;
    for (const XmlNoeud& b : entree.selectionner("/BelvaneClassicII/beneficiaire")) {
        codeRegime = b.texte_de("codeRegime");
        codeCaisse = b.texte_de("codeCaisse");
        codeCentre = b.texte_de("codeCentre");
    }
    for (const XmlNoeud& tp : entree.selectionner("/BelvaneClassicII/donneesTP")) {
        numeroMutuelle = tp.texte_de("numeroMutuelle");
    }
    // The host files this insurer with a leading zero that the middleware refuses.
    if (numeroMutuelle == "099999997") {
        numeroMutuelle = "99999997";
    }

    Requete requete("f_LireInfosComplementaire");
    if (!requete.ajouter_PS(run, /*avec_numSitu=*/true, /*avec_motDePasse=*/false)) {
        return false;  // the answer says which professional data could not be read
    }
    requete.operation().ajouter("offre", "ITSV");
    XmlNoeud donnees = requete.operation().ajouter("donneesComplementaire");
    donnees.ajouter("numeroComplementaire", numeroMutuelle);
    donnees.ajouter("codeRegime", codeRegime);
    donnees.ajouter("codeCaisse", codeCaisse);
    donnees.ajouter("codeCentre", codeCentre);
    requete.enregistrer(run);
    return true;
}

void Conserver_Echange_AMC(Run& run) {
    const std::string requete = run.fichier("ZEMO_SvRequest.xml");
    if (fichier_existe(requete)) {
        Copier_Fichier(requete, run.fichier("ZEMO_SvRequestAMC.xml"), true);
    }
    const std::string reponse = run.fichier("ZEMO_SvResponse.xml");
    if (fichier_existe(reponse)) {
        Copier_Fichier(reponse, run.fichier("ZEMO_SvResponseAMC.xml"), true);
    }
}

}  // namespace sv140
