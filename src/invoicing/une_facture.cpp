// The operations on one invoice the host names by its number: reading it from the
// middleware, deleting it there and then here.
#include <string>

#include "data/instructions.h"
#include "data/texte_sql.h"
#include "exchange/document.h"
#include "exchange/echange.h"
#include "exchange/fichiers.h"
#include "exchange/requete.h"
#include "exchange/run.h"
#include "invoicing/factures.h"
#include "invoicing/montants.h"
#include "platform/horloge.h"
#include "tools/outils.h"

namespace sv140 {
namespace {

// The host's number (one letter, then the number), from its claim document. Both
// request builders answer an unreadable document under the creation's name, as the
// host expects.
std::optional<std::string> numero_hote(Run& run, std::string_view appelant,
                                       std::string_view message) {
    auto entree = Charger_Document(run, fichiers::kRequeteHote, appelant, message);
    if (!entree) {
        return std::nullopt;
    }
    Champs facture{"numeroFacture"};
    facture.lire(*entree, "/BelvaneClassicII/donneesFacture");
    return facture("numeroFacture");
}

std::string sans_prefixe(std::string_view numero) {
    return numero.empty() ? std::string() : std::string(numero.substr(1));
}

}  // namespace

std::string Numero_Requete(std::string_view numero_hote) {
    const std::string numero = "000000000" + sans_prefixe(numero_hote);
    return numero.substr(numero.size() - 9);
}

Statut Requete_f_SupprimerFacture(Run& run) {
    auto numero = numero_hote(run, "f_CreerFacture", "Impossible de lire ZEMO_Request.xml");
    if (!numero) {
        return Statut::Deja_Repondu("ZEMO_Request.xml illisible");
    }
    Requete requete("f_SupprimerFacture");
    if (Statut ps = requete.ajouter_PS(run, /*avec_numSitu=*/true, false); !ps) {
        return ps;
    }
    requete.operation().ajouter("numeroFacture", Numero_Requete(*numero));
    return requete.enregistrer(run);
}

Statut Requete_f_LireFacture(Run& run) {
    auto numero = numero_hote(run, "f_CreerFacture", "Impossible de lire ZEMO_Request.xml");
    if (!numero) {
        return Statut::Deja_Repondu("ZEMO_Request.xml illisible");
    }
    Requete requete("f_LireFacture");
    XmlNoeud f = requete.operation().ajouter("donneesFacture");
    f.ajouter("dateFacture", Format_Date(maintenant_local(), "%Y%m%d"));
    if (Statut ps = requete.ajouter_PS(run, f, /*avec_numSitu=*/true, false); !ps) {
        return ps;
    }
    f.ajouter("numeroFacture", Numero_Requete(*numero));
    return requete.enregistrer(run);
}

Statut Supprimer_Facture(Run& run) {
    // The message names the answer file although the host's document failed: the host
    // knows this text.
    auto numero_lu = numero_hote(run, "f_SupprimerFacture", kReponseIllisible);
    if (!numero_lu) {
        return Statut::Deja_Repondu("ZEMO_Request.xml illisible");
    }
    const std::string numero = Numero_Sans_Zeros(sans_prefixe(*numero_lu));
    if (numero == "0") {
        run.log("Numéro de facture incohérent : '" + *numero_lu + "'");
        Reponse_Erreur(run, "99",
                       "\r\nLe numéro de facture transmis est incohérent : ", "f_SupprimerFacture");
        return Statut::Deja_Repondu("numéro de facture incohérent");
    }
    Connexion& pont = run.bases().pont;
    auto facture = Premiere_Ligne(
        pont,
        "SELECT T_InfosFacture.Info_Facture_NUMFAC, T_InfosFacture.Info_Facture_ID FROM "
        "T_InfosFacture WHERE (((T_InfosFacture.Info_Facture_NUMFAC)='" +
            Texte_SQL(numero) + "'));");
    if (!facture) {
        return facture.statut();
    }
    if (facture->EOF_()) {
        run.log("Facture " + numero + " absente de T_InfosFacture : rien à supprimer");
        return {};
    }
    const std::string cle = Nombre_SQL(facture->champ("Info_Facture_ID").nombre());
    const std::string suppressions[] = {
        "DELETE T_InfosFacture.Info_Facture_ID FROM T_InfosFacture WHERE "
        "(((T_InfosFacture.Info_Facture_ID)=" +
            cle + "));",
        "DELETE T_InfosDetailFacture.Info_Facture_ID_FK  FROM T_InfosDetailFacture WHERE "
        "(((T_InfosDetailFacture.Info_Facture_ID_FK)=" +
            cle + "));",
        "DELETE T_InfosBordereaux.Info_Bordereau_numFacture FROM T_InfosBordereaux WHERE "
        "(((T_InfosBordereaux.Info_Bordereau_numFacture)='" +
            Texte_SQL(numero) + "'));",
        "DELETE T_InfosSCor.*, T_InfosSCor.InfosSCor_NUMFAC FROM T_InfosSCor WHERE "
        "(((T_InfosSCor.InfosSCor_NUMFAC)='" +
            Texte_SQL(numero) + "'));",
    };
    for (const std::string& sql : suppressions) {
        if (Statut s = pont.Execute(sql); !s) {
            return s;
        }
    }
    run.log("Facture " + numero + " supprimée");
    return {};
}

}  // namespace sv140
