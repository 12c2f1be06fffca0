#include "data/texte_sql.h"
#include "exchange/echange.h"
#include "invoicing/factures.h"
#include "main/run.h"
#include "platform/xml.h"

namespace sv140 {

bool Lire_Liste_Factures(Run& run) {
    XmlDocument doc;
    if (!doc.charger_fichier(run.fichier("ZEMO_SvResponse.xml"))) {
        // The list shares its error answer with the lot sending.
        Reponse_Illisible(run, "f_EnvoyerToutesFactures");
        return false;
    }
    for (const XmlNoeud& r : doc.selectionner("/ZRMESSAGE/resultat")) {
        if (Val(r.texte_de("codeErreur")) > 0) {
            return false;
        }
    }
    auto numeros = doc.selectionner("/ZRMESSAGE/resultat/donnees/listeFacture/numeroFacture");
    run.log("Factures listées : " + std::to_string(numeros.size()));
    return true;
}

}  // namespace sv140
