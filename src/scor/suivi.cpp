// What became of the attachments sent: their status as the middleware reports it,
// the invoices still lacking an attachment they need, and the deletion of attachments
// on the host's order. Each attachment's status and each deletion is its own unit of
// work; the control's table is replaced as a whole.
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "data/connexions.h"
#include "data/instructions.h"
#include "data/texte_sql.h"
#include "exchange/document.h"
#include "exchange/echange.h"
#include "exchange/requete.h"
#include "exchange/run.h"
#include "invoicing/montants.h"
#include "platform/systeme.h"
#include "scor/commun.h"
#include "scor/scor.h"

namespace sv140 {
namespace {

constexpr const char* kStatuts = "Retour_f_LireinfosRetourPJ";
constexpr const char* kSuppression = "Retour_f_SupprimerPJ";
constexpr const char* kDocumentIntrouvable = "Document introuvable";
/// The start of the period when the host gives none: every attachment stored.
constexpr const char* kSansDebut = "1/1/1900";

struct Libelle {
    long long code;
    const char* texte;
};

// The scheme's own texts, kept as it writes them.
constexpr Libelle kLibelles[] = {
    {0, "PJ acceptée"},
    {1, "Facture inexistante"},
    {2, "Pas de Pièce Jointe"},
    {3, "Autre"},
    {8, "La Pièce justificative est en attente d'une FSE"},
    {9, "La Pièce justificative a été associée à une FSE"},
    {10, "La Pièce justificative a été expédiée à la Caisse"},
    {11, "La Pièce justificative a été expédiée à la Caisse mais reste sans retour (>48H)"},
    {12, "La Pièce justificative est a traiter manuellement"},
    {13, "La Pièce justificative a été supprimée"},
    {14, "En attente de traitement par Corvane"},
    {1010, "La Pièce Jointe ou déclarée n'existe pas"},
    {1020, "Plus de Pièce Jointe"},
    {1030, "Plus d'une Pièce Jointe"},
    {1031, "Mauvais format de compression de la pièce Jointe"},
    {1040, "Content-Type différent de Application/Edi Content"},
    {1050, "Content-Description inconnu ou non autorisé"},
    {1060, "Sujet non-conforme"},
    {1061, "1er Sous Champ du sujet inconnu ou non autorisé"},
    {1062, "2ème Sous Champ du sujet absent ou de longueur différente de 9 Caractères"},
    {1063, "3ème Sous Champ du sujet absent ou de longueur différente de 17 Caractères"},
    {1064, "Date et Heure compostage non valide"},
    {1070, "Sujet identique (message déjà transmis)"},
    {1080, "Champ From Vide ou avec une syntaxe incorrecte (code erreur non transmis au PR)"},
    {1082, "Emmetteur non référencé dans le système d'accueil"},
    {9999, "Autre Erreur"},
    {5100, "Structure de données de l’entête SEH incorrecte"},
    {5110, "Incohérence du numéro d'emetteur"},
    {5112, "Incohérence du code régime"},
    {5113, "Code spécialité PS non connu ou non autorisé du système"},
    {5115,
     "Couple Code régime/ code organisme destinataire inconnu (cf. fiche information Scor N°008)"},
    {5120, "La somme des liens de document indiqués dans l’entête est erronée"},
    {5121, "Document référencé dans l’entête non présent dans le lot SCANORDO"},
    {5122, "Fichier index ou fichier PJ de type PDF manquant"},
    {5123, "Incohérence du champ identification lot SCANORDO"},
    {5124, "Document présent dans le lot de justificatifs mais non référencé dans l’entête SEH."},
    {5125, "Doublon dans l’identifiant des documents de l’entête SEH"},
    {5126, "Lien interne ou lien externe absent"},
    {5130, "Structure du nom physique de l’entête SEH non conforme"},
    {5131, "2ème sous-champ du nom physique de l’entête SEH incorrect"},
    {5132, "3ème sous-champ du nom physique de l’entête SEH incorrect"},
    {5133, "4ème sous-champ du nom physique de l’entête SEH incorrect"},
    {5140, "Incohérence de l’index du lot SCANORDO"},
    {5150, "Logiciel SCOR non valide"},
    {5170, "Structure de l’identifiant du lien interne ou externe non-conforme"},
    {5171, "2ème sous-champ du nom physique de l’identifiant du lien interne ou externe incorrect"},
    {5172, "Nature du lien absente"},
    {5173, "Identifiant d’un lien manquant"},
    {5230, "Certificat révoqué"},
    {5330, "Certificat révoqué"},
    {5231, "Fichier non chiffré"},
    {5331, "Fichier non chiffré"},
    {5232, "Certificat inapproprié"},
    {5332, "Certificat inapproprié"},
    {5233, "Certificat inconnu"},
    {5333, "Certificat inconnu"},
    {5234, "Certificat périmé"},
    {5334, "Certificat périmé"},
    {5240, "Syntaxe du nom physique de l’index de justificatifs est incorrecte"},
    {5241, "1er sous-champ nom physique de l’index incorrect"},
    {5242, "2ème sous-champ nom physique de l’index non conforme"},
    {5252, "2ème sous-champ nom physique de l’index incohérent"},
    {5253, "Incohérence identifiant des dossiers"},
    {5260, "Incohérence du code régime"},
    {5270, "Structure de données de l’index incorrecte"},
    {5340, "Syntaxe du nom physique d’une pièce justificative est incorrecte"},
    {5342, "2ième sous-champ du nom physique d’une pièce justificative incorrect"},
    {5352,
     "Incohérence du 2ième sous-champ du nom physique d’une pièce justificative avec le numéro "
     "d’ordre du dossier"},
    {5370, "Taille du fichier physique d’une pièce justificative incorrecte"},
    {5380, "Option de numérisation non conforme"},
    {5999, "Dossier rejeté"},
};

bool chiffres(std::string_view t) {
    return !t.empty() && t.size() <= 15 && t.find_first_not_of("0123456789") == t.npos;
}

/// A status code as the middleware writes it: a whole number, maybe negative.
bool code_lisible(std::string_view t) {
    return chiffres(t.substr(!t.empty() && t[0] == '-' ? 1 : 0));
}

/// An invoice as the status request lists it: nine digits.
std::string numero_demande(const std::string& numfac) {
    double n = Val(numfac);
    if (n < 0 || n > double(scor::kPlusGrandNombre) || n != std::floor(n)) {
        n = 0;
    }
    return scor::Neuf_Chiffres(static_cast<long long>(n));
}

// --- Status --------------------------------------------------------------------------

struct StatutLu {
    std::string facture;  // as the middleware wrote it
    long long code = 0;
    std::string nom;  // the attachment's file; "": every attachment of the invoice
};

Statut enregistrer_statut(Run& run, const StatutLu& s) {
    const std::string libelle = Texte_Hote_SQL(LibelleStatutPJ(s.code));
    const std::string debut =
        "UPDATE T_InfosSCor SET T_InfosSCor.C_Statut = " + Nombre_SQL(double(s.code)) +
        ", T_InfosSCor.InfosSCor_LibelError = '" + libelle + "', ";
    if (s.nom.empty()) {
        return run.bases().pont.Execute(
            debut + "T_InfosSCor.InfosSCor_ARL = 0 WHERE (((Trim(Val([InfosSCor_NUMFAC])))='" +
            Nombre_SQL(s.facture) + "'));");
    }
    return run.bases().pont.Execute(
        debut + "T_InfosSCor.InfosSCor_ARL = " + (AccuseReceptionPJ(s.code) ? "True" : "False") +
        " WHERE (((T_InfosSCor.InfosSCor_nom)='" + Texte_Hote_SQL(s.nom) + "'));");
}

/// Sends one status request for these invoices and records the answer.
Statut demander_statuts(Run& run, const std::vector<std::string>& factures) {
    IdentifiantsPS ps;
    if (Statut s = scor::Identifiants(run, ps); !s) {
        return s;
    }
    scor::Terminer_Lectures(run);
    Requete r("f_LireInfosRetourPJ");
    r.ajouter_PS(ps, /*avec_numSitu=*/true, false);
    XmlNoeud liste = r.operation().ajouter("listeFacture");
    for (const std::string& f : factures) {
        liste.ajouter("numeroFacture", f);
    }
    run.log("Statut demandé pour " + std::to_string(factures.size()) + " facture(s)");
    if (Statut s = scor::Echanger(run, r, "f_LireInfosRetourPJ"); !s) {
        return s;
    }
    return LireStatutsPJ(run);
}

/// Adds `numero` to `liste` unless it is there already.
void ajouter_une_fois(std::vector<std::string>& liste, std::string numero) {
    for (const std::string& n : liste) {
        if (n == numero) {
            return;
        }
    }
    liste.push_back(std::move(numero));
}

// --- Deletion ------------------------------------------------------------------------

/// A deletion the host's order asked for and that did not happen: the answer's text
/// and caller.
struct Refus {
    std::string texte;
    std::string appelant;
};

/// Asks the middleware to withdraw one attachment and, when it has, marks its row and
/// removes its file. Nothing of it is kept when the deletion is refused.
std::optional<Refus> supprimer(Run& run, const IdentifiantsPS& ps, long long id) {
    const std::string cle = std::to_string(id);
    std::string nom, chemin;
    bool envoyee = false;
    {
        UniteDeTravail lecture(run.bases());
        auto rs = Premiere_Ligne(run.bases().pont,
                                 "SELECT T_InfosSCor.* FROM T_InfosSCor WHERE "
                                 "(((T_InfosSCor.InfosSCor_ID)=" +
                                     cle + "));");
        if (!rs) {
            return Refus{rs.statut().raison(), kSuppression};
        }
        if (rs->EOF_()) {
            run.log("Suppression de la pièce " + cle + " : " + kDocumentIntrouvable);
            return Refus{kDocumentIntrouvable, "f_SupprimerPJ"};
        }
        nom = rs->champ("InfosSCor_nom").str();
        chemin = rs->champ("InfosSCor_Chemin").str();
        envoyee = !rs->champ("InfosSCor_DateEnvoi").str().empty();
        if (rs->champ("idDossier").nombre() == 0 && nom == "Document supprimé") {
            run.log("Pièce " + cle + " déjà supprimée");
            return std::nullopt;
        }
    }
    Requete r("f_SupprimerPJ");
    r.ajouter_PS(ps, /*avec_numSitu=*/true, false);
    r.operation().ajouter("nomPJ", nom);
    if (Statut s = scor::Echanger(run, r, "f_SupprimerPJ"); !s) {
        return Refus{s.raison(), kSuppression};
    }
    auto doc = Charger_Reponse(run, kSuppression);
    if (!doc) {
        return Refus{kReponseIllisible, kSuppression};
    }
    Champs resultat{"codeErreur", "libelleErreur"};
    resultat.lire(*doc, "/ZRMESSAGE/resultat");
    const double code = Val(resultat("codeErreur"));
    run.log("Suppression de la pièce " + cle + " (" + nom + ") : code " + resultat("codeErreur") +
            " " + resultat("libelleErreur"));
    // An attachment never sent is unknown to the middleware: there is nothing to withdraw.
    if (code == 0 || (code == 41 && !envoyee)) {
        UniteDeTravail unite(run.bases());
        Statut s = MarquerPieceSupprimee(run, id);
        if (s) {
            s = unite.valider();
        }
        if (!s) {
            return Refus{"Pièce " + cle + " retirée, mais non enregistrée : " + s.raison(),
                         kSuppression};
        }
        const std::string dossier = RebaserCheminScor(run.DB_DONNEES, chemin);
        if (!dossier.empty() && !nom.empty() && fichier_existe(dossier + nom) &&
            !supprimer_fichier(dossier + nom)) {
            run.log("Fichier " + dossier + nom + " non supprimé");
        }
        return std::nullopt;
    }
    if (code == 41) {
        return Refus{
            "Ré-essayer ultérieurement\r\nLa pièce jointe n'existe pas dans ZR (Attente "
            "d'actualisation)",
            kSuppression};
    }
    if (code == 42) {
        return Refus{"Suppression impossible\r\nLa pièce jointe a déjà été transmise",
                     kSuppression};
    }
    return Refus{resultat("libelleErreur").empty() ? "Erreur " + resultat("codeErreur")
                                                   : resultat("libelleErreur"),
                 kSuppression};
}

}  // namespace

std::string LibelleStatutPJ(long long code) {
    for (const Libelle& l : kLibelles) {
        if (l.code == code) {
            return l.texte;
        }
    }
    return {};
}

bool AccuseReceptionPJ(long long code) {
    return code == 0 || code == 12 || code > 14;
}

std::optional<std::string> DebutStatuts(std::string_view aaaammjj) {
    if (aaaammjj.empty() || aaaammjj == "00000000") {
        return std::string(kSansDebut);
    }
    if (!chiffres(aaaammjj) || aaaammjj.size() != 8) {
        return std::nullopt;
    }
    const int mois = static_cast<int>(Val(aaaammjj.substr(4, 2)));
    const int jour = static_cast<int>(Val(aaaammjj.substr(6, 2)));
    if (mois < 1 || mois > 12 || jour < 1 || jour > 31) {
        return std::nullopt;
    }
    return std::to_string(mois) + "/" + std::to_string(jour) + "/" +
           std::string(aaaammjj.substr(0, 4));
}

Statut LireStatutsPJ(Run& run) {
    auto doc = Charger_Reponse(run, kStatuts);
    if (!doc) {
        return Statut::Deja_Repondu(kReponseIllisible);
    }
    Champs resultat{"codeErreur", "libelleErreur"};
    resultat.lire(*doc, "/ZRMESSAGE/resultat");
    if (Val(resultat("codeErreur")) != 0) {
        Reponse_Erreur(run, "99", resultat("libelleErreur"), kStatuts);
        return Statut::Deja_Repondu("erreur " + resultat("codeErreur") +
                                    " de l'intergiciel : " + resultat("libelleErreur"));
    }
    std::vector<StatutLu> statuts;
    for (const XmlNoeud& pj :
         doc->selectionner("/ZRMESSAGE/resultat/donnees/listeFacture/facture/PJ")) {
        StatutLu s{pj.texte_de("../numFact"), 0, pj.texte_de("nomPJ")};
        const std::string code = pj.texte_de("code");
        // A status that cannot be read must not pass for "accepted" (0).
        if (!code_lisible(code) || (s.nom.empty() && !chiffres(s.facture))) {
            run.log("Statut illisible ignoré : facture « " + s.facture + " », pièce « " + s.nom +
                    " », code « " + code + " »");
            continue;
        }
        s.code = static_cast<long long>(Val(code));
        if (s.nom.size() >= 4 && s.nom.compare(s.nom.size() - 4, 4, ".txt") == 0) {
            s.nom.replace(s.nom.find(".txt"), 4, ".pdf");
        }
        run.log("Statut : facture " + s.facture + ", pièce « " + s.nom + " », " +
                std::to_string(s.code) + " " + LibelleStatutPJ(s.code));
        statuts.push_back(std::move(s));
    }
    return Enregistrer_Par_Unite(
        run.bases(), statuts.size(),
        [&](std::size_t i) { return enregistrer_statut(run, statuts[i]); },
        [&](std::size_t i) {
            return "statut de " +
                   (statuts[i].nom.empty() ? "la facture " + statuts[i].facture : statuts[i].nom);
        });
}

Statut LireInfosRetourPJ(Run& run) {
    auto doc = scor::Charger_Ordre(run);
    if (!doc) {
        return Statut::Deja_Repondu(scor::kOrdreIllisible);
    }
    std::vector<std::string> factures;
    for (const XmlNoeud& n :
         doc->selectionner("/ZRMESSAGE/requete/fonction/f_LireInfosRetourPJ/Document")) {
        long long id = 0;
        if (std::string erreur; !scor::Lire_Nombre(n, "Id", id, erreur)) {
            run.log(erreur);
            Reponse_Erreur(run, "99", scor::kOrdreIllisible, scor::kAppelant);
            return Statut::Deja_Repondu(erreur);
        }
        auto rs = Premiere_Ligne(run.bases().pont,
                                 "SELECT T_InfosSCor.*, T_InfosSCor.InfosSCor_ID FROM T_InfosSCor "
                                 "WHERE (((T_InfosSCor.InfosSCor_ID)=" +
                                     std::to_string(id) + "));");
        if (!rs) {
            return rs.statut();
        }
        if (rs->EOF_()) {
            run.log("Pièce " + std::to_string(id) + " absente de T_InfosSCor");
            continue;
        }
        ajouter_une_fois(factures, numero_demande(rs->champ("InfosSCor_NUMFAC").str()));
    }
    if (factures.empty()) {
        Reponse_Erreur(run, "99", kDocumentIntrouvable, "f_LireInfosRetourPJ");
        return Statut::Deja_Repondu(kDocumentIntrouvable);
    }
    return demander_statuts(run, factures);
}

Statut MettreAJourStatuts(Run& run) {
    auto doc = scor::Charger_Ordre(run);
    if (!doc) {
        return Statut::Deja_Repondu(scor::kOrdreIllisible);
    }
    supprimer_fichiers(run.dossier_programme, "20*.pdf");
    Champs donnees{"DateDebut"};
    donnees.lire(*doc, "/ZRMESSAGE/requete/fonction/f_mettreajourStatut/donnees");
    const std::optional<std::string> debut = DebutStatuts(donnees("DateDebut"));
    if (!debut) {
        run.log("dctsScor.xml : DateDebut « " + donnees("DateDebut") +
                " » n'est pas une date aaaammjj");
        Reponse_Erreur(run, "99", scor::kOrdreIllisible, scor::kAppelant);
        return Statut::Deja_Repondu("DateDebut illisible");
    }
    std::vector<std::string> factures;
    for (const char* condition :
         {"((T_InfosSCor.InfosSCor_ARL)=False) AND ((T_InfosSCor.C_Erreur)=0)",
          "((T_InfosSCor.C_Statut)>14) AND ((T_InfosSCor.InfosSCor_ARL)=True)"}) {
        auto rs = run.bases().pont.Ouvrir(
            std::string("SELECT T_InfosSCor.InfosSCor_NUMFAC FROM T_InfosSCor WHERE (") +
            condition + " AND ((T_InfosSCor.InfosSCor_DateGeneration)>=#" + *debut +
            "#)) GROUP BY T_InfosSCor.InfosSCor_NUMFAC;");
        if (!rs) {
            return rs.statut();
        }
        for (; !rs->EOF_(); rs->MoveNext()) {
            ajouter_une_fois(factures, numero_demande(rs->champ("InfosSCor_NUMFAC").str()));
        }
    }
    if (factures.empty()) {
        Reponse_Erreur(run, "98", "Aucun Statut à Vérifier", "f_mettreAjourStatut");
        return {};
    }
    return demander_statuts(run, factures);
}

Statut ControlerPJ(Run& run) {
    IdentifiantsPS ps;
    if (Statut s = scor::Identifiants(run, ps); !s) {
        return s;
    }
    scor::Terminer_Lectures(run);
    Requete r("f_ControlePJ");
    r.ajouter_PS(ps, /*avec_numSitu=*/true, false);
    if (Statut s = scor::Echanger(run, r, "f_ControlePJ"); !s) {
        return s;
    }
    auto doc = Charger_Reponse(run, "f_ControlePJ");
    if (!doc) {
        return Statut::Deja_Repondu(kReponseIllisible);
    }
    Champs resultat{"codeErreur", "libelleErreur"};
    resultat.lire(*doc, "/ZRMESSAGE/resultat");
    if (Val(resultat("codeErreur")) != 0) {
        Reponse_Erreur(run, "99", resultat("libelleErreur"), "f_ControlePJ");
        return Statut::Deja_Repondu("erreur " + resultat("codeErreur") +
                                    " de l'intergiciel : " + resultat("libelleErreur"));
    }
    Connexion& pont = run.bases().pont;
    if (Statut s = pont.Execute("DELETE SCOR_Erreurs.* FROM SCOR_Erreurs;"); !s) {
        return s;
    }
    for (const XmlNoeud& n :
         doc->selectionner("/ZRMESSAGE/resultat/donnees/listeFacture/numeroFacture")) {
        const std::string facture = Numero_Sans_Zeros(n.texte());
        if (facture.empty()) {
            continue;
        }
        const std::string cle = Texte_SQL(facture);
        auto fse = Premiere_Ligne(pont,
                                  "SELECT T_InfosFacture.Info_Facture_ID, "
                                  "T_InfosFacture.Info_Facture_TYPECERTIF FROM T_InfosFacture "
                                  "WHERE (((T_InfosFacture.Info_Facture_NUMFAC)='" +
                                      cle + "'));");
        if (!fse) {
            return fse.statut();
        }
        if (fse->EOF_()) {
            run.log("Contrôle : facture " + facture + " absente de T_InfosFacture");
            continue;
        }
        // A degraded invoice needs the paper claim form; an optical device, which is
        // prescribed, needs its prescription.
        auto lpp = Premiere_Ligne(
            pont,
            "SELECT T_InfosDetailFacture.Info_Facture_CODLPP FROM T_InfosDetailFacture "
            "WHERE (((T_InfosDetailFacture.Info_Facture_ID_FK)=" +
                Nombre_SQL(fse->champ("Info_Facture_ID").nombre()) +
                ") AND ((T_InfosDetailFacture.Info_Facture_CODLPP)<>''));");
        if (!lpp) {
            return lpp.statut();
        }
        const struct {
            const char* code;
            const char* nom;
            bool requise;
        } natures[] = {
            {"FSNC", "Feuille de Soins",
             Trim(fse->champ("Info_Facture_TYPECERTIF").str()) == "Degrade"},
            {"ORDN", "Ordonnance", !lpp->EOF_()},
        };
        for (const auto& nature : natures) {
            if (!nature.requise) {
                continue;
            }
            auto piece = Premiere_Ligne(
                pont,
                "SELECT T_InfosSCor.InfosSCor_NUMFAC, T_InfosSCor.InfosSCor_Nature FROM "
                "T_InfosSCor WHERE (((T_InfosSCor.InfosSCor_NUMFAC)='" +
                    cle + "') AND ((T_InfosSCor.InfosSCor_Nature)='" + nature.code + "'));");
            if (!piece) {
                return piece.statut();
            }
            if (!piece->EOF_()) {
                continue;
            }
            auto client = NomClientFacture(run, facture);
            if (!client) {
                return client.statut();
            }
            run.log("Contrôle : facture " + facture + ", " + nature.nom + " manquante (" + *client +
                    ")");
            if (Statut s =
                    pont.Execute("INSERT INTO SCOR_Erreurs ( id_PJ, numeroFacture, Nature_PJ, "
                                 "Reference_Client) SELECT '" +
                                 std::string(nature.code) + "' AS V1, '" + cle + "' AS V2, '" +
                                 nature.nom + "' AS V3, '" + Texte_SQL(*client) + "' AS V4;");
                !s) {
                return s;
            }
        }
    }
    Reponse_Erreur(run, "0", scor::kSucces, "f_ControlePJ");
    return {};
}

Statut SupprimerPiecesOrdre(Run& run) {
    auto doc = scor::Charger_Ordre(run);
    if (!doc) {
        return Statut::Deja_Repondu(scor::kOrdreIllisible);
    }
    std::vector<long long> ids;
    for (const XmlNoeud& n :
         doc->selectionner("/ZRMESSAGE/requete/fonction/f_deldctsSCOR/Dossier")) {
        long long id = 0;
        if (std::string erreur; !scor::Lire_Nombre(n, "id_Document", id, erreur)) {
            // Which attachment was meant is unknown: none is touched.
            run.log(erreur);
            Reponse_Erreur(run, "99", scor::kOrdreIllisible, scor::kAppelant);
            return Statut::Deja_Repondu(erreur);
        }
        ids.push_back(id);
    }
    if (ids.empty()) {
        Reponse_Erreur(run, "0", "Aucun document à supprimer", kSuppression);
        return {};
    }
    IdentifiantsPS ps;
    if (Statut s = scor::Identifiants(run, ps); !s) {
        return s;
    }
    scor::Terminer_Lectures(run);
    std::vector<Refus> refus;
    for (long long id : ids) {
        if (std::optional<Refus> r = supprimer(run, ps, id)) {
            refus.push_back(std::move(*r));
        }
        if (run.interruption) {
            return Statut::Deja_Repondu(*run.interruption);
        }
    }
    if (refus.empty()) {
        Reponse_Erreur(run, "0", scor::kSucces, kSuppression);
    } else if (refus.size() == 1) {
        Reponse_Erreur(run, "99", refus.front().texte, refus.front().appelant);
    } else {
        std::string texte;
        for (const Refus& r : refus) {
            texte += (texte.empty() ? "" : "\r\n") + r.texte;
        }
        Reponse_Erreur(run, "99", texte, kSuppression);
    }
    return {};
}

}  // namespace sv140
