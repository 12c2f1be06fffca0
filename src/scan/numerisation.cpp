// One scan operation: the optician is asked for the document, which is scanned with
// the shop's settings for its kind and converted to the kind's JPEG under the size the
// scheme accepts, or declared collected on paper, in which case the installation's
// ready-made image stands in for it.
#include <climits>
#include <cmath>
#include <string>

#include "data/connexions.h"
#include "data/instructions.h"
#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "platform/systeme.h"
#include "scan/scan.h"
#include "tools/outils.h"

namespace sv140 {

namespace {

/// What the optician is told for each kind.
struct Libelles {
    std::string_view type;
    const char* titre;
    const char* entete;
    const char* consigne;
    const char* document;
};

constexpr Libelles kLibelles[] = {
    {kOrdo, "SCOR Ordonnance", "ATTENTION : ORDONNANCE", "Insérer l'ordonnance puis <OUI>",
     "Le document Ordonnance"},
    {kCerfa, "SCOR Cerfa", "ATTENTION : FEUILLE DE SOINS", "Insérer la feuille de soins puis <OUI>",
     "Le document Feuille de Soins"},
    {kAutp, "SCOR Autre Pièce", "ATTENTION : AUTRE PIECE", "Insérer la Pièce jointe puis <OUI>",
     "Le document Autre Pièce jointe"},
};

const Libelles& libelles(std::string_view type) {
    for (const Libelles& l : kLibelles) {
        if (l.type == type) {
            return l;
        }
    }
    return kLibelles[2];
}

/// A setting as a whole number: `defaut` when Null (and when 0 if `zero_par_defaut`);
/// a stored value beyond what a number of the scanner holds is brought back in range.
int reglage(const Recordset& rs, const std::string& colonne, int defaut, bool zero_par_defaut) {
    const Valeur v = rs.champ(colonne);
    if (v.nul()) {
        return defaut;
    }
    const double n = std::trunc(v.nombre());
    if (zero_par_defaut && n == 0) {
        return defaut;
    }
    if (!(n >= INT_MIN)) {  // also NaN
        return INT_MIN;
    }
    return n > INT_MAX ? INT_MAX : static_cast<int>(n);
}

long long taille(const std::string& chemin) {
    std::string octets;
    return lire_fichier(chemin, octets) ? static_cast<long long>(octets.size()) : -1;
}

/// Scans one page into the program folder's BMP, offering the source chooser once when
/// the source is not available.
void scanner_page(Run& run, const ParametresScan& p, const std::string& bmp) {
    Scanner& scanner = run.numeriseur();
    ResultatScan r = scanner.numeriser(p.reglages, bmp);
    if (r.etat == EtatScan::SourceIndisponible) {
        run.log("Source de numérisation indisponible : " + r.raison);
        if (!scanner.choisir_source(*run.ui)) {
            run.log("Aucune source choisie : nouvel essai avec la source par défaut");
        }
        r = scanner.numeriser(p.reglages, bmp);
    }
    if (r.etat != EtatScan::Reussi) {
        run.log("Numérisation impossible : " + r.raison);
    }
}

}  // namespace

const char* Image_Du_Type(std::string_view type) {
    if (type == kOrdo) {
        return fichiers::kImageOrdonnance;
    }
    return type == kCerfa ? fichiers::kImageFeuilleDeSoins : fichiers::kImageAutre;
}

ParametresScan Lire_Parametres_Scan(Connexions& c, std::string_view type) {
    const bool cerfa = type == kCerfa;
    const std::string k = cerfa ? "FSE" : type == kOrdo ? "ORD" : "AUT";
    ParametresScan p;
    p.reglages.resolution = 200;
    p.reglages.type_pixel = 1;
    p.reglages.luminosite = cerfa ? 200 : 0;
    p.reglages.contraste = 0;
    p.qualite = cerfa ? 5 : 60;
    auto rs = Premiere_Ligne(
        c.pont, "SELECT T_InfoParam.* From T_InfoParam WHERE (((T_InfoParam.Info_Param_ID)=1));");
    if (!rs || rs->EOF_()) {
        return p;
    }
    p.reglages.resolution = reglage(*rs, "DPI_" + k + "_SCOR", 200, true);
    p.reglages.type_pixel = reglage(*rs, "CLR_" + k + "_SCOR", 1, true);
    p.qualite = reglage(*rs, "QUA_" + k + "_SCOR", p.qualite, false);
    p.reglages.luminosite = reglage(*rs, "LUM_" + k + "_SCOR", p.reglages.luminosite, false);
    p.reglages.contraste = reglage(*rs, "CON_" + k + "_SCOR", 0, false);
    return p;
}

void Numeriser(Run& run, std::string_view type, std::string& mode) {
    const Libelles& l = libelles(type);
    const ParametresScan p = Lire_Parametres_Scan(run.bases(), type);
    // Nothing is held open on the shop's databases while the optician is at the scanner.
    UniteDeTravail(run.bases()).annuler();

    const std::string image = run.fichier(Image_Du_Type(type));
    const Reponse r = run.ui->Question(
        std::string(l.entete) + "\n" + l.consigne + "\n\n" +
            "En cliquant sur <NON> l'information Collecte Papier sera automatiquement insérée",
        l.titre, Icone::Question);

    if (r == Reponse::Oui) {
        // A page left by an earlier scan must never stand for this patient's.
        const std::string bmp = run.fichier(fichiers::kPageScannee);
        supprimer_fichier(bmp);
        scanner_page(run, p, bmp);
        if (fichier_existe(bmp)) {
            std::string raison;
            if (!run.convertisseur().bmp_vers_jpeg(bmp, image, p.qualite, raison)) {
                run.log("Conversion de la page en " + image + " impossible : " + raison);
            }
        }
        if (const long long octets = taille(image); octets >= kTailleMaximaleImage) {
            run.log(image + " refusé : " + std::to_string(octets) + " octets");
            run.ui->MsgBox(std::string(l.document) + "\n" + "dépasse la taille autorisée de 250 Ko",
                           "Taille incorrecte", Icone::Critique);
            supprimer_fichier(image);
        }
        supprimer_fichier(bmp);
    } else if (r == Reponse::Non) {
        const std::string collecte = run.fichier(fichiers::kPapierCollecte);
        if (fichier_existe(collecte)) {
            if (!Copier_Fichier(collecte, image, false)) {
                run.log("Copie de " + collecte + " sur " + image + " impossible");
            }
            mode = "M";
            return;
        }
        run.log("Papier collecté sans image : " + collecte + " absent");
        run.ui->MsgBox("Le fichier : " + collecte + "\n" +
                           "non présent ! Veuillez Contacter le Support technique",
                       "Reponse", Icone::Critique);
    }
}

}  // namespace sv140
