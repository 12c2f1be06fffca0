#include "main/dispatch.h"

#include <span>
#include <string_view>

#include "cards/cartes.h"
#include "exchange/echange.h"
#include "exchange/fichiers.h"
#include "exchange/run.h"
#include "invoicing/factures.h"
#include "platform/encodage.h"
#include "platform/systeme.h"
#include "platform/xml.h"
#include "scan/scan.h"
#include "scor/scor.h"
#include "tools/outils.h"

namespace sv140 {
namespace {

// The developer defaults, for a bridge started without its command line.
#if defined(_WIN32)
constexpr const char* kCheminDeveloppeur = "\\\\SERVEUR\\Partage\\Belvane_Classic\\_Magasin";
constexpr const char* kTemporaireDeveloppeur = "C:\\Belvane_Classic\\Temporaire.accdb";
constexpr const char* kFrontalDeveloppeur = "C:\\Belvane_Classic\\Belvane_Classic.accdb";
#else
constexpr const char* kCheminDeveloppeur = "/srv/partage/Belvane_Classic/_Magasin";
constexpr const char* kTemporaireDeveloppeur = "/opt/Belvane_Classic/Temporaire.accdb";
constexpr const char* kFrontalDeveloppeur = "/opt/Belvane_Classic/Belvane_Classic.accdb";
#endif

// The row of the first name of `ordre` that is the operation's, compared exactly; null
// when none is.
const Operation* dans_l_ordre(const std::vector<std::string_view>& ordre, std::string_view nom) {
    for (std::string_view n : ordre) {
        if (n == nom) {
            return Trouver_Operation(n);
        }
    }
    return nullptr;
}

// A step's unit of work ends with it: committed when the step succeeded; rolled back
// when it failed, and then the host is answered 99 under the operation's name, unless
// the step answered itself (an unreadable document, missing professional data).
Statut conclure(Run& run, std::string_view phase, Statut etape) {
    UniteDeTravail unite(*run.cnx);
    if (etape) {
        etape = unite.valider();
    }
    if (etape) {
        return etape;
    }
    unite.annuler();
    run.log("Échec " + std::string(phase) + " de " + run.F_Appel + " : " + etape.raison());
    if (!etape.repondu()) {
        Reponse_Erreur(run, "99",
                       etape.base() ? "Les données n'ont pas été enregistrées : " + etape.raison()
                                    : etape.raison(),
                       run.F_Appel);
    }
    return etape;
}

void phase_requete(Run& run) {
    const Operation* op = dans_l_ordre(Ordre_Requetes(), run.F_Appel);
    if (op == nullptr) {
        run.ui->MsgBox(run.Chaine_Command + " -*- " + run.F_Appel + " -*- " + run.Chemin + " -*- " +
                       run.troisieme_mot);
        return;
    }
    if (op->suite == Suite::Envoyer) {
        // Neither a request nor an answer left by an earlier run may stand for this
        // one: a step that writes neither leaves the check a missing answer.
        supprimer_fichier(run.fichier(fichiers::kRequete));
        supprimer_fichier(run.fichier(fichiers::kReponse));
    }
    // Committed before the middleware is called: no transaction stays open while the
    // bridge waits for another program.
    const Statut s = conclure(run, "de la requête", op->requete ? op->requete(run) : Statut());
    if (s && op->suite == Suite::Envoyer) {
        Envoyer_Requete(run, run.F_Appel, 0);
    }
}

void phase_reponse(Run& run) {
    const Operation* op = dans_l_ordre(Ordre_Reponses(), run.F_Appel);
    if (op == nullptr) {
        // The name alone tells the optician the operation went through: never for an
        // answer that could not be read (the end of the run answers 99 for it).
        XmlDocument doc;
        if (doc.charger_fichier(run.fichier(fichiers::kReponse))) {
            run.ui->MsgBox(run.F_Appel);
        }
        return;
    }
    if (op->reponse) {
        (void)conclure(run, "de l'enregistrement", op->reponse(run));
    }
}

}  // namespace

std::string Decomposition(const std::string& ligne) {
    std::string r;
    for (int code : codes_ansi(ligne)) {
        r += std::to_string(code) + " ";
    }
    return r;
}

void Decouper_Ligne_Commande(Run& run, const std::string& ligne) {
    run.Chaine_Command = ligne;
    auto p1 = ligne.find(' ');
    if (p1 != std::string::npos) {
        run.F_Appel = ligne.substr(0, p1);
        std::string reste = ligne.substr(p1 + 1);
        auto p2 = reste.find(' ');
        if (p2 != std::string::npos) {
            run.Chemin = reste.substr(0, p2);
            run.troisieme_mot = reste.substr(p2 + 1);
        } else {
            run.Chemin = reste;
        }
        run.log("Récupération Chemin");
        std::string parent = dossier_parent(run.dossier_programme);
        run.DB_DONNEES = run.Chemin + separateur() + "Donnees_32.accdb";
        run.DB_sv = run.Chemin + separateur() + "SV140.accdb";
        run.DB_temporaire = joindre(parent, "Temporaire.accdb");
        run.frontal = joindre(parent, "Belvane_Classic.accdr");
    } else {
        run.F_Appel = "f_ListerFactures";
        run.Chemin = kCheminDeveloppeur;
        run.DB_DONNEES = run.Chemin + separateur() + "Donnees_32.accdb";
        run.DB_sv = run.Chemin + separateur() + "SV140.accdb";
        run.DB_temporaire = kTemporaireDeveloppeur;
        run.frontal = kFrontalDeveloppeur;
    }
}

const std::vector<std::string_view>& Ordre_Requetes() {
    static const std::vector<std::string_view> ordre = {
        "f_LireCVitale",
        "f_LireCPS",
        "f_InitialisationPS",
        "f_LireVersion",
        "f_MaJVersion",
        "f_MettreAJourIdEtc",
        "f_CreerFacture",
        "f_SupprimerFacture",
        "f_LireFacture",
        "f_EnvoyerToutesFactures",
        "f_LireInfosRetourFacture",
        "f_LireInfosComplementaire",
        "f_MettreAJourCV",
        "f_ListerFactures",
        "f_Scor",
        "f_deldctsSCOR",
        "f_TransfertPJ",
        "f_TransfertPJ_unique",
        "f_LireInfosRetourPJ",
        "f_mettreajourStatut",
        "f_Ordo",
        "f_ControlePJ",
        "f_infosSV",
        "retour_f_EnvoyerToutesFacturestest",
    };
    return ordre;
}

const std::vector<std::string_view>& Ordre_Reponses() {
    // f_MettreAJourCV has no row here: the optician is shown its name.
    static const std::vector<std::string_view> ordre = {
        "f_LireCVitale",
        "f_LireCPS",
        "f_InitialisationPS",
        "f_LireVersion",
        "f_MaJVersion",
        "f_MettreAJourIdEtc",
        "f_CreerFacture",
        "f_ListerFactures",
        "f_SupprimerFacture",
        "f_LireFacture",
        "f_LireInfosRetourFacture",
        "f_EnvoyerToutesFactures",
        "f_LireInfosComplementaire",
        "retour_f_EnvoyerToutesFacturestest",
        "f_Scor",
        "f_TransfertPJ",
        "f_TransfertPJ_unique",
        "f_ControlePJ",
        "f_mettreajourStatut",
        "f_deldctsSCOR",
        "f_LireInfosRetourPJ",
        "f_Ordo",
        "f_infosSV",
    };
    return ordre;
}

const Operation* Trouver_Operation(std::string_view nom) {
    for (std::span<const Operation> sous_systeme :
         {Operations_Cartes(), Operations_Facturation(), Operations_Scor(), Operations_Scan()}) {
        for (const Operation& op : sous_systeme) {
            if (op.nom == nom) {
                return &op;
            }
        }
    }
    return nullptr;
}

bool Executer_Run(Run& run, const std::string& ligne) {
    run.log("Chaine_Command : " + ligne);
    run.log("Decomposition Chaine : " + Decomposition(ligne));
    Decouper_Ligne_Commande(run, ligne);
    run.log("F_Appel : " + run.F_Appel);
    run.log("DB_DONNEES : " + run.DB_DONNEES);
    run.log("DB_sv : " + run.DB_sv);
    Nettoyer_Restes(run.dossier_programme, run.Chemin, run.precedente_interrompue);

    phase_requete(run);
    if (run.interruption) {
        return false;
    }
    run.Retour_Reponse = Lire_Reponse(run);
    if (run.interruption) {
        return false;
    }
    run.log(std::string("Retour_Reponse : ") + (run.Retour_Reponse ? "True" : "False"));
    if (run.Retour_Reponse) {
        // The middleware's answer is archived before anything is stored from it: a run
        // killed while storing leaves it where the next run, which starts by removing
        // the exchange files, does not reach it.
        run.echange_archive =
            Archiver_Echange(*run.ui, run.F_Appel, run.Chemin, run.fichier(fichiers::kRequete),
                             run.fichier(fichiers::kReponse));
        phase_reponse(run);
    }

    const std::string reponse = run.fichier(fichiers::kReponse);
    if (!run.echange_archive) {
        Archiver_Echange(*run.ui, run.F_Appel, run.Chemin, run.fichier(fichiers::kRequete),
                         reponse);
    }
    // The archive keeps what the middleware said; the host always gets a document it
    // can read.
    XmlDocument doc;
    if (fichier_existe(reponse) && !doc.charger_fichier(reponse)) {
        Reponse_Erreur(run, "99", kReponseIllisible, run.F_Appel);
    }
    Copier_Fichier(reponse, run.fichier(fichiers::kReponseHote), true);
    return true;
}

}  // namespace sv140
