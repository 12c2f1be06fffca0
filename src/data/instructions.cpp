#include "data/instructions.h"

namespace sv140 {

Resultat<Recordset> Premiere_Ligne(Connexion& c, std::string_view requete) {
    Resultat<Recordset> rs = c.Ouvrir(requete);
    if (rs) {
        rs->MoveFirst();
    }
    return rs;
}

Resultat<double> Plus_Grande_Cle(Connexion& c, std::string_view requete) {
    Resultat<Recordset> rs = Premiere_Ligne(c, requete);
    if (!rs) {
        return rs.statut();
    }
    if (rs->EOF_() || rs->colonnes().empty()) {
        return 0.0;
    }
    return rs->champ(rs->colonnes().front()).nombre();
}

Statut Inserer_Ou_Mettre_A_Jour(Connexion& c, std::string_view selection,
                                std::string_view insertion, std::string_view mise_a_jour) {
    Resultat<Recordset> rs = c.Ouvrir(selection);
    if (!rs) {
        return rs.statut();
    }
    return c.Execute(rs->RecordCount() == 0 ? insertion : mise_a_jour);
}

}  // namespace sv140
