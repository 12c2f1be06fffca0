// The request envelope and the requests that need nothing else.
#include "exchange/requete.h"

#include "data/parametres.h"
#include "exchange/echange.h"
#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "platform/horloge.h"
#include "tools/outils.h"

namespace sv140 {

Requete::Requete(std::string_view operation, std::string_view versionMessage) {
    XmlNoeud racine = doc_.creer_racine("ZRMESSAGE");
    racine.ajouter("programme", "Belvane_Classic II");
    operation_ = racine.ajouter("requete").ajouter("fonction").ajouter(operation);
    operation_.ajouter("versionMessage", versionMessage);
}

namespace {

void bloc_PS(XmlNoeud parent, const IdentifiantsPS& ps, bool avec_numSitu, bool avec_motDePasse) {
    XmlNoeud bloc = parent.ajouter("PS");
    bloc.ajouter("idNat", ps.idNat);
    bloc.ajouter("idFac", ps.idFac);
    if (avec_numSitu) {
        bloc.ajouter("numSitu", ps.numSitu);
    }
    if (avec_motDePasse) {
        bloc.ajouter("motDePasse", ps.idNat);
    }
}

}  // namespace

Statut Requete::ajouter_PS(Run& run, XmlNoeud parent, bool avec_numSitu, bool avec_motDePasse) {
    IdentifiantsPS ps;
    Statut lus = Lire_Identifiants_PS(run.bases(), ps);
    if (!lus) {
        Reponse_Erreur(run, "99", lus.raison(), "f_InitialisationPS");
        lus = Statut::Deja_Repondu(lus.raison());
    }
    bloc_PS(parent, ps, avec_numSitu, avec_motDePasse);
    return lus;
}

void Requete::ajouter_PS(const IdentifiantsPS& ps, bool avec_numSitu, bool avec_motDePasse) {
    bloc_PS(operation_, ps, avec_numSitu, avec_motDePasse);
}

Statut Requete::enregistrer(Run& run) const {
    std::string chemin = run.fichier(fichiers::kRequete);
    run.echange_archive = false;
    if (!doc_.enregistrer(chemin)) {
        return Statut::Echec("Impossible d'écrire la requête " + chemin);
    }
    return {};
}

Statut Requete_f_LireCVitale(Run& run) {
    Requete r("f_LireCVitale");
    r.operation().ajouter("dateLecture", Format_Date(maintenant_local(), "%Y%m%d"));
    return r.enregistrer(run);
}

// The professional requests go out even without the professional's data, with empty
// identifiers: the middleware's answer then tells the host what is missing.
Statut Requete_f_InitialisationPS(Run& run) {
    Requete r("f_InitialisationPS");
    (void)r.ajouter_PS(run, true, true);
    return r.enregistrer(run);
}

Statut Requete_f_LireVersion(Run& run) {
    return Requete("f_LireVersion").enregistrer(run);
}

Statut Requete_f_MaJVersion(Run& run) {
    Requete r("f_MaJVersion");
    (void)r.ajouter_PS(run, true, false);
    return r.enregistrer(run);
}

Statut Requete_f_MettreAJourCV(Run& run) {
    return Requete("f_MettreAJourCV").enregistrer(run);
}

Statut Requete_f_LireCPS(Run& run) {
    return Requete("f_LireCPS").enregistrer(run);
}

Statut Requete_f_ListerFactures(Run& run) {
    Requete r("f_ListerFactures");
    (void)r.ajouter_PS(run, false, false);
    return r.enregistrer(run);
}

Statut Requete_f_RecupMessage(Run& run, std::string_view ordreEnErreur) {
    Requete r("f_RecupMessage");
    r.operation().ajouter("ordreEnErreur", ordreEnErreur);
    return r.enregistrer(run);
}

}  // namespace sv140
