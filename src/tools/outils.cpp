// The run log, the monthly archive of exchanges, file copy, the SQL date literal and
// run-and-wait.
#include "tools/outils.h"

#include "platform/encodage.h"
#include "platform/horloge.h"
#include "platform/systeme.h"
#include "platform/ui.h"

namespace sv140 {

namespace {
// Exchanges one operation archives within a second: a transfer sends hundreds.
constexpr int kArchivesParSeconde = 100000;
}  // namespace

namespace {

constexpr const char* kFichierLog = "LogsSV.txt";
constexpr std::size_t kLargeurZone = 14;
// Paths of this length or more are refused, as the shop's Windows tools limit a
// path to 260 characters.
constexpr std::size_t kLongueurCheminRefusee = 261;

/// The item followed by blanks up to the start of the next print zone.
void ajouter_zone(std::string& ligne, const std::string& item) {
    ligne += item;
    std::size_t fin = (ligne.size() / kLargeurZone + 1) * kLargeurZone;
    ligne.append(fin - ligne.size(), ' ');
}

}  // namespace

std::string Format_Date(const std::tm& t, const char* format) {
    std::string texte(64, '\0');
    for (;;) {
        std::size_t n = std::strftime(texte.data(), texte.size(), format, &t);
        // strftime gives 0 both for a buffer too small and for an empty result.
        if (n > 0 || texte.size() >= 4096) {
            texte.resize(n);
            return texte;
        }
        texte.resize(texte.size() * 2);
    }
}

std::string Ligne_Log(const std::tm& t, std::string_view message) {
    std::string ligne;
    ajouter_zone(ligne, Format_Date(t, "%d/%m/%Y"));
    ajouter_zone(ligne, Format_Date(t, "%H:%M:%S"));
    ligne += message;
    return ligne;
}

void Ecrire_Log(const std::string& dossier_programme, std::string_view message) {
    // A log that cannot be written must never stop a run.
    try {
        std::string ligne = Ligne_Log(maintenant_local(), message);
#if defined(_WIN32)
        // The support staff read the log in Notepad: the ANSI code page, CR LF lines.
        ligne = utf8_vers_cp1252(ligne) + "\r\n";
#else
        ligne += '\n';
#endif
        ajouter_au_fichier(joindre(dossier_programme, kFichierLog), ligne);
    } catch (...) {
    }
}

void Vider_Log(const std::string& dossier_programme) {
    ecrire_fichier(joindre(dossier_programme, kFichierLog), "");
}

void Nettoyer_Restes(const std::string& dossier_programme, std::string_view dossier_donnees,
                     bool interrompue) {
    supprimer_copies_abandonnees(dossier_programme);
    for (const char* provisoire : {"*.partiel", "*.tmp"}) {
        supprimer_fichiers(dossier_programme, provisoire);
    }
    if (interrompue) {
        supprimer_copies_abandonnees(
            joindre(joindre(dossier_donnees, "Sv140"), Format_Date(maintenant_local(), "%Y%m")));
    }
}

bool Archiver_Echange(Ui& ui, std::string_view operation, std::string_view dossier_donnees,
                      const std::string& requete, const std::string& reponse) {
    const std::tm t = maintenant_local();

    const std::string racine = joindre(dossier_donnees, "Sv140");
    if (!dossier_existe(racine)) {
        ui.MsgBox("Le répertoire n'existe pas");
        creer_dossier(racine);
    }
    const std::string mois = joindre(racine, Format_Date(t, "%Y%m"));
    if (!dossier_existe(mois)) {
        creer_dossier(mois);
    }

    const std::string nom =
        std::string(operation) + "_" + Format_Date(t, "%Y%m%d") + "_" + Format_Date(t, "%H%M%S");
    const bool avec_reponse = fichier_existe(reponse);
    const bool avec_requete = fichier_existe(requete);
    // The answer takes the first free name (never over another's, even when a workstation
    // archives at the same instant), and the request the same name. Within one run the
    // search starts after the run's last name of the same second.
    static std::string dernier_nom;
    static int dernier_numero = 0;
    const int premier = nom == dernier_nom ? dernier_numero + 1 : 1;
    for (int n = premier; n <= kArchivesParSeconde; ++n) {
        const std::string suffixe = nom + (n == 1 ? "" : "_" + std::to_string(n)) + ".xml";
        const std::string rsp = joindre(mois, "RSP_" + suffixe);
        const std::string req = joindre(mois, "REQ_" + suffixe);
        if (avec_reponse ? !Copier_Fichier(reponse, rsp, false)
                         : (fichier_existe(rsp) || fichier_existe(req))) {
            if (avec_reponse && !fichier_existe(rsp)) {
                return false;  // not a name taken: the copy itself failed
            }
            continue;
        }
        dernier_nom = nom;
        dernier_numero = n;
        return !avec_requete || Copier_Fichier(requete, req, true);
    }
    return false;
}

bool Copier_Fichier(const std::string& source, const std::string& destination, bool ecraser) {
    if (longueur_caracteres(source) >= kLongueurCheminRefusee ||
        longueur_caracteres(destination) >= kLongueurCheminRefusee) {
        return false;
    }
    return copier_fichier_systeme(source, destination, !ecraser);
}

void Lancer_Et_Attendre(const std::string& ligne) {
    lancer_et_attendre_processus(ligne);
}

}  // namespace sv140
