// The parameters of the bridge database and the host's data version.
#include "data/parametres.h"

#include "data/instructions.h"
#include "data/texte_sql.h"

namespace sv140 {

double Lire_Version_Base(Connexions& c) {
    auto rs = Premiere_Ligne(c.hote, "SELECT Max(Version.Version) AS Num_Version FROM Version;");
    // A failed query, like an empty table, means the oldest data version.
    if (rs && !rs->EOF_() && !rs->champ("Num_Version").nul()) {
        return rs->champ("Num_Version").nombre();
    }
    return 2000;
}

namespace {

constexpr std::string_view kLireParametre =
    " From T_InfoParam WHERE (((T_InfoParam.Info_Param_ID)=1));";

// The parameter's value; nullopt when it cannot be read, which means its default.
std::optional<Valeur> lire_parametre(Connexions& c, std::string_view colonne) {
    auto rs = Premiere_Ligne(
        c.pont, "SELECT T_InfoParam." + std::string(colonne) + std::string(kLireParametre));
    if (!rs || rs->EOF_()) {
        return std::nullopt;
    }
    return rs->champ(colonne);
}

}  // namespace

bool Lire_SCORActif(Connexions& c) {
    if (Lire_Version_Base(c) < 3500) {
        return false;
    }
    auto v = lire_parametre(c, "SCORActif");
    return v && v->booleen();
}

double Lire_Taille_Buffer(Connexions& c) {
    auto v = lire_parametre(c, "Taille_Buffer");
    return v ? v->nombre() : 102400;
}

Statut Lire_Identifiants_PS(Connexions& c, IdentifiantsPS& ps) {
    ps.numSitu = "1";
    if (Lire_Version_Base(c) >= 3500) {
        if (auto v = lire_parametre(c, "Num_Situ")) {
            ps.numSitu = (v->nul() || Val(v->str()) == 0) ? "1" : Trim(v->str());
        }
    }

    // A database that cannot be read says no more than an empty table: either way the
    // host is told which professional data are missing.
    auto cps = Premiere_Ligne(
        c.pont,
        "SELECT T_InfosCPS.Info_CPS_ID, T_InfosCPS.Info_CPS_NUM_IDN FROM T_InfosCPS WHERE "
        "(((T_InfosCPS.Info_CPS_ID)=1));");
    if (!cps || cps->EOF_()) {
        return Statut::Echec("Les données de la CPS n'ont pu être lues");
    }
    ps.idNat = cps->champ("Info_CPS_NUM_IDN").str();

    auto situ = Premiere_Ligne(
        c.pont,
        "SELECT T_InfosSituation_CPS.InfoSituation_CPS_NUM_SIT, "
        "T_InfosSituation_CPS.InfoSituation_NUM_IDFACPS, "
        "T_InfosSituation_CPS.InfoSituation_CLE_IDFACPS FROM T_InfosSituation_CPS WHERE "
        "(((T_InfosSituation_CPS.InfoSituation_CPS_NUM_SIT)='" +
            Texte_SQL(ps.numSitu) + "'));");
    if (!situ || situ->EOF_()) {
        return Statut::Echec("Les données de situation de la CPS n'ont pu être lues");
    }
    ps.idFac = Trim(situ->champ("InfoSituation_NUM_IDFACPS").str()) +
               Trim(situ->champ("InfoSituation_CLE_IDFACPS").str());
    return {};
}

}  // namespace sv140
