// Connections and the parameters of the bridge database.
#include "data/parametres.h"

#include "data/texte_sql.h"
#include "exchange/echange.h"
#include "main/run.h"

namespace sv140 {

void Ouvrir_Connexions(Run& run) {
    Connexions& c = *run.cnx;
    if (c.ouvertes) {
        return;
    }
    c.ouvertes = true;
    c.hote.ouvrir(run.DB_DONNEES);
    c.temporaire.ouvrir(run.DB_temporaire);
    c.pont.ouvrir(run.DB_sv);
}

bool Valider_Connexions(Run& run) {
    bool ok = true;
    for (Connexion* c : {&run.cnx->hote, &run.cnx->temporaire, &run.cnx->pont}) {
        if (c->ouverte() && !c->valider()) {
            ok = false;
        }
    }
    return ok;
}

double Lire_Version_Base(Run& run) {
    Ouvrir_Connexions(run);
    auto rs = run.cnx->hote.Ouvrir("SELECT Max(Version.Version) AS Num_Version FROM Version;");
    // A failed query, like an empty table, means the oldest data version.
    if (rs && rs->RecordCount() != 0) {
        rs->MoveFirst();
        Valeur v = rs->champ("Num_Version");
        if (!v.nul()) {
            return v.nombre();
        }
    }
    return 2000;
}

namespace {

constexpr std::string_view kLireParametre =
    " From T_InfoParam WHERE (((T_InfoParam.Info_Param_ID)=1));";

std::optional<Valeur> lire_parametre(Run& run, std::string_view colonne) {
    auto rs = run.cnx->pont.Ouvrir("SELECT T_InfoParam." + std::string(colonne) +
                                   std::string(kLireParametre));
    if (!rs || rs->RecordCount() == 0) {
        return std::nullopt;
    }
    rs->MoveFirst();
    return rs->champ(colonne);
}

}  // namespace

bool Lire_SCORActif(Run& run) {
    Ouvrir_Connexions(run);
    if (Lire_Version_Base(run) < 3500) {
        return false;
    }
    auto v = lire_parametre(run, "SCORActif");
    return v && v->booleen();
}

long Lire_Taille_Buffer(Run& run) {
    Ouvrir_Connexions(run);
    auto v = lire_parametre(run, "Taille_Buffer");
    if (!v) {
        return 102400;
    }
    return Taille_Tampon(v->nombre());
}

bool Lire_Identifiants_PS(Run& run, std::string& idNat, std::string& idFac, std::string& numSitu) {
    Ouvrir_Connexions(run);
    std::string Num_Situ = "1";
    if (Lire_Version_Base(run) >= 3500) {
        auto v = lire_parametre(run, "Num_Situ");
        if (v) {
            Num_Situ = (v->nul() || Val(v->str()) == 0) ? "1" : Trim(v->str());
        }
    }
    numSitu = Num_Situ;

    auto cps = run.cnx->pont.Ouvrir(
        "SELECT T_InfosCPS.Info_CPS_ID, T_InfosCPS.Info_CPS_NUM_IDN FROM T_InfosCPS WHERE "
        "(((T_InfosCPS.Info_CPS_ID)=1));");
    // A database that cannot be read says no more than an empty table: either way the
    // host is told which professional data are missing.
    if (!cps || cps->RecordCount() == 0) {
        Reponse_Erreur(run, "99", "Les données de la CPS n'ont pu être lues", "f_InitialisationPS");
        return false;
    }
    cps->MoveFirst();
    idNat = cps->champ("Info_CPS_NUM_IDN").str();

    auto situ = run.cnx->pont.Ouvrir(
        "SELECT T_InfosSituation_CPS.InfoSituation_CPS_NUM_SIT, "
        "T_InfosSituation_CPS.InfoSituation_NUM_IDFACPS, "
        "T_InfosSituation_CPS.InfoSituation_CLE_IDFACPS FROM T_InfosSituation_CPS WHERE "
        "(((T_InfosSituation_CPS.InfoSituation_CPS_NUM_SIT)='" +
        Echapper_Apostrophes(Num_Situ) + "'));");
    if (!situ || situ->RecordCount() == 0) {
        Reponse_Erreur(run, "99", "Les données de situation de la CPS n'ont pu être lues",
                       "f_InitialisationPS");
        return false;
    }
    situ->MoveFirst();
    idFac = Trim(situ->champ("InfoSituation_NUM_IDFACPS").str()) +
            Trim(situ->champ("InfoSituation_CLE_IDFACPS").str());
    return true;
}

}  // namespace sv140
