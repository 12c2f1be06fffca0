#include "sim/cartes_demo.h"

#include <array>
#include <cstdint>

namespace sv140::sim {

std::string cle_nir(const std::string& nir) {
    if (nir.size() != 13) {
        return {};
    }
    std::uint64_t n = 0;
    for (char c : nir) {
        if (c < '0' || c > '9') {
            return {};
        }
        n = n * 10 + static_cast<std::uint64_t>(c - '0');
    }
    const auto cle = 97 - n % 97;
    return (cle < 10 ? "0" : "") + std::to_string(cle);
}

namespace {

using Periode = std::pair<std::string, std::string>;

struct Ald {
    std::string debut, fin, code_ald, code_situation;
};

// Every member has an initializer so that each demo person names only what sets it
// apart.
struct Personne {
    std::string nom_usage{}, nom_patronymique{}, prenom{};
    std::array<std::string, 5> adresse{};
    std::string nir_certifie{};  // own NIR of a beneficiary who has one
    std::string naissance{}, rang = "1", qualite = "00";
    std::string service = "00", debut_service{}, fin_service{};
    std::vector<Periode> amo{};
    std::vector<Ald> ald{};
    std::string mutuelle{};  // MUT_NUM
    std::vector<Periode> droits_mutuelle{};
    std::string complementaire{}, adherent{};  // COMP/CPL_NU2, COMP/ADH_NUM
    Periode droits_complementaire{};
};

Element beneficiaire(const Personne& p) {
    Element b("Beneficiaire");
    b.ajouter("NOM_USG", p.nom_usage);
    b.ajouter("NOM_PAT", p.nom_patronymique);
    b.ajouter("PRM_USG", p.prenom);
    for (std::size_t i = 0; i < p.adresse.size(); ++i) {
        b.ajouter("ADR_LN" + std::to_string(i + 1), p.adresse[i]);
    }
    b.ajouter("NIR_CER", p.nir_certifie);
    b.ajouter("CLE_CER", cle_nir(p.nir_certifie));
    b.ajouter("DAT_CER", p.nir_certifie.empty() ? "" : "20190612");
    b.ajouter("NAI_BEN", p.naissance);
    b.ajouter("BEN_RNG", p.rang);
    b.ajouter("BEN_QLT", p.qualite);
    b.ajouter("COD_SEB", p.service);
    b.ajouter("DEB_SEB", p.debut_service);
    b.ajouter("FIN_SEB", p.fin_service);

    Element& amo = b.ajouter("DRT_AMO");
    amo.ajouter("NB_DRT_AMO", std::to_string(p.amo.size()));
    for (const auto& [debut, fin] : p.amo) {
        amo.ajouter("DAMO_DEB", debut);
        amo.ajouter("DAMO_FIN", fin);
    }
    Element& cc = b.ajouter("DRT_CC");
    cc.ajouter("NB_DRT_CC", std::to_string(p.ald.size()));
    for (const Ald& a : p.ald) {
        cc.ajouter("CC_DEB", a.debut);
        cc.ajouter("CC_FIN", a.fin);
        cc.ajouter("COD_ALD", a.code_ald);
        cc.ajouter("COD_SITU", a.code_situation);
    }

    const bool avec_mutuelle = !p.mutuelle.empty();
    Element& mut = b.ajouter("MUT");
    mut.ajouter("MUT_NUM", p.mutuelle);
    mut.ajouter("CONT_MUT", avec_mutuelle ? "0" : "");
    mut.ajouter("TRT_MUT", avec_mutuelle ? "1" : "");
    mut.ajouter("TYP_MUT", avec_mutuelle ? "02" : "");
    mut.ajouter("SER_MUT", avec_mutuelle ? "0" : "");
    mut.ajouter("IND_STS", avec_mutuelle ? "1" : "");
    Element& drt_mut = mut.ajouter("DRT_MUT");
    drt_mut.ajouter("NB_DRT_MUT", std::to_string(p.droits_mutuelle.size()));
    for (const auto& [debut, fin] : p.droits_mutuelle) {
        drt_mut.ajouter("DMUT_DEB", debut);
        drt_mut.ajouter("DMUT_FIN", fin);
    }

    const bool avec_complementaire = !p.complementaire.empty();
    Element& comp = b.ajouter("COMP");
    comp.ajouter("CPL_NU2", p.complementaire);
    comp.ajouter("CPL_EDI", avec_complementaire ? "1" : "");
    comp.ajouter("ADH_NUM", p.adherent);
    comp.ajouter("TRT_AMC", avec_complementaire ? "1" : "");
    comp.ajouter("CPL_DEB", p.droits_complementaire.first);
    comp.ajouter("CPL_FIN", p.droits_complementaire.second);
    comp.ajouter("ROU_FLX", avec_complementaire ? "0" : "");
    comp.ajouter("IDT_HOT", "");
    comp.ajouter("NOM_DOM", avec_complementaire ? "tp-complementaire.example" : "");
    comp.ajouter("IND_STS_AMC", avec_complementaire ? "1" : "");
    comp.ajouter("TYP_SER", avec_complementaire ? "SP" : "");
    comp.ajouter("SER_CRT", "");
    comp.ajouter("RUF_COMP", "");
    return b;
}

struct Assure {
    std::string serie{}, nir{}, regime = "01", caisse{}, centre{};
    std::vector<Personne> beneficiaires{};
};

Element carte(const Assure& a) {
    Element c("contexteCVitale");
    c.ajouter("TYP_CART", "0");
    c.ajouter("VIT_NSER", a.serie);
    Element& adm = c.ajouter("ADM");
    adm.ajouter("FDV_CRT", "20301231");
    adm.ajouter("RUF1_ADM", "");
    adm.ajouter("RUF2_ADM", "");
    c.ajouter("NIR_ASS", a.nir);
    c.ajouter("CLE_ASS", cle_nir(a.nir));
    c.ajouter("RGG_COD", a.regime);
    c.ajouter("RTT_CAI", a.caisse);
    c.ajouter("RTT_UGE", a.centre);
    c.ajouter("COD_GES", "10");
    c.ajouter("RUF_FAM", "");
    c.ajouter("COD_SEF", "");
    c.ajouter("DEB_SEF", "");
    c.ajouter("FIN_SEF", "");
    Element& at = c.ajouter("AT");
    for (const char* suffixe : {"", "1", "2"}) {
        at.ajouter(std::string("ORG_GE") + suffixe, "");
        at.ajouter(std::string("GST_CD") + suffixe, "");
        at.ajouter(std::string("IDT_AT") + suffixe, "");
    }
    c.ajouter("NB_BEN", std::to_string(a.beneficiaires.size()));
    for (const Personne& p : a.beneficiaires) {
        c.ajouter_arbre(beneficiaire(p));
    }
    return c;
}

const std::vector<Periode> kDroitsOuverts = {{"20240101", "20261231"}};

Assure famille() {
    Assure a{.serie = "0412345678", .nir = "1780575115042", .caisse = "751", .centre = "0441"};
    Personne assure{.nom_usage = "MARTIN",
                    .nom_patronymique = "MARTIN",
                    .prenom = "Julien",
                    .adresse = {"", "", "14 AVENUE DES LILAS", "", "75020 PARIS"},
                    .naissance = "19780512",
                    .amo = kDroitsOuverts,
                    .mutuelle = "44123456",
                    .droits_mutuelle = kDroitsOuverts};
    Personne conjointe = assure;
    conjointe.nom_patronymique = "DURAND";
    conjointe.prenom = "Sophie";
    conjointe.nir_certifie = "2810369123087";
    conjointe.naissance = "19810322";
    conjointe.qualite = "02";
    Personne jumelle = assure;
    jumelle.prenom = "Léa";
    jumelle.naissance = "20120914";
    jumelle.qualite = "06";
    Personne jumeau = jumelle;
    jumeau.prenom = "Hugo";
    jumeau.rang = "2";
    a.beneficiaires = {assure, conjointe, jumelle, jumeau};
    return a;
}

Assure ald() {
    Assure a{.serie = "0455501234", .nir = "1520713055012", .caisse = "131", .centre = "0201"};
    a.beneficiaires = {Personne{
        .nom_usage = "ROUSSEAU",
        .nom_patronymique = "ROUSSEAU",
        .prenom = "Bernard",
        .adresse = {"", "", "3 CHEMIN DU MOULIN", "", "13100 AIX EN PROVENCE"},
        .naissance = "19520708",
        .amo = kDroitsOuverts,
        .ald = {{"20190301", "20290228", "1", "01"}, {"20220101", "20261231", "1", "04"}},
    }};
    return a;
}

Assure periodes() {
    Assure a{.serie = "0466611111", .nir = "2690144109115", .caisse = "441", .centre = "0110"};
    Personne p{.nom_usage = "LAMBERT",
               .nom_patronymique = "LAMBERT",
               .prenom = "Nadia",
               .adresse = {"", "", "8 RUE DU PORT", "", "44000 NANTES"},
               .naissance = "19690117"};
    for (int annee = 2015; annee <= 2025; ++annee) {
        p.amo.emplace_back(std::to_string(annee) + "0101", std::to_string(annee) + "1231");
    }
    a.beneficiaires = {p};
    return a;
}

Assure accents() {
    Assure a{.serie = "0477722222", .nir = "2850633063021", .caisse = "331", .centre = "0512"};
    Personne assuree{.nom_usage = "D'ARTAGNAN-LEFÈVRE",
                     .nom_patronymique = "LEFÈVRE",
                     .prenom = "Zoé \"Zaza\"",
                     .adresse = {"Bât. C ; esc. 2 ; porte 5", "Résidence [Les Tilleuls]",
                                 "12 bis rue de l'Église #3", "", "33000 BORDEAUX"},
                     .naissance = "19850614",
                     .amo = kDroitsOuverts};
    Personne conjoint = assuree;
    conjoint.nom_patronymique = "D'ARTAGNAN";
    conjoint.prenom = "Jérôme";
    conjoint.nir_certifie = "1830433063044";
    conjoint.naissance = "19830402";
    conjoint.qualite = "02";
    Personne enfant = assuree;
    enfant.nom_patronymique = "D'ARTAGNAN";
    enfant.prenom = "Noël";
    enfant.naissance = "20151225";
    enfant.qualite = "06";
    a.beneficiaires = {assuree, conjoint, enfant};
    return a;
}

Assure vide() {
    return Assure{.serie = "0488833333", .nir = "1900269387051", .caisse = "691", .centre = "0301"};
}

Assure douze() {
    Assure a{.serie = "0499944444", .nir = "1700359350017", .caisse = "591", .centre = "0808"};
    const std::array<std::pair<const char*, const char*>, 12> membres = {{
        {"Pierre", "19700310"},
        {"Marie", "19720825"},
        {"Thomas", "19940203"},
        {"Camille", "19951117"},
        {"Lucas", "19970609"},
        {"Emma", "19990421"},
        {"Louis", "20010130"},
        {"Chloé", "20030712"},
        {"Nathan", "20050928"},
        {"Manon", "20080305"},
        {"Gabriel", "20101019"},
        {"Inès", "20130627"},
    }};
    for (std::size_t i = 0; i < membres.size(); ++i) {
        Personne p{.nom_usage = "BERNARD",
                   .nom_patronymique = i == 1 ? "LEROY" : "BERNARD",
                   .prenom = membres[i].first,
                   .adresse = {"", "", "27 RUE NATIONALE", "", "59000 LILLE"},
                   .naissance = membres[i].second,
                   .qualite = i == 0 ? "00" : (i == 1 ? "02" : "06"),
                   .amo = kDroitsOuverts};
        a.beneficiaires.push_back(p);
    }
    return a;
}

Assure mutuelle() {
    Assure a{.serie = "0411155555", .nir = "1671167482009", .caisse = "671", .centre = "0101"};
    Personne assure{.nom_usage = "PETIT",
                    .nom_patronymique = "PETIT",
                    .prenom = "Marc",
                    .adresse = {"", "", "5 PLACE KLEBER", "", "67000 STRASBOURG"},
                    .naissance = "19671103",
                    .service = "13",
                    .debut_service = "20240101",
                    .fin_service = "20251231",
                    .amo = kDroitsOuverts,
                    .mutuelle = "67123450",
                    .droits_mutuelle = kDroitsOuverts};
    Personne conjointe = assure;
    conjointe.nom_patronymique = "WEBER";
    conjointe.prenom = "Anne";
    conjointe.nir_certifie = "2700467482031";
    conjointe.naissance = "19700419";
    conjointe.qualite = "02";
    conjointe.service = "00";
    conjointe.debut_service.clear();
    conjointe.fin_service.clear();
    conjointe.complementaire = "88123456";
    conjointe.adherent = "AD4455667";
    conjointe.droits_complementaire = {"20240101", "20251231"};
    a.beneficiaires = {assure, conjointe};
    return a;
}

Element situation(const std::string& numero, const std::string& raison_sociale,
                  const std::string& siret, const std::string& facturation,
                  const std::string& cle) {
    Element s("situation");
    s.ajouter("NUM_SIT", numero);
    s.ajouter("MODE_EXE", "0");
    s.ajouter("STAT_EXE", "1");
    s.ajouter("SECT_ACT", "31");
    s.ajouter("TYP_IDS", "3");
    s.ajouter("NUM_IDS", siret);
    s.ajouter("CLE_IDS", "");
    s.ajouter("RAIS_STR", raison_sociale);
    s.ajouter("NUM_IDFACPS", facturation);
    s.ajouter("CLE_IDFACPS", cle);
    s.ajouter("IDENT_REMP", "");
    s.ajouter("CLE_IDR", "");
    s.ajouter("COD_CONV", "1");
    s.ajouter("COD_SPEC", "28");
    s.ajouter("COD_Z_TAR", "30");
    s.ajouter("COD_Z_IK", "00");
    s.ajouter("COD_AGR1", "0");
    s.ajouter("COD_AGR2", "0");
    s.ajouter("COD_AGR3", "0");
    s.ajouter("H_SIGN_FSE", "1");
    s.ajouter("H_SIGN_LOT", "1");
    return s;
}

}  // namespace

Element cps_demo() {
    Element c("contextePS");
    c.ajouter("TYP_CPS", "0");
    c.ajouter("TYP_IDN", "0");
    c.ajouter("NUM_IDN", "991234567");
    c.ajouter("CLE_IDN", "6");
    c.ajouter("COD_CIV", "22");
    c.ajouter("NOM_PRAT", "GIRARD");
    c.ajouter("PNOM_PRAT", "Élodie");
    c.ajouter_arbre(situation("1", "OPTIQUE DU CENTRE", "99100123400018", "99100123", "1"));
    c.ajouter_arbre(situation("2", "LUNETTERIE DE L'HÔTEL DE VILLE - ANNEXE", "99100123400026",
                              "99100456", "5"));
    return c;
}

std::vector<std::pair<std::string, Element>> cartes_demo() {
    return {
        {"famille", carte(famille())},   {"ald", carte(ald())},   {"periodes", carte(periodes())},
        {"accents", carte(accents())},   {"vide", carte(vide())}, {"douze", carte(douze())},
        {"mutuelle", carte(mutuelle())},
    };
}

}  // namespace sv140::sim
