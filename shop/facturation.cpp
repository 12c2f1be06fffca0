#include "shop/facturation.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "platform/horloge.h"
#include "sim/depot.h"
#include "sim/etat.h"

namespace sv140::shop {
namespace {

// One act line of the glasses, amounts in cents.
struct Ligne {
    const char* designation;
    const char* codeActe;
    const char* codeLPP;
    int montant_net;
    int part_amo;  // 60 % of the LPP tariff (30.00, 32.60 and 80.90 euros)
    int part_amc;  // at most what the scheme leaves
};

constexpr Ligne kLunettes[] = {
    {"Monture", "MON", "2210546", 12000, 1800, 7000},
    {"Verre droit", "VER", "2227908", 8500, 1956, 5000},
    {"Verre gauche", "VER", "2227920", 8500, 4854, 3000},
};

// Both insurers pay the optician; the complementary insurer's share is stated line by
// line, without a flat allowance.
constexpr const char* kTypeTP = "AMO_AMC";
// The prescription the optician copies from the ophthalmologist's.
constexpr const char* kPrescripteur = "10100123456";
constexpr const char* kNomPrescripteur = "DR MOREAU CLAIRE";
constexpr int kAgeOrdonnance = 20;  // days
// The insurer the optician types in from the member's paper card when the Vitale card
// names none.
constexpr const char* kMutuelleParDefaut = "12345678";

std::string euros(int centimes) {
    char texte[32];
    std::snprintf(texte, sizeof texte, "%d.%02d", centimes / 100, centimes % 100);
    return texte;
}

int part_amc_totale() {
    int total = 0;
    for (const Ligne& l : kLunettes) {
        total += l.part_amc;
    }
    return total;
}

}  // namespace

std::optional<Beneficiaire_Carte> Lire_Beneficiaire(const std::string& zrsim,
                                                    const std::string& id_carte, int numero,
                                                    std::string& erreur) {
    const sim::Depot depot(zrsim);
    if (!depot.carte_existe(id_carte)) {
        erreur = "carte inconnue du simulateur : " + id_carte;
        return std::nullopt;
    }
    sim::Element carte;
    if (!depot.carte(id_carte, carte, erreur)) {
        return std::nullopt;
    }
    const std::vector<const sim::Element*> beneficiaires = carte.tous("Beneficiaire");
    if (numero < 1 || static_cast<std::size_t>(numero) > beneficiaires.size()) {
        erreur = "la carte " + id_carte + " a " + std::to_string(beneficiaires.size()) +
                 " bénéficiaire(s), pas de n° " + std::to_string(numero);
        return std::nullopt;
    }
    const sim::Element& b = *beneficiaires[static_cast<std::size_t>(numero) - 1];
    Beneficiaire_Carte lu{
        .nom = b.texte_de("NOM_USG"),
        .prenom = b.texte_de("PRM_USG"),
        .naissance = b.texte_de("NAI_BEN"),
        .rang = b.texte_de("BEN_RNG"),
        .nir = carte.texte_de("NIR_ASS"),
        .cle = carte.texte_de("CLE_ASS"),
        .regime = carte.texte_de("RGG_COD"),
        .caisse = carte.texte_de("RTT_CAI"),
        .centre = carte.texte_de("RTT_UGE"),
        .adherent = b.texte_de("COMP/ADH_NUM"),
    };
    // The insurer the host's beneficiary list shows: the complementary number when the
    // card has one, else the mutual number, which special regimes replace by theirs.
    if (!b.texte_de("COMP/CPL_NU2").empty()) {
        lu.mutuelle = b.texte_de("COMP/CPL_NU2");
        lu.debut_droits = b.texte_de("COMP/CPL_DEB");
        lu.fin_droits = b.texte_de("COMP/CPL_FIN");
        return lu;
    }
    switch (std::atoi(b.texte_de("COD_SEB").c_str())) {
        case 12:
            lu.mutuelle = "11111119";
            break;
        case 13:
            lu.mutuelle = "22222228";
            break;
        case 14:
            lu.mutuelle = "33333337";
            break;
        default:
            lu.mutuelle = b.texte_de("MUT/MUT_NUM");
    }
    lu.debut_droits = b.texte_de("MUT/DRT_MUT/DMUT_DEB");
    lu.fin_droits = b.texte_de("MUT/DRT_MUT/DMUT_FIN");
    if (lu.mutuelle.empty()) {
        lu.mutuelle = kMutuelleParDefaut;
    }
    return lu;
}

XmlDocument Document_Facture(const Demande_Facture& demande) {
    const Beneficiaire_Carte& b = demande.beneficiaire;
    const std::string aujourdhui = Date_Du_Jour();

    XmlDocument doc;
    XmlNoeud racine = doc.creer_racine("BelvaneClassicII");
    XmlNoeud facture = racine.ajouter("donneesFacture");
    facture.ajouter("numDossier", "1");
    facture.ajouter("typeDossier", "Lunettes");
    facture.ajouter("dateFacture", aujourdhui);
    facture.ajouter("datePrescription", Date_Du_Jour(-kAgeOrdonnance));
    facture.ajouter("idPrescripteur", kPrescripteur);
    facture.ajouter("refPrescripteur", kNomPrescripteur);
    facture.ajouter("originePrescription", "NP");
    facture.ajouter("modetraitement", demande.simulation ? "Simulation" : "Facture");

    // The host spells the beneficiary's elements without the second "i".
    XmlNoeud benef = racine.ajouter("beneficiaire");
    benef.ajouter("nomBeneficaire", b.nom);
    benef.ajouter("prenomBeneficaire", b.prenom);
    benef.ajouter("dateNaissanceBeneficaire", b.naissance);
    benef.ajouter("rangNaissanceBeneficaire", b.rang);
    benef.ajouter("nirAssure", b.nir);
    benef.ajouter("cleNirAssure", b.cle);
    benef.ajouter("codeRegime", b.regime);
    benef.ajouter("codeCaisse", b.caisse);
    benef.ajouter("codeCentre", b.centre);
    benef.ajouter("natureAssurance", "Maladie");
    benef.ajouter("tauxRemboursement", "60");
    benef.ajouter("accidentViePrivee", "0");
    for (const char* vide :
         {"dateAT", "numeroAT", "supportAT", "CaisseGestionnaireAT", "dateMaternite"}) {
        benef.ajouter(vide);
    }
    benef.ajouter("montantPecSMG", "0");

    XmlNoeud tp = racine.ajouter("donneesTP");
    tp.ajouter("typeTP", kTypeTP);
    tp.ajouter("typeAME");
    tp.ajouter("DateDebutAMC", b.debut_droits);
    tp.ajouter("DateFinAMC", b.fin_droits);
    tp.ajouter("soinsSoumisPrescription", "O");
    tp.ajouter("numeroAdherent", b.adherent);
    tp.ajouter("numeroContrat");
    tp.ajouter("numeroMutuelle", b.mutuelle);
    tp.ajouter("numeroPEC");
    tp.ajouter("dateAccordPEC");
    tp.ajouter("TPtotalAMC", euros(part_amc_totale()));
    tp.ajouter("forfaitMutuelle", "0");

    XmlNoeud actes = racine.ajouter("donneesActe");
    actes.ajouter("nombreLignesActes", std::to_string(std::size(kLunettes)));
    actes.ajouter("totalNetProduitsPriseEnChargeAMC", euros(part_amc_totale()));
    for (const Ligne& l : kLunettes) {
        XmlNoeud acte = actes.ajouter("Acte");
        acte.ajouter("designation", l.designation);
        acte.ajouter("codeActe", l.codeActe);
        acte.ajouter("codeLPP", l.codeLPP);
        acte.ajouter("qualificatifDepense");
        acte.ajouter("nombreUnite", "1");
        acte.ajouter("MontantAMC", euros(l.part_amc));
        acte.ajouter("PartMontantAMO", euros(l.part_amo));
        acte.ajouter("montantNet", euros(l.montant_net));
        acte.ajouter("dateSoins", aujourdhui);
    }
    return doc;
}

void Decrire_Demande(const Demande_Facture& demande, std::ostream& sortie, std::string_view marge) {
    const Beneficiaire_Carte& b = demande.beneficiaire;
    sortie << marge << "bénéficiaire    " << b.nom << " " << b.prenom << ", né(e) " << b.naissance
           << ", rang " << b.rang << "\n";
    sortie << marge << "assuré          NIR " << b.nir << " " << b.cle << ", caisse " << b.regime
           << " " << b.caisse << " " << b.centre << "\n";
    sortie << marge << "lunettes        ";
    const char* separateur = "";
    int total = 0;
    for (const Ligne& l : kLunettes) {
        sortie << separateur << l.designation << " " << l.codeLPP << " " << euros(l.montant_net)
               << " €";
        separateur = ", ";
        total += l.montant_net;
    }
    sortie << "\n";
    sortie << marge << "complémentaire  " << b.mutuelle << " (tiers payant " << kTypeTP
           << "), sa part " << euros(part_amc_totale()) << " € sur " << euros(total) << " €\n";
    sortie << marge << "traitement      " << (demande.simulation ? "Simulation" : "Facture")
           << ", soins et facture du " << Date_Lisible(Date_Du_Jour()) << "\n";
}

std::string Date_Du_Jour(int jours) {
    using namespace std::chrono;
    const std::tm t = maintenant_local();
    const year_month_day jour{sys_days{year{t.tm_year + 1900} / (t.tm_mon + 1) / t.tm_mday} +
                              days{jours}};
    char texte[16];
    std::snprintf(texte, sizeof texte, "%04d%02u%02u", static_cast<int>(jour.year()),
                  static_cast<unsigned>(jour.month()), static_cast<unsigned>(jour.day()));
    return texte;
}

std::string Date_Lisible(std::string_view aaaammjj) {
    if (aaaammjj.size() != 8) {
        return std::string(aaaammjj);
    }
    return std::string(aaaammjj.substr(6, 2)) + "/" + std::string(aaaammjj.substr(4, 2)) + "/" +
           std::string(aaaammjj.substr(0, 4));
}

bool Avancer_Jour_Simule(const std::string& zrsim, int jours, std::string& date,
                         std::string& erreur) {
    int decalage = 0;
    if (!sim::Avancer_Jours(zrsim, jours, decalage, erreur)) {
        return false;
    }
    date = Date_Du_Jour(decalage);
    return true;
}

}  // namespace sv140::shop
