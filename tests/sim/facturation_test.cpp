// The simulator's invoicing cycle through its entry point: invoices priced and numbered,
// deleted while they wait, sent in lots of their paying organisation, then paid or
// rejected as the simulated days go by.
#include <array>
#include <cctype>
#include <map>

#include "banc.h"

namespace sv140::sim::test {
namespace {

/// A beneficiary as the bridge sends it (`benef`), from the demo cards or not.
struct Benef {
    std::string nir, regime, caisse, centre, nom, prenom, naissance, rang = "1";
};
const Benef kJulien{"1780575115042", "01", "751", "0441", "MARTIN", "Julien", "19780512"};
const Benef kBernard{"1520713055012", "01", "131", "0201", "ROUSSEAU", "Bernard", "19520708"};
// Her AMO rights end in 2025.
const Benef kNadia{"2690144109115", "01", "441", "0110", "LAMBERT", "Nadia", "19690117"};
const Benef kInconnu{"1991299999999", "91", "751", "0912", "INCONNU", "Paul", "19990101"};

struct Ligne {
    std::string lpp, prix, unites, pec = "";
};

std::string xml_benef(const Benef& b) {
    return "<benef><NIR_ASS>" + b.nir + "</NIR_ASS><CLE_ASS>00</CLE_ASS><RGG_COD>" + b.regime +
           "</RGG_COD><RTT_CAI>" + b.caisse + "</RTT_CAI><RTT_UGE>" + b.centre +
           "</RTT_UGE><Beneficiaire><NOM_USG>" + b.nom + "</NOM_USG><PRM_USG>" + b.prenom +
           "</PRM_USG><NAI_BEN>" + b.naissance + "</NAI_BEN><BEN_RNG>" + b.rang +
           "</BEN_RNG></Beneficiaire></benef>";
}

std::string xml_actes(const std::vector<Ligne>& lignes) {
    std::string x;
    for (const Ligne& l : lignes) {
        x += "<acte><dateSoins>20260310</dateSoins><codeActeNGAP>VER</codeActeNGAP>" +
             (l.lpp.empty() ? ""
                            : "<codeAffine><codeAffineDetaille>" + l.lpp +
                                  "</codeAffineDetaille></codeAffine>") +
             "<prixUnitairePublic>" + l.prix + "</prixUnitairePublic><nombreUnite>" + l.unites +
             "</nombreUnite><qualificatifDepense>Aucun</qualificatifDepense>" +
             (l.pec.empty() ? "" : "<montantPECActe>" + l.pec + "</montantPECActe>") + "</acte>";
    }
    return x;
}

/// An f_CreerFacture request with the blocks given as they are.
std::string creation_brute(const std::string& benef, const std::string& actes,
                           const std::string& date = "20260310", const std::string& devis = "N",
                           const std::string& ps = bloc_ps(kIdNat, kIdFac1, "1")) {
    return requete("f_CreerFacture",
                   "<donneesFacture><dateFacture>" + date + "</dateFacture>" + ps + benef +
                       "<natureAssurance>MAL</natureAssurance><montantPecSMG>0000000</"
                       "montantPecSMG><typeTP>AMO</typeTP><soinsSoumisPrescription>N</"
                       "soinsSoumisPrescription><parcoursSoins><indicateurPDS>O</indicateurPDS></"
                       "parcoursSoins><modeDevis>" +
                       devis + "</modeDevis><modifierLignesActes>N</modifierLignesActes>" + actes +
                       "</donneesFacture>");
}

std::string creation(const Benef& b, const std::vector<Ligne>& lignes,
                     const std::string& date = "20260310", const std::string& devis = "N") {
    return creation_brute(xml_benef(b), xml_actes(lignes), date, devis);
}

const Ligne kMonture{"2210546", "0015000", "01", "0005000"};

const std::string kPs = bloc_ps(kIdNat, kIdFac1, "1");

std::string numero(const std::string& n) {
    return "<numeroFacture>" + n + "</numeroFacture>";
}

/// The joined texts of the nodes `chemin` selects from each node `noeuds` selects.
std::vector<std::string> colonnes(const Resultat& r, const std::string& noeuds,
                                  const std::vector<std::string>& chemins) {
    std::vector<std::string> lignes;
    for (const XmlNoeud& n : r.doc.selectionner("/ZRMESSAGE/resultat/" + noeuds)) {
        std::string ligne;
        for (std::size_t i = 0; i < chemins.size(); ++i) {
            ligne += (i == 0 ? "" : " ") + n.texte_de(chemins[i]);
        }
        lignes.push_back(ligne);
    }
    return lignes;
}

class Facturation : public Sim {
  protected:
    std::vector<std::string> en_attente() {
        return appeler(requete("f_ListerFactures", kPs))
            .textes("donnees/listeFacture/numeroFacture");
    }
    std::vector<long long> semer(const std::vector<FactureSimulee>& factures) {
        std::vector<long long> numeros;
        std::string erreur;
        EXPECT_TRUE(Ajouter_Factures(zrsim_, factures, numeros, erreur)) << erreur;
        return numeros;
    }
    void inserer(const std::string& carte) {
        std::string erreur;
        ASSERT_TRUE(Inserer_Carte(zrsim_, carte, erreur)) << erreur;
    }
};

TEST_F(Facturation, CreationTarifeEtNumerote) {
    const std::vector<std::string> kLigne = {
        "codeAffine/typePrestation", "quantite",   "tauxRemboursement", "montantHonoraires",
        "baseRemboursement",         "montantAMO", "montantAMC",        "codeExo"};
    const std::vector<std::string> kTotaux = {"typeCertification", "montantPSTotalHono",
                                              "montantPSTotalAMO", "montantPSTotalAMC",
                                              "montantPSTotalPartPatient"};
    const struct {
        const char* nom;
        const char* carte;
        Benef benef;
        std::vector<Ligne> lignes;
        std::vector<std::string> attendu;  // each line, then the totals
    } cas[] = {
        {"monture et verres au taux de 60",
         "famille",
         kJulien,
         {kMonture, {"2227908", "0012000", "02", "0020000"}},
         {"M 1 60 0015000 0003000 0001800 0005000 0", "V 2 60 0024000 0006520 0003912 0020000 0",
          "Sesam-Vitale 0039000 0005712 0025000 0008288"}},
        {"ALD a 100, part complementaire plafonnee au reste",
         "ald",
         kBernard,
         {{"2340119", "0000500", "01", "0001000"}},
         {"P 1 100 0000500 0000450 0000450 0000050 4",
          "Sesam-Vitale 0000500 0000450 0000050 0000000"}},
        {"sans carte ni code LPP connu: degradee, base = honoraires",
         "",
         kInconnu,
         {{"9999999", "0002000", "03"}, {"", "0001000", "01"}},
         {" 3 60 0006000 0006000 0003600 0000000 0", " 1 60 0001000 0001000 0000600 0000000 0",
          "Degrade 0007000 0004200 0000000 0002800"}},
    };
    int numero_attendu = 0;
    for (const auto& c : cas) {
        SCOPED_TRACE(c.nom);
        inserer(c.carte);
        const Resultat r = appeler(creation(c.benef, c.lignes));
        ASSERT_EQ(r.code(), "0") << r.texte("libelleErreur");
        std::vector<std::string> obtenu = colonnes(r, "donnees/donneesFacture/acte", kLigne);
        obtenu.push_back(colonnes(r, "donnees/donneesFacture", kTotaux).at(0));
        EXPECT_EQ(obtenu, c.attendu);
        EXPECT_EQ(r.texte("donnees/donneesFacture/numeroFacture"),
                  std::to_string(++numero_attendu));
        EXPECT_EQ(r.texte("donnees/donneesFacture/codeCaisse"), c.benef.caisse);
    }

    // A quote is answered with its amounts, without number, and leaves nothing behind.
    inserer("famille");
    const Resultat devis = appeler(creation(kJulien, {kMonture}, "20260310", "O"));
    EXPECT_EQ(devis.texte("donnees/donneesFacture/montantPSTotalAMO"), "0001800");
    EXPECT_FALSE(devis.doc.selectionner_un("//numeroFacture"));
    EXPECT_EQ(en_attente(), (std::vector<std::string>{"1", "2", "3"}));

    // Reading answers the invoice as its creation did.
    const Resultat creee = appeler(creation(kJulien, {kMonture}));
    const Resultat lue =
        appeler(requete("f_LireFacture", "<donneesFacture><dateFacture>20260310</dateFacture>" +
                                             kPs + numero("000000004") + "</donneesFacture>"));
    const auto donnees = [](const Resultat& r) {
        return r.brut.substr(r.brut.find("<donneesFacture>"));
    };
    EXPECT_EQ(donnees(lue), donnees(creee));
}

TEST_F(Facturation, ControlesRefusentLaFacture) {
    const std::string benef = xml_benef(kJulien), actes = xml_actes({kMonture});
    const struct {
        const char* nom;
        std::string requete;
        int code;
    } cas[] = {
        {"sans donneesFacture", requete("f_CreerFacture", kPs), kDonneesFactureAbsentes},
        {"idFac d'une autre situation",
         creation_brute(benef, actes, "20260310", "N", bloc_ps(kIdNat, kIdFac1, "2")),
         kIdFacInconnu},
        {"sans beneficiaire", creation_brute("", actes), kBeneficiaireAbsent},
        {"sans ligne", creation_brute(benef, ""), kAucunActe},
        {"prix avec virgule", creation(kJulien, {{"2210546", "150,00", "01"}}), kMontantInvalide},
        {"part complementaire non numerique",
         creation(kJulien, {{"2210546", "0015000", "01", "x"}}), kMontantInvalide},
    };
    for (const auto& c : cas) {
        SCOPED_TRACE(c.nom);
        const Resultat r = appeler(c.requete);
        EXPECT_EQ(r.code(), std::to_string(c.code)) << r.texte("libelleErreur");
        EXPECT_FALSE(r.texte("libelleErreur").empty());
    }
    EXPECT_EQ(en_attente(), std::vector<std::string>{});
}

TEST_F(Facturation, SeuleUneFactureEnAttentePeutEtreSupprimee) {
    inserer("famille");
    const auto supprimer = [&](const std::string& n) {
        return requete("f_SupprimerFacture", bloc_ps(kIdNat, kIdFac1) + numero(n));
    };
    const auto lire = [&](const std::string& n) {
        return requete("f_LireFacture", "<donneesFacture><dateFacture>20260310</dateFacture>" +
                                            kPs + numero(n) + "</donneesFacture>");
    };
    const struct {
        std::string requete;
        int code;
        std::vector<std::string> en_attente;
    } etapes[] = {
        {creation(kJulien, {kMonture}), 0, {"1"}},
        {creation(kJulien, {kMonture}), 0, {"1", "2"}},
        {requete("f_EnvoyerToutesFactures", kPs), 0, {}},
        {creation(kJulien, {kMonture}), 0, {"3"}},
        {supprimer("000000001"), kFactureDejaEnvoyee, {"3"}},
        {supprimer("000000099"), kFactureInconnue, {"3"}},
        {supprimer(""), kFactureInconnue, {"3"}},
        {lire("000000001"), 0, {"3"}},
        {supprimer("000000003"), 0, {}},
        {lire("000000003"), kFactureInconnue, {}},
    };
    for (std::size_t i = 0; i < std::size(etapes); ++i) {
        SCOPED_TRACE("etape " + std::to_string(i + 1));
        const Resultat r = appeler(etapes[i].requete);
        EXPECT_EQ(r.code(), std::to_string(etapes[i].code)) << r.texte("libelleErreur");
        EXPECT_EQ(en_attente(), etapes[i].en_attente);
    }
}

FactureSimulee facture(long long numero, const std::string& regime, const std::string& caisse,
                       const std::string& centre,
                       const std::string& certification = "Sesam-Vitale") {
    FactureSimulee f;
    f.numeroFacture = numero;
    f.dateFacture = "20260310";
    f.codeRegime = regime;
    f.codeCaisse = caisse;
    f.codeCentre = centre;
    f.typeCertification = certification;
    f.montantHonoraires = 15000;
    f.montantAMO = 1800;
    return f;
}

TEST_F(Facturation, EnvoiParLotsDOrganisme) {
    EXPECT_EQ(semer({facture(0, "01", "751", "0441"), facture(0, "01", "751", "0999"),
                     facture(0, "01", "131", "0201"), facture(0, "01", "751", "0441", "Degrade"),
                     facture(123, "05", "999", "0001"), facture(0, "91", "751", "0912"),
                     facture(0, "91", "751", "0913")}),
              (std::vector<long long>{1, 2, 3, 4, 123, 124, 125}));
    std::vector<long long> refus;
    std::string erreur;
    EXPECT_FALSE(Ajouter_Factures(zrsim_, {facture(3, "01", "751", "0441")}, refus, erreur));

    const Resultat r = appeler(requete("f_EnvoyerToutesFactures", kPs));
    ASSERT_EQ(r.code(), "0") << r.texte("libelleErreur");
    // Invoice number -> lot, organisation name, address.
    std::map<std::string, std::array<std::string, 3>> envoi;
    for (const XmlNoeud& d : r.doc.selectionner("//donneesEnvoi/lot/donneesFacture")) {
        envoi[d.texte_de("numeroFacture")] = {d.texte_de("numeroLot"),
                                              d.texte_de("organismeDestinataire/libelle"),
                                              d.texte_de("organismeDestinataire/adresse")};
    }
    ASSERT_EQ(envoi.size(), 7u) << r.brut;
    EXPECT_EQ(r.doc.selectionner("//donneesEnvoi/lot").size(), 6u);
    // The general regime pays at caisse level, the others at centre level.
    EXPECT_EQ(envoi["1"][0], envoi["2"][0]);
    EXPECT_NE(envoi["1"][0], envoi["3"][0]);
    EXPECT_NE(envoi["124"][0], envoi["125"][0]);
    // Degraded invoices travel apart, in a lot whose number has no numeric value.
    EXPECT_TRUE(std::isalpha(static_cast<unsigned char>(envoi["4"][0].at(0)))) << envoi["4"][0];
    for (const auto& [n, e] : envoi) {
        const bool numerique = std::all_of(e[0].begin(), e[0].end(), ::isdigit);
        EXPECT_EQ(numerique, n != "4") << n << " " << e[0];
    }
    EXPECT_EQ(envoi["1"][1], "CPAM DE PARIS");
    EXPECT_NE(envoi["1"][2].find('\\'), std::string::npos) << envoi["1"][2];
    EXPECT_EQ(envoi["123"][1] + envoi["123"][2], "");

    const Resultat rien = appeler(requete("f_EnvoyerToutesFactures", kPs));
    EXPECT_EQ(rien.code(), "0");
    EXPECT_EQ(rien.doc.selectionner("/ZRMESSAGE/resultat/donnees/donneesEnvoi/*").size(), 0u);
    EXPECT_EQ(rien.doc.selectionner("/ZRMESSAGE/resultat/donnees/donneesEnvoi").size(), 1u);
}

TEST_F(Facturation, RetoursSuiventLesJoursSimules) {
    inserer("famille");
    for (const auto& [benef, date] :
         {std::pair{kJulien, "10/03/2026"}, {kNadia, "2026-03-12"}, {kJulien, "20260415"}}) {
        ASSERT_EQ(appeler(creation(benef, {kMonture}, date)).code(), "0");
    }
    ASSERT_EQ(appeler(requete("f_EnvoyerToutesFactures", kPs)).code(), "0");

    const auto retours = [&](const std::string& debut, const std::string& fin) {
        return requete("f_LireInfosRetourFacture", bloc_ps(kIdNat, kIdFac1) + "<dateDebut>" +
                                                       debut + "</dateDebut><dateFin>" + fin +
                                                       "</dateFin>");
    };
    const std::string kExpedie = "Expedie ou en cours de traitement";
    const struct {
        int jours;  // simulated days added before the call
        std::string requete;
        int code;
        std::vector<std::string> etats, paiements;
    } etapes[] = {
        {0, retours("20260301", "20260331"), 0, {"1 " + kExpedie, "2 " + kExpedie}, {}},
        {1, retours("20260301", "20260331"), 0, {"1 " + kExpedie, "2 " + kExpedie}, {}},
        {1,
         retours("01/03/2026", "2026-03-31"),
         0,
         {"1 Paye", "2 Facture en erreur"},
         {"1 18.00 50.00"}},
        {0, retours("", "20260331"), kPeriodeInvalide, {}, {}},
        {0, retours("20260231", "20260331"), kPeriodeInvalide, {}, {}},
    };
    for (std::size_t i = 0; i < std::size(etapes); ++i) {
        SCOPED_TRACE("etape " + std::to_string(i + 1));
        int decalage = 0;
        std::string erreur;
        ASSERT_TRUE(Avancer_Jours(zrsim_, etapes[i].jours, decalage, erreur)) << erreur;
        const Resultat r = appeler(etapes[i].requete);
        EXPECT_EQ(r.code(), std::to_string(etapes[i].code)) << r.texte("libelleErreur");
        EXPECT_EQ(colonnes(r, "donnees/donneesRetourFacture/recapitulatifFacture",
                           {"numeroFacture", "etatFacture"}),
                  etapes[i].etats);
        EXPECT_EQ(colonnes(r, "donnees/donneesRetourFacture/RSP/donneesFacture",
                           {"numeroFacture", "montantPaiementAMORSP", "montantPaiementAMCRSP"}),
                  etapes[i].paiements);
    }
}

TEST_F(Facturation, PanneInjecteeUneSeuleFois) {
    semer({facture(0, "01", "751", "0441")});
    std::string erreur;
    ASSERT_TRUE(Injecter_Erreur(zrsim_, "f_EnvoyerToutesFactures", 9,
                                "Serveur de facturation indisponible", erreur));
    const Resultat panne = appeler(requete("f_EnvoyerToutesFactures", kPs));
    EXPECT_EQ(panne.code(), "9");
    EXPECT_EQ(panne.texte("libelleErreur"), "Serveur de facturation indisponible");
    EXPECT_EQ(en_attente(), std::vector<std::string>{"1"});
    EXPECT_EQ(appeler(requete("f_EnvoyerToutesFactures", kPs)).textes("donnees//numeroFacture"),
              std::vector<std::string>{"1"});

    ASSERT_TRUE(Injecter_Retour(zrsim_, "f_CreerFacture", 7, erreur));
    EXPECT_EQ(appeler(creation(kJulien, {kMonture})).retour, 7);
    EXPECT_EQ(Lire_Factures(zrsim_).size(), 1u);
}

}  // namespace
}  // namespace sv140::sim::test
