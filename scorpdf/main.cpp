// Scor: the PDF generator of a SCOR session. The bridge writes dctsScorPDF.xml and
// the scanned images into the program folder, starts this program from there and
// waits; each document of the order becomes the PDF it names, in the same folder.
//
// Exit code 0 when every PDF was written, 1 otherwise; each failure is one line in
// French on standard error (the file the bridge sends this program's output to). A
// PDF is written whole or not at all: a file of that name already there stays as it
// was unless the new one was written and read back.
#include <filesystem>
#include <iostream>
#include <string>

#include "exchange/fichiers.h"
#include "platform/systeme.h"
#include "platform/xml.h"
#include "scorpdf/pdf.h"

namespace {

using namespace sv140;

std::filesystem::path chemin_fs(const std::string& utf8) {
    return std::filesystem::path(
        std::u8string(reinterpret_cast<const char8_t*>(utf8.data()), utf8.size()));
}

/// Puts `octets` in `chemin` through a temporary file of the same folder, renamed
/// onto it once it reads back exactly as written. The reason of a failure, or "".
std::string ecrire_entier(const std::string& chemin, const std::string& octets) {
    const std::string provisoire = chemin + ".tmp";
    std::string relu;
    std::string raison;
    if (!ecrire_fichier(provisoire, octets)) {
        raison = "écriture impossible dans le dossier " + dossier_parent(chemin);
    } else if (!lire_fichier(provisoire, relu) || relu != octets) {
        raison = "le fichier écrit ne se relit pas à l'identique";
    } else {
        std::error_code erreur;
        std::filesystem::rename(chemin_fs(provisoire), chemin_fs(chemin), erreur);
        if (!erreur) {
            return "";
        }
        raison = "impossible de remplacer le fichier : " + erreur.message();
    }
    supprimer_fichier(provisoire);
    return raison;
}

/// Whether a PDF name of the order names a file of this folder and nothing else.
bool nom_acceptable(const std::string& nom) {
    return !nom.empty() && nom.find_first_of("/\\:") == std::string::npos &&
           nom.find("..") == std::string::npos;
}

/// Writes the PDF of one document of the order. The reason of a failure, or "".
std::string generer(const std::string& dossier, const std::string& pdf, const char* image,
                    const scorpdf::Informations& infos) {
    if (!nom_acceptable(pdf)) {
        return "nom de fichier PDF refusé (il doit désigner un fichier du dossier du programme)";
    }
    std::string jpeg;
    if (!lire_fichier(joindre(dossier, image), jpeg)) {
        return std::string("image ") + image + " absente ou illisible";
    }
    std::string raison;
    const auto entete = scorpdf::lire_jpeg(jpeg, raison);
    if (!entete) {
        return std::string("image ") + image + " : " + raison;
    }
    return ecrire_entier(joindre(dossier, pdf), scorpdf::pdf_de_jpeg(jpeg, *entete, infos));
}

}  // namespace

int main() {
    const std::string dossier = dossier_programme();
    XmlDocument ordre;
    if (!ordre.charger_fichier(joindre(dossier, fichiers::kOrdrePdf))) {
        std::cerr << "Scor : Impossible de lire dctsScorPDF.xml (" << ordre.erreur() << ")\n";
        return 1;
    }
    const XmlNoeud donnees = ordre.selectionner_un("/ZRMESSAGE/requete/fonction/f_Scor/donnees");
    if (!donnees) {
        std::cerr << "Scor : Impossible de lire dctsScorPDF.xml (aucun élément donnees)\n";
        return 1;
    }

    struct Document {
        const char* groupe;
        const char* image;
        const char* nature;  // null: the order's natureAutre
    };
    const Document documents[] = {
        {"Ordonnance", fichiers::kImageOrdonnance, "ORDN"},
        {"Cerfa", fichiers::kImageFeuilleDeSoins, "FSNC"},
        {"Autre", fichiers::kImageAutre, nullptr},
    };
    int code = 0;
    for (const Document& d : documents) {
        const XmlNoeud groupe = donnees.selectionner_un(d.groupe);
        if (!groupe) {
            continue;
        }
        const std::string pdf = groupe.texte_de("pdf");
        const scorpdf::Informations infos{d.nature ? d.nature : groupe.texte_de("natureAutre"),
                                          groupe.texte_de("Facture")};
        if (const std::string raison = generer(dossier, pdf, d.image, infos); !raison.empty()) {
            std::cerr << "Scor : " << d.groupe << " « " << pdf << " » : " << raison << "\n";
            code = 1;
        }
    }
    return code;
}
