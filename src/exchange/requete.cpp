// The request envelope and the requests that need nothing else.
#include "exchange/requete.h"

#include "data/parametres.h"
#include "main/run.h"
#include "tools/outils.h"

namespace sv140 {

Requete::Requete(std::string_view operation, std::string_view versionMessage) {
    XmlNoeud racine = doc_.creer_racine("ZRMESSAGE");
    racine.ajouter("programme", "Belvane_Classic II");
    operation_ = racine.ajouter("requete").ajouter("fonction").ajouter(operation);
    operation_.ajouter("versionMessage", versionMessage);
}

bool Requete::ajouter_PS(Run& run, bool avec_numSitu, bool avec_motDePasse) {
    std::string idNat, idFac, numSitu;
    bool lus = Lire_Identifiants_PS(run, idNat, idFac, numSitu);
    XmlNoeud ps = operation_.ajouter("PS");
    ps.ajouter("idNat", idNat);
    ps.ajouter("idFac", idFac);
    if (avec_numSitu) {
        ps.ajouter("numSitu", numSitu);
    }
    if (avec_motDePasse) {
        ps.ajouter("motDePasse", idNat);
    }
    return lus;
}

bool Requete::enregistrer(Run& run) const {
    std::string chemin = run.fichier("ZEMO_SvRequest.xml");
    if (!doc_.enregistrer(chemin)) {
        run.log("Impossible d'écrire la requête " + chemin);
        return false;
    }
    return true;
}

void Requete_f_LireCVitale(Run& run) {
    Requete r("f_LireCVitale");
    r.operation().ajouter("dateLecture", Format_Date(Maintenant(), "%Y%m%d"));
    r.enregistrer(run);
}

void Requete_f_InitialisationPS(Run& run) {
    Requete r("f_InitialisationPS");
    r.ajouter_PS(run, true, true);
    r.enregistrer(run);
}

void Requete_f_LireVersion(Run& run) {
    Requete("f_LireVersion").enregistrer(run);
}

void Requete_f_MaJVersion(Run& run) {
    Requete r("f_MaJVersion");
    r.ajouter_PS(run, true, false);
    r.enregistrer(run);
}

void Requete_f_MettreAJourCV(Run& run) {
    Requete("f_MettreAJourCV").enregistrer(run);
}

void Requete_f_LireCPS(Run& run) {
    Requete("f_LireCPS").enregistrer(run);
}

void Requete_f_ListerFactures(Run& run) {
    Requete r("f_ListerFactures");
    r.ajouter_PS(run, false, false);
    r.enregistrer(run);
}

void Requete_f_RecupMessage(Run& run, std::string_view ordreEnErreur) {
    Requete r("f_RecupMessage");
    r.operation().ajouter("ordreEnErreur", ordreEnErreur);
    r.enregistrer(run);
}

}  // namespace sv140
