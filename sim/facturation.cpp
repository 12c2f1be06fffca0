#include "sim/facturation.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <map>
#include <tuple>

#include "sim/fonctions.h"
#include "sim/jours.h"
#include "sim/referentiels.h"

namespace sv140::sim {

namespace {

using std::chrono::days;
using std::chrono::sys_days;

constexpr const char* kPaye = "Paye";
constexpr const char* kEnErreur = "Facture en erreur";

/// Cents as the middleware writes them: at least seven digits.
std::string montant(long long centimes) {
    return centimes < 0 ? "-" + avec_zeros(-centimes, 7) : avec_zeros(centimes, 7);
}

/// Cents as euros with a decimal point ("123.45"), the way the payments are answered.
std::string euros(long long centimes) {
    const long long valeur = std::llabs(centimes);
    return (centimes < 0 ? "-" : "") + std::to_string(valeur / 100) + "." +
           avec_zeros(valeur % 100, 2);
}

/// The same date as yyyymmdd; "" when it is none.
std::string aaaammjj(const std::string& t) {
    const std::optional<sys_days> jour = lire_jour(t);
    return jour ? texte_jour(*jour) : std::string();
}

Erreur enregistrer(const Appel& a, const Registre& registre) {
    std::string raison;
    if (!a.depot.ecrire_factures(registre, raison)) {
        return erreur(a, kEtatNonEnregistre, "Enregistrement des factures impossible : " + raison);
    }
    return std::nullopt;
}

/// The invoice the request names by its `numeroFacture` child (nine digits from the
/// bridge, compared as a number), or the error that it is unknown.
Erreur facture_demandee(const Appel& a, const XmlNoeud& parent, Registre& registre,
                        FactureSimulee*& facture) {
    const std::string numero = parent.texte_de("numeroFacture");
    const std::optional<long long> n = nombre(numero);
    facture = n ? registre.trouver(*n) : nullptr;
    if (facture == nullptr) {
        return erreur(a, kFactureInconnue, "Facture '" + numero + "' inconnue");
    }
    return std::nullopt;
}

// --- Pricing -------------------------------------------------------------------------

/// The request's beneficiary on a card of the library: same insured NIR, same birth
/// date, and same first name or rank (twins share their birth date).
std::optional<Element> beneficiaire_connu(const Depot& depot, const XmlNoeud& benef) {
    const std::string nir = benef.texte_de("NIR_ASS");
    const std::string naissance = aaaammjj(benef.texte_de("Beneficiaire/NAI_BEN"));
    const std::string prenom = benef.texte_de("Beneficiaire/PRM_USG");
    const std::string rang = sans_zeros(benef.texte_de("Beneficiaire/BEN_RNG"));
    for (const std::string& id : depot.cartes()) {
        Element carte;
        std::string raison;
        if (!depot.carte(id, carte, raison) || carte.texte_de("NIR_ASS") != nir) {
            continue;
        }
        for (const Element* b : carte.tous("Beneficiaire")) {
            if (b->texte_de("NAI_BEN") == naissance &&
                (b->texte_de("PRM_USG") == prenom || sans_zeros(b->texte_de("BEN_RNG")) == rang)) {
                return *b;
            }
        }
    }
    return std::nullopt;
}

/// Whether one of the periods of a card's rights group holds the day (yyyymmdd). The
/// group lists its start and end dates in turn; an empty end is open.
bool couvre(const Element* groupe, std::string_view debut, std::string_view fin,
            const std::string& jour) {
    if (groupe == nullptr) {
        return false;
    }
    const auto debuts = groupe->tous(debut), fins = groupe->tous(fin);
    for (std::size_t i = 0; i < debuts.size() && i < fins.size(); ++i) {
        if (debuts[i]->texte <= jour && (fins[i]->texte.empty() || jour <= fins[i]->texte)) {
            return true;
        }
    }
    return false;
}

/// The amounts of a line whose prices are checked numbers, at the usual rate or, during
/// a long-term illness, at 100.
ActeSimule tarifer(const XmlNoeud& acte, long long prix, long long unites, long long pec,
                   bool ald) {
    ActeSimule l;
    l.dateSoins = acte.texte_de("dateSoins");
    l.codeActeNGAP = acte.texte_de("codeActeNGAP");
    l.codeLPP = acte.texte_de("codeAffine/codeAffineDetaille | codeAffineDetaille");
    l.qualifDepense = acte.texte_de("qualificatifDepense");
    l.quantite = static_cast<int>(unites);
    l.montantHonoraires = prix * unites;
    const TarifLPP* tarif = tarif_lpp(l.codeLPP);
    l.typePrestation = tarif ? std::string(tarif->typePrestation) : std::string();
    l.baseRemboursement =
        tarif ? std::min(tarif->base * unites, l.montantHonoraires) : l.montantHonoraires;
    l.tauxRemboursement = ald ? 100 : 60;
    l.codeExo = ald ? "4" : "0";
    l.montantAMO = (l.baseRemboursement * l.tauxRemboursement + 50) / 100;
    l.montantAMC = std::clamp(pec, 0LL, l.montantHonoraires - l.montantAMO);
    return l;
}

/// Reads and prices the invoice of a creation request, or gives the error that refuses
/// it.
Erreur lire_facture(const Appel& a, const XmlNoeud& donnees, FactureSimulee& f) {
    const XmlNoeud benef = donnees.selectionner_un("benef");
    if (benef.texte_de("NIR_ASS").empty() || !benef.selectionner_un("Beneficiaire")) {
        return erreur(a, kBeneficiaireAbsent, "Bénéficiaire absent de la facture");
    }
    const std::vector<XmlNoeud> actes = donnees.selectionner("acte");
    if (actes.empty()) {
        return erreur(a, kAucunActe, "Aucune ligne d'acte dans la facture");
    }
    const auto invalide = [&](const std::string& ou, const std::string& element,
                              const std::string& valeur) {
        return erreur(a, kMontantInvalide,
                      "Montant non numérique " + ou + " : " + element + " '" + valeur + "'");
    };
    const std::string smg = donnees.texte_de("montantPecSMG");
    if (!smg.empty() && !nombre(smg)) {
        return invalide("dans la facture", "montantPecSMG", smg);
    }

    f.dateFacture = donnees.texte_de("dateFacture");
    f.natureAssurance = donnees.texte_de("natureAssurance");
    f.codeRegime = benef.texte_de("RGG_COD");
    f.codeCaisse = benef.texte_de("RTT_CAI");
    f.codeCentre = benef.texte_de("RTT_UGE");
    f.numeroMutuelle = donnees.texte_de("mutuelle/numeroMutuelle");
    f.typeTP = donnees.texte_de("typeTP");
    f.nir = benef.texte_de("NIR_ASS");
    f.nom = benef.texte_de("Beneficiaire/NOM_USG");
    f.prenom = benef.texte_de("Beneficiaire/PRM_USG");
    f.dateNaissance = benef.texte_de("Beneficiaire/NAI_BEN");
    if (donnees.texte_de("soinsSoumisPrescription") == "O") {
        f.numeroPrescripteur = donnees.texte_de("identifiantPrescripteur");
        f.datePrescription = donnees.texte_de("datePrescription");
    }
    // The middleware signs with the card in the reader; without it the invoice goes
    // degraded. The host's "Desynchro" flag changes nothing here.
    f.typeCertification = a.depot.carte_lecteur().empty() ? kDegrade : "Sesam-Vitale";

    const std::optional<Element> beneficiaire = beneficiaire_connu(a.depot, benef);
    std::string jour_facture = aaaammjj(f.dateFacture);
    if (jour_facture.empty()) {
        jour_facture = texte_jour(jour_simule(a.depot));
    }
    for (std::size_t i = 0; i < actes.size(); ++i) {
        long long prix = 0, unites = 0, pec = 0;
        for (const auto& [element, valeur] : {std::pair{"prixUnitairePublic", &prix},
                                              {"nombreUnite", &unites},
                                              {"montantPECActe", &pec}}) {
            const std::string texte = actes[i].texte_de(element);
            const std::optional<long long> v = nombre(texte);
            // Only the complementary share may be left out.
            if (!v && !(valeur == &pec && texte.empty())) {
                return invalide("dans la ligne " + std::to_string(i + 1), element, texte);
            }
            *valeur = v.value_or(0);
        }
        std::string jour = aaaammjj(actes[i].texte_de("dateSoins"));
        if (jour.empty()) {
            jour = jour_facture;
        }
        // A beneficiary the library does not know is taken as covered at the usual rate.
        if (beneficiaire &&
            !couvre(beneficiaire->trouver("DRT_AMO"), "DAMO_DEB", "DAMO_FIN", jour)) {
            f.droitsAMO = false;
        }
        const bool ald =
            beneficiaire && couvre(beneficiaire->trouver("DRT_CC"), "CC_DEB", "CC_FIN", jour);
        ActeSimule l = tarifer(actes[i], prix, unites, pec, ald);
        f.montantHonoraires += l.montantHonoraires;
        f.montantAMO += l.montantAMO;
        f.montantAMC += l.montantAMC;
        f.actes.push_back(std::move(l));
    }
    return std::nullopt;
}

/// The invoice as creation and reading answer it.
Element donnees_facture(const FactureSimulee& f, bool avec_numero) {
    Element d("donneesFacture");
    if (avec_numero) {
        d.ajouter("numeroFacture", std::to_string(f.numeroFacture));
    }
    d.ajouter("typeFlux", "FSE");
    d.ajouter("natureAssurance", f.natureAssurance);
    d.ajouter("codeRegime", f.codeRegime);
    d.ajouter("codeCaisse", f.codeCaisse);
    d.ajouter("codeCentre", f.codeCentre);
    d.ajouter("mutuelle").ajouter("numeroMutuelle", f.numeroMutuelle);
    d.ajouter("typeTP", f.typeTP);
    d.ajouter("typeCertification", f.typeCertification);
    d.ajouter("montantPSTotalHono", montant(f.montantHonoraires));
    d.ajouter("montantPSTotalAMO", montant(f.montantAMO));
    d.ajouter("montantPSTotalAMC", montant(f.montantAMC));
    d.ajouter("montantPSTotalPartPatient",
              montant(f.montantHonoraires - f.montantAMO - f.montantAMC));
    for (const ActeSimule& l : f.actes) {
        Element& e = d.ajouter("acte");
        e.ajouter("codeActeNGAP", l.codeActeNGAP);
        Element& affine = e.ajouter("codeAffine");
        affine.ajouter("codeAffineDetaille", l.codeLPP);
        affine.ajouter("typePrestation", l.typePrestation);
        e.ajouter("quantite", std::to_string(l.quantite));
        e.ajouter("tauxRemboursement", std::to_string(l.tauxRemboursement));
        e.ajouter("montantHonoraires", montant(l.montantHonoraires));
        e.ajouter("baseRemboursement", montant(l.baseRemboursement));
        e.ajouter("montantAMO", montant(l.montantAMO));
        e.ajouter("montantAMC", montant(l.montantAMC));
        e.ajouter("qualifDepense", l.qualifDepense);
        e.ajouter("codeExo", l.codeExo);
    }
    return d;
}

/// The `donneesFacture` child of the request, or the error that it is missing.
Erreur donnees_demandees(const Appel& a, XmlNoeud& donnees) {
    donnees = a.requete.selectionner_un("donneesFacture");
    if (!donnees) {
        return erreur(a, kDonneesFactureAbsentes, "Bloc donneesFacture absent de la requête");
    }
    return std::nullopt;
}

// --- Sending and returns -------------------------------------------------------------

std::string numero_lot(long long n, bool degrade) {
    return degrade ? "D" + avec_zeros(n, 5) : avec_zeros(n, 6);
}

const Organisme* organisme_de(const FactureSimulee& f) {
    return organisme(f.codeRegime, f.codeCaisse, f.codeCentre);
}

void ajouter_organisme(Element& parent, const Organisme* o) {
    const Organisme inconnu{};
    const Organisme& org = o ? *o : inconnu;
    Element& e = parent.ajouter("organismeDestinataire");
    e.ajouter("libelle", std::string(org.libelle));
    e.ajouter("adresse", std::string(org.adresse));
    e.ajouter("codePostal", std::string(org.codePostal));
    e.ajouter("commune", std::string(org.commune));
    e.ajouter("cedex", std::string(org.cedex));
    e.ajouter("telephone", std::string(org.telephone));
    e.ajouter("fax", std::string(org.fax));
}

/// What the insurer has made of a sent invoice by the simulated day: it is paid two
/// days after the sending, or rejected when the beneficiary had no rights.
std::string etat_facture(const FactureSimulee& f, sys_days aujourdhui) {
    const std::optional<sys_days> envoi = lire_jour(f.jourEnvoi);
    if (!envoi || aujourdhui - *envoi < days{2}) {
        return "Expedie ou en cours de traitement";
    }
    return f.droitsAMO ? kPaye : kEnErreur;
}

Element recapitulatif(const FactureSimulee& f, const std::string& etat) {
    const Organisme* o = organisme_de(f);
    Element r("recapitulatifFacture");
    r.ajouter("dateFacture", aaaammjj(f.dateFacture));
    r.ajouter("libellePaiement", etat == kPaye ? "Paiement effectué"
                                 : etat == kEnErreur
                                     ? "Rejet : droits AMO fermés à la date des soins"
                                     : "En attente de paiement");
    r.ajouter("typeTP", f.typeTP);
    r.ajouter("natureAssurance", f.natureAssurance);
    r.ajouter("codeRegime", f.codeRegime);
    r.ajouter("codeCaisse", f.codeCaisse);
    r.ajouter("codeCentre", f.codeCentre);
    r.ajouter("libelleOrgaDest", o ? std::string(o->libelle) : std::string());
    r.ajouter("montantTotalHonoraires", montant(f.montantHonoraires));
    r.ajouter("montantTotalAMO", montant(f.montantAMO));
    r.ajouter("montantTotalAMC", montant(f.montantAMC));
    r.ajouter("montantTotalPartPatient",
              montant(f.montantHonoraires - f.montantAMO - f.montantAMC));
    r.ajouter("modeReglementRSP", etat == kPaye ? "VIR" : "");
    r.ajouter("numeroFacture", std::to_string(f.numeroFacture));
    r.ajouter("etatFacture", etat);
    Element& benef = r.ajouter("benef");
    benef.ajouter("NIR", f.nir);
    benef.ajouter("nom", f.nom);
    benef.ajouter("prenom", f.prenom);
    benef.ajouter("dateNaissance", f.dateNaissance);
    r.ajouter("numeroPrescripteur", f.numeroPrescripteur);
    r.ajouter("datePrescription", f.datePrescription);
    return r;
}

}  // namespace

Reponse f_CreerFacture(const Appel& a) {
    XmlNoeud donnees;
    if (Erreur e = donnees_demandees(a, donnees)) {
        return *e;
    }
    if (Erreur e = verifier_PS(Appel{a.depot, a.operation, donnees}, {.numSitu = true})) {
        return *e;
    }
    FactureSimulee f;
    if (Erreur e = lire_facture(a, donnees, f)) {
        return *e;
    }
    // A quote is priced and answered, never kept.
    const bool devis = donnees.texte_de("modeDevis") == "O";
    if (!devis) {
        Registre registre = a.depot.factures();
        f.numeroFacture = ++registre.derniere_facture;
        registre.factures.push_back(f);
        if (Erreur e = enregistrer(a, registre)) {
            return *e;
        }
    }
    Reponse r = reponse_succes(a.operation);
    r.donnees.ajouter_arbre(donnees_facture(f, !devis));
    return r;
}

Reponse f_LireFacture(const Appel& a) {
    XmlNoeud donnees;
    if (Erreur e = donnees_demandees(a, donnees)) {
        return *e;
    }
    if (Erreur e = verifier_PS(Appel{a.depot, a.operation, donnees}, {})) {
        return *e;
    }
    Registre registre = a.depot.factures();
    FactureSimulee* f = nullptr;
    if (Erreur e = facture_demandee(a, donnees, registre, f)) {
        return *e;
    }
    Reponse r = reponse_succes(a.operation);
    r.donnees.ajouter_arbre(donnees_facture(*f, true));
    return r;
}

Reponse f_SupprimerFacture(const Appel& a) {
    if (Erreur e = verifier_PS(a, {})) {
        return *e;
    }
    Registre registre = a.depot.factures();
    FactureSimulee* f = nullptr;
    if (Erreur e = facture_demandee(a, a.requete, registre, f)) {
        return *e;
    }
    if (!f->numeroLot.empty()) {
        return erreur(a, kFactureDejaEnvoyee,
                      "Facture " + std::to_string(f->numeroFacture) + " déjà envoyée (lot " +
                          f->numeroLot + ")");
    }
    registre.factures.erase(registre.factures.begin() + (f - registre.factures.data()));
    if (Erreur e = enregistrer(a, registre)) {
        return *e;
    }
    return reponse_succes(a.operation);
}

Reponse f_ListerFactures(const Appel& a) {
    if (Erreur e = verifier_PS(a, {})) {
        return *e;
    }
    Reponse r = reponse_succes(a.operation);
    Element& liste = r.donnees.ajouter("listeFacture");
    for (const FactureSimulee& f : a.depot.factures().factures) {
        if (f.numeroLot.empty()) {
            liste.ajouter("numeroFacture", std::to_string(f.numeroFacture));
        }
    }
    return r;
}

Reponse f_EnvoyerToutesFactures(const Appel& a) {
    if (Erreur e = verifier_PS(a, {})) {
        return *e;
    }
    Registre registre = a.depot.factures();
    // One lot per paying organisation, degraded invoices apart from the signed ones.
    using Cle = std::tuple<bool, std::string, std::string, std::string>;
    std::map<Cle, std::vector<FactureSimulee*>> lots;
    for (FactureSimulee& f : registre.factures) {
        if (f.numeroLot.empty()) {
            const std::string centre = paye_par_caisse(f.codeRegime) ? "" : f.codeCentre;
            lots[{f.typeCertification == kDegrade, f.codeRegime, f.codeCaisse, centre}].push_back(
                &f);
        }
    }
    Reponse r = reponse_succes(a.operation);
    Element& envoi = r.donnees.ajouter("donneesEnvoi");
    if (lots.empty()) {
        return r;
    }
    const std::string jour = texte_jour(jour_simule(a.depot));
    for (const auto& [cle, factures] : lots) {
        const std::string numero = numero_lot(++registre.dernier_lot, std::get<0>(cle));
        Element& lot = envoi.ajouter("lot");
        for (FactureSimulee* f : factures) {
            f->numeroLot = numero;
            f->jourEnvoi = jour;
            Element& d = lot.ajouter("donneesFacture");
            d.ajouter("numeroLot", numero);
            d.ajouter("numeroFacture", std::to_string(f->numeroFacture));
            d.ajouter("codeRegime", f->codeRegime);
            d.ajouter("codeCaisse", f->codeCaisse);
            d.ajouter("codeCentre", f->codeCentre);
            ajouter_organisme(d, organisme_de(*f));
        }
    }
    if (Erreur e = enregistrer(a, registre)) {
        return *e;
    }
    return r;
}

Reponse f_LireInfosRetourFacture(const Appel& a) {
    if (Erreur e = verifier_PS(a, {})) {
        return *e;
    }
    const std::string debut = aaaammjj(a.requete.texte_de("dateDebut"));
    const std::string fin = aaaammjj(a.requete.texte_de("dateFin"));
    if (debut.empty() || fin.empty()) {
        return erreur(a, kPeriodeInvalide,
                      "Période absente ou invalide : du '" + a.requete.texte_de("dateDebut") +
                          "' au '" + a.requete.texte_de("dateFin") + "'");
    }
    const sys_days aujourdhui = jour_simule(a.depot);
    Reponse r = reponse_succes(a.operation);
    Element& retour = r.donnees.ajouter("donneesRetourFacture");
    Element rsp("RSP");
    for (const FactureSimulee& f : a.depot.factures().factures) {
        const std::string date = aaaammjj(f.dateFacture);
        if (f.numeroLot.empty() || date.empty() || date < debut || date > fin) {
            continue;
        }
        const std::string etat = etat_facture(f, aujourdhui);
        retour.ajouter_arbre(recapitulatif(f, etat));
        if (etat == kPaye) {
            Element& paiement = rsp.ajouter("donneesFacture");
            paiement.ajouter("numeroFacture", std::to_string(f.numeroFacture));
            paiement.ajouter("montantPaiementAMORSP", euros(f.montantAMO));
            paiement.ajouter("montantPaiementAMCRSP", euros(f.montantAMC));
        }
    }
    if (!rsp.enfants.empty()) {
        retour.ajouter_arbre(rsp);
    }
    return r;
}

}  // namespace sv140::sim
