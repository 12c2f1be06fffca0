// The creation of an electronic claim: the host's claim document turned into the
// f_CreerFacture request, then the invoice the middleware created stored with its lines.
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "data/instructions.h"
#include "data/parametres.h"
#include "data/texte_sql.h"
#include "exchange/document.h"
#include "exchange/fichiers.h"
#include "exchange/requete.h"
#include "exchange/run.h"
#include "invoicing/factures.h"
#include "invoicing/montants.h"
#include "platform/horloge.h"
#include "platform/systeme.h"
#include "tools/outils.h"

namespace sv140 {
namespace {

constexpr const char* kEntreeIllisible = "Impossible de lire ZEMO_Request.xml";
constexpr const char* kFacture = "/BelvaneClassicII/donneesFacture";

// Whether a text is a number as the host writes one ("12", "-3.5"): anything else reads
// as its leading number (0 without one), and the log says which element held it.
bool est_nombre(std::string_view t) {
    const std::string s = Trim(t);
    std::size_t i = (!s.empty() && (s[0] == '-' || s[0] == '+')) ? 1 : 0;
    bool chiffre = false, point = false;
    for (; i < s.size(); ++i) {
        if (s[i] >= '0' && s[i] <= '9') {
            chiffre = true;
        } else if (s[i] == '.' && !point) {
            point = true;
        } else {
            return false;
        }
    }
    return chiffre;
}

double nombre(const Run& run, const Champs& champs, std::string_view nom) {
    const std::string& texte = champs(nom);
    if (!texte.empty() && !est_nombre(texte)) {
        run.log("Valeur non numérique : " + std::string(nom) + " = '" + texte + "', lue " +
                Nombre_SQL(Val(texte)));
    }
    return Val(texte);
}

std::string origine_prescription(const std::string& origine) {
    if (origine == "NP") {
        return "0";
    }
    if (origine == "RI") {
        return "1";
    }
    if (origine == "RA") {
        return "2";
    }
    return origine;
}

// The act code the scheme expects for the LPP codes of special equipment.
std::string code_acte(const std::string& lpp, const std::string& code) {
    if (lpp == "2340119") {
        return "PAU";
    }
    if (lpp == "2269025" || lpp == "2227920" || lpp == "2227908") {
        return "VER";
    }
    return code;
}

// Appends an element only when it has a value.
void ajouter_si(XmlNoeud& parent, std::string_view nom, const std::string& valeur) {
    if (!valeur.empty()) {
        parent.ajouter(nom, valeur);
    }
}

}  // namespace

std::string Part_Complementaire(double total_ligne, bool total_amc_nul, double part_amo,
                                double montant_amc, Forfait& forfait) {
    const double ecart = total_ligne - part_amo;
    double part = montant_amc;
    if (total_amc_nul) {
        if (forfait.restant > ecart) {
            part = ecart;
            forfait.restant -= ecart;
        } else {
            part = forfait.restant;
            forfait.restant = 0;
        }
    } else if (forfait.total > 0) {
        const double depassement = ecart - montant_amc;
        if (forfait.restant > depassement) {
            part = montant_amc + depassement;
            forfait.restant -= depassement;
        } else {
            part = forfait.restant;
            forfait.restant = 0;
        }
    }
    return Format_Euros(part);
}

Statut Requete_f_CreerFacture(Run& run) {
    auto entree = Charger_Document(run, fichiers::kRequeteHote, "f_CreerFacture", kEntreeIllisible);
    if (!entree) {
        return Statut::Deja_Repondu("ZEMO_Request.xml illisible");
    }
    Champs facture{"numDossier",     "typeDossier",     "dateFacture",         "datePrescription",
                   "idPrescripteur", "refPrescripteur", "originePrescription", "modetraitement"};
    facture.lire(*entree, kFacture);
    Champs benef{"nomBeneficaire",
                 "prenomBeneficaire",
                 "dateNaissanceBeneficaire",
                 "rangNaissanceBeneficaire",
                 "nirAssure",
                 "cleNirAssure",
                 "codeRegime",
                 "codeCaisse",
                 "codeCentre",
                 "natureAssurance",
                 "tauxRemboursement",
                 "accidentViePrivee",
                 "dateAT",
                 "numeroAT",
                 "supportAT",
                 "CaisseGestionnaireAT",
                 "dateMaternite",
                 "montantPecSMG"};
    benef.lire(*entree, "/BelvaneClassicII/beneficiaire");
    Champs tp{"typeTP",
              "typeAME",
              "DateDebutAMC",
              "DateFinAMC",
              "soinsSoumisPrescription",
              "numeroAdherent",
              "numeroContrat",
              "numeroMutuelle",
              "numeroPEC",
              "dateAccordPEC",
              "TPtotalAMC",
              "forfaitMutuelle"};
    tp.lire(*entree, "/BelvaneClassicII/donneesTP");
    Champs actes{"nombreLignesActes", "totalNetProduitsPriseEnChargeAMC"};
    actes.lire(*entree, "/BelvaneClassicII/donneesActe");

    // The scheme's field holds 27 characters (not bytes: a name may hold accents).
    std::string refPrescripteur = facture("refPrescripteur");
    std::size_t caracteres = 0;
    for (std::size_t i = 0; i < refPrescripteur.size(); ++i) {
        if ((static_cast<unsigned char>(refPrescripteur[i]) & 0xC0) != 0x80 && ++caracteres > 27) {
            refPrescripteur.resize(i);
            break;
        }
    }
    std::string numeroMutuelle = tp("numeroMutuelle");
    if (numeroMutuelle == "099999997") {
        numeroMutuelle = "99999997";
    }

    // The accident: a private-life accident is sent as such and turns the care into
    // illness; otherwise the date is the work accident's.
    std::string natureAssurance = benef("natureAssurance");
    std::string supportAT = benef("supportAT");
    const std::string dateAccident = Date_AAAAMMJJ(benef("dateAT"));
    const bool viePrivee = nombre(run, benef, "accidentViePrivee") != 0;
    const std::string dateAT = viePrivee ? "" : dateAccident;
    const std::string dateAVP = viePrivee ? dateAccident : "";
    std::string numeroAT;
    if (!benef("numeroAT").empty()) {
        numeroAT = "000000000" + benef("numeroAT");
        numeroAT = numeroAT.substr(numeroAT.size() - 9);
    }
    if (dateAT.empty() && numeroAT.empty() && dateAVP.empty()) {
        supportAT.clear();
    }
    if (!dateAVP.empty()) {
        natureAssurance = "Maladie";
        supportAT.clear();
    }
    const std::string dateMaternite = Date_AAAAMMJJ(benef("dateMaternite"));

    Requete requete("f_CreerFacture", "0005");
    XmlNoeud f = requete.operation().ajouter("donneesFacture");
    f.ajouter("dateFacture", facture("dateFacture"));
    if (Statut ps = requete.ajouter_PS(run, f, /*avec_numSitu=*/true, false); !ps) {
        return ps;
    }
    XmlNoeud b = f.ajouter("benef");
    b.ajouter("NIR_ASS", benef("nirAssure"));
    b.ajouter("CLE_ASS", benef("cleNirAssure"));
    b.ajouter("RGG_COD", benef("codeRegime"));
    b.ajouter("RTT_CAI", benef("codeCaisse"));
    b.ajouter("RTT_UGE", benef("codeCentre"));
    XmlNoeud beneficiaire = b.ajouter("Beneficiaire");
    beneficiaire.ajouter("NOM_USG", benef("nomBeneficaire"));
    beneficiaire.ajouter("PRM_USG", benef("prenomBeneficaire"));
    beneficiaire.ajouter("NAI_BEN", benef("dateNaissanceBeneficaire"));
    beneficiaire.ajouter("BEN_RNG", benef("rangNaissanceBeneficaire"));

    ajouter_si(f, "dateAVP", dateAVP);
    f.ajouter("natureAssurance", natureAssurance);
    ajouter_si(f, "dateMaternite", dateMaternite);
    ajouter_si(f, "dateAT", dateAT);
    ajouter_si(f, "numeroAT", numeroAT);
    if (!supportAT.empty()) {
        f.ajouter("supportAT", supportAT);
        f.ajouter("numOrgGestAT", benef("CaisseGestionnaireAT"));
    }
    f.ajouter("montantPecSMG", Montant_Requete(nombre(run, benef, "montantPecSMG")));
    f.ajouter("typeTP", tp("typeTP"));
    f.ajouter("soinsSoumisPrescription", tp("soinsSoumisPrescription"));
    if (tp("soinsSoumisPrescription") == "O") {
        f.ajouter("datePrescription", facture("datePrescription"));
        f.ajouter("identifiantPrescripteur", facture("idPrescripteur"));
        f.ajouter("specialitePrescripteur", "15");
        f.ajouter("nomPrescripteur", refPrescripteur);
        f.ajouter("originePrescription", origine_prescription(facture("originePrescription")));
    }
    const double totalAMC = nombre(run, tp, "TPtotalAMC");
    if ((totalAMC > 0 || numeroMutuelle == "75500017") && !numeroMutuelle.empty()) {
        XmlNoeud m = f.ajouter("mutuelle");
        m.ajouter("numeroMutuelle", numeroMutuelle);
        m.ajouter("typeAME", tp("typeAME"));
        m.ajouter("numeroAdherent", tp("numeroAdherent"));
        m.ajouter("referencePEC", tp("numeroPEC"));
        m.ajouter("dateAccordPEC", tp("dateAccordPEC"));
    }
    f.ajouter("parcoursSoins").ajouter("indicateurPDS", "O");
    // Only an explicit "Facture" makes a real claim: a mistaken mode gets an estimate.
    const std::string& mode = facture("modetraitement");
    if (mode != "Facture" && mode != "Simulation") {
        run.log("Mode de traitement inconnu, traité en simulation : '" + mode + "'");
    }
    f.ajouter("modeDevis", mode == "Facture" ? "N" : "O");
    f.ajouter("nombreLignesActes", Nombre_SQL(std::trunc(nombre(run, actes, "nombreLignesActes"))));
    f.ajouter("modifierLignesActes", "N");

    const bool totalAmcNul = Val(actes("totalNetProduitsPriseEnChargeAMC")) == 0;
    Forfait forfait;
    forfait.total = forfait.restant = nombre(run, tp, "forfaitMutuelle");
    for (const XmlNoeud& noeud : entree->selectionner("/BelvaneClassicII/donneesActe/Acte")) {
        Champs ligne{"designation",         "codeActe",    "codeLPP",
                     "qualificatifDepense", "nombreUnite", "MontantAMC",
                     "PartMontantAMO",      "montantNet",  "dateSoins"};
        ligne.lire(noeud);
        const double unites = nombre(run, ligne, "nombreUnite");
        const double net = nombre(run, ligne, "montantNet");
        const std::string part =
            Part_Complementaire(net * unites, totalAmcNul, nombre(run, ligne, "PartMontantAMO"),
                                nombre(run, ligne, "MontantAMC"), forfait);
        std::string qualificatif = tp("typeTP") == "AMC" ? "N" : ligne("qualificatifDepense");

        XmlNoeud acte = f.ajouter("acte");
        acte.ajouter("dateSoins", ligne("dateSoins"));
        acte.ajouter("codeActeNGAP", code_acte(ligne("codeLPP"), ligne("codeActe")));
        if (!ligne("codeLPP").empty()) {
            acte.ajouter("codeAffine").ajouter("codeAffineDetaille", ligne("codeLPP"));
        }
        acte.ajouter("prixUnitairePublic", Montant_Requete(net));
        acte.ajouter("nombreUnite", Deux_Chiffres(unites));
        acte.ajouter("qualificatifDepense", qualificatif.empty() ? "Aucun" : qualificatif);
        if (Val(part) > 0) {
            acte.ajouter("montantPECActe", Montant_Requete(Val(part)));
        }
    }
    if (fichier_existe(run.fichier(fichiers::kCertification))) {
        f.ajouter("typeCertification", "Desynchro");
    }
    return requete.enregistrer(run);
}

Statut Stocker_Facture(Run& run) {
    auto entree = Charger_Document(run, fichiers::kRequeteHote, "f_CreerFacture", kEntreeIllisible);
    if (!entree) {
        return Statut::Deja_Repondu("ZEMO_Request.xml illisible");
    }
    Champs dossier{"numDossier", "typeDossier"};
    dossier.lire(*entree, kFacture);
    std::string typeDossier = dossier("typeDossier");
    if (typeDossier == "Lunettes") {
        typeDossier = "LUN";
    } else if (typeDossier == "Lentilles") {
        typeDossier = "LEN";
    }

    auto reponse = Charger_Reponse(run, "f_CreerFacture");
    if (!reponse) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    constexpr const char* kCree = "/ZRMESSAGE/resultat/donnees/donneesFacture";
    Champs cree{"numeroFacture",
                "typeFlux",
                "natureAssurance",
                "codeRegime",
                "codeCaisse",
                "codeCentre",
                "mutuelle/numeroMutuelle",
                "typeTP",
                "typeCertification",
                "montantPSTotalAMO",
                "montantPSTotalAMC",
                "montantPSTotalHono",
                "montantPSTotalPartPatient"};
    cree.lire(*reponse, kCree);
    const std::string& numero = cree("numeroFacture");
    if (numero.empty()) {
        run.log("Réponse sans numéro de facture : aucune facture enregistrée");
        return {};
    }
    auto euros = [&](std::string_view champ) { return Nombre_SQL(nombre(run, cree, champ) / 100); };

    const bool scor = Lire_SCORActif(run.bases());
    std::string sql =
        "INSERT INTO T_InfosFacture ( Info_Facture_NUMFAC, Info_Facture_TypDOS, "
        "Info_Facture_NumDOS, Info_Facture_dteCreate, Info_Facture_TYPEFLUX, "
        "Info_Facture_NATASSUR, Info_Facture_CODREG, Info_Facture_CODCAI, Info_Facture_CODCEN, "
        "Info_Facture_NUMMUT, Info_Facture_TYPETP, Info_Facture_TYPECERTIF, Info_Facture_TPAMO, "
        "Info_Facture_TPAMC, Info_Facture_TOTALFAC, Info_Facture_TOTALASS";
    sql += scor ? ", Info_Facture_SCOR ) " : " ) ";
    sql += "SELECT '" + Texte_SQL(numero) + "' AS v1, '" + Texte_SQL(typeDossier) + "' as v1b, " +
           Nombre_SQL(nombre(run, dossier, "numDossier")) + " as v1c, #" +
           Format_Date(maintenant_local(), "%m/%d/%Y") + "# as v1d, '" +
           Texte_SQL(cree("typeFlux")) + "' AS v2, '" + Texte_SQL(cree("natureAssurance")) +
           "' AS v3, '" + Texte_SQL(cree("codeRegime")) + "' AS v4, '" +
           Texte_SQL(cree("codeCaisse")) + "' AS v5, '" + Texte_SQL(cree("codeCentre")) +
           "' AS v6, '" + Texte_SQL(cree("mutuelle/numeroMutuelle")) + "' AS v7, '" +
           Texte_SQL(cree("typeTP")) + "' AS v8, '" + Texte_SQL(cree("typeCertification")) +
           "' AS v9, " + euros("montantPSTotalAMO") + " AS v10, " + euros("montantPSTotalAMC") +
           " AS v11, " + euros("montantPSTotalHono") + " AS v12, " +
           euros("montantPSTotalPartPatient") + (scor ? " AS v13, -1 AS v14;" : " AS v13;");
    Connexion& pont = run.bases().pont;
    if (Statut s = pont.Execute(sql); !s) {
        return s;
    }
    // The key this connection's insert was given: the largest key of the table is
    // another workstation's new invoice when it inserted meanwhile. The largest key stays
    // as a check, so that a shop where the two differ can be told from its log.
    auto identite = Premiere_Ligne(pont, "SELECT @@IDENTITY AS ID_FAC;");
    if (!identite) {
        return identite.statut();
    }
    const double cle = identite->champ("ID_FAC").nombre();
    if (cle == 0) {
        run.log("Clé de la facture " + numero + " introuvable : lignes non enregistrées");
        return {};
    }
    auto plus_grande = Plus_Grande_Cle(
        pont, "SELECT Max(T_InfosFacture.Info_Facture_ID) AS ID_FAC FROM T_InfosFacture;");
    if (!plus_grande) {
        return plus_grande.statut();
    }
    if (*plus_grande != cle) {
        run.log("Clé de la facture " + numero + " : " + Nombre_SQL(cle) +
                ", mais la plus grande clé de T_InfosFacture est " + Nombre_SQL(*plus_grande) +
                " (facture créée par un autre poste) : les lignes vont sous " + Nombre_SQL(cle));
    }

    const auto lignes = reponse->selectionner(std::string(kCree) + "/acte");
    run.log("Facture " + numero + " enregistrée avec " + std::to_string(lignes.size()) +
            " ligne(s)");
    for (const XmlNoeud& noeud : lignes) {
        Champs l{"codeActeNGAP",
                 "codeAffine/codeAffineDetaille",
                 "codeAffine/typePrestation",
                 "quantite",
                 "tauxRemboursement",
                 "montantHonoraires",
                 "baseRemboursement",
                 "montantAMO",
                 "montantAMC",
                 "qualifDepense",
                 "codeExo"};
        l.lire(noeud);
        auto euros_ligne = [&](std::string_view c) { return Nombre_SQL(nombre(run, l, c) / 100); };
        const std::string ligne =
            "INSERT INTO T_InfosDetailFacture ( Info_Facture_ID_FK, Info_DetailFacture_CODACTE, "
            "Info_Facture_CODLPP, Info_DetailFacture_TypPrestation, "
            "Info_DetailFacture_prixUnitaire, Info_DetailFacture_baseLPP, "
            "Info_DetailFacture_tauxRbt, Info_DetailFacture_QUANTITE, Info_DetailFacture_MtAMO, "
            "Info_DetailFacture_MtAMC, Info_DetailFacture_QualifDepense, "
            "Info_DetailFacture_codeExo ) SELECT " +
            Nombre_SQL(cle) + " AS V1, '" + Texte_SQL(l("codeActeNGAP")) + "' AS V2, '" +
            Texte_SQL(l("codeAffine/codeAffineDetaille")) + "' AS V3, '" +
            Texte_SQL(l("codeAffine/typePrestation")) + "' AS V4, " +
            euros_ligne("montantHonoraires") + " AS V5, " + euros_ligne("baseRemboursement") +
            " AS V6," + Nombre_SQL(nombre(run, l, "tauxRemboursement")) + " AS V6b, " +
            Nombre_SQL(nombre(run, l, "quantite")) + " AS V7, " + euros_ligne("montantAMO") +
            " AS V8, " + euros_ligne("montantAMC") + " AS V9, '" + Texte_SQL(l("qualifDepense")) +
            "' AS V10, " + Nombre_SQL(nombre(run, l, "codeExo")) + " AS V11;";
        if (Statut s = pont.Execute(ligne); !s) {
            return s;
        }
    }
    return {};
}

}  // namespace sv140
