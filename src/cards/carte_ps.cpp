// The professional's card and its situations, and the versions of the middleware and
// of the card reader: what the professional requests are later built from.
#include <string>
#include <string_view>

#include "cards/cartes.h"
#include "data/parametres.h"
#include "data/texte_sql.h"
#include "exchange/echange.h"
#include "main/run.h"
#include "platform/encodage.h"
#include "platform/xml.h"

namespace sv140 {
namespace {

// A text value between single quotes, its quotes doubled so it stays inside.
std::string lit(std::string_view valeur) {
    return Echapper_Apostrophes(valeur);
}

// The company name as the host keeps it: apostrophes become blanks, 30 characters.
std::string raison_sociale(std::string texte) {
    for (char& c : texte) {
        if (c == '\'') {
            c = ' ';
        }
    }
    return gauche_caracteres(texte, 30);
}

struct CartePS {
    std::string TYP_CPS, TYP_IDN, NUM_IDN, CLE_IDN, COD_CIV, NOM_PRAT, PNOM_PRAT;
};

bool ecrire_carte(Connexion& pont, const CartePS& c) {
    auto rs = pont.Ouvrir(
        "SELECT T_InfosCPS.Info_CPS_ID FROM T_InfosCPS WHERE (((T_InfosCPS.Info_CPS_ID)=1))");
    if (!rs) {
        return false;
    }
    if (rs->RecordCount() == 0) {
        return pont.Execute(
            "INSERT INTO T_InfosCPS ( Info_CPS_ID, Info_CPS_TYP_CPS, Info_CPS_TYP_IDN, "
            "Info_CPS_NUM_IDN, Info_CPS_CLE_IDN, Info_CPS_COD_CIV, Info_CPS_NOM_PRAT, "
            "Info_CPS_PNOM_PRAT ) "
            "SELECT 1 AS Info_CPS_ID, '" +
            lit(c.TYP_CPS) + "' AS Info_CPS_TYP_CPS, '" + lit(c.TYP_IDN) +
            "' AS Info_CPS_TYP_IDN, '" + lit(c.NUM_IDN) + "' AS Info_CPS_NUM_IDN, '" +
            lit(c.CLE_IDN) + "' AS Info_CPS_CLE_IDN, '" + lit(c.COD_CIV) +
            "' AS Info_CPS_COD_CIV, '" + lit(c.NOM_PRAT) + "' AS Info_CPS_NOM_PRAT, '" +
            lit(c.PNOM_PRAT) + "' AS Info_CPS_PNOM_PRAT;");
    }
    return pont.Execute("UPDATE T_InfosCPS SET T_InfosCPS.Info_CPS_TYP_CPS = '" + lit(c.TYP_CPS) +
                        "', T_InfosCPS.Info_CPS_TYP_IDN = '" + lit(c.TYP_IDN) +
                        "', T_InfosCPS.Info_CPS_NUM_IDN = '" + lit(c.NUM_IDN) +
                        "', T_InfosCPS.Info_CPS_CLE_IDN = '" + lit(c.CLE_IDN) +
                        "', T_InfosCPS.Info_CPS_COD_CIV = '" + lit(c.COD_CIV) +
                        "', T_InfosCPS.Info_CPS_NOM_PRAT = '" + lit(c.NOM_PRAT) +
                        "', T_InfosCPS.Info_CPS_PNOM_PRAT = '" + lit(c.PNOM_PRAT) +
                        "' WHERE (((T_InfosCPS.Info_CPS_ID)=1));");
}

bool ecrire_situation(Connexion& pont, const XmlNoeud& s) {
    // The situation number is the row's key: written bare, as a number.
    std::string NUM_SIT = Nombre_SQL(Val(s.texte_de("NUM_SIT")));
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
        " AS InfoSituation_CPS_NUM_SIT, '" + lit(s.texte_de("MODE_EXE")) +
        "' AS InfoSituation_CPS_MODE_EXE, '" + lit(s.texte_de("STAT_EXE")) +
        "' AS InfoSituation_CPS_STAT_EXE, '" + lit(s.texte_de("SECT_ACT")) +
        "' AS InfoSituation_CPS_SECT_ACT, '" + lit(s.texte_de("TYP_IDS")) +
        "' AS InfoSituation_CPS_TYP_IDS, '" + lit(s.texte_de("NUM_IDS")) +
        "' AS InfoSituation_CPS_NUM_IDS, '" + lit(s.texte_de("CLE_IDS")) +
        "' AS InfoSituation_CPS_CLE_IDS, '" + lit(raison_sociale(s.texte_de("RAIS_STR"))) +
        "' AS InfoSituation_RAIS_STR, '" + lit(s.texte_de("NUM_IDFACPS")) +
        "' AS InfoSituation_NUM_IDFACPS, '" + lit(s.texte_de("CLE_IDFACPS")) +
        "' AS InfoSituation_CLE_IDFACPS, '" + lit(s.texte_de("IDENT_REMP")) +
        "' AS InfoSituation_IDENT_REMP, '" + lit(s.texte_de("CLE_IDR")) +
        "' AS InfoSituation_CLE_IDR, '" + lit(s.texte_de("COD_CONV")) +
        "' AS InfoSituation_COD_CONV, '" + lit(s.texte_de("COD_SPEC")) +
        "' AS InfoSituation_COD_SPEC, '" + lit(s.texte_de("COD_Z_TAR")) +
        "' AS InfoSituation_COD_Z_TAR, '" + lit(s.texte_de("COD_Z_IK")) +
        "' AS InfoSituation_COD_Z_IK, '" + lit(s.texte_de("COD_AGR1")) +
        "' AS InfoSituation_COD_AGR1, '" + lit(s.texte_de("COD_AGR2")) +
        "' AS InfoSituation_COD_AGR2, '" + lit(s.texte_de("COD_AGR3")) +
        "' AS InfoSituation_COD_AGR3, '" + lit(s.texte_de("H_SIGN_FSE")) +
        "' AS InfoSituation_H_SIGN_FSE, '" + lit(s.texte_de("H_SIGN_LOT")) +
        "' AS InfoSituation_H_SIGN_LOT;");
}

struct Versions {
    std::string versionDll, versionCDC, versionReferentiel, constructeur, typeLecteur, numSerie,
        typeOS, nomAppli, numVersion, dateAppli, heureAppli, crcAppli;
};

bool ecrire_versions(Connexion& pont, const Versions& v) {
    auto rs = pont.Ouvrir(
        "SELECT T_InfosVersion.Info_Version_ID FROM T_InfosVersion WHERE "
        "(((T_InfosVersion.Info_Version_ID)=1));");
    if (!rs) {
        return false;
    }
    if (rs->RecordCount() == 0) {
        return pont.Execute(
            "INSERT INTO T_InfosVersion ( Info_Version_ID, Info_Version_VersionDLL, "
            "Info_Version_VersionCDC, Info_Version_versionReferentiel, Info_Version_constructeur, "
            "Info_Version_typeLecteur, Info_Version_numSerie, Info_Version_typeOS, "
            "Info_Version_nomAppli, Info_Version_numVersion, Info_Version_dateAppli, "
            "Info_Version_heureAppli, Info_Version_crcAppli )"
            "SELECT 1 AS Info_Version_ID, '" +
            lit(v.versionDll) + "'  AS Info_Version_VersionDLL, '" + lit(v.versionCDC) +
            "' AS Info_Version_VersionCDC, '" + lit(v.versionReferentiel) +
            "' AS Info_Version_versionReferentiel, '" + lit(v.constructeur) +
            "' AS Info_Version_constructeur, '" + lit(v.typeLecteur) +
            "' AS Info_Version_typeLecteur, '" + lit(v.numSerie) + "' AS Info_Version_numSerie, '" +
            lit(v.typeOS) + "' AS Info_Version_typeOS, '" + lit(v.nomAppli) +
            "' AS Info_Version_nomAppli, '" + lit(v.numVersion) +
            "' AS Info_Version_numVersion, '" + lit(v.dateAppli) +
            "' AS Info_Version_dateAppli, '" + lit(v.heureAppli) +
            "' AS Info_Version_heureAppli, '" + lit(v.crcAppli) + "' AS Info_Version_crcAppli;");
    }
    return pont.Execute(
        " UPDATE T_InfosVersion SET T_InfosVersion.Info_Version_VersionDLL = '" +
        lit(v.versionDll) + "', T_InfosVersion.Info_Version_VersionCDC = '" + lit(v.versionCDC) +
        "', T_InfosVersion.Info_Version_versionReferentiel = '" + lit(v.versionReferentiel) +
        "', T_InfosVersion.Info_Version_constructeur = '" + lit(v.constructeur) +
        "', T_InfosVersion.Info_Version_typeLecteur = '" + lit(v.typeLecteur) +
        "', T_InfosVersion.Info_Version_numSerie = '" + lit(v.numSerie) +
        "', T_InfosVersion.Info_Version_typeOS = '" + lit(v.typeOS) +
        "', T_InfosVersion.Info_Version_nomAppli = '" + lit(v.nomAppli) +
        "', T_InfosVersion.Info_Version_numVersion = '" + lit(v.numVersion) +
        "', T_InfosVersion.Info_Version_dateAppli = '" + lit(v.dateAppli) +
        "', T_InfosVersion.Info_Version_heureAppli = '" + lit(v.heureAppli) +
        "', T_InfosVersion.Info_Version_crcAppli = '" + lit(v.crcAppli) + "'" +
        " WHERE (((T_InfosVersion.Info_Version_ID)=1));");
}

}  // namespace

bool Stocker_CPS(Run& run) {
    XmlDocument doc;
    if (!doc.charger_fichier(run.fichier("ZEMO_SvResponse.xml"))) {
        Reponse_Illisible(run, "f_LireCPS");
        return false;
    }
    Ouvrir_Connexions(run);
    Connexion& pont = run.cnx->pont;

    CartePS carte;
    for (const XmlNoeud& n : doc.selectionner("/ZRMESSAGE/resultat/donnees/contextePS")) {
        carte = {n.texte_de("TYP_CPS"),  n.texte_de("TYP_IDN"), n.texte_de("NUM_IDN"),
                 n.texte_de("CLE_IDN"),  n.texte_de("COD_CIV"), n.texte_de("NOM_PRAT"),
                 n.texte_de("PNOM_PRAT")};
    }
    if (!ecrire_carte(pont, carte)) {
        return false;
    }

    // The table holds the situations of the last card read, and only those.
    if (!pont.Execute("DELETE * FROM T_InfosSituation_CPS;")) {
        return false;
    }
    for (const XmlNoeud& s : doc.selectionner("/ZRMESSAGE/resultat/donnees/contextePS/situation")) {
        if (!ecrire_situation(pont, s)) {
            return false;
        }
    }
    return true;
}

bool Stocker_Version(Run& run) {
    XmlDocument doc;
    if (!doc.charger_fichier(run.fichier("ZEMO_SvResponse.xml"))) {
        // The host has always been told about the professional card here.
        Reponse_Illisible(run, "f_LireCPS");
        return false;
    }
    Ouvrir_Connexions(run);

    Versions v;
    for (const XmlNoeud& n : doc.selectionner("/ZRMESSAGE/resultat/donnees/donneesVersion")) {
        v = {n.texte_de("versionDll"),
             n.texte_de("versionCDC"),
             n.texte_de("versionReferentiel"),
             n.texte_de("infosLecteur/constructeur"),
             n.texte_de("infosLecteur/typeLecteur"),
             n.texte_de("infosLecteur/numSerie"),
             n.texte_de("infosLecteur/typeOS"),
             n.texte_de("infosLecteur/appliSV/nomAppli"),
             n.texte_de("infosLecteur/appliSV/numVersion"),
             n.texte_de("infosLecteur/appliSV/dateAppli"),
             n.texte_de("infosLecteur/appliSV/heureAppli"),
             n.texte_de("infosLecteur/appliSV/crcAppli")};
    }
    return ecrire_versions(run.cnx->pont, v);
}

}  // namespace sv140
