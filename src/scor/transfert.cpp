// The transfer of archived attachments to the middleware, one exchange each. Every
// attachment is its own unit of work: its row records what the middleware answered as
// soon as it answered, so that an attachment taken is never sent again because a later
// one failed.
#include <cctype>
#include <string>
#include <vector>

#include "data/connexions.h"
#include "data/texte_sql.h"
#include "exchange/document.h"
#include "exchange/echange.h"
#include "exchange/requete.h"
#include "exchange/run.h"
#include "platform/systeme.h"
#include "scor/commun.h"
#include "scor/scor.h"

namespace sv140 {
namespace {

constexpr const char* kFonction = "f_TransfertPJ";

/// One attachment to hand over, as its row or the host's order gives it.
struct Envoi {
    long long id = 0;
    std::string chemin;  // the stored folder, before re-rooting
    std::string nom;
    std::string mode;
};

/// The transfer mode the middleware takes: lower case, "e" when none was recorded.
std::string mode_transfert(std::string mode) {
    if (mode.empty()) {
        mode = "E";
    }
    for (char& c : mode) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return mode;
}

Statut mettre_a_jour(Run& run, long long id, const std::string& affectations) {
    return run.bases().pont.Execute(
        "UPDATE T_InfosSCor SET " + affectations +
        " WHERE (((T_InfosSCor.InfosSCor_ID)=" + Nombre_SQL(double(id)) + "));");
}

/// Reads what the middleware made of one attachment and records it in its row.
/// `erreurs` counts the attachments it did not take.
Statut lire_retour(Run& run, long long id, int& erreurs) {
    auto doc = Charger_Reponse(run, kFonction);
    if (!doc) {
        // Whether the middleware took it is unknown: the row stays to be sent.
        ++erreurs;
        return {};
    }
    Champs r{"codeErreur", "libelleErreur", "accesService"};
    r.lire(*doc, "/ZRMESSAGE/resultat");
    const double code = Val(r("codeErreur"));
    std::string libelle = r("libelleErreur");
    if (code == 0) {
        run.log("Retour donneesTransfertPJ : accesService " + r("accesService") + ", code " +
                r("codeErreur") + ", " + libelle);
        if (Val(r("accesService")) != 0) {
            return mettre_a_jour(
                run, id,
                "T_InfosSCor.InfosSCor_DateEnvoi = Date(),T_InfosSCor.Pointage = 0, "
                "T_InfosSCor.C_Erreur = " +
                    Nombre_SQL(code) + ", T_InfosSCor.InfosSCor_LibelError = '" +
                    Texte_Hote_SQL(libelle) + "'");
        }
    }
    ++erreurs;
    for (const XmlNoeud& erreur : doc->selectionner("/ZRMESSAGE/resultat/donnees/erreur")) {
        const std::string texte = erreur.texte();
        if (!texte.empty()) {
            libelle += (libelle.empty() ? "" : " - ") + texte;
        }
    }
    if (libelle.empty()) {
        // Without a word from the middleware the row still says why it stays to send.
        libelle = "Service de transfert inaccessible (accesService " +
                  (r("accesService").empty() ? std::string("absent") : r("accesService")) + ")";
    }
    run.log("Pièce " + std::to_string(id) + " non transmise : code " + r("codeErreur") + ", " +
            libelle);
    return mettre_a_jour(run, id,
                         "T_InfosSCor.C_Erreur = " + Nombre_SQL(code) +
                             ", T_InfosSCor.InfosSCor_LibelError = '" + Texte_Hote_SQL(libelle) +
                             "'");
}

/// The request for one attachment, from its re-rooted folder.
Requete requete(const IdentifiantsPS& ps, const std::string& dossier, const Envoi& e) {
    Requete r(kFonction);
    r.ajouter_PS(ps, /*avec_numSitu=*/true, false);
    r.operation().ajouter("cheminPJ", dossier);
    r.operation().ajouter("nomPJ", e.nom);
    r.operation().ajouter("formatPJ", "0");
    r.operation().ajouter("mode", mode_transfert(e.mode));
    return r;
}

/// Sends one attachment and records the answer. A pending row whose file has gone is
/// marked deleted instead; a file named by the host's order that is not there is only
/// logged.
Statut envoyer(Run& run, const IdentifiantsPS& ps, const Envoi& e, bool marquer_disparu,
               int& erreurs) {
    const std::string dossier = RebaserCheminScor(run.DB_DONNEES, e.chemin);
    const std::string fichier = dossier + e.nom;
    const Requete r = requete(ps, dossier, e);
    if (dossier.empty() || e.nom.empty() || !fichier_existe(fichier)) {
        run.log("Pièce " + std::to_string(e.id) + " : fichier introuvable « " + fichier +
                " » (dossier enregistré « " + e.chemin + " »)" +
                (marquer_disparu ? ", marquée supprimée" : ", non transmise"));
        if (Statut s = r.enregistrer(run); !s) {
            return s;
        }
        return marquer_disparu ? MarquerPieceSupprimee(run, e.id) : Statut();
    }
    if (Statut s = scor::Echanger(run, r, kFonction); !s) {
        return s;
    }
    return lire_retour(run, e.id, erreurs);
}

/// Sends each attachment as its own unit of work; a failure names those whose answer
/// could not be recorded. Stops at once when the run must end.
Statut envoyer_tout(Run& run, const IdentifiantsPS& ps, const std::vector<Envoi>& envois,
                    bool marquer_disparus, int& erreurs) {
    return Enregistrer_Par_Unite(
        run.bases(), envois.size(),
        [&](std::size_t i) -> Statut {
            if (run.interruption) {
                return {};
            }
            return envoyer(run, ps, envois[i], marquer_disparus, erreurs);
        },
        [&](std::size_t i) {
            return "pièce " + std::to_string(envois[i].id) + " (" + envois[i].nom + ")";
        });
}

}  // namespace

Statut TransfererPiecesEnAttente(Run& run) {
    IdentifiantsPS ps;
    if (Statut s = scor::Identifiants(run, ps); !s) {
        return s;
    }
    auto rs = run.bases().pont.Ouvrir(
        "SELECT T_InfosSCor.* FROM T_InfosSCor WHERE (((T_InfosSCor.Pointage)=True) AND "
        "((T_InfosSCor.InfosSCor_DateEnvoi) Is Null) AND ((T_InfosSCor.idDossier)>0)) ORDER BY "
        "T_InfosSCor.InfosSCor_NUMFAC;");
    if (!rs) {
        return rs.statut();
    }
    std::vector<Envoi> envois;
    for (; !rs->EOF_(); rs->MoveNext()) {
        envois.push_back({static_cast<long long>(rs->champ("InfosSCor_ID").nombre()),
                          rs->champ("InfosSCor_Chemin").str(), rs->champ("InfosSCor_nom").str(),
                          rs->champ("InfosSCor_Mode").str()});
    }
    scor::Terminer_Lectures(run);
    if (envois.empty()) {
        Reponse_Erreur(run, "0", "Aucun document à envoyer", scor::kAppelant);
        return {};
    }
    run.log(std::to_string(envois.size()) + " pièce(s) jointe(s) à transmettre");
    int erreurs = 0;
    if (Statut s = envoyer_tout(run, ps, envois, true, erreurs); !s || run.interruption) {
        return run.interruption ? Statut::Deja_Repondu(*run.interruption) : s;
    }
    if (erreurs == 0) {
        Reponse_Erreur(run, "0", scor::kSucces, scor::kAppelant);
    } else {
        Reponse_Erreur(run, "99",
                       "Il y a " + std::to_string(erreurs) + " Pièce(s) jointe(s) avec erreur(s)",
                       scor::kAppelant);
    }
    return {};
}

Statut TransfererPiecesOrdre(Run& run) {
    auto doc = scor::Charger_Ordre(run);
    if (!doc) {
        return Statut::Deja_Repondu(scor::kOrdreIllisible);
    }
    std::vector<Envoi> envois;
    for (const XmlNoeud& n :
         doc->selectionner("/ZRMESSAGE/requete/fonction/f_TransfertPJ_unique/Document")) {
        Envoi e;
        if (std::string erreur; !scor::Lire_Nombre(n, "Id", e.id, erreur)) {
            // Sent without its row, an attachment's answer would be recorded nowhere.
            run.log(erreur);
            Reponse_Erreur(run, "99", scor::kOrdreIllisible, scor::kAppelant);
            return Statut::Deja_Repondu(erreur);
        }
        e.chemin = n.texte_de("Chemin");
        e.nom = n.texte_de("Nom");
        e.mode = n.texte_de("Mode");
        envois.push_back(std::move(e));
    }
    IdentifiantsPS ps;
    if (Statut s = scor::Identifiants(run, ps); !s) {
        return s;
    }
    scor::Terminer_Lectures(run);
    int erreurs = 0;
    if (Statut s = envoyer_tout(run, ps, envois, false, erreurs); !s || run.interruption) {
        return run.interruption ? Statut::Deja_Repondu(*run.interruption) : s;
    }
    // The host reads each attachment's outcome from its row; the answer stays a success.
    run.log(std::to_string(envois.size()) + " document(s) de la commande, " +
            std::to_string(erreurs) + " avec erreur(s)");
    Reponse_Erreur(run, "0", scor::kSucces, scor::kAppelant);
    return {};
}

}  // namespace sv140
