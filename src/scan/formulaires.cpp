// The document forms. Each acts on the images of the program folder, which it looks
// at again after every action: a deleted image is gone for the rest of the session.
#include <array>
#include <string>
#include <vector>

#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "platform/systeme.h"
#include "scan/scan.h"

namespace sv140 {

namespace {

constexpr const char* kNatures[] = {
    "Devis audioprothèses - DAUD",
    "Devis autre - DAUT",
    "Devis Lit - DLIT",
    "Devis Orthèses - DORT",
    "Devis Ortho prothèses - DOPT",
    "Devis podo-orthèses  - DPOD",
    "Devis prothèses oculaires et faciales - DPOF",
    "Devis verres iséiconiques - DVIS",
    "Facture autre - FAUT",
    "Facture détaillée Forfait annuel sonde cutanée périnéale - FDSC",
    "Facture détaillée Maintenance curative lit - FDCL",
    "Facture détaillée Photothérapie - FDPH",
    "Facture détaillée Réparations VPH - FDRV",
    "Facture détaillée autre - FDAU",
    "Facture Expédition podo-orthèse - FFEP",
    "Facture Forfait réparation processeur implant cochléaire - FFRP",
    "Facture Prothèses faciales - FPFA",
    "Facture Renouvellement double emboîture bras/av-bras - FRDE",
    "Facture R 165-25 css - FRCS",
    "Feuille de soins papier - FSNC",
    "Ordonnance GAO - OGA",
    "PJ non prévue dans ce tableau - AUTP",
};

/// What a paper collected instead of scanned shows in its field.
constexpr const char* kPapierCollecte = "Papier collecté (pas de numérisation)";

/// One kind in a review window: its label, its image and its transfer mode.
struct Document {
    const char* libelle;
    const char* image;
    std::string mode;
};

/// The field of a kind: the image's full path, the collected paper's state, or
/// cleared (label too) when there is no image.
ChampFormulaire champ(const Run& run, const Document& d) {
    const std::string chemin = run.fichier(d.image);
    if (!fichier_existe(chemin)) {
        return {};
    }
    return {d.libelle, d.mode == "M" ? std::string(kPapierCollecte) : chemin};
}

/// Shows a review window over `documents`: for each, "Ouvrir" and "Supprimer", then
/// the closing button "Enregistrer".
void Revoir(Run& run, const char* nom, const char* titre, const std::vector<Document>& documents) {
    Formulaire f;
    f.nom = nom;
    f.titre = titre;
    for (const Document& d : documents) {
        f.actions.push_back(std::string("Ouvrir ") + d.libelle);
        f.actions.push_back(std::string("Supprimer ") + d.libelle);
    }
    f.actions.push_back("Enregistrer");
    f.fermeture = static_cast<int>(f.actions.size());
    auto rafraichir = [&] {
        f.champs.clear();
        for (const Document& d : documents) {
            f.champs.push_back(champ(run, d));
        }
    };
    rafraichir();
    run.ui->Montrer(f, [&](int action) {
        const Document& d = documents[static_cast<std::size_t>(action - 1) / 2];
        const std::string chemin = run.fichier(d.image);
        if (!fichier_existe(chemin)) {
            return;
        }
        if (action % 2 == 1) {
            run.ui->Ouvrir(chemin);
        } else if (supprimer_fichier(chemin)) {
            run.log(std::string("Document supprimé par l'opticien : ") + chemin);
        } else {
            run.log("Impossible de supprimer " + chemin);
        }
        rafraichir();
    });
}

}  // namespace

std::span<const char* const> Natures_Autre_PJ() {
    return kNatures;
}

std::string Code_Nature(std::string_view entree) {
    const std::size_t tiret = entree.find(" - ");
    return tiret == std::string_view::npos ? std::string() : std::string(entree.substr(tiret + 3));
}

void Documents_SCOR(Run& run, const ModesScor& modes) {
    Revoir(run, "Documents_SCOR", "visualisation des Documents",
           {{"Ordonnance", fichiers::kImageOrdonnance, modes.ordonnance},
            {"Feuille de soins", fichiers::kImageFeuilleDeSoins, modes.cerfa},
            {"Autre PJ", fichiers::kImageAutre, modes.autre}});
}

void Document_Ordo2(Run& run, const std::string& mode_ordonnance) {
    Revoir(run, "Document_Ordo2", "Scannerisation Ordonnance",
           {{"Ordonnance", fichiers::kImageOrdonnance, mode_ordonnance}});
}

std::optional<std::string> AutrePJ(Run& run) {
    std::vector<EntreeChoix> entrees;
    for (const char* nature : kNatures) {
        entrees.push_back({nature, Code_Nature(nature)});
    }
    std::optional<std::size_t> choix = run.ui->Choisir("Autre PJ", entrees);
    if (!choix) {
        return std::nullopt;
    }
    return entrees[*choix].code;
}

}  // namespace sv140
