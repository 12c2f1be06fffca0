#include "shop/installation.h"

#include <utility>

#include "exchange/fichiers.h"
#include "platform/intergiciel.h"
#include "platform/systeme.h"
#include "shop/schema.h"
#include "sim/etat.h"

namespace sv140::shop {

std::string Installation::pont() const {
    return joindre(programme, kNomPont);
}

Installation Disposition(const std::string& dossier) {
    Installation inst;
    inst.racine = joindre(dossier, "Belvane_Classic");
    inst.programme = joindre(inst.racine, "SV140");
    inst.magasin = joindre(inst.racine, "_Magasin");
    inst.temporaire = joindre(inst.racine, kBaseTemporaire);
    inst.zrsim = joindre(inst.programme, "zrsim");
    return inst;
}

Issue Installer(const std::string& dossier, const std::string& source, std::string& erreur) {
    const Installation inst = Disposition(dossier);
    if (dossier_existe(inst.racine) || fichier_existe(inst.racine)) {
        erreur = inst.racine + " existe déjà";
        return Issue::Existe;
    }
    // In the Windows package the simulator waits in its own folder, so that it never
    // stands beside the bridge under the real middleware's name by accident.
    const std::string simulateur =
        fichier_existe(joindre(source, kNomIntergiciel)) ? source : joindre(source, "simulateur");
    // The PDF generator and the collected paper's image are the capture's own files.
    const std::pair<const char*, std::string> livres[] = {{kNomPont, source},
                                                          {kNomIntergiciel, simulateur},
                                                          {fichiers::kGenerateurPdf, source},
                                                          {fichiers::kPapierCollecte, source}};
    for (const auto& [nom, dossier_source] : livres) {
        if (!fichier_existe(joindre(dossier_source, nom))) {
            erreur = std::string(nom) + " introuvable dans " + dossier_source;
            return Issue::Echec;
        }
    }
    for (const std::string& d : {dossier, inst.racine, inst.programme, inst.magasin, inst.zrsim}) {
        if (!creer_dossier(d)) {
            erreur = "impossible de créer le dossier " + d;
            return Issue::Echec;
        }
    }
    for (const auto& [nom, dossier_source] : livres) {
        const std::string cible = joindre(inst.programme, nom);
        const bool programme = std::string_view(nom) != fichiers::kPapierCollecte;
        if (!copier_fichier_systeme(joindre(dossier_source, nom), cible, true) ||
            (programme && !rendre_executable(cible))) {
            erreur = "impossible de copier " + std::string(nom) + " dans " + inst.programme;
            return Issue::Echec;
        }
    }
    if (!Creer_Bases(inst.magasin, inst.temporaire, erreur)) {
        return Issue::Echec;
    }
    if (!sim::Initialiser_Etat_Demo(inst.zrsim, erreur)) {
        erreur = "état du simulateur : " + erreur;
        return Issue::Echec;
    }
    return Issue::Faite;
}

}  // namespace sv140::shop
