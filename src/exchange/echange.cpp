// The middleware call, the answer file, the response check and the error response.
#include "exchange/echange.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "data/parametres.h"
#include "data/texte_sql.h"
#include "exchange/document.h"
#include "exchange/fichiers.h"
#include "exchange/requete.h"
#include "exchange/run.h"
#include "platform/intergiciel.h"
#include "platform/systeme.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

using fichiers::kReponse;
using fichiers::kRequete;

// An answer buffer is never larger than this, whatever size an error text claims.
constexpr long kTailleMaximale = 64L * 1024 * 1024;
// The buffer of a shop whose Taille_Buffer setting cannot serve.
constexpr long kTailleParDefaut = 102400;
// Requests for one answer (the first and its recoveries) before the bridge gives up on
// an answer that never fits.
constexpr int kEssais271 = 3;

// In one pass: an answer of a lot or of a quarter's returns is megabytes long, and a
// replacement in place would move its whole tail at each line end.
void remplacer_tout(std::string& s, std::string_view de, std::string_view par) {
    std::string r;
    r.reserve(s.size());
    std::size_t debut = 0;
    for (std::size_t pos; (pos = s.find(de, debut)) != std::string::npos; debut = pos + de.size()) {
        r.append(s, debut, pos - debut).append(par);
    }
    r.append(s, debut, std::string::npos);
    s = std::move(r);
}

bool lire_reponse(Run& run, int essai);
bool redemander(Run& run, std::string_view operation, std::string_view libelle);

}  // namespace

void Reponse_Erreur(Run& run, std::string_view code, std::string_view message,
                    std::string_view appelant) {
    XmlDocument doc;
    XmlNoeud racine = doc.creer_racine("ZRMESSAGE");
    racine.ajouter("programme", "Belvane_Classic_II");
    racine.ajouter("appelant", appelant);
    XmlNoeud resultat = racine.ajouter("resultat");
    resultat.ajouter("codeErreur", code);
    resultat.ajouter("libelleErreur", message);
    run.log("Reponse_Erreur : " + std::string(code) + " : " + std::string(message) + " (" +
            std::string(appelant) + ")");
    run.echange_archive = false;
    if (!doc.enregistrer(run.fichier(kReponse))) {
        run.log("Impossible d'écrire " + run.fichier(kReponse));
    }
}

long Taille_Tampon(double taille) {
    if (!(taille >= 1)) {  // also catches NaN
        return 1;
    }
    return taille > kTailleMaximale ? kTailleMaximale : static_cast<long>(taille);
}

bool Envoyer_Requete(Run& run, std::string_view operation, long taille) {
    std::string chemin = run.fichier(kRequete);
    std::string octets;
    if (!fichier_existe(chemin) || !lire_fichier(chemin, octets)) {
        Reponse_Erreur(run, "1", "Requete XML Non trouvée", operation);
        run.interruption = "requête introuvable : " + chemin;
        return false;
    }
    // The middleware receives the document's lines, each ended by CR LF.
    std::string texte;
    std::size_t debut = 0;
    while (debut < octets.size()) {
        std::size_t fin = octets.find_first_of("\r\n", debut);
        if (fin == std::string::npos) {
            fin = octets.size();
        }
        texte.append(octets, debut, fin - debut);
        texte += "\r\n";
        if (fin < octets.size() && octets[fin] == '\r' && fin + 1 < octets.size() &&
            octets[fin + 1] == '\n') {
            ++fin;
        }
        debut = fin + 1;
    }
    return Executer_ZR(run, texte, taille);
}

bool Executer_ZR(Run& run, const std::string& requete, long taille) {
    double voulue = static_cast<double>(taille);
    if (taille == 0) {
        // A read of its own, ended before the call: no transaction stays open while
        // the middleware works.
        UniteDeTravail lecture(run.bases());
        voulue = Lire_Taille_Buffer(run.bases());
        // Null, zero, negative or not a number: one broken setting would otherwise
        // make every call of every operation fail.
        if (!(voulue >= 1)) {
            run.log("Taille_Buffer inutilisable (" + Nombre_SQL(voulue) + ") : tampon de " +
                    std::to_string(kTailleParDefaut) + " octets");
            voulue = kTailleParDefaut;
        }
    }
    taille = Taille_Tampon(voulue);
    if (taille != voulue) {
        run.log("Taille de tampon ramenée de " + Nombre_SQL(voulue) + " à " +
                std::to_string(taille));
    }
    // Written first: if the middleware ends the process or never returns, this
    // document is the answer the host finds.
    Reponse_Erreur(run, "98", "Erreur Web Quintara - Sortie brutale", "Toutes fonctions");

    std::string chemin = run.fichier(kNomIntergiciel);
    if (!run.intergiciel) {
        std::string raison;
        run.intergiciel = charger_bibliotheque(chemin, raison);
        if (!run.intergiciel) {
            run.ui->MsgBox("Impossible de charger " + chemin + "\r\n" + raison, "SV140",
                           Icone::Critique);
            return false;
        }
    }
    auto ZR_Executer = reinterpret_cast<ZR_Executer_t>(run.intergiciel->symbole("ZR_Executer"));
    if (ZR_Executer == nullptr) {
        run.ui->MsgBox("Point d'entrée ZR_Executer absent de " + chemin, "SV140", Icone::Critique);
        return false;
    }
    run.tampon = taille;
    std::vector<char> tampon(static_cast<std::size_t>(taille), '\0');
    int taille_appel = static_cast<int>(taille);
    int retour = ZR_Executer(requete.c_str(), tampon.data(), &taille_appel);
    if (retour != 0) {
        run.ui->MsgBox("Erreur N° : " + std::to_string(retour));
        return false;
    }
    Ecrire_Reponse(run, std::string_view(tampon.data(), tampon.size()));
    return true;
}

std::string Nettoyer_Reponse(std::string_view reponse) {
    std::string texte(reponse.substr(0, reponse.find('\0')));
    if (texte.find("<?xml version=") == std::string::npos) {
        remplacer_tout(texte, "<!DOCTYPE ZRMESSAGE>",
                       "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>");
    } else {
        remplacer_tout(texte, "<!DOCTYPE ZRMESSAGE>", "");
    }
    remplacer_tout(texte, "\r\n", "");
    return texte;
}

void Ecrire_Reponse(Run& run, std::string_view reponse) {
    run.echange_archive = false;
    if (!ecrire_fichier(run.fichier(kReponse), Nettoyer_Reponse(reponse) + "\r\n")) {
        run.log("Impossible d'écrire " + run.fichier(kReponse));
    }
}

bool Lire_Reponse(Run& run) {
    return lire_reponse(run, 0);
}

void Envoyer_Et_Recuperer(Run& run, std::string_view operation) {
    Envoyer_Requete(run, operation, 0);
    for (int essai = 1; essai < kEssais271 && !run.interruption; ++essai) {
        XmlDocument doc;
        Champs resultat{"codeErreur", "libelleErreur"};
        if (!doc.charger_fichier(run.fichier(kReponse)) ||
            resultat.lire(doc, "/ZRMESSAGE/resultat") == 0 || Val(resultat("codeErreur")) != 271 ||
            !redemander(run, operation, resultat("libelleErreur"))) {
            return;
        }
    }
}

namespace {

/// Asks the middleware again for the answer of `operation` that did not fit, with the
/// buffer its label `libelle` ("… Attendue: N … Trouvée: M") calls for. False when the
/// recovery request could not be saved (answered 99) or the run must stop.
bool redemander(Run& run, std::string_view operation, std::string_view libelle) {
    long taille = 0;
    auto attendue = libelle.find("Attendue:");
    if (attendue != std::string::npos && libelle.find("Trouvée:") != std::string::npos) {
        // Rounded half to even, as the host rounds.
        double attendu = std::nearbyint(Val(libelle.substr(attendue + 9)) * 1.1);
        taille = attendu >= 1 ? Taille_Tampon(attendu) : 0;
    }
    if (taille == 0) {
        // Without a size to go by, four times the buffer that was too small.
        taille = Taille_Tampon(4.0 * std::max(run.tampon, kTailleParDefaut));
        run.log("Code 271 sans taille attendue : tampon porté à " + std::to_string(taille));
    }
    // Unsaved, the recovery request would leave the first request to be sent again.
    if (Statut s = Requete_f_RecupMessage(run, operation); !s) {
        Reponse_Erreur(run, "99", s.raison(), run.F_Appel);
        return false;
    }
    run.log("F_Appel : " + std::string(operation) + " Buffer : " + std::to_string(taille));
    Envoyer_Requete(run, operation, taille + 1);
    return !run.interruption;
}

bool lire_reponse(Run& run, int essai) {
    std::string chemin = run.fichier(kReponse);
    if (!fichier_existe(chemin)) {
        run.ui->MsgBox("Le fichier : " + chemin +
                           "\r\nnon présent ! Veuillez réessayer dans quelques instants",
                       "Reponse", Icone::Critique);
        Reponse_Erreur(run, "99", kReponseIllisible, run.F_Appel);
        return false;
    }
    XmlDocument doc;
    if (!doc.charger_fichier(chemin)) {
        // Read as an answer without a code: the operation's own store step then
        // reports the unreadable answer under its name.
        run.log("Réponse illisible : " + doc.erreur());
    }
    Champs resultat{"codeErreur", "libelleErreur"};
    resultat.lire(doc, "/ZRMESSAGE/resultat");
    std::string code = resultat("codeErreur");
    const std::string& libelle = resultat("libelleErreur");
    run.log("Code Erreur Reponse : " + code);
    double valeur = Val(code);
    if (valeur <= 0) {
        return true;
    }
    if (valeur == 271) {
        if (essai + 1 >= kEssais271) {
            Reponse_Erreur(run, "99",
                           "Réponse toujours trop volumineuse après " + std::to_string(kEssais271) +
                               " demandes (code 271)",
                           run.F_Appel);
            return false;
        }
        if (!redemander(run, run.F_Appel, libelle)) {
            return false;
        }
        bool retour = lire_reponse(run, essai + 1);
        run.log(std::string("Retour reponse suite code 271 : ") + (retour ? "True" : "False"));
        return retour;
    }
    if (run.F_Appel == "f_TransfertPJ" || run.F_Appel == "f_TransfertPJ_unique") {
        valeur = 9998;  // the attachment transfer reports its own errors
        code = "9998";
    }
    static constexpr double kSilencieux[] = {98, 260, 261, 276, 283, 297, 9998};
    bool silencieux = false;
    for (double c : kSilencieux) {
        silencieux = silencieux || valeur == c;
    }
    if (!silencieux) {
        run.ui->MsgBox("Erreur N° " + code + "\r\n\r\n" + libelle, "Erreur dans " + run.F_Appel,
                       Icone::Critique);
    }
    return false;
}

}  // namespace
}  // namespace sv140
