#include "main/dispatch.h"

#include <functional>
#include <string_view>

#include "cards/cartes.h"
#include "data/parametres.h"
#include "exchange/echange.h"
#include "exchange/requete.h"
#include "invoicing/factures.h"
#include "main/run.h"
#include "platform/encodage.h"
#include "platform/systeme.h"
#include "platform/xml.h"
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

// Invoicing and SCOR operations that this bridge does not perform yet: the host gets
// a clear answer and the middleware is not called.
void Fonction_Non_Disponible(Run& run) {
    Reponse_Erreur(run, "99", "Fonction non disponible", run.F_Appel);
}

enum class Suite { Envoyer, Verifier };

// A request phase returns false when nothing may be sent: it wrote the answer itself.
struct LigneRequete {
    std::string_view nom;
    std::function<bool(Run&)> requete;
    Suite suite;
};

std::function<bool(Run&)> ecrit(void (*constructeur)(Run&)) {
    return [constructeur](Run& run) {
        constructeur(run);
        return true;
    };
}

const std::vector<LigneRequete>& table_requetes() {
    static const std::vector<LigneRequete> table = {
        {"f_LireCVitale", ecrit(Requete_f_LireCVitale), Suite::Envoyer},
        {"f_LireCPS", ecrit(Requete_f_LireCPS), Suite::Envoyer},
        {"f_InitialisationPS", ecrit(Requete_f_InitialisationPS), Suite::Envoyer},
        {"f_LireVersion", ecrit(Requete_f_LireVersion), Suite::Envoyer},
        {"f_MaJVersion", ecrit(Requete_f_MaJVersion), Suite::Envoyer},
        {"f_MettreAJourIdEtc",
         [](Run& r) {
             Stocker_Carte_Vitale(r);
             return true;
         },
         Suite::Verifier},
        {"f_CreerFacture", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_SupprimerFacture", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_LireFacture", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_EnvoyerToutesFactures", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_LireInfosRetourFacture", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_LireInfosComplementaire", Requete_f_LireInfosComplementaire, Suite::Envoyer},
        {"f_MettreAJourCV", ecrit(Requete_f_MettreAJourCV), Suite::Envoyer},
        {"f_ListerFactures", ecrit(Requete_f_ListerFactures), Suite::Envoyer},
        {"f_Scor",
         [](Run& r) {
             r.log("Lancement SCOR");
             Fonction_Non_Disponible(r);
             return true;
         },
         Suite::Verifier},
        {"f_deldctsSCOR", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_TransfertPJ", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_TransfertPJ_unique", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_LireInfosRetourPJ", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_mettreajourStatut", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_Ordo", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_ControlePJ", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"f_infosSV", ecrit(Fonction_Non_Disponible), Suite::Verifier},
        {"retour_f_EnvoyerToutesFacturestest", [](Run&) { return true; }, Suite::Verifier},
    };
    return table;
}

struct LigneReponse {
    std::string_view nom;
    std::function<void(Run&)> reponse;
};

void rien(Run&) {}

const std::vector<LigneReponse>& table_reponses() {
    static const std::vector<LigneReponse> table = {
        {"f_LireCVitale", [](Run& r) { Stocker_Liste_Beneficiaires(r); }},
        {"f_LireCPS", [](Run& r) { Stocker_CPS(r); }},
        {"f_InitialisationPS", rien},
        {"f_LireVersion", [](Run& r) { Stocker_Version(r); }},
        {"f_MaJVersion", rien},
        {"f_MettreAJourIdEtc", rien},
        {"f_CreerFacture", Fonction_Non_Disponible},
        {"f_ListerFactures", [](Run& r) { Lire_Liste_Factures(r); }},
        {"f_SupprimerFacture", Fonction_Non_Disponible},
        {"f_LireFacture", rien},
        {"f_LireInfosRetourFacture", Fonction_Non_Disponible},
        {"f_EnvoyerToutesFactures", Fonction_Non_Disponible},
        {"f_LireInfosComplementaire", Conserver_Echange_AMC},
        {"retour_f_EnvoyerToutesFacturestest", Fonction_Non_Disponible},
        {"f_Scor", Fonction_Non_Disponible},
        {"f_TransfertPJ", rien},
        {"f_TransfertPJ_unique", rien},
        {"f_ControlePJ", rien},
        {"f_mettreajourStatut", rien},
        {"f_deldctsSCOR", rien},
        {"f_LireInfosRetourPJ", rien},
        {"f_Ordo", rien},
        {"f_infosSV", rien},
    };
    return table;
}

void phase_requete(Run& run) {
    for (const LigneRequete& l : table_requetes()) {
        if (l.nom == run.F_Appel) {
            if (l.suite == Suite::Envoyer) {
                // Neither a request nor an answer left by an earlier run may stand for
                // this one: a step that writes neither leaves the check a missing answer.
                supprimer_fichier(run.fichier("ZEMO_SvRequest.xml"));
                supprimer_fichier(run.fichier("ZEMO_SvResponse.xml"));
            }
            if (l.requete(run) && l.suite == Suite::Envoyer) {
                Envoyer_Requete(run, run.F_Appel, 0);
            }
            return;
        }
    }
    run.ui->MsgBox(run.Chaine_Command + " -*- " + run.F_Appel + " -*- " + run.Chemin + " -*- " +
                   run.troisieme_mot);
}

void phase_reponse(Run& run) {
    if (run.F_Appel == "f_MettreAJourCV") {
        // The card update has no store step: the host is told it went through.
        run.ui->MsgBox("f_MettreAJourCV");
        return;
    }
    for (const LigneReponse& l : table_reponses()) {
        if (l.nom == run.F_Appel) {
            l.reponse(run);
            return;
        }
    }
    run.ui->MsgBox(run.F_Appel);
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

void Executer_Run(Run& run, const std::string& ligne) {
    run.log("Chaine_Command : " + ligne);
    run.log("Decomposition Chaine : " + Decomposition(ligne));
    Decouper_Ligne_Commande(run, ligne);
    run.log("F_Appel : " + run.F_Appel);
    run.log("DB_DONNEES : " + run.DB_DONNEES);
    run.log("DB_sv : " + run.DB_sv);

    phase_requete(run);
    run.Retour_Reponse = Lire_Reponse(run);
    run.log(std::string("Retour_Reponse : ") + (run.Retour_Reponse ? "True" : "False"));
    if (run.Retour_Reponse) {
        phase_reponse(run);
    }
    if (!Valider_Connexions(run)) {
        run.log("Les écritures de cette opération n'ont pas toutes pu être enregistrées");
    }

    Archiver_Echange(run, run.F_Appel, run.Chemin);
    // The archive keeps what the middleware said; the host always gets a document it
    // can read.
    XmlDocument reponse;
    if (fichier_existe(run.fichier("ZEMO_SvResponse.xml")) &&
        !reponse.charger_fichier(run.fichier("ZEMO_SvResponse.xml"))) {
        Reponse_Illisible(run, run.F_Appel);
    }
    Copier_Fichier(run.fichier("ZEMO_SvResponse.xml"), run.fichier("ZEMO_Response.xml"), true);
}

}  // namespace sv140
