// A capture session: the host's order dctsScor.xml says which documents may be
// scanned for which invoice and dossier; each is scanned (or its paper declared
// collected), the PDF generator makes one PDF per document from the order
// dctsScorPDF.xml, the optician reviews the images, and the PDFs left are stored.
#include <string>

#include "data/connexions.h"
#include "data/parametres.h"
#include "data/texte_sql.h"
#include "exchange/echange.h"
#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "platform/horloge.h"
#include "platform/systeme.h"
#include "platform/xml.h"
#include "scan/scan.h"
#include "scor/commun.h"
#include "scor/scor.h"
#include "tools/outils.h"

namespace sv140 {

namespace {

using scor::kAppelant;
using scor::kOrdreIllisible;
constexpr const char* kNoeudsOrdre = "/ZRMESSAGE/requete/fonction/f_Scor";
constexpr const char* kLaissesParUneSession = "20*.pdf";

/// One kind's values from an order node. The prescription keeps its invoice as the
/// host wrote it; the others hold the number read.
bool lire_piece(const XmlNoeud& noeud, const std::string& groupe, bool facture_texte,
                PieceScor& piece, std::string& erreur) {
    long long facture = 0;
    if (!scor::Lire_Nombre(noeud, groupe + "/Id", piece.Id, erreur) ||
        !scor::Lire_Nombre(noeud, groupe + "/Facture", facture, erreur) ||
        !scor::Lire_Nombre(noeud, groupe + "/Compteur", piece.Compteur, erreur)) {
        return false;
    }
    piece.Dossier = noeud.texte_de(groupe + "/Dossier");
    piece.Facture = facture_texte ? noeud.texte_de(groupe + "/Facture") : std::to_string(facture);
    return true;
}

/// Reads every order node in turn, the last one's values standing.
bool lire_ordre(const XmlDocument& doc, SessionScor& session, std::string& erreur) {
    for (const XmlNoeud& noeud : doc.selectionner(kNoeudsOrdre)) {
        if (!lire_piece(noeud, "Ordonnance", true, session.ordonnance, erreur) ||
            !lire_piece(noeud, "Cerfa", false, session.cerfa, erreur) ||
            !lire_piece(noeud, "Autre", false, session.autre, erreur)) {
            return false;
        }
    }
    return true;
}

/// Whether a file looks like a whole PDF: its header, and its end-of-file marker in
/// its last bytes.
bool pdf_entier(const std::string& chemin) {
    std::string octets;
    if (!lire_fichier(chemin, octets) || octets.rfind("%PDF-", 0) != 0) {
        return false;
    }
    const std::size_t fin = octets.size() > 1024 ? octets.size() - 1024 : 0;
    return octets.find("%%EOF", fin) != std::string::npos;
}

/// Runs the PDF generator and waits for its end. A kind whose PDF it did not make
/// whole loses its PDF name, so that it is not stored, and the optician and the log
/// are told which.
void generer_pdf(Run& run, SessionScor& session) {
    PieceScor* pieces[] = {&session.ordonnance, &session.cerfa, &session.autre};
    const std::string generateur = run.fichier(fichiers::kGenerateurPdf);
    std::string manque;
    if (!fichier_existe(generateur)) {
        manque = "programme absent, aucun PDF produit";
        for (PieceScor* piece : pieces) {
            piece->pdf.clear();
        }
    } else {
        Lancement lancement;
        lancement.sortie = run.fichier(fichiers::kSortieGenerateur);
        lancement.entree_vide = true;
        const int code = lancer_programme(generateur, lancement);
        run.log("Générateur de PDF " + generateur + " : code de sortie " + std::to_string(code));
        std::string sortie;
        if (lire_fichier(lancement.sortie, sortie)) {
            std::size_t debut = 0;
            while (debut < sortie.size()) {
                std::size_t fin = sortie.find('\n', debut);
                fin = fin == std::string::npos ? sortie.size() : fin;
                std::string ligne = sortie.substr(debut, fin - debut);
                if (!ligne.empty() && ligne.back() == '\r') {
                    ligne.pop_back();
                }
                if (!Trim(ligne).empty()) {
                    run.log("Générateur de PDF : " + ligne);
                }
                debut = fin + 1;
            }
        }
        for (PieceScor* piece : pieces) {
            if (piece->pdf.empty() || pdf_entier(run.fichier(piece->pdf))) {
                continue;
            }
            manque += (manque.empty() ? "PDF non produit : " : ", ") + piece->pdf +
                      (fichier_existe(run.fichier(piece->pdf)) ? " (incomplet)" : "");
            piece->pdf.clear();
        }
    }
    if (!manque.empty()) {
        run.log("Générateur de PDF " + generateur + " : " + manque);
        run.ui->MsgBox("Générateur de PDF : " + generateur + "\n" + manque + "\n" +
                           "Ces documents ne seront pas enregistrés.",
                       "SCOR", Icone::Critique);
    }
}

}  // namespace

Statut GenererDctsScorPDF(Run& run, SessionScor& session) {
    XmlDocument doc;
    XmlNoeud racine = doc.creer_racine("ZRMESSAGE");
    racine.ajouter("programme", "Belvane_Classic II");
    XmlNoeud f_Scor = racine.ajouter("requete").ajouter("fonction").ajouter("f_Scor");
    f_Scor.ajouter("versionMessage", "0001");
    XmlNoeud donnees = f_Scor.ajouter("donnees");
    struct Groupe {
        const char* nom;
        const char* image;
        PieceScor& piece;
        std::string nature;
    } groupes[] = {
        {"Ordonnance", fichiers::kImageOrdonnance, session.ordonnance, "ORDN"},
        {"Cerfa", fichiers::kImageFeuilleDeSoins, session.cerfa, "FSNC"},
        {"Autre", fichiers::kImageAutre, session.autre, session.natureAutre},
    };
    for (Groupe& g : groupes) {
        g.piece.pdf.clear();
        if (!fichier_existe(run.fichier(g.image))) {
            continue;
        }
        g.piece.pdf = Format_Date(maintenant_local(), "%Y%m%d%H%M%S") + "_" +
                      scor::Neuf_Chiffres(static_cast<long long>(Val(g.piece.Facture))) + "_" +
                      g.nature + "_" + session.idFac + "_" + scor::Neuf_Chiffres(g.piece.Compteur) +
                      ".pdf";
        XmlNoeud groupe = donnees.ajouter(g.nom);
        groupe.ajouter("IDfact", session.idFac);
        groupe.ajouter("Dossier", g.piece.Dossier);
        groupe.ajouter("Id", std::to_string(g.piece.Id));
        groupe.ajouter("Facture", g.piece.Facture);
        if (&g.piece == &session.autre) {
            groupe.ajouter("natureAutre", session.natureAutre);
        }
        groupe.ajouter("Compteur", std::to_string(g.piece.Compteur));
        groupe.ajouter("pdf", g.piece.pdf);
    }
    const std::string chemin = run.fichier(fichiers::kOrdrePdf);
    if (!doc.enregistrer(chemin)) {
        // The generator must not work from an earlier session's order.
        supprimer_fichier(chemin);
        return Statut::Echec("Impossible d'écrire " + chemin);
    }
    return {};
}

Statut ExecuterSessionScor(Run& run, const std::string& chemin) {
    run.log("f_Scor - 1");
    XmlDocument doc;
    run.log("f_Scor - 2");
    const bool charge = doc.charger_fichier(run.fichier(fichiers::kOrdreScor));
    run.log("f_Scor - 3");
    if (!charge) {
        run.log("dctsScor.xml : " + doc.erreur());
        Reponse_Erreur(run, "99", kOrdreIllisible, kAppelant);
    }
    run.log("f_Scor - 4");
    supprimer_fichiers(run.dossier_programme, kLaissesParUneSession);
    run.log("f_Scor - 5");

    SessionScor session;
    IdentifiantsPS ps;
    if (Statut lus = scor::Identifiants(run, ps); !lus) {
        return lus;
    }
    session.idFac = ps.idFac;
    // Nothing stays open on the shop's databases while the optician scans and reviews.
    scor::Terminer_Lectures(run);

    if (std::string erreur; charge && !lire_ordre(doc, session, erreur)) {
        run.log(erreur);
        Reponse_Erreur(run, "99", kOrdreIllisible, kAppelant);
        return Statut::Deja_Repondu(erreur);
    }
    for (const char* image :
         {fichiers::kImageOrdonnance, fichiers::kImageFeuilleDeSoins, fichiers::kImageAutre}) {
        supprimer_fichier(run.fichier(image));
    }
    if (session.ordonnance.Id + session.cerfa.Id + session.autre.Id == 0) {
        Reponse_Erreur(run, "99", "Aucune Autorisation de Scan", kAppelant);
        return {};
    }

    if (session.ordonnance.Id != 0) {
        Numeriser(run, kOrdo, session.ordonnance.mode);
    }
    if (session.cerfa.Id != 0) {
        Numeriser(run, kCerfa, session.cerfa.mode);
    }
    if (session.autre.Id != 0) {
        Numeriser(run, kAutp, session.autre.mode);
        if (fichier_existe(run.fichier(fichiers::kImageAutre))) {
            if (std::optional<std::string> code = AutrePJ(run)) {
                session.natureAutre = *code;
            }
        }
    }
    const auto present = [&](const char* image) { return fichier_existe(run.fichier(image)); };
    if (!present(fichiers::kImageOrdonnance) && !present(fichiers::kImageFeuilleDeSoins) &&
        !present(fichiers::kImageAutre)) {
        Reponse_Erreur(run, "99", "Aucun documents Scannés", kAppelant);
        return {};
    }

    if (Statut s = GenererDctsScorPDF(run, session); !s) {
        run.log(s.raison());
        run.ui->MsgBox(s.raison() + "\nAucun document ne sera enregistré.", "SCOR",
                       Icone::Critique);
        Reponse_Erreur(run, "99", s.raison(), kAppelant);
        return Statut::Deja_Repondu(s.raison());
    }
    generer_pdf(run, session);
    Documents_SCOR(run, {session.ordonnance.mode, session.cerfa.mode, session.autre.mode});

    if (Statut s = InsererPiecesSCor(run, chemin, session); !s) {
        const std::string raison = "Documents générés, mais non enregistrés : " + s.raison();
        Reponse_Erreur(run, "99", raison, kAppelant);
        return Statut::Deja_Repondu(raison);
    }
    Reponse_Erreur(run, "0", "Documents Générés", kAppelant);
    return {};
}

}  // namespace sv140
