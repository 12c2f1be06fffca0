#include "shop/demo.h"

#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/connexion.h"
#include "data/instructions.h"
#include "data/texte_sql.h"
#include "platform/systeme.h"
#include "platform/xml.h"
#include "shop/schema.h"
#include "sim/etat.h"

namespace sv140::shop {
namespace {

struct ReponseLue {
    bool lue = false;
    std::string code;
    std::string libelle;

    bool succes() const { return lue && !code.empty() && Val(code) == 0; }
};

// The beneficiary the optician picks in the list the card read left in the host's
// database.
struct Beneficiaire {
    std::string nom;
    std::string prenom;
    std::string nir;  // NIR followed by its key
    std::string naissance;
    std::string rang;
    std::string regime_caisse_centre;
    std::string mutuelle;
};

bool bissextile(int annee) {
    return (annee % 4 == 0 && annee % 100 != 0) || annee % 400 == 0;
}

class Demo {
  public:
    Demo(const Installation& inst, std::ostream& sortie)
        : inst_(inst),
          sortie_(sortie),
          base_pont_(joindre(inst.magasin, kBasePont)),
          base_hote_(joindre(inst.magasin, kBaseHote)) {}

    bool derouler();

  private:
    const Installation& inst_;
    std::ostream& sortie_;
    const std::string base_pont_;
    const std::string base_hote_;
    int etape_ = 0;
    bool tout_bon_ = true;

    void titre(std::string_view texte);
    void echec(std::string_view texte);
    bool operation(const char* nom, std::string_view quoi);
    ReponseLue lire_reponse() const;

    std::optional<Recordset> lire(const std::string& base, std::string_view sql);
    long compter(const std::string& base, std::string_view table);

    void montrer_versions();
    void montrer_cps();
    std::vector<Beneficiaire> montrer_selection();
    long choisir(const Beneficiaire& b);
    void montrer_carte(long client);
    bool ecrire_demande_complementaire(long client, const Beneficiaire& b);
    void montrer_copies_complementaire();
    void montrer_traces();
};

void Demo::titre(std::string_view texte) {
    sortie_ << "\n[" << ++etape_ << "] " << texte << "\n";
}

void Demo::echec(std::string_view texte) {
    tout_bon_ = false;
    sortie_ << "    ÉCHEC : " << texte << "\n";
}

ReponseLue Demo::lire_reponse() const {
    ReponseLue r;
    XmlDocument doc;
    if (!doc.charger_fichier(joindre(inst_.programme, "ZEMO_Response.xml"))) {
        return r;
    }
    r.lue = true;
    r.code = doc.selectionner_un("/ZRMESSAGE/resultat/codeErreur").texte();
    r.libelle = doc.selectionner_un("/ZRMESSAGE/resultat/libelleErreur").texte();
    return r;
}

bool Demo::operation(const char* nom, std::string_view quoi) {
    titre(std::string(nom) + " : " + std::string(quoi));
    sortie_ << "    " << inst_.pont() << " " << nom << " " << inst_.magasin << "\n";

    // A stale answer from an earlier step must not pass for this one's.
    supprimer_fichier(joindre(inst_.programme, "ZEMO_Response.xml"));
    const std::string console = joindre(inst_.racine, "sv140-shop-console.txt");
    // Empty input makes a console question answer Cancel; the console interface
    // keeps the bridge's messages in the file instead of windows.
    Lancement lancement;
    lancement.arguments = {nom, inst_.magasin};
    lancement.sortie = console;
    lancement.entree_vide = true;
    lancement.environnement = {"SV140_UI=console"};
    const int fin = lancer_programme(inst_.pont(), lancement);

    std::string messages;
    if (lire_fichier(console, messages)) {
        std::size_t debut = 0;
        while (debut < messages.size()) {
            std::size_t fin_ligne = messages.find('\n', debut);
            if (fin_ligne == std::string::npos) {
                fin_ligne = messages.size();
            }
            sortie_ << "    | " << messages.substr(debut, fin_ligne - debut) << "\n";
            debut = fin_ligne + 1;
        }
    }
    supprimer_fichier(console);

    if (fin < 0) {
        echec("le pont n'a pas pu être lancé");
        return false;
    }
    const ReponseLue r = lire_reponse();
    if (!r.lue) {
        echec("pas de ZEMO_Response.xml lisible après l'opération (fin du pont : " +
              std::to_string(fin) + ")");
        return false;
    }
    sortie_ << "    réponse : code " << (r.code.empty() ? "(vide)" : r.code);
    if (!r.libelle.empty()) {
        sortie_ << " - " << r.libelle;
    }
    sortie_ << "\n";
    if (!r.succes()) {
        echec(std::string(nom) + " n'a pas répondu le code 0");
        return false;
    }
    return true;
}

std::optional<Recordset> Demo::lire(const std::string& base, std::string_view sql) {
    Connexion cnx;
    if (Statut s = cnx.ouvrir(base); !s) {
        sortie_ << "    (lecture impossible : " << s.raison() << ")\n";
        return std::nullopt;
    }
    auto rs = cnx.Ouvrir(sql);
    if (!rs) {
        sortie_ << "    (requête refusée : " << rs.statut().raison() << ")\n";
        return std::nullopt;
    }
    return *rs;
}

long Demo::compter(const std::string& base, std::string_view table) {
    auto rs = lire(base, "SELECT Count(*) AS Nombre FROM " + std::string(table) + ";");
    return rs && !rs->EOF_() ? static_cast<long>(rs->champ("Nombre").nombre()) : -1;
}

void Demo::montrer_versions() {
    sortie_ << "    T_InfosVersion : " << compter(base_pont_, "T_InfosVersion") << " ligne(s)\n";
    auto rs = lire(base_pont_,
                   "SELECT T_InfosVersion.* FROM T_InfosVersion WHERE "
                   "(((T_InfosVersion.Info_Version_ID)=1));");
    if (rs && !rs->EOF_()) {
        sortie_ << "      middleware " << rs->champ("Info_Version_VersionDLL").str() << ", cahier "
                << rs->champ("Info_Version_VersionCDC").str() << ", lecteur "
                << rs->champ("Info_Version_constructeur").str() << " "
                << rs->champ("Info_Version_typeLecteur").str() << " n° "
                << rs->champ("Info_Version_numSerie").str() << "\n";
    }
}

void Demo::montrer_cps() {
    auto cps = lire(base_pont_, "SELECT T_InfosCPS.* FROM T_InfosCPS;");
    sortie_ << "    T_InfosCPS : " << (cps ? cps->RecordCount() : 0) << " ligne(s)\n";
    if (cps && !cps->EOF_()) {
        sortie_ << "      " << cps->champ("Info_CPS_PNOM_PRAT").str() << " "
                << cps->champ("Info_CPS_NOM_PRAT").str() << ", identifiant "
                << cps->champ("Info_CPS_NUM_IDN").str() << "\n";
    }
    auto situations = lire(base_pont_,
                           "SELECT T_InfosSituation_CPS.* FROM T_InfosSituation_CPS ORDER BY "
                           "T_InfosSituation_CPS.InfoSituation_CPS_ID;");
    sortie_ << "    T_InfosSituation_CPS : " << (situations ? situations->RecordCount() : 0)
            << " situation(s)\n";
    for (; situations && !situations->EOF_(); situations->MoveNext()) {
        sortie_ << "      situation " << situations->champ("InfoSituation_CPS_NUM_SIT").str()
                << " : " << situations->champ("InfoSituation_RAIS_STR").str() << ", facturation "
                << situations->champ("InfoSituation_NUM_IDFACPS").str()
                << situations->champ("InfoSituation_CLE_IDFACPS").str() << "\n";
    }
}

std::vector<Beneficiaire> Demo::montrer_selection() {
    std::vector<Beneficiaire> liste;
    auto rs = lire(base_hote_, "SELECT [Sélection Verres].* FROM [Sélection Verres];");
    sortie_ << "    [Sélection Verres] : " << (rs ? rs->RecordCount() : 0) << " bénéficiaire(s)\n";
    for (; rs && !rs->EOF_(); rs->MoveNext()) {
        Beneficiaire b;
        b.nom = rs->champ("Nom du Verre").str();
        b.prenom = rs->champ("Couleur").str();
        b.nir = rs->champ("Fournisseur").str();
        b.naissance = rs->champ("Rubrique1").str();
        b.rang = Nombre_SQL(rs->champ("Plage-Mini").nombre());
        b.regime_caisse_centre = rs->champ("Rubrique2").str();
        b.mutuelle = rs->champ("Cod_Commande").str();
        sortie_ << "      " << liste.size() + 1 << ") " << b.nom << " " << b.prenom << ", né(e) "
                << b.naissance << ", rang " << b.rang << ", NIR " << b.nir << "\n";
        liste.push_back(b);
    }
    return liste;
}

long Demo::choisir(const Beneficiaire& b) {
    std::string date;
    std::string divers;
    if (!Date_Naissance_Hote(b.naissance, date, divers)) {
        echec("date de naissance illisible : " + b.naissance);
        return 0;
    }
    Connexion cnx;
    long client = 0;
    Statut s = cnx.ouvrir(base_hote_);
    if (s) {
        s = cnx.Execute("DELETE * FROM T_Etat_Civil;");
    }
    if (s) {
        s = cnx.Execute("INSERT INTO [Saisie des Clients] ( Nom, [Prénom] ) VALUES ( '" +
                        Texte_SQL(b.nom) + "', '" + Texte_SQL(b.prenom) + "' );");
    }
    if (s) {
        auto cle = Plus_Grande_Cle(
            cnx, "SELECT Max([Saisie des Clients].[N°]) AS Numero FROM [Saisie des Clients];");
        s = cle ? Statut() : cle.statut();
        client = cle ? static_cast<long>(*cle) : 0;
    }
    if (s) {
        s = cnx.Execute(
            "INSERT INTO T_Etat_Civil ( [N°], Nom, [Prénom], [Sécurité sociale], "
            "[Date Naissance], RangNaissance, Divers ) VALUES ( " +
            std::to_string(client) + ", '" + Texte_SQL(b.nom) + "', '" + Texte_SQL(b.prenom) +
            "', '" + Texte_SQL(b.nir) + "', " + date + ", " + Nombre_SQL(b.rang) + ", " +
            (divers.empty() ? std::string("Null") : "'" + divers + "'") + " );");
    }
    if (s) {
        s = cnx.valider();
    }
    if (!s || client <= 0) {
        echec("écriture du client impossible : " + s.raison());
        return 0;
    }
    sortie_ << "    [Saisie des Clients] : client n° " << client << " " << b.nom << " " << b.prenom
            << "\n";
    sortie_ << "    T_Etat_Civil : " << compter(base_hote_, "T_Etat_Civil")
            << " ligne(s), sécurité sociale " << b.nir << ", naissance " << date
            << (divers.empty() ? "" : ", divers " + divers) << ", rang " << b.rang << "\n";
    return client;
}

void Demo::montrer_carte(long client) {
    sortie_ << "    T_InfosCarteVitale : " << compter(base_pont_, "T_InfosCarteVitale")
            << " ligne(s)\n";
    auto rs = lire(base_pont_,
                   "SELECT T_InfosCarteVitale.* FROM T_InfosCarteVitale WHERE "
                   "(((T_InfosCarteVitale.Info_ETC_ID_FK)=" +
                       std::to_string(client) + "));");
    if (!rs || rs->EOF_()) {
        echec("aucune carte liée au client n° " + std::to_string(client));
        return;
    }
    sortie_ << "      client n° " << client << " : " << rs->champ("Info_CV_NOM_USG").str() << " "
            << rs->champ("Info_CV_PRM_USG").str() << ", NIR " << rs->champ("Info_CV_NIR_ASS").str()
            << " " << rs->champ("Info_CV_CLE_ASS").str() << ", caisse "
            << rs->champ("Info_CV_RGG_COD").str() << " " << rs->champ("Info_CV_RTT_CAI").str()
            << " " << rs->champ("Info_CV_RTT_UGE").str() << "\n";
    sortie_ << "      droits AMO : " << rs->champ("Info_CV_NB_DRT_AMO").str() << " période(s)";
    if (!rs->champ("Info_CV_DAMO_DEB_1").str().empty()) {
        sortie_ << ", la première du " << rs->champ("Info_CV_DAMO_DEB_1").str() << " au "
                << rs->champ("Info_CV_DAMO_FIN_1").str();
    }
    sortie_ << "; mutuelle " << rs->champ("Info_CV_MUT_NUM").str() << "\n";
}

bool Demo::ecrire_demande_complementaire(long client, const Beneficiaire& b) {
    // The insurance codes as stored for the client; the card list's text (regime 2,
    // fund 3, centre 4 characters) when the link was not stored.
    std::string regime = b.regime_caisse_centre.substr(0, 2);
    std::string caisse =
        b.regime_caisse_centre.size() > 2 ? b.regime_caisse_centre.substr(2, 3) : "";
    std::string centre = b.regime_caisse_centre.size() > 5 ? b.regime_caisse_centre.substr(5) : "";
    std::string mutuelle = b.mutuelle;
    auto rs = lire(base_pont_,
                   "SELECT T_InfosCarteVitale.* FROM T_InfosCarteVitale WHERE "
                   "(((T_InfosCarteVitale.Info_ETC_ID_FK)=" +
                       std::to_string(client) + "));");
    if (rs && !rs->EOF_()) {
        regime = rs->champ("Info_CV_RGG_COD").str();
        caisse = rs->champ("Info_CV_RTT_CAI").str();
        centre = rs->champ("Info_CV_RTT_UGE").str();
        if (mutuelle.empty()) {
            mutuelle = rs->champ("Info_CV_MUT_NUM").str();
        }
    }

    XmlDocument doc;
    XmlNoeud racine = doc.creer_racine("BelvaneClassicII");
    XmlNoeud beneficiaire = racine.ajouter("beneficiaire");
    beneficiaire.ajouter("codeRegime", regime);
    beneficiaire.ajouter("codeCaisse", caisse);
    beneficiaire.ajouter("codeCentre", centre);
    racine.ajouter("donneesTP").ajouter("numeroMutuelle", mutuelle);
    const std::string chemin = joindre(inst_.programme, "ZEMO_Request.xml");
    if (!doc.enregistrer(chemin)) {
        echec("impossible d'écrire " + chemin);
        return false;
    }
    sortie_ << "    " << chemin << " : régime " << regime << ", caisse " << caisse << ", centre "
            << centre << ", mutuelle " << (mutuelle.empty() ? "(aucune)" : mutuelle) << "\n";
    return true;
}

void Demo::montrer_copies_complementaire() {
    for (const char* nom : {"ZEMO_SvRequestAMC.xml", "ZEMO_SvResponseAMC.xml"}) {
        const std::string chemin = joindre(inst_.programme, nom);
        sortie_ << "    " << chemin << (fichier_existe(chemin) ? "" : " : absent") << "\n";
    }
}

void Demo::montrer_traces() {
    const std::time_t maintenant = std::time(nullptr);
    char mois[8] = "";
    std::strftime(mois, sizeof mois, "%Y%m", std::localtime(&maintenant));
    const std::string archive = joindre(joindre(inst_.magasin, "Sv140"), mois);
    sortie_ << "\nJournal de la dernière opération : " << joindre(inst_.programme, "LogsSV.txt")
            << "\n";
    sortie_ << "Archive des requêtes et réponses : " << archive
            << (dossier_existe(archive) ? "" : " (absente)") << "\n";
}

bool Demo::derouler() {
    operation("f_LireVersion", "versions du middleware et du lecteur");
    montrer_versions();

    operation("f_LireCPS", "carte du professionnel");
    montrer_cps();

    operation("f_InitialisationPS", "initialisation du professionnel");

    titre("carte Vitale « famille » dans le lecteur");
    std::string erreur;
    if (sim::Inserer_Carte(inst_.zrsim, "famille", erreur)) {
        sortie_ << "    lecteur : carte famille\n";
    } else {
        echec(erreur);
    }

    operation("f_LireCVitale", "lecture de la carte Vitale");
    const std::vector<Beneficiaire> liste = montrer_selection();

    titre("choix du bénéficiaire par l'opticien");
    if (liste.empty()) {
        echec("aucun bénéficiaire à choisir");
        montrer_traces();
        return false;
    }
    const Beneficiaire& choisi = liste.front();
    sortie_ << "    choix : 1) " << choisi.nom << " " << choisi.prenom << "\n";
    const long client = choisir(choisi);
    if (client <= 0) {
        montrer_traces();
        return false;
    }

    operation("f_MettreAJourIdEtc", "liaison du bénéficiaire au client");
    montrer_carte(client);

    titre("demande de l'opticien pour la complémentaire");
    if (ecrire_demande_complementaire(client, choisi)) {
        operation("f_LireInfosComplementaire", "droits auprès de la complémentaire");
        montrer_copies_complementaire();
    }

    montrer_traces();
    return tout_bon_;
}

}  // namespace

bool Date_Naissance_Hote(const std::string& aaaammjj, std::string& litteral, std::string& divers) {
    if (aaaammjj.size() != 8 || aaaammjj.find_first_not_of("0123456789") != std::string::npos) {
        return false;
    }
    const int annee = std::stoi(aaaammjj.substr(0, 4));
    const int mois = std::stoi(aaaammjj.substr(4, 2));
    const int jour = std::stoi(aaaammjj.substr(6, 2));
    static const int kJours[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool calendaire = mois >= 1 && mois <= 12 && jour >= 1 &&
                            jour <= kJours[mois - 1] + (mois == 2 && bissextile(annee) ? 1 : 0);
    if (calendaire) {
        litteral = "#" + aaaammjj.substr(4, 2) + "/" + aaaammjj.substr(6, 2) + "/" +
                   aaaammjj.substr(0, 4) + "#";
        divers.clear();
    } else {
        litteral = "#01/01/" + aaaammjj.substr(0, 4) + "#";
        divers = "!" + aaaammjj.substr(6, 2) + aaaammjj.substr(4, 2);
    }
    return true;
}

bool Derouler_Demo(const Installation& inst, std::ostream& sortie) {
    Demo demo(inst, sortie);
    return demo.derouler();
}

}  // namespace sv140::shop
