// What became of the invoices of a period and what the insurers paid, written onto the
// host's slips so that it can reconcile its receivables. Each invoice's state and
// payments are one unit, and so is the edition-date stamp that ends the run.
#include <cctype>
#include <cmath>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "data/instructions.h"
#include "data/parametres.h"
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

constexpr int kJoursDeRetour = 90;

std::tm jours_avant(std::tm jour, int jours) {
    jour.tm_mday -= jours;
    jour.tm_hour = 12;  // midday: a change of daylight saving time never moves the date
    jour.tm_isdst = -1;
    std::mktime(&jour);
    return jour;
}

// The oldest slip date as stored ("YYYY-MM-DD" then anything), as a day; nothing when it
// is not a date.
std::optional<std::tm> jour_stocke(const Valeur& v) {
    const std::string texte = v.str();
    const std::string jour = Date_AAAAMMJJ(texte.substr(0, 10));
    if (texte.size() < 10 || texte[4] != '-' || jour.empty()) {
        return std::nullopt;
    }
    std::tm t{};
    t.tm_year = std::stoi(jour.substr(0, 4)) - 1900;
    t.tm_mon = std::stoi(jour.substr(4, 2)) - 1;
    t.tm_mday = std::stoi(jour.substr(6, 2));
    t.tm_hour = 12;
    t.tm_isdst = -1;
    std::mktime(&t);
    return t;
}

// The start of the period for a shop whose host does not write it: the oldest slip,
// looking back 90 days at most.
std::string debut_depuis_bordereaux(Run& run, const std::tm& aujourdhui) {
    const std::tm limite = jours_avant(aujourdhui, kJoursDeRetour);
    auto rs = Premiere_Ligne(run.bases().hote,
                             "SELECT Min([Bordereau Mutuelle].Date) AS MinDeDate FROM "
                             "[Bordereau Mutuelle];");
    std::optional<std::tm> plus_ancien;
    if (rs && !rs->EOF_()) {
        plus_ancien = jour_stocke(rs->champ("MinDeDate"));
    }
    const std::tm debut =
        plus_ancien && Format_Date(*plus_ancien, "%Y%m%d") >= Format_Date(limite, "%Y%m%d")
            ? *plus_ancien
            : limite;
    return Format_Date(debut, "%Y%m%d");
}

struct Paiements {
    double amo = 0, amc = 0;
};

// The payments of every invoice of one RSP part, by number: the first node of a number
// stands, as a selection of one node would give.
std::map<std::string, Paiements, std::less<>> lire_paiements(const XmlDocument& doc,
                                                             const std::string& chemin) {
    std::map<std::string, Paiements, std::less<>> paiements;
    for (const XmlNoeud& noeud : doc.selectionner(chemin)) {
        Champs p{"numeroFacture", "montantPaiementAMORSP", "montantPaiementAMCRSP"};
        p.lire(noeud);
        paiements.try_emplace(p("numeroFacture"), Paiements{Val(p("montantPaiementAMORSP")),
                                                            Val(p("montantPaiementAMCRSP"))});
    }
    return paiements;
}

struct Retour {
    std::string numero;  // the invoice number as the slips keep it
    std::string etat;
    Paiements paiements;
};

std::vector<Retour> lire_retours(Run& run, const XmlDocument& doc, const std::string& chemin,
                                 const std::string& chemin_paiements) {
    const auto paiements = lire_paiements(doc, chemin_paiements);
    std::vector<Retour> retours;
    for (const XmlNoeud& noeud : doc.selectionner(chemin)) {
        Champs r{"dateFacture",         "libellePaiement",    "typeTP",
                 "natureAssurance",     "codeRegime",         "codeCaisse",
                 "codeCentre",          "libelleOrgaDest",    "montantTotalHonoraires",
                 "montantTotalAMO",     "montantTotalAMC",    "montantTotalPartPatient",
                 "modeReglementRSP",    "numeroFacture",      "etatFacture",
                 "benef/NIR",           "benef/nom",          "benef/prenom",
                 "benef/dateNaissance", "numeroPrescripteur", "datePrescription"};
        r.lire(noeud);
        Retour retour{Numero_Sans_Zeros(r("numeroFacture")), r("etatFacture"), {}};
        if (auto p = paiements.find(retour.numero); p != paiements.end()) {
            retour.paiements = p->second;
        }
        run.log("Lecture : " + r("dateFacture") + " " + r("libelleOrgaDest") + " " +
                r("codeRegime") + r("codeCaisse") + r("codeCentre") + " " + r("benef/nom") + " " +
                r("benef/prenom") + " Total : " + Nombre_SQL(Val(r("montantTotalHonoraires"))) +
                " Facture : (" + retour.numero + ") AMO : " + Nombre_SQL(retour.paiements.amo) +
                " AMC : " + Nombre_SQL(retour.paiements.amc));
        retours.push_back(std::move(retour));
    }
    return retours;
}

Statut enregistrer_passe(Run& run, const std::vector<Retour>& retours) {
    return Enregistrer_Par_Unite(
        run.bases(), retours.size(),
        [&](std::size_t i) -> Statut {
            const Retour& r = retours[i];
            if (Statut s =
                    Marquer_Etat_Facture(run, r.numero, r.etat, r.paiements.amo, r.paiements.amc);
                !s) {
                return s;
            }
            run.log("Etat Facture : (" + r.numero + ") : " + r.etat);
            std::string etat = Trim(r.etat);
            for (char& c : etat) {
                c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
            }
            if (etat == "PAYE") {
                return Pointer_Paiements(run, r.numero, r.paiements.amo, r.paiements.amc);
            }
            return {};
        },
        [&](std::size_t i) { return "facture '" + retours[i].numero + "'"; });
}

std::string code_etat(std::string_view etat) {
    if (etat == "Paye") {
        return "P";
    }
    if (etat == "Expedie ou en cours de traitement") {
        return "E";
    }
    if (etat == "Facture en erreur") {
        return "N";
    }
    return "";
}

// The host's quoting of a text between double quotes.
std::string entre_guillemets(std::string_view texte) {
    std::string r = "\"";
    for (char c : texte) {
        r += c;
        if (c == '"') {
            r += '"';
        }
    }
    return r + "\"";
}

}  // namespace

Statut Requete_f_LireInfosRetourFacture(Run& run) {
    const std::tm aujourdhui = maintenant_local();
    std::string debut, fin;
    if (Lire_Version_Base(run.bases()) >= 3500) {
        auto entree = Charger_Document(run, fichiers::kRequeteHote, "F_LireInfosRetourFacture",
                                       "Impossible de lire ZEMO_Request.xml");
        if (!entree) {
            return Statut::Deja_Repondu("ZEMO_Request.xml illisible");
        }
        // The host spells the end "datedfin".
        Champs periode{"datedebut", "datedfin"};
        periode.lire(*entree, "/ZRMESSAGE/donnees");
        debut = periode("datedebut");
        fin = periode("datedfin");
    } else {
        debut = debut_depuis_bordereaux(run, aujourdhui);
        fin = Format_Date(aujourdhui, "%Y%m%d");
    }
    run.log("Période des retours : " + debut + " - " + fin);
    Requete requete("f_LireInfosRetourFacture", "0004");
    if (Statut ps = requete.ajouter_PS(run, /*avec_numSitu=*/false, false); !ps) {
        return ps;
    }
    requete.operation().ajouter("dateDebut", debut);
    requete.operation().ajouter("dateFin", fin);
    return requete.enregistrer(run);
}

Statut Stocker_Retours(Run& run) {
    run.log("retour_f_LireInfosRetourFacture");
    auto doc = Charger_Reponse(run, "f_LireInfosRetourFacture");
    if (!doc) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    const std::string reponse = run.fichier(fichiers::kReponse);
    run.log("Retour OK : " + reponse);
    if (Erreur_Intergiciel(run, *doc)) {
        return Statut::Deja_Repondu("erreur de l'intergiciel");
    }
    const struct {
        const char* journal;
        const char* retours;
        const char* paiements;
    } passes[] = {
        {"Passage 1 : ", "/ZRMESSAGE/resultat/donnees/donneesRetourFacture/recapitulatifFacture",
         "/ZRMESSAGE/resultat/donnees/donneesRetourFacture/RSP/donneesFacture"},
        // A second message nested in the first one's data.
        {"Passage 2 : ",
         "/ZRMESSAGE/resultat/donnees/ZRMESSAGE/resultat/donnees/donneesRetourFacture/"
         "recapitulatifFacture",
         "/ZRMESSAGE/resultat/donnees//ZRMESSAGE/resultat/donnees/donneesRetourFacture/RSP/"
         "donneesFacture"},
    };
    std::vector<Statut> echecs;
    for (const auto& passe : passes) {
        run.log(passe.journal + reponse);
        Statut s = enregistrer_passe(run, lire_retours(run, *doc, passe.retours, passe.paiements));
        if (!s) {
            echecs.push_back(s);
        }
    }
    run.log("UPDATE Date");
    if (Statut s = Enregistrer_Par_Unite(
            run.bases(), 1, [&](std::size_t) { return Dater_Edition_TPGEN(run); },
            [](std::size_t) { return "date d'édition"; });
        !s) {
        echecs.push_back(s);
    }
    if (echecs.empty()) {
        return {};
    }
    std::string raison = "Retours lus, mais ";
    for (std::size_t i = 0; i < echecs.size(); ++i) {
        raison += (i ? " ; " : "") + echecs[i].raison();
    }
    return Statut::Echec(raison + " ; la réponse de l'intergiciel est conservée dans l'archive");
}

// Every slip row of the invoice takes its state, whatever was paid: the payments are
// the pointing's business.
Statut Marquer_Etat_Facture(Run& run, std::string_view numero, std::string_view etat,
                            double /*paiement_amo*/, double /*paiement_amc*/) {
    Connexion& hote = run.bases().hote;
    auto lignes = hote.Ouvrir(
        "SELECT [Bordereau Mutuelle].* From [Bordereau Mutuelle] WHERE ((([Bordereau "
        "Mutuelle].NumFacture)='" +
        Texte_SQL(numero) + "'));");
    if (!lignes) {
        return lignes.statut();
    }
    const std::string code = code_etat(etat);
    for (lignes->MoveFirst(); !lignes->EOF_(); lignes->MoveNext()) {
        if (Statut s = hote.Execute(
                "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Libel_Rejet = '" +
                Texte_SQL(etat) + "', [Bordereau Mutuelle].Motif = '" + code +
                "' WHERE ((([Bordereau Mutuelle].NumFicheCommande)='" +
                Texte_SQL(lignes->champ("NumFicheCommande").str()) + "'));");
            !s) {
            return s;
        }
    }
    return {};
}

Statut Pointer_Paiements(Run& run, std::string_view numero, double paiement_amo,
                         double paiement_amc) {
    Connexion& hote = run.bases().hote;
    auto lignes = hote.Ouvrir(
        "SELECT [Bordereau Mutuelle].* From [Bordereau Mutuelle] WHERE (([Bordereau "
        "Mutuelle].NumFacture)='" +
        Texte_SQL(numero) + "');");
    if (!lignes) {
        return lignes.statut();
    }
    for (lignes->MoveFirst(); !lignes->EOF_(); lignes->MoveNext()) {
        const double du_amo =
            lignes->champ("TotalTmoCPAM").nombre() + lignes->champ("TotalCPAM").nombre();
        const double du_amc = lignes->champ("TotalMutuelle").nombre();
        // A slip is settled only when every part due on it is paid in full; a cent of
        // rounding never keeps it open.
        const bool solde = (du_amo <= 0 || Centimes(paiement_amo) >= Centimes(du_amo)) &&
                           (du_amc <= 0 || Centimes(paiement_amc) >= Centimes(du_amc));
        const std::string drapeau = solde ? "True" : "False";
        const std::string fiche = entre_guillemets(lignes->champ("NumFicheCommande").str());
        const std::string instructions[] = {
            "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Paiement_RC = " +
                Nombre_SQL(paiement_amc) + ", [Bordereau Mutuelle].Pointage = " + drapeau +
                ", [Bordereau Mutuelle].Solde = " + drapeau +
                " , [Bordereau Mutuelle].Date_pointage = Date() WHERE ((([Bordereau "
                "Mutuelle].NumFicheCommande)=" +
                fiche + ") AND (([Bordereau Mutuelle].TotalMutuelle)>0));",
            "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Paiement_RO = " +
                Nombre_SQL(paiement_amo) + ", [Bordereau Mutuelle].Pointage = " + drapeau +
                ", [Bordereau Mutuelle].Solde = " + drapeau +
                " , [Bordereau Mutuelle].Date_pointage = Date() WHERE ((([Bordereau "
                "Mutuelle].NumFicheCommande)=" +
                fiche + ") AND (([TotalCPAM]+[TotalTmoCPAM])>0));",
        };
        for (const std::string& sql : instructions) {
            if (Statut s = hote.Execute(sql); !s) {
                return s;
            }
        }
    }
    return {};
}

Statut Dater_Edition_TPGEN(Run& run) {
    Connexion& hote = run.bases().hote;
    auto tpgen = Premiere_Ligne(
        hote,
        "SELECT [Fichier des Mutuelles].[Nom Mutuelle], [Contrat Mutuelles].N° FROM [Fichier "
        "des Mutuelles] INNER JOIN [Contrat Mutuelles] ON [Fichier des Mutuelles].Compteur = "
        "[Contrat Mutuelles].Lien WHERE ((([Fichier des Mutuelles].[Nom Mutuelle])='"
        "[TPGEN]"
        "'));");
    if (!tpgen) {
        return tpgen.statut();
    }
    if (tpgen->EOF_()) {
        return {};
    }
    return hote.Execute(
        "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].DateEdition = #" +
        Format_Date(maintenant_local(), "%m/%d/%Y") +
        "# WHERE ((([Bordereau Mutuelle].Mutuelle)=" + Nombre_SQL(tpgen->champ("N°").nombre()) +
        ") AND (([Bordereau Mutuelle].DateEdition) Is Null));");
}

}  // namespace sv140
