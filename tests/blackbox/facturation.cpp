#include "facturation.h"

namespace bb {
namespace {

const std::pair<std::string, Champs> kDocument[] = {
    {"donneesFacture",
     champs("numDossier=4521;typeDossier=Lunettes;dateFacture=20240305;datePrescription=20240201;"
            "idPrescripteur=101234567;refPrescripteur=Dr MARTIN;originePrescription=NP;"
            "modetraitement=Facture")},
    {"beneficiaire",
     champs("nomBeneficaire=DUPONT;prenomBeneficaire=Jean;dateNaissanceBeneficaire=19750512;"
            "rangNaissanceBeneficaire=1;nirAssure=1750575123456;cleNirAssure=42;codeRegime=01;"
            "codeCaisse=131;codeCentre=0000;natureAssurance=AS;tauxRemboursement=60;"
            "accidentViePrivee=0;dateAT=;numeroAT=;supportAT=;CaisseGestionnaireAT=;"
            "dateMaternite=;montantPecSMG=0")},
    {"donneesTP",
     champs("typeTP=AMO;typeAME=;DateDebutAMC=20240101;DateFinAMC=20241231;"
            "soinsSoumisPrescription=O;numeroAdherent=ADH1;numeroContrat=C1;"
            "numeroMutuelle=12345678;numeroPEC=PEC1;dateAccordPEC=20240301;TPtotalAMC=150;"
            "forfaitMutuelle=0")},
};

const std::vector<Champs> kActes = {
    champs("designation=Monture;codeActe=MON;codeLPP=2210546;qualificatifDepense=;nombreUnite=1;"
           "MontantAMC=30;PartMontantAMO=0.05;montantNet=120;dateSoins=20240305"),
    champs("designation=Verre droit;codeActe=VRS;codeLPP=2227908;qualificatifDepense=;"
           "nombreUnite=1;MontantAMC=60;PartMontantAMO=0.05;montantNet=95.5;dateSoins=20240305"),
    champs("designation=Verre gauche;codeActe=VRS;codeLPP=2227920;qualificatifDepense=;"
           "nombreUnite=1;MontantAMC=60;PartMontantAMO=0.05;montantNet=95.5;dateSoins=20240305"),
};

std::string echapper(const std::string& t) {
    std::string r;
    for (char c : t) {
        switch (c) {
            case '&':
                r += "&amp;";
                break;
            case '<':
                r += "&lt;";
                break;
            case '>':
                r += "&gt;";
                break;
            default:
                r += c;
        }
    }
    return r;
}

std::string elements(const Champs& champs) {
    std::string x;
    for (const auto& [nom, valeur] : champs) {
        if (valeur != "-") {
            x += "<" + nom + ">" + echapper(valeur) + "</" + nom + ">";
        }
    }
    return x;
}

}  // namespace

std::string document_facture(const Champs& retouches, const std::vector<Champs>* actes) {
    std::string x = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<BelvaneClassicII>";
    for (auto [groupe, champs] : kDocument) {
        for (const auto& [chemin, valeur] : retouches) {
            if (chemin.starts_with(groupe + "/")) {
                const std::string nom = chemin.substr(groupe.size() + 1);
                bool trouve = false;
                for (auto& [n, v] : champs) {
                    if (n == nom) {
                        v = valeur;
                        trouve = true;
                    }
                }
                if (!trouve) {
                    champs.emplace_back(nom, valeur);
                }
            }
        }
        x += "<" + groupe + ">" + elements(champs) + "</" + groupe + ">";
    }
    const std::vector<Champs>& lignes = actes ? *actes : kActes;
    std::string total = "150";
    for (const auto& [chemin, valeur] : retouches) {
        if (chemin == "donneesActe/totalNetProduitsPriseEnChargeAMC") {
            total = valeur;
        }
    }
    x += "<donneesActe><nombreLignesActes>" + std::to_string(lignes.size()) +
         "</nombreLignesActes><totalNetProduitsPriseEnChargeAMC>" + total +
         "</totalNetProduitsPriseEnChargeAMC>";
    for (const Champs& ligne : lignes) {
        x += "<Acte>" + elements(ligne) + "</Acte>";
    }
    return x + "</donneesActe></BelvaneClassicII>\n";
}

std::string reponse_creation(const std::string& numero, const std::vector<Champs>& actes,
                             const std::string& totaux) {
    std::string d = "<donneesFacture>";
    if (!numero.empty()) {
        d += "<numeroFacture>" + numero + "</numeroFacture>";
    }
    d += "<typeFlux>FSE</typeFlux><natureAssurance>AS</natureAssurance>"
         "<codeRegime>01</codeRegime><codeCaisse>131</codeCaisse><codeCentre>0000</codeCentre>"
         "<mutuelle><numeroMutuelle>12345678</numeroMutuelle></mutuelle><typeTP>AMO</typeTP>"
         "<typeCertification>Sesam-Vitale</typeCertification>";
    d += totaux.empty() ? "<montantPSTotalAMO>0000030</montantPSTotalAMO>"
                          "<montantPSTotalAMC>0015000</montantPSTotalAMC>"
                          "<montantPSTotalHono>0031100</montantPSTotalHono>"
                          "<montantPSTotalPartPatient>0016070</montantPSTotalPartPatient>"
                        : totaux;
    for (const Champs& acte : actes) {
        d += "<acte>";
        for (const auto& [chemin, valeur] : acte) {
            if (chemin.starts_with("codeAffine/")) {
                d += "<codeAffine><" + chemin.substr(11) + ">" + valeur + "</" + chemin.substr(11) +
                     "></codeAffine>";
            } else {
                d += "<" + chemin + ">" + valeur + "</" + chemin + ">";
            }
        }
        d += "</acte>";
    }
    return reponse("f_CreerFacture", "0", "", d + "</donneesFacture>");
}

std::string donnees_envoi(const std::vector<FactureEnvoyee>& factures) {
    std::string d = "<donneesEnvoi>";
    for (const FactureEnvoyee& f : factures) {
        d += "<lot><donneesFacture><numeroLot>" + f.lot + "</numeroLot><numeroFacture>" + f.numero +
             "</numeroFacture><codeRegime>" + f.regime + "</codeRegime><codeCaisse>" + f.caisse +
             "</codeCaisse><codeCentre>" + f.centre +
             "</codeCentre><organismeDestinataire><libelle>" + f.libelle + "</libelle><adresse>" +
             f.adresse +
             "</adresse><codePostal>75001</codePostal>"
             "<commune>" +
             f.commune +
             "</commune><cedex>CEDEX 01</cedex>"
             "<telephone>0102030405</telephone><fax>0102030406</fax>"
             "</organismeDestinataire></donneesFacture></lot>";
    }
    return d + "</donneesEnvoi>";
}

}  // namespace bb
