// sv140-semer: a shop with N invoices waiting to be sent, as a shop has them at the end
// of a busy month, for the invoicing measurements.
//
//   sv140-semer DIR N          on a shop made by `sv140-shop init DIR`
//
// The simulator gets N waiting invoices spread over twenty paying organisations
// (regimes 01, 02, 03 and 91, half of them unknown to its directory), one in 25
// degraded and one in 50 whose beneficiary had no rights (rejected later); the bridge's
// database their invoice and slip rows and five organisations already met; the host's
// database its slips (two for one invoice in ten) with the parts due, spread over three
// insurers of which one is the generic tiers-payant one. The professional is the
// simulator's own card, as f_LireCPS would have stored it, and the answer buffer is large
// enough for the whole lot or the whole return, so that no run goes through code 271.
#include <algorithm>
#include <ctime>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "data/connexion.h"
#include "data/texte_sql.h"
#include "platform/horloge.h"
#include "platform/systeme.h"
#include "shop/installation.h"
#include "shop/schema.h"
#include "sim/cartes_demo.h"
#include "sim/etat.h"
#include "tools/outils.h"

namespace {

using namespace sv140;

struct Organisme {
    const char* regime;
    const char* caisse;
    const char* centre;
};

// The first twelve are in the simulator's directory (it answers their name and address);
// the others come back without a name, and the bridge records them as test caisses.
constexpr Organisme kOrganismes[] = {
    {"01", "751", "0441"}, {"01", "131", "0201"}, {"01", "441", "0110"}, {"01", "331", "0102"},
    {"01", "691", "0301"}, {"01", "591", "0401"}, {"01", "671", "0501"}, {"02", "441", "0601"},
    {"02", "691", "0701"}, {"03", "751", "0101"}, {"91", "751", "0912"}, {"01", "061", "0801"},
    {"01", "921", "0901"}, {"02", "131", "0111"}, {"02", "331", "0121"}, {"03", "131", "0201"},
    {"03", "691", "0301"}, {"91", "131", "0913"}, {"91", "441", "0915"}, {"91", "691", "0914"},
};
constexpr int kOrganismesConnus = 5;  // already in T_InfosAdresse before the first lot
constexpr int kUnDegradeSur = 25;
constexpr int kUnRejeteSur = 50;
constexpr int kDeuxBordereauxSur = 10;
// The largest answer, the return of every invoice, takes about 1 000 bytes per invoice.
constexpr long long kOctetsParFacture = 1536;
constexpr long long kLignesParInstruction = 500;

std::tm jours_avant(std::tm jour, int jours) {
    jour.tm_mday -= jours;
    jour.tm_hour = 12;
    jour.tm_isdst = -1;
    std::mktime(&jour);
    return jour;
}

std::string euros(long long centimes) {
    return Nombre_SQL(static_cast<double>(centimes) / 100.0);
}

// Rows inserted a few hundred per statement, in one unit of work.
class Insertions {
  public:
    Insertions(Connexion& base, std::string entete) : base_(base), entete_(std::move(entete)) {}
    Statut ajouter(const std::string& valeurs) {
        lignes_ += (lignes_.empty() ? "" : ", ") + ("(" + valeurs + ")");
        return ++compte_ % kLignesParInstruction == 0 ? vider() : Statut();
    }
    Statut vider() {
        if (lignes_.empty()) {
            return {};
        }
        Statut s = base_.Execute(entete_ + " VALUES " + lignes_);
        lignes_.clear();
        return s;
    }

  private:
    Connexion& base_;
    std::string entete_, lignes_;
    long long compte_ = 0;
};

std::string q(const std::string& texte) {
    return "'" + Texte_SQL(texte) + "'";
}

int semer(const std::string& dossier, long long n) {
    const shop::Installation inst = shop::Disposition(dossier);
    const std::tm aujourdhui = maintenant_local();

    std::vector<sim::FactureSimulee> factures;
    factures.reserve(static_cast<std::size_t>(n));
    for (long long i = 0; i < n; ++i) {
        const Organisme& o = kOrganismes[i % std::size(kOrganismes)];
        sim::FactureSimulee f;
        f.dateFacture = Format_Date(jours_avant(aujourdhui, static_cast<int>(i % 28)), "%Y%m%d");
        f.codeRegime = o.regime;
        f.codeCaisse = o.caisse;
        f.codeCentre = o.centre;
        f.typeTP = "AMO";
        f.typeCertification = i % kUnDegradeSur == 7 ? "Degrade" : "Sesam-Vitale";
        f.droitsAMO = i % kUnRejeteSur != 13;
        f.nir = "1" + std::to_string(700000000000LL + i * 7919);
        f.nom = "PATIENT";
        f.prenom = "N" + std::to_string(i);
        f.dateNaissance = "19700101";
        f.numeroPrescripteur = "991234567";
        f.datePrescription = f.dateFacture;
        f.montantHonoraires = 15000 + (i * 37) % 25000;
        f.montantAMO = f.montantHonoraires * 6 / 100;  // 60 % of a base a tenth of the fee
        f.montantAMC = (f.montantHonoraires - f.montantAMO) / 2;
        factures.push_back(std::move(f));
    }
    std::vector<long long> numeros;
    std::string erreur;
    if (!sim::Ajouter_Factures(inst.zrsim, factures, numeros, erreur)) {
        std::cerr << "sv140-semer : " << erreur << "\n";
        return 1;
    }

    Connexion pont, hote;
    for (auto [base, nom] : {std::pair{&pont, shop::kBasePont}, {&hote, shop::kBaseHote}}) {
        if (Statut s = base->ouvrir(joindre(inst.magasin, nom)); !s) {
            std::cerr << "sv140-semer : " << s.raison() << "\n";
            return 1;
        }
    }

    // The professional of the simulator's card, situation by situation.
    const sim::Element cps = sim::cps_demo();
    std::vector<std::string> instructions = {
        "DELETE FROM T_InfosCPS",
        "DELETE FROM T_InfosSituation_CPS",
        "INSERT INTO T_InfosCPS (Info_CPS_ID, Info_CPS_TYP_CPS, Info_CPS_NUM_IDN, "
        "Info_CPS_NOM_PRAT) VALUES (1, " +
            q(cps.texte_de("TYP_CPS")) + ", " + q(cps.texte_de("NUM_IDN")) + ", " +
            q(cps.texte_de("NOM_PRAT")) + ")",
        "UPDATE T_InfoParam SET Num_Situ = '1', Taille_Buffer = " +
            std::to_string(65536 + kOctetsParFacture * n) + " WHERE Info_Param_ID = 1",
    };
    for (const sim::Element* s : cps.tous("situation")) {
        instructions.push_back(
            "INSERT INTO T_InfosSituation_CPS (InfoSituation_CPS_ID, Info_CPS_ID_FK, "
            "InfoSituation_CPS_NUM_SIT, InfoSituation_NUM_IDFACPS, InfoSituation_CLE_IDFACPS, "
            "InfoSituation_RAIS_STR) VALUES (" +
            s->texte_de("NUM_SIT") + ", 1, " + q(s->texte_de("NUM_SIT")) + ", " +
            q(s->texte_de("NUM_IDFACPS")) + ", " + q(s->texte_de("CLE_IDFACPS")) + ", " +
            q(s->texte_de("RAIS_STR")) + ")");
    }
    for (int k = 0; k < kOrganismesConnus; ++k) {
        const Organisme& o = kOrganismes[k];
        const bool par_caisse = std::string(o.regime) == "01" || std::string(o.regime) == "02";
        instructions.push_back(
            "INSERT INTO T_InfosAdresse (Info_Adresse_codeRegime, Info_Adresse_codeCaisse, "
            "Info_Adresse_codeCentre, Info_Adresse_libelle) VALUES (" +
            q(o.regime) + ", " + q(o.caisse) + ", " + q(par_caisse ? "0000" : o.centre) +
            ", 'ANCIEN LIBELLE')");
    }
    Statut s;
    for (const std::string& sql : instructions) {
        if (s) {
            s = pont.Execute(sql);
        }
    }
    for (const char* sql : {
             "INSERT INTO [Fichier des Mutuelles] (Compteur, [Nom Mutuelle]) VALUES "
             "(1, '[TPGEN]'), (2, 'MUTUELLE DES OPTICIENS'), (3, 'HARMONIE DU CENTRE')",
             "INSERT INTO [Contrat Mutuelles] ([N°], Lien) VALUES (1, 1), (2, 2), (3, 3)",
         }) {
        if (s) {
            s = hote.Execute(sql);
        }
    }

    Insertions fact(pont,
                    "INSERT INTO T_InfosFacture (Info_Facture_NUMFAC, Info_Facture_TypDOS, "
                    "Info_Facture_NumDOS, Info_Facture_dteCreate, Info_Facture_TYPECERTIF, "
                    "Info_Facture_CODREG, Info_Facture_CODCAI, Info_Facture_CODCEN, "
                    "Info_Facture_TPAMO, Info_Facture_TPAMC, Info_Facture_TOTALFAC)");
    Insertions bord(pont,
                    "INSERT INTO T_InfosBordereaux (Info_Bordereau_numFacture, "
                    "Info_Bordereau_typeCertification)");
    Insertions mut(hote,
                   "INSERT INTO [Bordereau Mutuelle] (NumFicheCommande, NumFacture, Mutuelle, "
                   "[Date], TotalTmoCPAM, TotalCPAM, TotalMutuelle)");
    for (std::size_t i = 0; s && i < factures.size(); ++i) {
        const sim::FactureSimulee& f = factures[i];
        // The host keeps the number as the middleware writes it, without leading zeros.
        const std::string numero = std::to_string(numeros[i]);
        const std::string date = f.dateFacture.substr(0, 4) + "-" + f.dateFacture.substr(4, 2) +
                                 "-" + f.dateFacture.substr(6, 2) + " 00:00:00";
        s = fact.ajouter(q(numero) + ", 'Lunettes', " + std::to_string(i + 1) + ", " + q(date) +
                         ", " + q(f.typeCertification) + ", " + q(f.codeRegime) + ", " +
                         q(f.codeCaisse) + ", " + q(f.codeCentre) + ", " + euros(f.montantAMO) +
                         ", " + euros(f.montantAMC) + ", " + euros(f.montantHonoraires));
        if (s) {
            s = bord.ajouter(q(numero) + ", " + q(f.typeCertification));
        }
        // Glasses and lenses of one order sometimes go on two slips of the same invoice.
        const int lignes = i % kDeuxBordereauxSur == 3 ? 2 : 1;
        for (int l = 0; s && l < lignes; ++l) {
            const long long amo = lignes == 1 ? f.montantAMO : f.montantAMO / 2 + l;
            const long long amc = lignes == 1 ? f.montantAMC : f.montantAMC / 2 + l;
            s = mut.ajouter(q(std::to_string(100000 + 2 * i + l)) + ", " + q(numero) + ", " +
                            std::to_string(1 + i % 3) + ", " + q(date) + ", 0, " + euros(amo) +
                            ", " + euros(amc));
        }
    }
    for (Insertions* ins : {&fact, &bord, &mut}) {
        if (s) {
            s = ins->vider();
        }
    }
    if (s) {
        s = pont.valider();
    }
    if (s) {
        s = hote.valider();
    }
    if (!s) {
        std::cerr << "sv140-semer : " << s.raison() << "\n";
        return 1;
    }
    std::cout << n << " factures en attente (" << numeros.front() << " à " << numeros.back()
              << ")\n";
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    try {
        if (args.size() == 2 && std::stoll(args[1]) > 0) {
            return semer(args[0], std::stoll(args[1]));
        }
    } catch (const std::exception&) {
    }
    std::cerr << "usage : sv140-semer DIR N\n";
    return 2;
}
