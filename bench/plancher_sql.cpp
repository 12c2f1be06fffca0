// sv140-plancher-sql: the floor of an invoicing run, as a script for the sqlite3 shell.
//
//   sv140-plancher-sql lots REPONSE BASE      the statements of f_EnvoyerToutesFactures
//   sv140-plancher-sql retours REPONSE BASE   those of f_LireInfosRetourFacture
//
// REPONSE is the middleware's answer the bridge recorded (ZEMO_SvResponse.xml), BASE a
// copy of the database as it was before the run (SV140.accdb for the lots,
// Donnees_32.accdb for the returns): its rows decide, as they decide for the bridge,
// which branch each invoice takes (organisation met or new, slip rows of an invoice).
// The script holds the same statements as the bridge sends, in the same order, rewritten
// for SQLite by the bridge's own Traduire_Access_SQL, one BEGIN/COMMIT per invoice, in WAL
// mode with synchronous=NORMAL. The texts below follow src/invoicing/lots.cpp and
// retours.cpp; facturation.sh compares the rows the script leaves with the bridge's, so a
// statement that drifts from the bridge's shows there.
#include <algorithm>
#include <cctype>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "data/access_sql.h"
#include "data/connexion.h"
#include "data/instructions.h"
#include "data/texte_sql.h"
#include "exchange/document.h"
#include "invoicing/factures.h"
#include "invoicing/montants.h"
#include "platform/horloge.h"
#include "platform/xml.h"
#include "tools/outils.h"

namespace {

using namespace sv140;

class Script {
  public:
    Script() : aujourdhui_(maintenant_local()) {
        std::cout << "PRAGMA journal_mode=WAL;\nPRAGMA synchronous=NORMAL;\n";
    }
    void debut() { std::cout << "BEGIN;\n"; }
    void fin() { std::cout << "COMMIT;\n"; }
    void sql(const std::string& access) {
        std::cout << Traduire_Access_SQL(access, aujourdhui_) << "\n";
    }
    const std::tm& aujourdhui() const { return aujourdhui_; }

  private:
    std::tm aujourdhui_;
};

std::vector<std::vector<std::string>> lignes(Connexion& base, const std::string& sql) {
    auto rs = base.Ouvrir(sql);
    if (!rs) {
        throw std::runtime_error(rs.statut().raison());
    }
    std::vector<std::vector<std::string>> r;
    for (rs->MoveFirst(); !rs->EOF_(); rs->MoveNext()) {
        std::vector<std::string> ligne;
        for (const std::string& c : rs->colonnes()) {
            ligne.push_back(rs->champ(c).str());
        }
        r.push_back(std::move(ligne));
    }
    return r;
}

// --- f_EnvoyerToutesFactures (Enregistrer_Lot_Facture) ---------------------------------

std::string sans_barres(std::string texte) {
    std::erase(texte, '\\');
    return texte;
}

void lots(const XmlDocument& doc, Connexion& pont) {
    // The organisations met, with their key; a new one takes the next key, as SQLite
    // gives it to the bridge's insertion.
    using Cle = std::tuple<std::string, std::string, std::string>;
    std::map<Cle, double> organismes;
    double derniere_cle = 0;
    for (auto& l : lignes(pont,
                          "SELECT Info_Adresse_codeRegime, Info_Adresse_codeCaisse, "
                          "Info_Adresse_codeCentre, Info_Adresse_ID FROM T_InfosAdresse")) {
        organismes.try_emplace({l[0], l[1], l[2]}, Val(l[3]));
        derniere_cle = std::max(derniere_cle, Val(l[3]));
    }
    for (auto& l : lignes(pont, "SELECT seq FROM sqlite_sequence WHERE name = 'T_InfosAdresse'")) {
        derniere_cle = std::max(derniere_cle, Val(l[0]));
    }
    std::set<std::string> bordereaux;
    for (auto& l : lignes(pont, "SELECT Info_Bordereau_numFacture FROM T_InfosBordereaux")) {
        bordereaux.insert(l[0]);
    }
    Script script;
    const std::string lotInterne = Format_Date(script.aujourdhui(), "%y%m%d%H%M%S");
    for (const char* chemin :
         {"/ZRMESSAGE/resultat/donnees/donneesEnvoi/lot/donneesFacture",
          "/ZRMESSAGE/resultat/donnees/ZRMESSAGE/resultat/donnees/donneesEnvoi/lot/"
          "donneesFacture"}) {
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
            const FactureLot f{c("numeroFacture"),
                               c("numeroLot"),
                               lotInterne,
                               c("codeRegime"),
                               c("codeCaisse"),
                               c("codeCentre"),
                               c("organismeDestinataire/libelle"),
                               sans_barres(c("organismeDestinataire/adresse")),
                               c("organismeDestinataire/codePostal"),
                               sans_barres(c("organismeDestinataire/commune")),
                               c("organismeDestinataire/cedex"),
                               c("organismeDestinataire/telephone"),
                               c("organismeDestinataire/fax")};
            script.debut();
            script.sql(
                "SELECT T_InfosBordereaux.* FROM T_InfosBordereaux WHERE "
                "(((T_InfosBordereaux.Info_Bordereau_numFacture)='" +
                Texte_SQL(f.numeroFacture) + "'));");
            if (!bordereaux.contains(f.numeroFacture)) {
                script.fin();
                continue;
            }
            const std::string centre =
                (f.codeRegime == "01" || f.codeRegime == "02") ? "0000" : f.codeCentre;
            const std::string conditions =
                "(((T_InfosAdresse.Info_Adresse_codeRegime)='" + Texte_SQL(f.codeRegime) +
                "') AND ((T_InfosAdresse.Info_Adresse_codeCaisse)='" + Texte_SQL(f.codeCaisse) +
                "') AND ((T_InfosAdresse.Info_Adresse_codeCentre)='" + Texte_SQL(centre) + "'));";
            const std::string recherche =
                "SELECT T_InfosAdresse.Info_Adresse_ID, T_InfosAdresse.Info_Adresse_codeRegime, "
                "T_InfosAdresse.Info_Adresse_codeCaisse, T_InfosAdresse.Info_Adresse_codeCentre "
                "From T_InfosAdresse WHERE " +
                conditions;
            script.sql(recherche);
            auto connu = organismes.find({f.codeRegime, f.codeCaisse, centre});
            double cle_adresse = 0;
            if (connu != organismes.end()) {
                cle_adresse = connu->second;
                if (!f.libelle.empty()) {
                    script.sql(
                        "UPDATE T_InfosAdresse SET T_InfosAdresse.Info_Adresse_libelle = '" +
                        Texte_SQL(f.libelle) + "', T_InfosAdresse.Info_Adresse_adresse = '" +
                        Texte_Hote_SQL(f.adresse) +
                        "', T_InfosAdresse.Info_Adresse_codePostal = '" + Texte_SQL(f.codePostal) +
                        "', T_InfosAdresse.Info_Adresse_commune = '" + Texte_Hote_SQL(f.commune) +
                        "', T_InfosAdresse.Info_Adresse_cedex = '" + Texte_SQL(f.cedex) +
                        "', T_InfosAdresse.Info_Adresse_telephone = '" + Texte_SQL(f.telephone) +
                        "', T_InfosAdresse.Info_Adresse_fax = '" + Texte_SQL(f.fax) + "'  WHERE " +
                        conditions);
                }
            } else {
                const std::string libelle =
                    f.libelle.empty() ? "Caisse TEST " + f.codeCaisse + " " + centre : f.libelle;
                script.sql(
                    "INSERT INTO T_InfosAdresse ( Info_Adresse_codeRegime, "
                    "Info_Adresse_codeCaisse, Info_Adresse_codeCentre, Info_Adresse_libelle, "
                    "Info_Adresse_adresse, Info_Adresse_codePostal, Info_Adresse_commune, "
                    "Info_Adresse_cedex, Info_Adresse_telephone, Info_Adresse_fax ) SELECT '" +
                    Texte_SQL(f.codeRegime) + "' AS C_R, '" + Texte_SQL(f.codeCaisse) +
                    "' AS C_C, '" + Texte_SQL(centre) + "' AS C_G, '" + Texte_SQL(libelle) +
                    "' AS L_C, '" + Texte_Hote_SQL(f.adresse) + "' AS A_AD, '" +
                    Texte_SQL(f.codePostal) + "' AS A_CP, '" + Texte_Hote_SQL(f.commune) +
                    "' AS A_Co, '" + Texte_SQL(f.cedex) + "' AS A_Ce, '" + Texte_SQL(f.telephone) +
                    "' AS A_Te, '" + Texte_SQL(f.fax) + "' AS A_Fa;");
                script.sql(recherche);
                cle_adresse = ++derniere_cle;
                organismes.try_emplace({f.codeRegime, f.codeCaisse, centre}, cle_adresse);
            }
            const std::string cle = Texte_SQL(Numero_Sans_Zeros(f.numeroFacture));
            const double lot = Val(f.numeroLot);
            if (lot == 0) {
                script.sql(
                    "UPDATE T_InfosBordereaux SET T_InfosBordereaux.Info_Bordereau_NumLot_DRE = '" +
                    Texte_SQL(f.numeroLot) +
                    "' WHERE (((T_InfosBordereaux.Info_Bordereau_numFacture)='" + cle + "'));");
                script.fin();
                continue;
            }
            script.sql(
                "UPDATE T_InfosBordereaux SET T_InfosBordereaux.Info_Adresse_ID_FK = " +
                Nombre_SQL(cle_adresse) + ", T_InfosBordereaux.Info_Bordereau_ID_lotInterne = '" +
                Texte_SQL(f.lotInterne) + "', T_InfosBordereaux.Info_Bordereau_Regroupement = '" +
                Texte_SQL(f.codeRegime) +
                "', T_InfosBordereaux.Info_Bordereau_LibelRegroupement = '" +
                Texte_SQL(Libelle_Regime(f.codeRegime)) +
                "', T_InfosBordereaux.Info_Bordereau_NumLot_FSE = '" + Texte_SQL(f.numeroLot) +
                "' WHERE (((T_InfosBordereaux.Info_Bordereau_numFacture)='" + cle + "'));");
            script.sql(
                "UPDATE T_InfosFacture SET T_InfosFacture.Info_Facture_Nlot = " + Nombre_SQL(lot) +
                " WHERE (((T_InfosFacture.Info_Facture_NUMFAC)='" + cle + "'));");
            script.fin();
        }
    }
}

// --- f_LireInfosRetourFacture (Marquer_Etat_Facture, Pointer_Paiements) -------------------

struct Paiements {
    double amo = 0, amc = 0;
};

struct Ligne {
    std::string fiche;
    double du_amo = 0, du_amc = 0;
};

std::string code_etat(std::string_view etat) {
    return etat == "Paye"                                ? "P"
           : etat == "Expedie ou en cours de traitement" ? "E"
           : etat == "Facture en erreur"                 ? "N"
                                                         : "";
}

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

void retours(const XmlDocument& doc, Connexion& hote) {
    std::map<std::string, std::vector<Ligne>> bordereaux;
    for (auto& l : lignes(hote,
                          "SELECT NumFacture, NumFicheCommande, TotalTmoCPAM, TotalCPAM, "
                          "TotalMutuelle FROM [Bordereau Mutuelle]")) {
        bordereaux[l[0]].push_back({l[1], Val(l[2]) + Val(l[3]), Val(l[4])});
    }
    Script script;
    const struct {
        const char* retours;
        const char* paiements;
    } passes[] = {
        {"/ZRMESSAGE/resultat/donnees/donneesRetourFacture/recapitulatifFacture",
         "/ZRMESSAGE/resultat/donnees/donneesRetourFacture/RSP/donneesFacture"},
        {"/ZRMESSAGE/resultat/donnees/ZRMESSAGE/resultat/donnees/donneesRetourFacture/"
         "recapitulatifFacture",
         "/ZRMESSAGE/resultat/donnees//ZRMESSAGE/resultat/donnees/donneesRetourFacture/RSP/"
         "donneesFacture"},
    };
    for (const auto& passe : passes) {
        std::map<std::string, Paiements, std::less<>> paiements;
        for (const XmlNoeud& noeud : doc.selectionner(passe.paiements)) {
            Champs p{"numeroFacture", "montantPaiementAMORSP", "montantPaiementAMCRSP"};
            p.lire(noeud);
            paiements.try_emplace(p("numeroFacture"), Paiements{Val(p("montantPaiementAMORSP")),
                                                                Val(p("montantPaiementAMCRSP"))});
        }
        for (const XmlNoeud& noeud : doc.selectionner(passe.retours)) {
            Champs r{"numeroFacture", "etatFacture"};
            r.lire(noeud);
            const std::string numero = Numero_Sans_Zeros(r("numeroFacture"));
            const std::string& etat = r("etatFacture");
            Paiements p;
            if (auto i = paiements.find(numero); i != paiements.end()) {
                p = i->second;
            }
            const std::vector<Ligne>& rangees = bordereaux[numero];
            script.debut();
            script.sql(
                "SELECT [Bordereau Mutuelle].* From [Bordereau Mutuelle] WHERE ((([Bordereau "
                "Mutuelle].NumFacture)='" +
                Texte_SQL(numero) + "'));");
            for (const Ligne& l : rangees) {
                script.sql("UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Libel_Rejet = '" +
                           Texte_SQL(etat) + "', [Bordereau Mutuelle].Motif = '" + code_etat(etat) +
                           "' WHERE ((([Bordereau Mutuelle].NumFicheCommande)='" +
                           Texte_SQL(l.fiche) + "'));");
            }
            std::string majuscules = Trim(etat);
            for (char& c : majuscules) {
                c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
            }
            if (majuscules == "PAYE") {
                script.sql(
                    "SELECT [Bordereau Mutuelle].* From [Bordereau Mutuelle] WHERE (([Bordereau "
                    "Mutuelle].NumFacture)='" +
                    Texte_SQL(numero) + "');");
                for (const Ligne& l : rangees) {
                    const bool solde = (l.du_amo <= 0 || Centimes(p.amo) >= Centimes(l.du_amo)) &&
                                       (l.du_amc <= 0 || Centimes(p.amc) >= Centimes(l.du_amc));
                    const std::string drapeau = solde ? "True" : "False";
                    const std::string fiche = entre_guillemets(l.fiche);
                    script.sql(
                        "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Paiement_RC = " +
                        Nombre_SQL(p.amc) + ", [Bordereau Mutuelle].Pointage = " + drapeau +
                        ", [Bordereau Mutuelle].Solde = " + drapeau +
                        " , [Bordereau Mutuelle].Date_pointage = Date() WHERE ((([Bordereau "
                        "Mutuelle].NumFicheCommande)=" +
                        fiche + ") AND (([Bordereau Mutuelle].TotalMutuelle)>0));");
                    script.sql(
                        "UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].Paiement_RO = " +
                        Nombre_SQL(p.amo) + ", [Bordereau Mutuelle].Pointage = " + drapeau +
                        ", [Bordereau Mutuelle].Solde = " + drapeau +
                        " , [Bordereau Mutuelle].Date_pointage = Date() WHERE ((([Bordereau "
                        "Mutuelle].NumFicheCommande)=" +
                        fiche + ") AND (([TotalCPAM]+[TotalTmoCPAM])>0));");
                }
            }
            script.fin();
        }
    }
    // Dater_Edition_TPGEN, a unit of its own.
    const std::string tpgen =
        "SELECT [Fichier des Mutuelles].[Nom Mutuelle], [Contrat Mutuelles].N° FROM [Fichier "
        "des Mutuelles] INNER JOIN [Contrat Mutuelles] ON [Fichier des Mutuelles].Compteur = "
        "[Contrat Mutuelles].Lien WHERE ((([Fichier des Mutuelles].[Nom Mutuelle])='[TPGEN]'));";
    script.debut();
    script.sql(tpgen);
    auto contrat = Premiere_Ligne(hote, tpgen);
    if (contrat && !contrat->EOF_()) {
        script.sql("UPDATE [Bordereau Mutuelle] SET [Bordereau Mutuelle].DateEdition = #" +
                   Format_Date(script.aujourdhui(), "%m/%d/%Y") +
                   "# WHERE ((([Bordereau Mutuelle].Mutuelle)=" +
                   Nombre_SQL(contrat->champ("N°").nombre()) +
                   ") AND (([Bordereau Mutuelle].DateEdition) Is Null));");
    }
    script.fin();
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() != 3 || (args[0] != "lots" && args[0] != "retours")) {
        std::cerr << "usage : sv140-plancher-sql lots|retours REPONSE BASE\n";
        return 2;
    }
    XmlDocument doc;
    if (!doc.charger_fichier(args[1])) {
        std::cerr << "sv140-plancher-sql : " << args[1] << " : " << doc.erreur() << "\n";
        return 1;
    }
    Connexion base;
    if (Statut s = base.ouvrir(args[2]); !s) {
        std::cerr << "sv140-plancher-sql : " << s.raison() << "\n";
        return 1;
    }
    try {
        args[0] == "lots" ? lots(doc, base) : retours(doc, base);
    } catch (const std::exception& e) {
        std::cerr << "sv140-plancher-sql : " << e.what() << "\n";
        return 1;
    }
    return 0;
}
