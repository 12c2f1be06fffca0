// The patient's Vitale card: the list of its beneficiaries for the host to choose from,
// the chosen beneficiary's card data and rights, and the card holder's name for invoices.
#include <array>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "cards/cartes.h"
#include "data/instructions.h"
#include "data/parametres.h"
#include "data/texte_sql.h"
#include "exchange/document.h"
#include "exchange/run.h"
#include "platform/encodage.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

constexpr const char* kContextes = "/ZRMESSAGE/resultat/donnees/contexteCVitale";
constexpr const char* kBeneficiaires = "/ZRMESSAGE/resultat/donnees/contexteCVitale/Beneficiaire";

// Both runs name the card reading as the failing operation: the host only knows that
// the card answer left by f_LireCVitale could not be read.
constexpr std::string_view kAppelant = "f_LireCVitale";

// The elements of a card node, read by their path below it. An element the middleware
// left out reads as "", so an incomplete card never stops the run.
Champs contexte_carte() {
    return {"TYP_CART",   "VIT_NSER",   "ADM/FDV_CRT", "ADM/RUF1_ADM", "ADM/RUF2_ADM",
            "NIR_ASS",    "CLE_ASS",    "RGG_COD",     "RTT_CAI",      "RTT_UGE",
            "COD_GES",    "RUF_FAM",    "COD_SEF",     "DEB_SEF",      "FIN_SEF",
            "AT/ORG_GE",  "AT/GST_CD",  "AT/IDT_AT",   "AT/ORG_GE1",   "AT/GST_CD1",
            "AT/IDT_AT1", "AT/ORG_GE2", "AT/GST_CD2",  "AT/IDT_AT2",   "NB_BEN"};
}

Champs beneficiaire_carte() {
    return {"NOM_USG",      "NOM_PAT",      "PRM_USG",          "ADR_LN1",      "ADR_LN2",
            "ADR_LN3",      "ADR_LN4",      "ADR_LN5",          "NIR_CER",      "CLE_CER",
            "DAT_CER",      "NAI_BEN",      "BEN_RNG",          "BEN_QLT",      "COD_SEB",
            "DEB_SEB",      "FIN_SEB",      "MUT/MUT_NUM",      "MUT/CONT_MUT", "MUT/TRT_MUT",
            "MUT/TYP_MUT",  "MUT/SER_MUT",  "MUT/IND_STS",      "COMP/CPL_NU2", "COMP/CPL_EDI",
            "COMP/ADH_NUM", "COMP/TRT_AMC", "COMP/CPL_DEB",     "COMP/CPL_FIN", "COMP/ROU_FLX",
            "COMP/IDT_HOT", "COMP/NOM_DOM", "COMP/IND_STS_AMC", "COMP/TYP_SER", "COMP/SER_CRT",
            "COMP/RUF_COMP"};
}

// The first `n` characters from the 1-based character position `debut`, as the host's
// Mid counts them.
std::string milieu(std::string_view texte, std::size_t debut, std::size_t n) {
    std::size_t saut = gauche_caracteres(texte, debut - 1).size();
    if (saut >= texte.size()) {
        return {};
    }
    return gauche_caracteres(texte.substr(saut), n);
}

// The mutual number the host files the beneficiary under: the complementary number
// when the card has one, else the mutual number, which the special regimes 12, 13 and
// 14 replace by their fixed numbers.
std::string numero_complementaire(const Champs& b) {
    std::string mutuelle = b("MUT/MUT_NUM");
    double regime = Val(b("COD_SEB"));
    if (regime == 12) {
        mutuelle = "11111119";
    }
    if (regime == 13) {
        mutuelle = "22222228";
    }
    if (regime == 14) {
        mutuelle = "33333337";
    }
    if (!b("COMP/CPL_NU2").empty()) {
        return b("COMP/CPL_NU2");
    }
    return mutuelle;
}

// Year, month and day of a host date as the drivers give it ("YYYY-MM-DD", possibly
// followed by the time); all empty when the client has no birth date.
struct DateHote {
    std::string annee, mois, jour;
};

DateHote decouper_date(std::string_view texte) {
    if (texte.size() < 10 || texte[4] != '-' || texte[7] != '-') {
        return {};
    }
    return {std::string(texte.substr(0, 4)), std::string(texte.substr(5, 2)),
            std::string(texte.substr(8, 2))};
}

// The client the host placed in T_Etat_Civil for this card.
struct ClientHote {
    std::string numero = "0";
    std::string nir, cle;
    std::string date_naissance;  // as the card writes it: yyyymmdd
    std::string rang;
};

Statut lire_client(Connexion& hote, ClientHote& client) {
    auto rs = Premiere_Ligne(
        hote,
        "SELECT T_Etat_Civil.N°, T_Etat_Civil.[Sécurité sociale], T_Etat_Civil.[Date Naissance], "
        "T_Etat_Civil.RangNaissance, T_Etat_Civil.Divers FROM T_Etat_Civil;");
    if (!rs) {
        return rs.statut();
    }
    std::string divers;
    DateHote naissance;
    if (!rs->EOF_()) {
        client.numero = Nombre_SQL(rs->champ("N°").str());
        std::string secu = rs->champ("Sécurité sociale").str();
        std::size_t longueur = longueur_caracteres(secu);
        if (longueur > 2) {
            client.nir = gauche_caracteres(secu, longueur - 2);
            client.cle = secu.substr(client.nir.size());
        }
        naissance = decouper_date(rs->champ("Date Naissance").str());
        client.rang = Trim(rs->champ("RangNaissance").str());
        divers = rs->champ("Divers").str();
    }
    if (divers.empty()) {
        divers = "*";
    }
    // "!" + day + month: the card's own birth date when no calendar has it (day 31 of
    // month 13...), which the host could not store in its date column.
    if (divers[0] == '!') {
        client.date_naissance = naissance.annee + milieu(divers, 4, 2) + milieu(divers, 2, 2);
    } else {
        client.date_naissance = naissance.annee + naissance.mois + naissance.jour;
    }
    return {};
}

// The key of the card row of one insured and beneficiary, 0 when there is none.
Resultat<double> chercher_carte(Connexion& pont, const ClientHote& client) {
    auto rs = Premiere_Ligne(
        pont,
        "SELECT T_InfosCarteVitale.Info_CV_ID, T_InfosCarteVitale.Info_CV_NIR_ASS, "
        "T_InfosCarteVitale.Info_CV_CLE_ASS, T_InfosCarteVitale.Info_CV_NAI_BEN, "
        "T_InfosCarteVitale.Info_CV_BEN_RNG From T_InfosCarteVitale "
        "WHERE (((T_InfosCarteVitale.Info_CV_NIR_ASS)='" +
            Texte_SQL(client.nir) + "') AND ((T_InfosCarteVitale.Info_CV_CLE_ASS)='" +
            Texte_SQL(client.cle) + "') AND ((T_InfosCarteVitale.Info_CV_NAI_BEN)='" +
            Texte_SQL(client.date_naissance) + "') AND ((T_InfosCarteVitale.Info_CV_BEN_RNG)='" +
            Texte_SQL(client.rang) + "'));");
    if (!rs) {
        return rs.statut();
    }
    return rs->EOF_() ? 0.0 : rs->champ("Info_CV_ID").nombre();
}

// One repeated rights element of the beneficiary: nine slots, further periods dropped.
using Creneaux = std::array<std::string, 9>;

struct Droits {
    double nombre_amo = 0, nombre_cc = 0, nombre_mut = 0;
    Creneaux damo_deb, damo_fin;
    Creneaux cc_deb, cc_fin, cod_ald, cod_situ;
    Creneaux dmut_deb, dmut_fin;
};

double lire_nombre(const XmlDocument& doc, const std::string& chemin) {
    auto noeuds = doc.selectionner(chemin);
    return noeuds.empty() ? 0 : Val(noeuds.back().texte());
}

Creneaux lire_creneaux(const XmlDocument& doc, const std::string& chemin, double nombre) {
    Creneaux creneaux{};
    if (nombre > 0) {
        auto noeuds = doc.selectionner(chemin);
        for (std::size_t i = 0; i < noeuds.size() && i < creneaux.size(); ++i) {
            creneaux[i] = noeuds[i].texte();
        }
    }
    return creneaux;
}

Droits lire_droits(const XmlDocument& doc, const std::string& beneficiaire) {
    Droits d;
    d.nombre_amo = lire_nombre(doc, beneficiaire + "/DRT_AMO/NB_DRT_AMO");
    d.damo_deb = lire_creneaux(doc, beneficiaire + "/DRT_AMO/DAMO_DEB", d.nombre_amo);
    d.damo_fin = lire_creneaux(doc, beneficiaire + "/DRT_AMO/DAMO_FIN", d.nombre_amo);
    d.nombre_cc = lire_nombre(doc, beneficiaire + "/DRT_CC/NB_DRT_CC");
    d.cc_deb = lire_creneaux(doc, beneficiaire + "/DRT_CC/CC_DEB", d.nombre_cc);
    d.cc_fin = lire_creneaux(doc, beneficiaire + "/DRT_CC/CC_FIN", d.nombre_cc);
    d.cod_ald = lire_creneaux(doc, beneficiaire + "/DRT_CC/COD_ALD", d.nombre_cc);
    d.cod_situ = lire_creneaux(doc, beneficiaire + "/DRT_CC/COD_SITU", d.nombre_cc);
    d.nombre_mut = lire_nombre(doc, beneficiaire + "/MUT/DRT_MUT/NB_DRT_MUT");
    d.dmut_deb = lire_creneaux(doc, beneficiaire + "/MUT/DRT_MUT/DMUT_DEB", d.nombre_mut);
    d.dmut_fin = lire_creneaux(doc, beneficiaire + "/MUT/DRT_MUT/DMUT_FIN", d.nombre_mut);
    return d;
}

// ", T_InfosCarteVitale.Info_CV_<colonne>_<n> = '<valeur>'" for one slot.
std::string creneau(const char* colonne, std::size_t i, const Creneaux& valeurs) {
    return std::string(", T_InfosCarteVitale.Info_CV_") + colonne + std::to_string(i + 1) + " = '" +
           Texte_SQL(valeurs[i]) + "'";
}

Statut ecrire_droits(Connexion& pont, const Droits& d, double identifiant) {
    std::string sql = "UPDATE T_InfosCarteVitale SET T_InfosCarteVitale.Info_CV_NB_DRT_AMO = " +
                      Nombre_SQL(d.nombre_amo);
    for (std::size_t i = 0; i < 9; ++i) {
        sql += creneau("DAMO_DEB_", i, d.damo_deb);
    }
    for (std::size_t i = 0; i < 9; ++i) {
        sql += creneau("DAMO_FIN_", i, d.damo_fin);
    }
    sql += ", T_InfosCarteVitale.Info_CV_NB_DRT_CC = " + Nombre_SQL(d.nombre_cc);
    for (std::size_t i = 0; i < 9; ++i) {
        sql += creneau("CC_DEB_", i, d.cc_deb);
        sql += creneau("CC_FIN_", i, d.cc_fin);
        sql += creneau("COD_ALD_", i, d.cod_ald);
        sql += creneau("COD_SITU_", i, d.cod_situ);
    }
    sql += ", T_InfosCarteVitale.Info_CV_NB_DRT_MUT = " + Nombre_SQL(d.nombre_mut);
    for (std::size_t i = 0; i < 9; ++i) {
        sql += creneau("DMUT_DEB_", i, d.dmut_deb);
    }
    for (std::size_t i = 0; i < 9; ++i) {
        sql += creneau("DMUT_FIN_", i, d.dmut_fin);
    }
    sql += " WHERE (((T_InfosCarteVitale.Info_CV_ID)=" + Nombre_SQL(identifiant) + "));";
    return pont.Execute(sql);
}

Statut inserer_carte(Connexion& pont, const Champs& C, const Champs& B, const ClientHote& p) {
    return pont.Execute(
        "INSERT INTO T_InfosCarteVitale ( Info_CV_TYP_CART, Info_ETC_ID_FK, Info_CV_VIT_NSER, "
        "Info_CV_FDV_CRT, Info_CV_RUF1_ADM, Info_CV_RUF2_ADM, Info_CV_RUF_ADM, Info_CV_TYP_IDEN, "
        "Info_CV_NIR_ASS, Info_CV_CLE_ASS, Info_CV_RGG_COD, Info_CV_RTT_CAI, Info_CV_RTT_UGE, "
        "Info_CV_COD_GES, Info_CV_RUF_FAM, Info_CV_COD_SEF, Info_CV_DEB_SEF, Info_CV_FIN_SEF, "
        "Info_CV_ORG_GE, Info_CV_GST_CD, Info_CV_IDT_AT, Info_CV_ORG_GE1, Info_CV_GST_CD1, "
        "Info_CV_IDT_AT1, Info_CV_ORG_GE2, Info_CV_GST_CD2, Info_CV_IDT_AT2, Info_CV_NB_BENEF, "
        "Info_CV_NOM_USG, Info_CV_NOM_PAT, Info_CV_PRM_USG, Info_CV_ADR_LN1, Info_CV_ADR_LN2, "
        "Info_CV_ADR_LN3, Info_CV_ADR_LN4, Info_CV_ADR_LN5, Info_CV_NIR_CER, Info_CV_CLE_CER, "
        "Info_CV_DAT_CER, Info_CV_NAI_BEN, Info_CV_BEN_RNG, Info_CV_BEN_QLT, Info_CV_COD_SEB, "
        "Info_CV_DEB_SEB, Info_CV_FIN_SEB, Info_CV_RUF_BEN, Info_CV_MUT_NUM, Info_CV_CONT_MUT, "
        "Info_CV_TRT_MUT, Info_CV_TYP_MUT, Info_CV_SER_MUT, Info_CV_IND_STS, Info_CV_CPL_NU2, "
        "Info_CV_CPL_EDI, Info_CV_ADH_NUM, Info_CV_TRT_AMC, Info_CV_CPL_DEB, Info_CV_CPL_FIN, "
        "Info_CV_ROU_FLX, Info_CV_ID_HOT, Info_CV_NOM_DOM, Info_CV_IND_STS_AMC, Info_CV_TYP_SER, "
        "Info_CV_SER_CRT, Info_CV_RUF_COMP )"
        "SELECT '" +
        Texte_SQL(C("TYP_CART")) + "' AS TYP_CART, " + p.numero + " AS Info_ETC_ID_FK, '" +
        Texte_SQL(C("VIT_NSER")) + " ' AS VIT_NSER, '" + Texte_SQL(C("ADM/FDV_CRT")) +
        "' AS FDV_CRT, '" + Texte_SQL(C("ADM/RUF1_ADM")) + "' AS RUF1_ADM, '" +
        Texte_SQL(C("ADM/RUF2_ADM")) + "' AS RUF2_ADM, '' AS RUF_ADM, '' AS TYP_IDEN, '" +
        Texte_SQL(p.nir) + "' AS NIR_ASS, '" + Texte_SQL(p.cle) + "' AS CLE_ASS, '" +
        Texte_SQL(C("RGG_COD")) + "' AS RGG_COD, '" + Texte_SQL(C("RTT_CAI")) + "' AS RTT_CAI, '" +
        Texte_SQL(C("RTT_UGE")) + "' AS RTT_UGE, '" + Texte_SQL(C("COD_GES")) + "' AS COD_GES, '" +
        Texte_SQL(C("RUF_FAM")) + "' AS RUF_FAM, '" + Texte_SQL(C("COD_SEF")) + "' AS COD_SEF, '" +
        Texte_SQL(C("DEB_SEF")) + "' AS DEB_SEF, '" + Texte_SQL(C("FIN_SEF")) + "' AS FIN_SEF, '" +
        Texte_SQL(C("AT/ORG_GE")) + "' AS ORG_GE, '" + Texte_SQL(C("AT/GST_CD")) +
        "' AS GST_CD, '" + Texte_SQL(C("AT/IDT_AT")) + "' AS IDT_AT, '" +
        Texte_SQL(C("AT/ORG_GE1")) + "' AS ORG_GE1, '" + Texte_SQL(C("AT/GST_CD1")) +
        "' AS GST_CD1, '" + Texte_SQL(C("AT/IDT_AT1")) + "' AS IDT_AT1, '" +
        Texte_SQL(C("AT/ORG_GE2")) + "' AS ORG_GE2, '" + Texte_SQL(C("AT/GST_CD2")) +
        "' AS GST_CD2, '" + Texte_SQL(C("AT/IDT_AT2")) + "' AS IDT_AT2, '" +
        Texte_SQL(C("NB_BEN")) + "' AS NB_BENEF, '" + Texte_Hote_SQL(B("NOM_USG")) +
        "' AS NOM_USG, '" + Texte_Hote_SQL(B("NOM_PAT")) + "' AS NOM_PAT, '" +
        Texte_Hote_SQL(B("PRM_USG")) + "' AS PRM_USG, '" + Texte_Hote_SQL(B("ADR_LN1")) +
        "' AS ADR_LN1, '" + Texte_Hote_SQL(B("ADR_LN2")) + "' AS ADR_LN2, '" +
        Texte_Hote_SQL(B("ADR_LN3")) + "' AS ADR_LN3, '" + Texte_Hote_SQL(B("ADR_LN4")) +
        "' AS ADR_LN4, '" + Texte_Hote_SQL(B("ADR_LN5")) + "' AS ADR_LN5, '" +
        Texte_SQL(B("NIR_CER")) + "' AS NIR_CER, '" + Texte_SQL(B("CLE_CER")) + "' AS CLE_CER, '" +
        Texte_SQL(B("DAT_CER")) + "' AS DAT_CER, '" + Texte_SQL(B("NAI_BEN")) + "' AS NAI_BEN, '" +
        Texte_SQL(B("BEN_RNG")) + "' AS BEN_RNG, '" + Texte_SQL(B("BEN_QLT")) + "' AS BEN_QLT, '" +
        Texte_SQL(B("COD_SEB")) + "' AS COD_SEB, '" + Texte_SQL(B("DEB_SEB")) + "' AS DEB_SEB, '" +
        Texte_SQL(B("FIN_SEB")) + "' AS FIN_SEB, '' AS RUF_BEN, '" + Texte_SQL(B("MUT/MUT_NUM")) +
        "' AS MUT_NUM, '" + Texte_SQL(B("MUT/CONT_MUT")) + "' AS CONT_MUT, '" +
        Texte_SQL(B("MUT/TRT_MUT")) + "' AS TRT_MUT, '" + Texte_SQL(B("MUT/TYP_MUT")) +
        "' AS TYP_MUT, '" + Texte_SQL(B("MUT/SER_MUT")) + "' AS SER_MUT, '" +
        Texte_SQL(B("MUT/IND_STS")) + "' AS IND_STS, '" + Texte_SQL(B("COMP/CPL_NU2")) +
        "' AS CPL_NU2, '" + Texte_SQL(B("COMP/CPL_EDI")) + "' AS CPL_EDI, '" +
        Texte_SQL(B("COMP/ADH_NUM")) + "' AS ADH_NUM, '" + Texte_SQL(B("COMP/TRT_AMC")) +
        "' AS TRT_AMC, '" + Texte_SQL(B("COMP/CPL_DEB")) + "' AS CPL_DEB, '" +
        Texte_SQL(B("COMP/CPL_FIN")) + "' AS CPL_FIN, '" + Texte_SQL(B("COMP/ROU_FLX")) +
        "' AS ROU_FLX, '' AS ID_HOT, '" + Texte_Hote_SQL(B("COMP/NOM_DOM")) + "' AS NOM_DOM, '" +
        Texte_SQL(B("COMP/IND_STS_AMC")) + "' AS IND_STS_AMC, '" + Texte_SQL(B("COMP/TYP_SER")) +
        "' AS TYP_SER, '" + Texte_SQL(B("COMP/SER_CRT")) + "' AS SER_CRT, '" +
        Texte_Hote_SQL(B("COMP/RUF_COMP")) + "' AS RUF_COMP ");
}

Statut mettre_a_jour_carte(Connexion& pont, const Champs& C, const Champs& B, const ClientHote& p,
                           double identifiant) {
    return pont.Execute(
        "UPDATE T_InfosCarteVitale SET T_InfosCarteVitale.Info_ETC_ID_FK = " + p.numero +
        ", T_InfosCarteVitale.Info_CV_TYP_CART = '" + Texte_SQL(C("TYP_CART")) +
        "', T_InfosCarteVitale.Info_CV_VIT_NSER = '" + Texte_SQL(C("VIT_NSER")) +
        "', T_InfosCarteVitale.Info_CV_FDV_CRT = '" + Texte_SQL(C("ADM/FDV_CRT")) +
        "', T_InfosCarteVitale.Info_CV_RUF1_ADM = '" + Texte_SQL(C("ADM/RUF1_ADM")) +
        "', T_InfosCarteVitale.Info_CV_RUF2_ADM = '" + Texte_SQL(C("ADM/RUF2_ADM")) +
        "', T_InfosCarteVitale.Info_CV_RUF_ADM = '"
        "', T_InfosCarteVitale.Info_CV_TYP_IDEN = '"
        "', T_InfosCarteVitale.Info_CV_NIR_ASS = '" +
        Texte_SQL(p.nir) + "', T_InfosCarteVitale.Info_CV_CLE_ASS = '" + Texte_SQL(p.cle) +
        "', T_InfosCarteVitale.Info_CV_RGG_COD = '" + Texte_SQL(C("RGG_COD")) +
        "', T_InfosCarteVitale.Info_CV_RTT_CAI = '" + Texte_SQL(C("RTT_CAI")) +
        "', T_InfosCarteVitale.Info_CV_RTT_UGE = '" + Texte_SQL(C("RTT_UGE")) +
        "', T_InfosCarteVitale.Info_CV_COD_GES = '" + Texte_SQL(C("COD_GES")) +
        "', T_InfosCarteVitale.Info_CV_RUF_FAM = '" + Texte_SQL(C("RUF_FAM")) +
        "', T_InfosCarteVitale.Info_CV_COD_SEF = '" + Texte_SQL(C("COD_SEF")) +
        "', T_InfosCarteVitale.Info_CV_DEB_SEF = '" + Texte_SQL(C("DEB_SEF")) +
        "', T_InfosCarteVitale.Info_CV_FIN_SEF = '" + Texte_SQL(C("FIN_SEF")) +
        "', T_InfosCarteVitale.Info_CV_ORG_GE = '" + Texte_SQL(C("AT/ORG_GE")) +
        "', T_InfosCarteVitale.Info_CV_GST_CD = '" + Texte_SQL(C("AT/GST_CD")) +
        "', T_InfosCarteVitale.Info_CV_IDT_AT = '" + Texte_SQL(C("AT/IDT_AT")) +
        "', T_InfosCarteVitale.Info_CV_ORG_GE1 = '" + Texte_SQL(C("AT/ORG_GE1")) +
        "', T_InfosCarteVitale.Info_CV_GST_CD1 = '" + Texte_SQL(C("AT/GST_CD1")) +
        "', T_InfosCarteVitale.Info_CV_IDT_AT1 = '" + Texte_SQL(C("AT/IDT_AT1")) +
        "', T_InfosCarteVitale.Info_CV_ORG_GE2 = '" + Texte_SQL(C("AT/ORG_GE2")) +
        "', T_InfosCarteVitale.Info_CV_GST_CD2 = '" + Texte_SQL(C("AT/GST_CD2")) +
        "', T_InfosCarteVitale.Info_CV_IDT_AT2 = '" + Texte_SQL(C("AT/IDT_AT2")) +
        "', T_InfosCarteVitale.Info_CV_NB_BENEF = '" + Texte_SQL(C("NB_BEN")) +
        "', T_InfosCarteVitale.Info_CV_NOM_USG = '" + Texte_Hote_SQL(B("NOM_USG")) +
        "', T_InfosCarteVitale.Info_CV_NOM_PAT = '" + Texte_Hote_SQL(B("NOM_PAT")) +
        "', T_InfosCarteVitale.Info_CV_PRM_USG = '" + Texte_Hote_SQL(B("PRM_USG")) +
        "', T_InfosCarteVitale.Info_CV_ADR_LN1 = '" + Texte_Hote_SQL(B("ADR_LN1")) +
        "', T_InfosCarteVitale.Info_CV_ADR_LN2 = '" + Texte_Hote_SQL(B("ADR_LN2")) +
        "', T_InfosCarteVitale.Info_CV_ADR_LN3 = '" + Texte_Hote_SQL(B("ADR_LN3")) +
        "', T_InfosCarteVitale.Info_CV_ADR_LN4 = '" + Texte_Hote_SQL(B("ADR_LN4")) +
        "', T_InfosCarteVitale.Info_CV_ADR_LN5 = '" + Texte_Hote_SQL(B("ADR_LN5")) +
        "', T_InfosCarteVitale.Info_CV_NIR_CER = '" + Texte_SQL(B("NIR_CER")) +
        "', T_InfosCarteVitale.Info_CV_CLE_CER = '" + Texte_SQL(B("CLE_CER")) +
        "', T_InfosCarteVitale.Info_CV_DAT_CER = '" + Texte_SQL(B("DAT_CER")) +
        "', T_InfosCarteVitale.Info_CV_NAI_BEN = '" + Texte_SQL(B("NAI_BEN")) +
        "', T_InfosCarteVitale.Info_CV_BEN_RNG = '" + Texte_SQL(B("BEN_RNG")) +
        "', T_InfosCarteVitale.Info_CV_BEN_QLT = '" + Texte_SQL(B("BEN_QLT")) +
        "', T_InfosCarteVitale.Info_CV_COD_SEB = '" + Texte_SQL(B("COD_SEB")) +
        "', T_InfosCarteVitale.Info_CV_DEB_SEB = '" + Texte_SQL(B("DEB_SEB")) +
        "', T_InfosCarteVitale.Info_CV_FIN_SEB = '" + Texte_SQL(B("FIN_SEB")) +
        "', T_InfosCarteVitale.Info_CV_RUF_BEN = '"
        "', T_InfosCarteVitale.Info_CV_MUT_NUM = '" +
        Texte_SQL(B("MUT/MUT_NUM")) + "', T_InfosCarteVitale.Info_CV_CONT_MUT = '" +
        Texte_SQL(B("MUT/CONT_MUT")) + "', T_InfosCarteVitale.Info_CV_TRT_MUT = '" +
        Texte_SQL(B("MUT/TRT_MUT")) + "', T_InfosCarteVitale.Info_CV_TYP_MUT = '" +
        Texte_SQL(B("MUT/TYP_MUT")) + "', T_InfosCarteVitale.Info_CV_SER_MUT = '" +
        Texte_SQL(B("MUT/SER_MUT")) + "', T_InfosCarteVitale.Info_CV_IND_STS = '" +
        Texte_SQL(B("MUT/IND_STS")) + "', T_InfosCarteVitale.Info_CV_CPL_NU2 = '" +
        Texte_SQL(B("COMP/CPL_NU2")) + "', T_InfosCarteVitale.Info_CV_CPL_EDI = '" +
        Texte_SQL(B("COMP/CPL_EDI")) + "', T_InfosCarteVitale.Info_CV_ADH_NUM = '" +
        Texte_SQL(B("COMP/ADH_NUM")) + "', T_InfosCarteVitale.Info_CV_TRT_AMC = '" +
        Texte_SQL(B("COMP/TRT_AMC")) + "', T_InfosCarteVitale.Info_CV_CPL_DEB = '" +
        Texte_SQL(B("COMP/CPL_DEB")) + "', T_InfosCarteVitale.Info_CV_CPL_FIN = '" +
        Texte_SQL(B("COMP/CPL_FIN")) + "', T_InfosCarteVitale.Info_CV_ROU_FLX = '" +
        Texte_SQL(B("COMP/ROU_FLX")) +
        "', T_InfosCarteVitale.Info_CV_ID_HOT = '"
        "', T_InfosCarteVitale.Info_CV_NOM_DOM = '" +
        Texte_Hote_SQL(B("COMP/NOM_DOM")) + "', T_InfosCarteVitale.Info_CV_IND_STS_AMC = '" +
        Texte_SQL(B("COMP/IND_STS_AMC")) + "', T_InfosCarteVitale.Info_CV_TYP_SER = '" +
        Texte_SQL(B("COMP/TYP_SER")) + "', T_InfosCarteVitale.Info_CV_SER_CRT = '" +
        Texte_SQL(B("COMP/SER_CRT")) + "', T_InfosCarteVitale.Info_CV_RUF_COMP = '" +
        Texte_Hote_SQL(B("COMP/RUF_COMP")) + "' " +
        "WHERE (((T_InfosCarteVitale.Info_CV_ID)=" + Nombre_SQL(identifiant) + "));");
}

}  // namespace

Statut Stocker_Liste_Beneficiaires(Run& run) {
    auto doc = Charger_Reponse(run, kAppelant);
    if (!doc) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    Connexion& hote = run.bases().hote;
    if (Statut s = hote.Execute(
            "DELETE DISTINCTROW [Sélection Verres].[Nom du Verre] FROM [Sélection Verres];");
        !s) {
        return s;
    }

    Champs contexte = contexte_carte();
    contexte.lire(*doc, kContextes);
    std::string nir = Trim(contexte("NIR_ASS")) + Trim(contexte("CLE_ASS"));
    std::string caisse =
        Trim(contexte("RGG_COD")) + Trim(contexte("RTT_CAI")) + Trim(contexte("RTT_UGE"));
    nir = gauche_caracteres(nir, 15);

    Champs b = beneficiaire_carte();
    for (const XmlNoeud& noeud : doc->selectionner(kBeneficiaires)) {
        b.lire(noeud);
        // The host's column takes 50 characters; the first name goes whole, as the
        // host has always received it.
        std::string nom = gauche_caracteres(b("NOM_USG"), 50);
        Statut s = hote.Execute(
            "INSERT INTO [Sélection Verres] ( [Nom du Verre], Couleur, Diamètre, Fournisseur, "
            "Rubrique1, [Plage-Mini], Rubrique2, [Code Liaison Vidéo], Cod_Commande, "
            "Num_Adherent ) "
            "SELECT '" +
            Texte_Hote_SQL(nom) + "' AS NA, '" + Texte_Hote_SQL(b("PRM_USG")) + "' AS PA, " +
            Nombre_SQL(b("BEN_QLT")) + " AS QL, '" + Texte_SQL(nir) + "' AS NIR, '" +
            Texte_SQL(b("NAI_BEN")) + "' AS DN, " + Nombre_SQL(b("BEN_RNG")) + " AS RG, '" +
            Texte_SQL(caisse) + "' AS CC, '" + Texte_SQL(caisse) + "' AS CA, '" +
            Texte_SQL(numero_complementaire(b)) + "' AS NU, '" + Texte_SQL(b("COMP/ADH_NUM")) +
            "' as NH;");
        if (!s) {
            return s;
        }
    }
    return {};
}

Statut Stocker_Carte_Vitale(Run& run) {
    auto doc = Charger_Reponse(run, kAppelant);
    if (!doc) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    Connexions& bases = run.bases();

    ClientHote client;
    if (Statut s = lire_client(bases.hote, client); !s) {
        return s;
    }

    Champs contexte = contexte_carte();
    if (contexte.lire(*doc, kContextes) > 0) {
        client.nir = contexte("NIR_ASS");
        client.cle = contexte("CLE_ASS");
    }

    // The host's values go into the selection as XPath literals, so that a quote in
    // the client's notes or rank cannot change which beneficiary is taken.
    std::string beneficiaire = std::string(kBeneficiaires) +
                               "[NAI_BEN=" + xpath_litteral(client.date_naissance) +
                               "][BEN_RNG=" + xpath_litteral(client.rang) + "]";
    Champs b = beneficiaire_carte();
    if (b.lire(*doc, beneficiaire) == 0) {
        run.log("Aucun bénéficiaire de la carte ne correspond au client " + client.numero);
        return {};
    }
    Droits droits = lire_droits(*doc, beneficiaire);

    auto identifiant = chercher_carte(bases.pont, client);
    if (!identifiant) {
        return identifiant.statut();
    }
    Statut ecrit = *identifiant > 0
                       ? mettre_a_jour_carte(bases.pont, contexte, b, client, *identifiant)
                       : inserer_carte(bases.pont, contexte, b, client);
    // Older host databases have no rights columns.
    if (!ecrit || Lire_Version_Base(bases) < 3600) {
        return ecrit;
    }
    identifiant = chercher_carte(bases.pont, client);
    if (!identifiant) {
        return identifiant.statut();
    }
    return ecrire_droits(bases.pont, droits, *identifiant);
}

Statut Lire_Nom_Porteur(Run& run, const std::string& nir, const std::string& cle,
                        const std::string& date_naissance, const std::string& rang,
                        std::string& nom, std::string& prenom) {
    auto rs = Premiere_Ligne(
        run.bases().pont,
        "SELECT T_InfosCarteVitale.Info_CV_NOM_USG, T_InfosCarteVitale.Info_CV_PRM_USG From "
        "T_InfosCarteVitale WHERE (((T_InfosCarteVitale.Info_CV_NIR_ASS)='" +
            Texte_SQL(nir) + "') AND ((T_InfosCarteVitale.Info_CV_CLE_ASS)='" + Texte_SQL(cle) +
            "') AND ((T_InfosCarteVitale.Info_CV_NAI_BEN)='" + Texte_SQL(date_naissance) +
            "') AND ((T_InfosCarteVitale.Info_CV_BEN_RNG)='" + Texte_SQL(rang) + "'));");
    if (!rs) {
        return rs.statut();
    }
    if (!rs->EOF_()) {
        nom = rs->champ("Info_CV_NOM_USG").str();
        prenom = rs->champ("Info_CV_PRM_USG").str();
    }
    return {};
}

}  // namespace sv140
