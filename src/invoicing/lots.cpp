// The sending of the waiting invoices in lots: the request, then, for every invoice the
// middleware sent, its lot and paying organisation written onto the host's slip row.
// The middleware has already sent the lot when the bridge records it, so each invoice is
// its own unit: one that fails is named in the answer and the others stay recorded.
#include <string>
#include <vector>

#include "data/instructions.h"
#include "data/texte_sql.h"
#include "exchange/document.h"
#include "exchange/echange.h"
#include "exchange/requete.h"
#include "exchange/run.h"
#include "invoicing/factures.h"
#include "invoicing/montants.h"
#include "platform/horloge.h"
#include "tools/outils.h"

namespace sv140 {

bool Erreur_Intergiciel(Run& run, const XmlDocument& doc) {
    for (const XmlNoeud& resultat : doc.selectionner("/ZRMESSAGE/resultat")) {
        Champs r{"codeErreur", "libelleErreur"};
        r.lire(resultat);
        if (Val(r("codeErreur")) > 0) {
            run.log("Erreur de l'intergiciel " + r("codeErreur") + " : " + r("libelleErreur"));
            return true;
        }
    }
    return false;
}

namespace {

constexpr const char* kLots = "/ZRMESSAGE/resultat/donnees/donneesEnvoi/lot/donneesFacture";
// A second message nested in the first one's data: the middleware may answer so.
constexpr const char* kLotsImbriques =
    "/ZRMESSAGE/resultat/donnees/ZRMESSAGE/resultat/donnees/donneesEnvoi/lot/donneesFacture";

std::string sans_barres(std::string texte) {
    std::erase(texte, '\\');
    return texte;
}

// The invoices of one pass, all read before any is recorded, with the pass's internal
// lot identifier.
std::vector<FactureLot> lire_lots(const XmlDocument& doc, const char* chemin) {
    const std::string lotInterne = Format_Date(maintenant_local(), "%y%m%d%H%M%S");
    std::vector<FactureLot> factures;
    for (const XmlNoeud& noeud : doc.selectionner(chemin)) {
        Champs c{"numeroLot",
                 "numeroFacture",
                 "codeRegime",
                 "codeCaisse",
                 "codeCentre",
                 "organismeDestinataire/libelle",
                 "organismeDestinataire/adresse",
                 "organismeDestinataire/codePostal",
                 "organismeDestinataire/commune",
                 "organismeDestinataire/cedex",
                 "organismeDestinataire/telephone",
                 "organismeDestinataire/fax"};
        c.lire(noeud);
        factures.push_back(
            {c("numeroFacture"), c("numeroLot"), lotInterne, c("codeRegime"), c("codeCaisse"),
             c("codeCentre"), c("organismeDestinataire/libelle"),
             sans_barres(c("organismeDestinataire/adresse")), c("organismeDestinataire/codePostal"),
             sans_barres(c("organismeDestinataire/commune")), c("organismeDestinataire/cedex"),
             c("organismeDestinataire/telephone"), c("organismeDestinataire/fax")});
    }
    return factures;
}

Statut enregistrer_passe(Run& run, const XmlDocument& doc, const char* chemin) {
    const std::vector<FactureLot> factures = lire_lots(doc, chemin);
    if (factures.empty()) {
        return {};
    }
    run.log("Lots : " + std::to_string(factures.size()) + " facture(s), lot interne " +
            factures.front().lotInterne);
    return Enregistrer_Par_Unite(
        run.bases(), factures.size(),
        [&](std::size_t i) { return Enregistrer_Lot_Facture(run, factures[i]); },
        [&](std::size_t i) { return "facture '" + factures[i].numeroFacture + "'"; });
}

// Both passes run; a failure of the first does not keep the second from recording.
Statut stocker(Run& run, bool seconde_passe) {
    auto doc = Charger_Reponse(run, "f_EnvoyerToutesFactures");
    if (!doc) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    if (Erreur_Intergiciel(run, *doc)) {
        return Statut::Deja_Repondu("erreur de l'intergiciel");
    }
    Statut premiere = enregistrer_passe(run, *doc, kLots);
    Statut seconde = seconde_passe ? enregistrer_passe(run, *doc, kLotsImbriques) : Statut();
    if (premiere && seconde) {
        return {};
    }
    // The middleware has sent them all: the host is told which ones its slips lack.
    std::string raison = (premiere ? seconde : premiere).raison();
    if (!premiere && !seconde) {
        raison += " ; " + seconde.raison();
    }
    return Statut::Echec("Lot envoyé, mais " + raison +
                         " ; la réponse de l'intergiciel est conservée dans l'archive");
}

}  // namespace

std::string_view Libelle_Regime(std::string_view code) {
    static constexpr std::pair<std::string_view, std::string_view> libelles[] = {
        {"01", "Régime Général"},
        {"02", "Régime Agricole"},
        {"03", "RSI"},
        {"04", "CPR SNCF"},
        {"05", "Régime Spécial RATP"},
        {"06", "ENIM"},
        {"07", "Régime Minier"},
        {"08", "CNMSS"},
        {"09", "CPM Banque de France"},
        {"10", "CRPCEN"},
        {"12", "CCIP"},
        {"14", "Assemblée Nationale"},
        {"15", "Sénat"},
        {"90", "Cavimac"},
        {"91", "MGEN"},
        {"92", "MG"},
        {"93", "MGP"},
        {"94", "MFP Services"},
        {"95", "MNH"},
        {"99", "Sections Locales Mutualistes"},
    };
    for (const auto& [c, libelle] : libelles) {
        if (c == code) {
            return libelle;
        }
    }
    return "Autres";
}

Statut Requete_f_EnvoyerToutesFactures(Run& run) {
    Requete requete("f_EnvoyerToutesFactures", "0004");
    if (Statut ps = requete.ajouter_PS(run, /*avec_numSitu=*/true, false); !ps) {
        return ps;
    }
    return requete.enregistrer(run);
}

Statut Stocker_Lots(Run& run) {
    return stocker(run, /*seconde_passe=*/true);
}

Statut Stocker_Lots_Test(Run& run) {
    return stocker(run, /*seconde_passe=*/false);
}

Statut Lire_Liste_Factures(Run& run) {
    // The list shares its error answer with the lot sending.
    auto doc = Charger_Reponse(run, "f_EnvoyerToutesFactures");
    if (!doc) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    if (Erreur_Intergiciel(run, *doc)) {
        return Statut::Deja_Repondu("erreur de l'intergiciel");
    }
    auto numeros = doc->selectionner("/ZRMESSAGE/resultat/donnees/listeFacture/numeroFacture");
    run.log("Factures listées : " + std::to_string(numeros.size()));
    return {};
}

Statut Enregistrer_Lot_Facture(Run& run, const FactureLot& f) {
    Connexions& bases = run.bases();
    Connexion& pont = bases.pont;
    // The slip is looked up by the number exactly as the middleware wrote it.
    auto bordereau = Premiere_Ligne(pont,
                                    "SELECT T_InfosBordereaux.* FROM T_InfosBordereaux WHERE "
                                    "(((T_InfosBordereaux.Info_Bordereau_numFacture)='" +
                                        Texte_SQL(f.numeroFacture) + "'));");
    if (!bordereau) {
        return bordereau.statut();
    }
    if (bordereau->EOF_()) {
        return {};  // an invoice the host keeps no slip for is not recorded
    }
    // Regimes 01 and 02 pay from the caisse, whatever centre the invoice names.
    const std::string centre =
        (f.codeRegime == "01" || f.codeRegime == "02") ? "0000" : f.codeCentre;
    const std::string conditions =
        "(((T_InfosAdresse.Info_Adresse_codeRegime)='" + Texte_SQL(f.codeRegime) +
        "') AND ((T_InfosAdresse.Info_Adresse_codeCaisse)='" + Texte_SQL(f.codeCaisse) +
        "') AND ((T_InfosAdresse.Info_Adresse_codeCentre)='" + Texte_SQL(centre) + "'));";
    const std::string recherche =
        "SELECT T_InfosAdresse.Info_Adresse_ID, T_InfosAdresse.Info_Adresse_codeRegime, "
        "T_InfosAdresse.Info_Adresse_codeCaisse, T_InfosAdresse.Info_Adresse_codeCentre From "
        "T_InfosAdresse WHERE " +
        conditions;
    auto organisme = Premiere_Ligne(pont, recherche);
    if (!organisme) {
        return organisme.statut();
    }
    double cle_adresse = 0;
    if (!organisme->EOF_()) {
        cle_adresse = organisme->champ("Info_Adresse_ID").nombre();
        if (!f.libelle.empty()) {
            const std::string mise_a_jour =
                "UPDATE T_InfosAdresse SET T_InfosAdresse.Info_Adresse_libelle = '" +
                Texte_SQL(f.libelle) + "', T_InfosAdresse.Info_Adresse_adresse = '" +
                Texte_Hote_SQL(f.adresse) + "', T_InfosAdresse.Info_Adresse_codePostal = '" +
                Texte_SQL(f.codePostal) + "', T_InfosAdresse.Info_Adresse_commune = '" +
                Texte_Hote_SQL(f.commune) + "', T_InfosAdresse.Info_Adresse_cedex = '" +
                Texte_SQL(f.cedex) + "', T_InfosAdresse.Info_Adresse_telephone = '" +
                Texte_SQL(f.telephone) + "', T_InfosAdresse.Info_Adresse_fax = '" +
                Texte_SQL(f.fax) + "'  WHERE " + conditions;
            if (Statut s = pont.Execute(mise_a_jour); !s) {
                return s;
            }
        }
    } else {
        const std::string libelle =
            f.libelle.empty() ? "Caisse TEST " + f.codeCaisse + " " + centre : f.libelle;
        const std::string insertion =
            "INSERT INTO T_InfosAdresse ( Info_Adresse_codeRegime, Info_Adresse_codeCaisse, "
            "Info_Adresse_codeCentre, Info_Adresse_libelle, Info_Adresse_adresse, "
            "Info_Adresse_codePostal, Info_Adresse_commune, Info_Adresse_cedex, "
            "Info_Adresse_telephone, Info_Adresse_fax ) SELECT '" +
            Texte_SQL(f.codeRegime) + "' AS C_R, '" + Texte_SQL(f.codeCaisse) + "' AS C_C, '" +
            Texte_SQL(centre) + "' AS C_G, '" + Texte_SQL(libelle) + "' AS L_C, '" +
            Texte_Hote_SQL(f.adresse) + "' AS A_AD, '" + Texte_SQL(f.codePostal) + "' AS A_CP, '" +
            Texte_Hote_SQL(f.commune) + "' AS A_Co, '" + Texte_SQL(f.cedex) + "' AS A_Ce, '" +
            Texte_SQL(f.telephone) + "' AS A_Te, '" + Texte_SQL(f.fax) + "' AS A_Fa;";
        if (Statut s = pont.Execute(insertion); !s) {
            return s;
        }
        auto cree = Premiere_Ligne(pont, recherche);
        if (!cree) {
            return cree.statut();
        }
        cle_adresse = cree->EOF_() ? 0 : cree->champ("Info_Adresse_ID").nombre();
    }

    // The slips keep the number without its leading zeros.
    const std::string cle = Texte_SQL(Numero_Sans_Zeros(f.numeroFacture));
    const double lot = Val(f.numeroLot);
    if (lot == 0) {
        // A lot whose number is not a number is a degraded (paper) lot.
        return pont.Execute(
            "UPDATE T_InfosBordereaux SET T_InfosBordereaux.Info_Bordereau_NumLot_DRE = '" +
            Texte_SQL(f.numeroLot) + "' WHERE (((T_InfosBordereaux.Info_Bordereau_numFacture)='" +
            cle + "'));");
    }
    if (Statut s = pont.Execute(
            "UPDATE T_InfosBordereaux SET T_InfosBordereaux.Info_Adresse_ID_FK = " +
            Nombre_SQL(cle_adresse) + ", T_InfosBordereaux.Info_Bordereau_ID_lotInterne = '" +
            Texte_SQL(f.lotInterne) + "', T_InfosBordereaux.Info_Bordereau_Regroupement = '" +
            Texte_SQL(f.codeRegime) + "', T_InfosBordereaux.Info_Bordereau_LibelRegroupement = '" +
            Texte_SQL(Libelle_Regime(f.codeRegime)) +
            "', T_InfosBordereaux.Info_Bordereau_NumLot_FSE = '" + Texte_SQL(f.numeroLot) +
            "' WHERE (((T_InfosBordereaux.Info_Bordereau_numFacture)='" + cle + "'));");
        !s) {
        return s;
    }
    return pont.Execute(
        "UPDATE T_InfosFacture SET T_InfosFacture.Info_Facture_Nlot = " + Nombre_SQL(lot) +
        " WHERE (((T_InfosFacture.Info_Facture_NUMFAC)='" + cle + "'));");
}

}  // namespace sv140
