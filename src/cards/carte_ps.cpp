// The professional's card and its situations, and the versions of the middleware and
// of the card reader: what the professional requests are later built from.
#include <string>
#include <string_view>

#include "cards/cartes.h"
#include "data/instructions.h"
#include "data/texte_sql.h"
#include "exchange/document.h"
#include "exchange/run.h"
#include "platform/encodage.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

// The company name as the host keeps it: apostrophes become blanks, 30 characters.
std::string raison_sociale(std::string texte) {
    for (char& c : texte) {
        if (c == '\'') {
            c = ' ';
        }
    }
    return gauche_caracteres(texte, 30);
}

Champs carte_ps() {
    return {"TYP_CPS", "TYP_IDN", "NUM_IDN", "CLE_IDN", "COD_CIV", "NOM_PRAT", "PNOM_PRAT"};
}

Statut ecrire_carte(Connexion& pont, const Champs& c) {
    return Inserer_Ou_Mettre_A_Jour(
        pont, "SELECT T_InfosCPS.Info_CPS_ID FROM T_InfosCPS WHERE (((T_InfosCPS.Info_CPS_ID)=1))",
        "INSERT INTO T_InfosCPS ( Info_CPS_ID, Info_CPS_TYP_CPS, Info_CPS_TYP_IDN, "
        "Info_CPS_NUM_IDN, Info_CPS_CLE_IDN, Info_CPS_COD_CIV, Info_CPS_NOM_PRAT, "
        "Info_CPS_PNOM_PRAT ) "
        "SELECT 1 AS Info_CPS_ID, '" +
            Texte_SQL(c("TYP_CPS")) + "' AS Info_CPS_TYP_CPS, '" + Texte_SQL(c("TYP_IDN")) +
            "' AS Info_CPS_TYP_IDN, '" + Texte_SQL(c("NUM_IDN")) + "' AS Info_CPS_NUM_IDN, '" +
            Texte_SQL(c("CLE_IDN")) + "' AS Info_CPS_CLE_IDN, '" + Texte_SQL(c("COD_CIV")) +
            "' AS Info_CPS_COD_CIV, '" + Texte_SQL(c("NOM_PRAT")) + "' AS Info_CPS_NOM_PRAT, '" +
            Texte_SQL(c("PNOM_PRAT")) + "' AS Info_CPS_PNOM_PRAT;",
        "UPDATE T_InfosCPS SET T_InfosCPS.Info_CPS_TYP_CPS = '" + Texte_SQL(c("TYP_CPS")) +
            "', T_InfosCPS.Info_CPS_TYP_IDN = '" + Texte_SQL(c("TYP_IDN")) +
            "', T_InfosCPS.Info_CPS_NUM_IDN = '" + Texte_SQL(c("NUM_IDN")) +
            "', T_InfosCPS.Info_CPS_CLE_IDN = '" + Texte_SQL(c("CLE_IDN")) +
            "', T_InfosCPS.Info_CPS_COD_CIV = '" + Texte_SQL(c("COD_CIV")) +
            "', T_InfosCPS.Info_CPS_NOM_PRAT = '" + Texte_SQL(c("NOM_PRAT")) +
            "', T_InfosCPS.Info_CPS_PNOM_PRAT = '" + Texte_SQL(c("PNOM_PRAT")) +
            "' WHERE (((T_InfosCPS.Info_CPS_ID)=1));");
}

Statut ecrire_situation(Connexion& pont, const XmlNoeud& s) {
    // The situation number is the row's key: written bare, as a number.
    std::string NUM_SIT = Nombre_SQL(s.texte_de("NUM_SIT"));
    return pont.Execute(
        "INSERT INTO T_InfosSituation_CPS ( InfoSituation_CPS_ID, Info_CPS_ID_FK, "
        "InfoSituation_CPS_NUM_SIT, InfoSituation_CPS_MODE_EXE, InfoSituation_CPS_STAT_EXE, "
        "InfoSituation_CPS_SECT_ACT, InfoSituation_CPS_TYP_IDS, InfoSituation_CPS_NUM_IDS, "
        "InfoSituation_CPS_CLE_IDS, InfoSituation_RAIS_STR, InfoSituation_NUM_IDFACPS, "
        "InfoSituation_CLE_IDFACPS, InfoSituation_IDENT_REMP, InfoSituation_CLE_IDR, "
        "InfoSituation_COD_CONV, InfoSituation_COD_SPEC, InfoSituation_COD_Z_TAR, "
        "InfoSituation_COD_Z_IK, InfoSituation_COD_AGR1, InfoSituation_COD_AGR2, "
        "InfoSituation_COD_AGR3, InfoSituation_H_SIGN_FSE, InfoSituation_H_SIGN_LOT )"
        "SELECT " +
        NUM_SIT + " AS InfoSituation_CPS_ID, 1 AS Info_CPS_ID_FK, " + NUM_SIT +
        " AS InfoSituation_CPS_NUM_SIT, '" + Texte_SQL(s.texte_de("MODE_EXE")) +
        "' AS InfoSituation_CPS_MODE_EXE, '" + Texte_SQL(s.texte_de("STAT_EXE")) +
        "' AS InfoSituation_CPS_STAT_EXE, '" + Texte_SQL(s.texte_de("SECT_ACT")) +
        "' AS InfoSituation_CPS_SECT_ACT, '" + Texte_SQL(s.texte_de("TYP_IDS")) +
        "' AS InfoSituation_CPS_TYP_IDS, '" + Texte_SQL(s.texte_de("NUM_IDS")) +
        "' AS InfoSituation_CPS_NUM_IDS, '" + Texte_SQL(s.texte_de("CLE_IDS")) +
        "' AS InfoSituation_CPS_CLE_IDS, '" + Texte_SQL(raison_sociale(s.texte_de("RAIS_STR"))) +
        "' AS InfoSituation_RAIS_STR, '" + Texte_SQL(s.texte_de("NUM_IDFACPS")) +
        "' AS InfoSituation_NUM_IDFACPS, '" + Texte_SQL(s.texte_de("CLE_IDFACPS")) +
        "' AS InfoSituation_CLE_IDFACPS, '" + Texte_SQL(s.texte_de("IDENT_REMP")) +
        "' AS InfoSituation_IDENT_REMP, '" + Texte_SQL(s.texte_de("CLE_IDR")) +
        "' AS InfoSituation_CLE_IDR, '" + Texte_SQL(s.texte_de("COD_CONV")) +
        "' AS InfoSituation_COD_CONV, '" + Texte_SQL(s.texte_de("COD_SPEC")) +
        "' AS InfoSituation_COD_SPEC, '" + Texte_SQL(s.texte_de("COD_Z_TAR")) +
        "' AS InfoSituation_COD_Z_TAR, '" + Texte_SQL(s.texte_de("COD_Z_IK")) +
        "' AS InfoSituation_COD_Z_IK, '" + Texte_SQL(s.texte_de("COD_AGR1")) +
        "' AS InfoSituation_COD_AGR1, '" + Texte_SQL(s.texte_de("COD_AGR2")) +
        "' AS InfoSituation_COD_AGR2, '" + Texte_SQL(s.texte_de("COD_AGR3")) +
        "' AS InfoSituation_COD_AGR3, '" + Texte_SQL(s.texte_de("H_SIGN_FSE")) +
        "' AS InfoSituation_H_SIGN_FSE, '" + Texte_SQL(s.texte_de("H_SIGN_LOT")) +
        "' AS InfoSituation_H_SIGN_LOT;");
}

Champs versions() {
    return {"versionDll",
            "versionCDC",
            "versionReferentiel",
            "infosLecteur/constructeur",
            "infosLecteur/typeLecteur",
            "infosLecteur/numSerie",
            "infosLecteur/typeOS",
            "infosLecteur/appliSV/nomAppli",
            "infosLecteur/appliSV/numVersion",
            "infosLecteur/appliSV/dateAppli",
            "infosLecteur/appliSV/heureAppli",
            "infosLecteur/appliSV/crcAppli"};
}

Statut ecrire_versions(Connexion& pont, const Champs& v) {
    const std::string versionDll = Texte_SQL(v("versionDll"));
    const std::string versionCDC = Texte_SQL(v("versionCDC"));
    const std::string versionReferentiel = Texte_SQL(v("versionReferentiel"));
    const std::string constructeur = Texte_SQL(v("infosLecteur/constructeur"));
    const std::string typeLecteur = Texte_SQL(v("infosLecteur/typeLecteur"));
    const std::string numSerie = Texte_SQL(v("infosLecteur/numSerie"));
    const std::string typeOS = Texte_SQL(v("infosLecteur/typeOS"));
    const std::string nomAppli = Texte_SQL(v("infosLecteur/appliSV/nomAppli"));
    const std::string numVersion = Texte_SQL(v("infosLecteur/appliSV/numVersion"));
    const std::string dateAppli = Texte_SQL(v("infosLecteur/appliSV/dateAppli"));
    const std::string heureAppli = Texte_SQL(v("infosLecteur/appliSV/heureAppli"));
    const std::string crcAppli = Texte_SQL(v("infosLecteur/appliSV/crcAppli"));
    return Inserer_Ou_Mettre_A_Jour(
        pont,
        "SELECT T_InfosVersion.Info_Version_ID FROM T_InfosVersion WHERE "
        "(((T_InfosVersion.Info_Version_ID)=1));",
        "INSERT INTO T_InfosVersion ( Info_Version_ID, Info_Version_VersionDLL, "
        "Info_Version_VersionCDC, Info_Version_versionReferentiel, Info_Version_constructeur, "
        "Info_Version_typeLecteur, Info_Version_numSerie, Info_Version_typeOS, "
        "Info_Version_nomAppli, Info_Version_numVersion, Info_Version_dateAppli, "
        "Info_Version_heureAppli, Info_Version_crcAppli )"
        "SELECT 1 AS Info_Version_ID, '" +
            versionDll + "'  AS Info_Version_VersionDLL, '" + versionCDC +
            "' AS Info_Version_VersionCDC, '" + versionReferentiel +
            "' AS Info_Version_versionReferentiel, '" + constructeur +
            "' AS Info_Version_constructeur, '" + typeLecteur + "' AS Info_Version_typeLecteur, '" +
            numSerie + "' AS Info_Version_numSerie, '" + typeOS + "' AS Info_Version_typeOS, '" +
            nomAppli + "' AS Info_Version_nomAppli, '" + numVersion +
            "' AS Info_Version_numVersion, '" + dateAppli + "' AS Info_Version_dateAppli, '" +
            heureAppli + "' AS Info_Version_heureAppli, '" + crcAppli +
            "' AS Info_Version_crcAppli;",
        " UPDATE T_InfosVersion SET T_InfosVersion.Info_Version_VersionDLL = '" + versionDll +
            "', T_InfosVersion.Info_Version_VersionCDC = '" + versionCDC +
            "', T_InfosVersion.Info_Version_versionReferentiel = '" + versionReferentiel +
            "', T_InfosVersion.Info_Version_constructeur = '" + constructeur +
            "', T_InfosVersion.Info_Version_typeLecteur = '" + typeLecteur +
            "', T_InfosVersion.Info_Version_numSerie = '" + numSerie +
            "', T_InfosVersion.Info_Version_typeOS = '" + typeOS +
            "', T_InfosVersion.Info_Version_nomAppli = '" + nomAppli +
            "', T_InfosVersion.Info_Version_numVersion = '" + numVersion +
            "', T_InfosVersion.Info_Version_dateAppli = '" + dateAppli +
            "', T_InfosVersion.Info_Version_heureAppli = '" + heureAppli +
            "', T_InfosVersion.Info_Version_crcAppli = '" + crcAppli + "'" +
            " WHERE (((T_InfosVersion.Info_Version_ID)=1));");
}

}  // namespace

Statut Stocker_CPS(Run& run) {
    auto doc = Charger_Reponse(run, "f_LireCPS");
    if (!doc) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    Connexion& pont = run.bases().pont;

    Champs carte = carte_ps();
    carte.lire(*doc, "/ZRMESSAGE/resultat/donnees/contextePS");
    if (Statut s = ecrire_carte(pont, carte); !s) {
        return s;
    }

    // The table holds the situations of the last card read, and only those.
    if (Statut s = pont.Execute("DELETE * FROM T_InfosSituation_CPS;"); !s) {
        return s;
    }
    for (const XmlNoeud& s :
         doc->selectionner("/ZRMESSAGE/resultat/donnees/contextePS/situation")) {
        if (Statut ecrit = ecrire_situation(pont, s); !ecrit) {
            return ecrit;
        }
    }
    return {};
}

Statut Stocker_Version(Run& run) {
    // The host has always been told about the professional card here.
    auto doc = Charger_Reponse(run, "f_LireCPS");
    if (!doc) {
        return Statut::Deja_Repondu("réponse illisible");
    }
    Champs v = versions();
    v.lire(*doc, "/ZRMESSAGE/resultat/donnees/donneesVersion");
    return ecrire_versions(run.bases().pont, v);
}

}  // namespace sv140
