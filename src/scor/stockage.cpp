// The attachment store: each PDF of a capture session is moved into the shop's month
// folder of the archive and recorded as one row of T_InfosSCor; rows are marked, never
// removed, when an attachment is deleted.
#include <cctype>
#include <string>

#include "data/connexions.h"
#include "data/instructions.h"
#include "data/texte_sql.h"
#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "platform/horloge.h"
#include "platform/systeme.h"
#include "scan/scan.h"
#include "scor/scor.h"
#include "tools/outils.h"

namespace sv140 {

namespace {

constexpr const char* kArchive = "Sv140Scor";

bool est_separateur(char c) {
    return c == '\\' || c == '/';
}

/// Whether `texte` holds `motif` at `position`, ASCII case ignored.
bool egal_sans_casse(std::string_view texte, std::size_t position, std::string_view motif) {
    if (position + motif.size() > texte.size()) {
        return false;
    }
    for (std::size_t i = 0; i < motif.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(texte[position + i])) !=
            std::tolower(static_cast<unsigned char>(motif[i]))) {
            return false;
        }
    }
    return true;
}

/// One kind of a session as the store records it.
struct Genre {
    const char* nom;     // for the log and the failure's reason
    const char* image;   // its image in the program folder
    const char* nature;  // its nature code, or null for the chosen one
    const PieceScor& piece;
};

/// The invoice number a row records: for a prescription or a claim form the numeric
/// value of what the session holds, for another attachment the session's text itself.
std::string numero_facture(const Genre& g) {
    if (g.nature == nullptr) {
        return g.piece.Facture;
    }
    return Trim(Nombre_SQL(Val(g.piece.Facture)));
}

Statut inserer(Run& run, const std::string& chemin, const SessionScor& session, const Genre& g) {
    if (!fichier_existe(run.fichier(g.image))) {
        return {};
    }
    std::string dossier_mois;
    const std::string archive = ArchiverFichierScor(run, chemin, g.piece.pdf, dossier_mois);
    if (archive.empty() || !fichier_existe(archive)) {
        run.log(std::string("Aucun PDF archivé pour ") + g.nom + " : " +
                (g.piece.pdf.empty() ? std::string("aucun nom") : g.piece.pdf));
        return {};
    }
    const std::tm t = maintenant_local();
    const std::string sql =
        std::string("INSERT INTO T_InfosSCor ") +
        "(InfosSCor_NUMFAC, InfosSCor_Nature, InfosSCor_Chemin, InfosSCor_nom, "
        "InfosSCor_DateGeneration, InfosSCor_HreGeneration, idDossier, typeDossier, "
        "InfosSCor_Mode, Numero_CPT) " +
        " VALUES ('" + Texte_SQL(numero_facture(g)) + "','" +
        Texte_SQL(g.nature ? g.nature : session.natureAutre) + "','" + Texte_SQL(dossier_mois) +
        "', '" + Texte_SQL(g.piece.pdf) + "', " + Date_SQL(t) + ", " +
        Nombre_SQL(Format_Date(t, "%H%M%S")) + ", " + Nombre_SQL(double(g.piece.Id)) + ", '" +
        Texte_SQL(g.piece.Dossier) + "', '" + Texte_SQL(g.piece.mode) + "', " +
        Nombre_SQL(double(g.piece.Compteur)) + ")";
    return run.bases().pont.Execute(sql);
}

}  // namespace

std::string ArchiverFichierScor(Run& run, const std::string& chemin, const std::string& nom,
                                std::string& dossier_mois) {
    const std::string racine = joindre(chemin, kArchive);
    if (!dossier_existe(racine)) {
        creer_dossier(racine);
    }
    const std::string mois = joindre(racine, Format_Date(maintenant_local(), "%Y%m"));
    if (!dossier_existe(mois)) {
        creer_dossier(mois);
    }
    dossier_mois = mois + separateur();
    supprimer_copies_abandonnees(mois);
    const std::string source = run.fichier(nom);
    if (nom.empty() || !fichier_existe(source)) {
        return {};
    }
    const std::string destination = joindre(mois, nom);
    if (!Copier_Fichier(source, destination, false)) {
        run.log("Copie de " + source + " vers " + destination + " impossible" +
                (fichier_existe(destination) ? " : le fichier existe déjà, il est gardé" : ""));
    }
    // The program folder's copy goes once the archive holds the file; a copy that could
    // not be made at all keeps it, so that the PDF is not lost.
    if (fichier_existe(destination)) {
        supprimer_fichier(source);
    }
    return destination;
}

Statut InsererPiecesSCor(Run& run, const std::string& chemin, const SessionScor& session) {
    const Genre genres[] = {
        {"l'ordonnance", fichiers::kImageOrdonnance, "ORDN", session.ordonnance},
        {"la feuille de soins", fichiers::kImageFeuilleDeSoins, "FSNC", session.cerfa},
        {"l'autre pièce jointe", fichiers::kImageAutre, nullptr, session.autre},
    };
    return Enregistrer_Par_Unite(
        run.bases(), std::size(genres),
        [&](std::size_t i) { return inserer(run, chemin, session, genres[i]); },
        [&](std::size_t i) { return std::string(genres[i].nom); });
}

Statut MarquerPieceSupprimee(Run& run, long long id) {
    return run.bases().pont.Execute(
        "UPDATE T_InfosSCor SET T_InfosSCor.InfosSCor_nom = 'Document supprimé',"
        "T_InfosSCor.InfosSCor_LibelError = 'Document supprimé', T_InfosSCor.idDossier = 0, "
        "T_InfosSCor.Pointage = 0, T_InfosSCor.InfosSCor_Mode = '' WHERE "
        "(((T_InfosSCor.InfosSCor_ID)=" +
        Nombre_SQL(double(id)) + "));");
}

std::string RebaserCheminScor(std::string_view base_hote, std::string_view chemin) {
    if (base_hote.empty()) {
        return {};
    }
    std::size_t debut = std::string_view::npos;
    for (std::size_t i = 0; i < chemin.size(); ++i) {
        if (est_separateur(chemin[i]) && egal_sans_casse(chemin, i + 1, kArchive)) {
            debut = i;
            break;
        }
    }
    if (debut == std::string_view::npos) {
        return {};
    }
    // A host path given as a folder is taken as the whole answer, as the shop's
    // installations have always had it.
    if (est_separateur(base_hote.back())) {
        return std::string(base_hote);
    }
    const std::size_t dernier = base_hote.find_last_of("\\/");
    std::string resultat(base_hote.substr(0, dernier == std::string_view::npos ? 0 : dernier));
    // The archive's own folders are written with this platform's separator, whichever
    // machine stored them.
    for (char c : chemin.substr(debut)) {
        resultat += est_separateur(c) ? separateur() : c;
    }
    return resultat;
}

Resultat<std::string> NomClientFacture(Run& run, std::string_view facture) {
    const std::string numero = Nombre_SQL(facture);
    for (const char* fiche : {"Fiche Technique Optique", "Fiche Technique Lentille"}) {
        const std::string t = std::string("[") + fiche + "]";
        auto rs = Premiere_Ligne(run.bases().hote,
                                 "SELECT " + t +
                                     ".[NUMERO FACTURE], [Saisie des Clients].Nom, [Saisie des "
                                     "Clients].Prénom FROM " +
                                     t + " INNER JOIN [Saisie des Clients] ON " + t +
                                     ".Lien = [Saisie des Clients].N° WHERE (((" + t +
                                     ".[NUMERO FACTURE])=" + numero + "));");
        if (!rs) {
            return rs.statut();
        }
        if (!rs->EOF_()) {
            const Valeur nom = rs->champ("Nom");
            const Valeur prenom = rs->champ("Prénom");
            return Trim((nom.nul() ? "?" : nom.str()) + " " + (prenom.nul() ? "?" : prenom.str()));
        }
    }
    return std::string("Facture inconnue");
}

}  // namespace sv140
