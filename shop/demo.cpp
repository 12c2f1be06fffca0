#include "shop/demo.h"

#include <cstdio>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/connexion.h"
#include "data/instructions.h"
#include "data/texte_sql.h"
#include "platform/horloge.h"
#include "platform/systeme.h"
#include "platform/xml.h"
#include "shop/facturation.h"
#include "shop/schema.h"
#include "sim/etat.h"

namespace sv140::shop {
namespace {

// The card of the demo; the optician picks its first beneficiary.
constexpr const char* kCarteDemo = "famille";
// The insurer under which the host files the slips paid through the generic
// third-party scheme; the return information dates their edition.
constexpr const char* kMutuelleGenerique = "[TPGEN]";
// What the insurers have answered two days after the sending.
constexpr int kJoursAvantRetours = 2;

struct ReponseLue {
    bool lue = false;
    std::string code;
    std::string libelle;

    bool succes() const { return lue && !code.empty() && Val(code) == 0; }
};

// The invoice the bridge stored, as the host reads it back to make its slips.
struct Facture {
    long cle = 0;
    std::string numero;  // Info_Facture_NUMFAC, as stored
    std::string certification;
    double amo = 0;
    double amc = 0;
    std::string dossier;       // the host's file the invoice belongs to
    std::string type_dossier;  // and its kind
};

std::string euros(const Valeur& v) {
    if (v.nul()) {
        return "(vide)";
    }
    char texte[32];
    std::snprintf(texte, sizeof texte, "%.2f €", v.nombre());
    return texte;
}

std::string texte(const Valeur& v) {
    return v.nul() || v.str().empty() ? "(vide)" : v.str();
}

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

    std::vector<std::string> derouler();

  private:
    const Installation& inst_;
    std::ostream& sortie_;
    const std::string base_pont_;
    const std::string base_hote_;
    int etape_ = 0;
    std::string etape_courante_;
    std::vector<std::string> echecs_;

    void titre(std::string_view texte);
    void echec(std::string_view texte);
    bool operation(const char* nom, std::string_view quoi, const std::string& reponses = "",
                   const std::vector<std::string>& environnement = {});
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

    std::optional<Facture> facturer();
    void capturer(const Facture& f);
    std::vector<std::string> scanner_de_demonstration();
    void montrer_pieces();
    void suivre_pieces(const Facture& f, long client);
    void montrer_suivi();
    bool ecrire_ordre(const char* fonction, const std::string& contenu, std::string_view quoi);
    std::optional<Facture> facturer_sans_carte(long client);
    void montrer_erreurs_scor();
    void supprimer_feuille_de_soins(const Facture& f);
    bool ecrire_demande_facture();
    std::optional<Facture> montrer_facture();
    std::optional<std::string> ecrire_bordereaux(const Facture& f);
    void montrer_bordereau_hote(const std::string& fiche);
    void montrer_liste_factures();
    void montrer_lot(const Facture& f);
    std::string avancer();
    bool ecrire_periode_retours(const std::string& fin);

    void montrer_traces();
};

void Demo::titre(std::string_view texte) {
    etape_courante_ = "[" + std::to_string(++etape_) + "] " + std::string(texte);
    sortie_ << "\n" << etape_courante_ << "\n";
}

void Demo::echec(std::string_view texte) {
    if (echecs_.empty() || echecs_.back() != etape_courante_) {
        echecs_.push_back(etape_courante_);
    }
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

bool Demo::operation(const char* nom, std::string_view quoi, const std::string& reponses,
                     const std::vector<std::string>& environnement) {
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
    lancement.environnement = environnement;
    lancement.environnement.push_back("SV140_UI=console");
    // The optician's answers, one a line, as the console interface reads them.
    const std::string fichier_reponses = joindre(inst_.racine, "sv140-shop-reponses.txt");
    if (!reponses.empty()) {
        if (!ecrire_fichier(fichier_reponses, reponses)) {
            echec("impossible d'écrire " + fichier_reponses);
            return false;
        }
        lancement.entree = fichier_reponses;
    }
    const int fin = lancer_programme(inst_.pont(), lancement);
    supprimer_fichier(fichier_reponses);

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

// The host's invoicing cycle for the beneficiary linked above: the claim, the invoice
// the bridge stores, the slips the host makes for it, the list, the sending, and what
// the insurers answered two days later.
std::optional<Facture> Demo::facturer() {
    titre("demande de facture de l'opticien : une paire de lunettes");
    if (!ecrire_demande_facture()) {
        return std::nullopt;
    }
    if (!operation("f_CreerFacture", "création de la facture")) {
        sortie_ << "    (sans facture créée, la suite du cycle n'est pas jouée)\n";
        return std::nullopt;
    }
    const std::optional<Facture> facture = montrer_facture();
    if (!facture) {
        return std::nullopt;
    }

    titre("bordereaux de l'hôte pour la facture n° " + facture->numero);
    const std::optional<std::string> fiche = ecrire_bordereaux(*facture);

    if (operation("f_ListerFactures", "factures connues du middleware")) {
        montrer_liste_factures();
    }
    if (operation("f_EnvoyerToutesFactures", "envoi des factures en lots")) {
        montrer_lot(*facture);
    }

    const std::string jour = avancer();
    titre("période des retours demandée par l'hôte");
    if (ecrire_periode_retours(jour) &&
        operation("f_LireInfosRetourFacture", "retours des caisses et paiements") && fiche) {
        montrer_bordereau_hote(*fiche);
    }
    return facture;
}

bool Demo::ecrire_demande_facture() {
    std::string erreur;
    const auto beneficiaire = Lire_Beneficiaire(inst_.zrsim, kCarteDemo, 1, erreur);
    if (!beneficiaire) {
        echec(erreur);
        return false;
    }
    const Demande_Facture demande{.beneficiaire = *beneficiaire};
    const std::string chemin = joindre(inst_.programme, "ZEMO_Request.xml");
    if (!Document_Facture(demande).enregistrer(chemin)) {
        echec("impossible d'écrire " + chemin);
        return false;
    }
    sortie_ << "    " << chemin << " (ce qu'écrit sv140-shop facture DIR " << kCarteDemo
            << " 1) :\n";
    Decrire_Demande(demande, sortie_, "      ");
    return true;
}

std::optional<Facture> Demo::montrer_facture() {
    auto cle = lire(base_pont_,
                    "SELECT Max(T_InfosFacture.Info_Facture_ID) AS ID_FAC FROM T_InfosFacture;");
    Facture f;
    f.cle = cle && !cle->EOF_() ? static_cast<long>(cle->champ("ID_FAC").nombre()) : 0;
    auto rs = lire(base_pont_,
                   "SELECT T_InfosFacture.* FROM T_InfosFacture WHERE "
                   "(((T_InfosFacture.Info_Facture_ID)=" +
                       std::to_string(f.cle) + "));");
    if (!rs || rs->EOF_() || rs->champ("Info_Facture_NUMFAC").str().empty()) {
        echec("aucune facture numérotée dans T_InfosFacture");
        return std::nullopt;
    }
    f.numero = rs->champ("Info_Facture_NUMFAC").str();
    f.certification = rs->champ("Info_Facture_TYPECERTIF").str();
    f.amo = rs->champ("Info_Facture_TPAMO").nombre();
    f.amc = rs->champ("Info_Facture_TPAMC").nombre();
    f.dossier = rs->champ("Info_Facture_NumDOS").str();
    f.type_dossier = rs->champ("Info_Facture_TypDOS").str();
    sortie_ << "    T_InfosFacture : facture n° " << f.numero << " (clé " << f.cle << "), dossier "
            << texte(rs->champ("Info_Facture_TypDOS")) << " "
            << texte(rs->champ("Info_Facture_NumDOS")) << ", créée le "
            << texte(rs->champ("Info_Facture_dteCreate")) << "\n";
    sortie_ << "      flux " << texte(rs->champ("Info_Facture_TYPEFLUX")) << ", "
            << texte(rs->champ("Info_Facture_NATASSUR")) << ", caisse "
            << texte(rs->champ("Info_Facture_CODREG")) << " "
            << texte(rs->champ("Info_Facture_CODCAI")) << " "
            << texte(rs->champ("Info_Facture_CODCEN")) << ", mutuelle "
            << texte(rs->champ("Info_Facture_NUMMUT")) << ", tiers payant "
            << texte(rs->champ("Info_Facture_TYPETP")) << ", certification "
            << texte(rs->champ("Info_Facture_TYPECERTIF")) << "\n";
    sortie_ << "      total " << euros(rs->champ("Info_Facture_TOTALFAC")) << " : part AMO "
            << euros(rs->champ("Info_Facture_TPAMO")) << ", part AMC "
            << euros(rs->champ("Info_Facture_TPAMC")) << ", reste à l'assuré "
            << euros(rs->champ("Info_Facture_TOTALASS")) << "\n";

    auto lignes =
        lire(base_pont_,
             "SELECT T_InfosDetailFacture.* FROM T_InfosDetailFacture WHERE "
             "(((T_InfosDetailFacture.Info_Facture_ID_FK)=" +
                 std::to_string(f.cle) + ")) ORDER BY T_InfosDetailFacture.Info_DetailFacture_ID;");
    sortie_ << "    T_InfosDetailFacture : " << (lignes ? lignes->RecordCount() : 0)
            << " ligne(s)\n";
    for (; lignes && !lignes->EOF_(); lignes->MoveNext()) {
        sortie_ << "      " << texte(lignes->champ("Info_DetailFacture_CODACTE")) << " "
                << texte(lignes->champ("Info_Facture_CODLPP")) << " ("
                << texte(lignes->champ("Info_DetailFacture_TypPrestation"))
                << ") : " << texte(lignes->champ("Info_DetailFacture_QUANTITE")) << " x "
                << euros(lignes->champ("Info_DetailFacture_prixUnitaire")) << ", base "
                << euros(lignes->champ("Info_DetailFacture_baseLPP")) << " à "
                << texte(lignes->champ("Info_DetailFacture_tauxRbt")) << " %, AMO "
                << euros(lignes->champ("Info_DetailFacture_MtAMO")) << ", AMC "
                << euros(lignes->champ("Info_DetailFacture_MtAMC")) << "\n";
    }
    if (!lignes || lignes->RecordCount() == 0) {
        echec("la facture n'a aucune ligne");
    }
    return f;
}

// What the host writes once an invoice exists: its slip row in the bridge's database,
// which the sending completes with the lot, and its receivable in its own, which the
// return information reconciles. Returns the order sheet, the key of the latter.
std::optional<std::string> Demo::ecrire_bordereaux(const Facture& f) {
    {
        Connexion cnx;
        Statut s = cnx.ouvrir(base_pont_);
        if (s) {
            s = cnx.Execute(
                "INSERT INTO T_InfosBordereaux ( Info_Bordereau_numFacture, "
                "Info_Bordereau_typeCertification ) VALUES ( '" +
                Texte_SQL(f.numero) + "', '" + Texte_SQL(f.certification) + "' );");
        }
        if (s) {
            s = cnx.valider();
        }
        if (!s) {
            echec("écriture de T_InfosBordereaux impossible : " + s.raison());
            return std::nullopt;
        }
    }
    sortie_ << "    T_InfosBordereaux : facture " << f.numero << ", certification "
            << (f.certification.empty() ? "(vide)" : f.certification) << ", lot encore vide\n";

    char fiche[32];
    std::snprintf(fiche, sizeof fiche, "FC%06ld", static_cast<long>(Val(f.numero)));
    std::tm jour = maintenant_local();
    jour.tm_hour = jour.tm_min = jour.tm_sec = 0;
    Connexion cnx;
    long contrat = 0;
    Statut s = cnx.ouvrir(base_hote_);
    if (s) {
        s = cnx.Execute("INSERT INTO [Fichier des Mutuelles] ( [Nom Mutuelle] ) VALUES ( '" +
                        std::string(kMutuelleGenerique) + "' );");
    }
    if (s) {
        auto mutuelle = Plus_Grande_Cle(
            cnx,
            "SELECT Max([Fichier des Mutuelles].Compteur) AS Cle FROM [Fichier des Mutuelles];");
        s = mutuelle ? cnx.Execute("INSERT INTO [Contrat Mutuelles] ( Lien ) VALUES ( " +
                                   Nombre_SQL(*mutuelle) + " );")
                     : mutuelle.statut();
    }
    if (s) {
        auto cle = Plus_Grande_Cle(
            cnx, "SELECT Max([Contrat Mutuelles].[N°]) AS Cle FROM [Contrat Mutuelles];");
        s = cle ? Statut() : cle.statut();
        contrat = cle ? static_cast<long>(*cle) : 0;
    }
    // No exoneration on this card: the scheme's whole share is its ordinary one, none of
    // it the patient's share it would take over (TotalTmoCPAM).
    if (s) {
        s = cnx.Execute(
            "INSERT INTO [Bordereau Mutuelle] ( NumFicheCommande, NumFacture, Mutuelle, [Date], "
            "TotalTmoCPAM, TotalCPAM, TotalMutuelle, Paiement_RO, Paiement_RC, Pointage, Solde ) "
            "VALUES ( '" +
            std::string(fiche) + "', '" + Texte_SQL(f.numero) + "', " + std::to_string(contrat) +
            ", " + Date_SQL(jour) + ", 0, " + Nombre_SQL(f.amo) + ", " + Nombre_SQL(f.amc) +
            ", 0, 0, 0, 0 );");
    }
    if (s) {
        s = cnx.valider();
    }
    if (!s) {
        echec("écriture du bordereau de l'hôte impossible : " + s.raison());
        return std::nullopt;
    }
    sortie_ << "    [Fichier des Mutuelles] : " << kMutuelleGenerique
            << " (tiers payant générique), contrat n° " << contrat << "\n";
    montrer_bordereau_hote(fiche);
    return fiche;
}

void Demo::montrer_bordereau_hote(const std::string& fiche) {
    auto rs = lire(base_hote_,
                   "SELECT [Bordereau Mutuelle].* FROM [Bordereau Mutuelle] WHERE ((([Bordereau "
                   "Mutuelle].NumFicheCommande)='" +
                       Texte_SQL(fiche) + "'));");
    if (!rs || rs->EOF_()) {
        echec("aucune ligne " + fiche + " dans [Bordereau Mutuelle]");
        return;
    }
    sortie_ << "    [Bordereau Mutuelle] " << fiche << " : facture "
            << texte(rs->champ("NumFacture")) << " du " << texte(rs->champ("Date")) << ", contrat "
            << texte(rs->champ("Mutuelle")) << "\n";
    sortie_ << "      dû : caisse " << euros(rs->champ("TotalCPAM")) << " + ticket modérateur "
            << euros(rs->champ("TotalTmoCPAM")) << ", mutuelle "
            << euros(rs->champ("TotalMutuelle")) << "\n";
    const std::string etat = rs->champ("Libel_Rejet").str();
    sortie_ << "      retour : "
            << (etat.empty() ? "aucun" : etat + " (motif " + texte(rs->champ("Motif")) + ")")
            << ", payé par la caisse " << euros(rs->champ("Paiement_RO")) << ", par la mutuelle "
            << euros(rs->champ("Paiement_RC")) << "\n";
    sortie_ << "      pointé " << (rs->champ("Pointage").booleen() ? "oui" : "non") << ", soldé "
            << (rs->champ("Solde").booleen() ? "oui" : "non") << ", date de pointage "
            << texte(rs->champ("Date_pointage")) << ", date d'édition "
            << texte(rs->champ("DateEdition")) << "\n";
}

void Demo::montrer_liste_factures() {
    XmlDocument doc;
    std::vector<XmlNoeud> numeros;
    if (doc.charger_fichier(joindre(inst_.programme, "ZEMO_Response.xml"))) {
        numeros = doc.selectionner("/ZRMESSAGE/resultat/donnees/listeFacture/numeroFacture");
    }
    sortie_ << "    ZEMO_Response.xml : " << numeros.size() << " facture(s)";
    const char* separateur = " : ";
    for (const XmlNoeud& n : numeros) {
        sortie_ << separateur << n.texte();
        separateur = ", ";
    }
    sortie_ << "\n";
}

void Demo::montrer_lot(const Facture& f) {
    auto b = lire(base_pont_,
                  "SELECT T_InfosBordereaux.* FROM T_InfosBordereaux WHERE "
                  "(((T_InfosBordereaux.Info_Bordereau_numFacture)='" +
                      Texte_SQL(f.numero) + "'));");
    if (!b || b->EOF_()) {
        echec("aucune ligne de T_InfosBordereaux pour la facture " + f.numero);
        return;
    }
    sortie_ << "    T_InfosBordereaux : facture " << f.numero << ", lot "
            << texte(b->champ("Info_Bordereau_NumLot_FSE")) << ", lot sans numéro "
            << texte(b->champ("Info_Bordereau_NumLot_DRE")) << ", lot interne "
            << texte(b->champ("Info_Bordereau_ID_lotInterne")) << "\n";
    sortie_ << "      régime " << texte(b->champ("Info_Bordereau_Regroupement")) << " « "
            << texte(b->champ("Info_Bordereau_LibelRegroupement")) << " », organisme n° "
            << texte(b->champ("Info_Adresse_ID_FK")) << "\n";
    if (b->champ("Info_Bordereau_NumLot_FSE").str().empty() &&
        b->champ("Info_Bordereau_NumLot_DRE").str().empty()) {
        echec("la facture n'est dans aucun lot");
    }

    auto a = lire(base_pont_,
                  "SELECT T_InfosAdresse.* FROM T_InfosAdresse WHERE "
                  "(((T_InfosAdresse.Info_Adresse_ID)=" +
                      Nombre_SQL(b->champ("Info_Adresse_ID_FK").str()) + "));");
    if (a && !a->EOF_()) {
        sortie_ << "    T_InfosAdresse : " << texte(a->champ("Info_Adresse_codeRegime")) << " "
                << texte(a->champ("Info_Adresse_codeCaisse")) << " "
                << texte(a->champ("Info_Adresse_codeCentre")) << " "
                << texte(a->champ("Info_Adresse_libelle")) << ", "
                << texte(a->champ("Info_Adresse_adresse")) << ", "
                << texte(a->champ("Info_Adresse_codePostal")) << " "
                << texte(a->champ("Info_Adresse_commune")) << "\n";
    }

    auto lot = lire(base_pont_,
                    "SELECT T_InfosFacture.Info_Facture_Nlot FROM T_InfosFacture WHERE "
                    "(((T_InfosFacture.Info_Facture_ID)=" +
                        std::to_string(f.cle) + "));");
    if (lot && !lot->EOF_()) {
        sortie_ << "    T_InfosFacture : facture n° " << f.numero << ", Info_Facture_Nlot "
                << texte(lot->champ("Info_Facture_Nlot")) << "\n";
    }
}

// Returns the new simulated date ("yyyymmdd"), today's when it could not be moved.
std::string Demo::avancer() {
    titre(std::to_string(kJoursAvantRetours) + " jours plus tard chez les caisses");
    sortie_ << "    sv140-shop avancer " << dossier_parent(inst_.racine) << " "
            << kJoursAvantRetours << "\n";
    std::string date;
    std::string erreur;
    if (!Avancer_Jour_Simule(inst_.zrsim, kJoursAvantRetours, date, erreur)) {
        echec(erreur);
        return Date_Du_Jour();
    }
    sortie_ << "    jour simulé du middleware : " << Date_Lisible(date) << "\n";
    return date;
}

// The host names the period of the return information itself (data version 3500 and
// later): the last month, up to `fin`. The bridge reads the end as "datedfin".
bool Demo::ecrire_periode_retours(const std::string& fin) {
    XmlDocument doc;
    XmlNoeud donnees = doc.creer_racine("ZRMESSAGE").ajouter("donnees");
    const std::string debut = Date_Du_Jour(-30);
    donnees.ajouter("datedebut", debut);
    donnees.ajouter("datedfin", fin);
    const std::string chemin = joindre(inst_.programme, "ZEMO_Request.xml");
    if (!doc.enregistrer(chemin)) {
        echec("impossible d'écrire " + chemin);
        return false;
    }
    sortie_ << "    " << chemin << " : du " << Date_Lisible(debut) << " au " << Date_Lisible(fin)
            << "\n";
    return true;
}

// The scanner the demo scans with: SANE's test device, configured in the demo's own
// folder (the machine's scanner settings are left alone), delivering a grey grid page.
std::vector<std::string> Demo::scanner_de_demonstration() {
#if defined(_WIN32)
    sortie_ << "    scanner : la source TWAIN par défaut du poste\n";
    return {};
#else
    const std::string dossier = joindre(inst_.racine, "sane");
    const bool pret = (dossier_existe(dossier) || creer_dossier(dossier)) &&
                      ecrire_fichier(joindre(dossier, "dll.conf"), "test\n") &&
                      ecrire_fichier(joindre(dossier, "test.conf"),
                                     "number_of_devices 1\nmode Gray\ndepth 8\nresolution 200.0\n"
                                     "test-picture \"Grid\"\ngeometry_max 300.0\n"
                                     "br_x 148.0\nbr_y 210.0\n");
    if (!pret) {
        echec("impossible de configurer le scanner de démonstration dans " + dossier);
        return {};
    }
    sortie_ << "    scanner : périphérique SANE « test:0 » (mire en grille, format A5), configuré "
               "dans "
            << dossier << "\n";
    return {"SANE_CONFIG_DIR=" + dossier, "SANE_DEFAULT_DEVICE=test:0"};
#endif
}

void Demo::capturer(const Facture& f) {
    titre("commande SCOR de l'hôte pour la facture n° " + f.numero +
          " : l'ordonnance et la feuille de soins");
    const std::string dossier = Val(f.dossier) >= 1 ? Nombre_SQL(Val(f.dossier)) : "1";
    const std::string type = f.type_dossier.empty() ? "OPT" : f.type_dossier;
    XmlDocument doc;
    XmlNoeud ordre =
        doc.creer_racine("ZRMESSAGE").ajouter("requete").ajouter("fonction").ajouter("f_Scor");
    const struct {
        const char* groupe;
        const char* id;
        const char* compteur;
    } pieces[] = {{"Ordonnance", "", "1"}, {"Cerfa", "", "2"}, {"Autre", "0", "3"}};
    for (const auto& p : pieces) {
        XmlNoeud g = ordre.ajouter(p.groupe);
        g.ajouter("Dossier", type);
        g.ajouter("Id", *p.id ? std::string(p.id) : dossier);
        g.ajouter("Facture", f.numero);
        g.ajouter("Compteur", p.compteur);
    }
    const std::string chemin = joindre(inst_.programme, "dctsScor.xml");
    if (!doc.enregistrer(chemin)) {
        echec("impossible d'écrire " + chemin);
        return;
    }
    sortie_ << "    " << chemin << " : ordonnance (compteur 1) et feuille de soins (compteur 2) du "
            << "dossier " << type << " " << dossier << ", aucune autre pièce\n";
    const std::vector<std::string> scanner = scanner_de_demonstration();
    sortie_ << "    l'opticien répond : oui (il scanne l'ordonnance), non (la feuille de soins est "
               "collectée sur papier), puis 7) Enregistrer dans la fenêtre de visualisation\n";
    if (operation("f_Scor", "numérisation des pièces jointes", "oui\nnon\n7\n", scanner)) {
        montrer_pieces();
    }
}

void Demo::montrer_pieces() {
    auto rs = lire(base_pont_,
                   "SELECT T_InfosSCor.* FROM T_InfosSCor ORDER BY T_InfosSCor.InfosSCor_ID;");
    sortie_ << "    T_InfosSCor : " << (rs ? rs->RecordCount() : 0) << " pièce(s)\n";
    for (; rs && !rs->EOF_(); rs->MoveNext()) {
        // The stored folder ends with its separator.
        const std::string pdf =
            rs->champ("InfosSCor_Chemin").str() + rs->champ("InfosSCor_nom").str();
        std::string octets;
        const bool lu = lire_fichier(pdf, octets);
        sortie_ << "      " << texte(rs->champ("InfosSCor_Nature")) << " facture "
                << texte(rs->champ("InfosSCor_NUMFAC")) << ", mode "
                << (rs->champ("InfosSCor_Mode").str() == "M" ? "M (papier collecté)"
                                                             : "(vide : scannée)")
                << ", à envoyer : " << (rs->champ("Pointage").booleen() ? "oui" : "non") << "\n"
                << "        " << pdf << " : "
                << (lu ? std::to_string(octets.size()) + " octets" : std::string("ABSENT")) << "\n";
        if (!lu || octets.rfind("%PDF-", 0) != 0) {
            echec("le PDF de la pièce n'est pas dans l'archive");
        }
    }
    if (!rs || rs->RecordCount() != 2) {
        echec("deux pièces attendues : l'ordonnance et la feuille de soins");
    }
}

// What becomes of the attachments once captured: sent to the middleware, followed until
// the fund has them, checked against the invoices that need them, and one withdrawn.
void Demo::suivre_pieces(const Facture& f, long client) {
    if (operation("f_TransfertPJ", "envoi des pièces jointes au middleware")) {
        montrer_suivi();
    }

    avancer();
    const std::string debut = Date_Du_Jour(-30);
    if (ecrire_ordre("f_mettreajourStatut",
                     "<donnees><DateDebut>" + debut + "</DateDebut></donnees>",
                     "statuts des pièces générées depuis le " + Date_Lisible(debut)) &&
        operation("f_mettreajourStatut", "statut des pièces jointes envoyées")) {
        montrer_suivi();
    }

    if (facturer_sans_carte(client) &&
        operation("f_ControlePJ", "contrôle des pièces jointes manquantes")) {
        montrer_erreurs_scor();
    }

    supprimer_feuille_de_soins(f);
}

void Demo::montrer_suivi() {
    auto rs = lire(base_pont_,
                   "SELECT T_InfosSCor.* FROM T_InfosSCor ORDER BY T_InfosSCor.InfosSCor_ID;");
    sortie_ << "    T_InfosSCor : " << (rs ? rs->RecordCount() : 0) << " pièce(s)\n";
    for (; rs && !rs->EOF_(); rs->MoveNext()) {
        const std::string envoi = rs->champ("InfosSCor_DateEnvoi").str();
        sortie_ << "      n° " << texte(rs->champ("InfosSCor_ID")) << " "
                << texte(rs->champ("InfosSCor_Nature")) << " facture "
                << texte(rs->champ("InfosSCor_NUMFAC")) << " : "
                << texte(rs->champ("InfosSCor_nom")) << "\n"
                << "        envoyée : " << (envoi.empty() ? "non" : envoi.substr(0, 10))
                << ", à envoyer : " << (rs->champ("Pointage").booleen() ? "oui" : "non")
                << ", erreur d'envoi : " << texte(rs->champ("C_Erreur")) << ", statut "
                << texte(rs->champ("C_Statut"))
                << ", accusé : " << (rs->champ("InfosSCor_ARL").booleen() ? "oui" : "non") << "\n"
                << "        libellé : « " << rs->champ("InfosSCor_LibelError").str() << " »\n";
    }
}

bool Demo::ecrire_ordre(const char* fonction, const std::string& contenu, std::string_view quoi) {
    const std::string chemin = joindre(inst_.programme, "dctsScor.xml");
    XmlDocument doc;
    const std::string texte =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><ZRMESSAGE><requete>"
        "<fonction><" +
        std::string(fonction) + ">" + contenu + "</" + fonction +
        "></fonction></requete></ZRMESSAGE>";
    if (!doc.charger_texte(texte) || !doc.enregistrer(chemin)) {
        echec("impossible d'écrire " + chemin);
        return false;
    }
    sortie_ << "    " << chemin << " : " << quoi << "\n";
    return true;
}

// The next client leaves without a card in the reader: the invoice is made in degraded
// mode, which calls for the paper claim form, and sent.
std::optional<Facture> Demo::facturer_sans_carte(long client) {
    titre("facture suivante sans carte Vitale dans le lecteur (mode dégradé)");
    std::string erreur;
    if (!sim::Inserer_Carte(inst_.zrsim, "", erreur)) {
        echec(erreur);
        return std::nullopt;
    }
    sortie_ << "    lecteur : vide\n";
    if (!ecrire_demande_facture() || !operation("f_CreerFacture", "création de la facture")) {
        return std::nullopt;
    }
    const std::optional<Facture> f = montrer_facture();
    if (!f) {
        return std::nullopt;
    }
    titre("dossier et bordereaux de l'hôte pour la facture n° " + f->numero);
    Connexion cnx;
    Statut s = cnx.ouvrir(base_hote_);
    if (s) {
        s = cnx.Execute(
            "INSERT INTO [Fiche Technique Optique] ( Lien, [NUMERO FACTURE] ) "
            "VALUES ( " +
            std::to_string(client) + ", " + Nombre_SQL(f->numero) + " );");
    }
    if (s) {
        s = cnx.valider();
    }
    if (!s) {
        echec("écriture de la fiche technique impossible : " + s.raison());
        return std::nullopt;
    }
    sortie_ << "    [Fiche Technique Optique] : facture " << f->numero << ", client n° " << client
            << "\n";
    if (!ecrire_bordereaux(*f) ||
        !operation("f_EnvoyerToutesFactures", "envoi de la facture dégradée")) {
        return std::nullopt;
    }
    montrer_lot(*f);
    return f;
}

void Demo::montrer_erreurs_scor() {
    auto rs = lire(base_pont_, "SELECT SCOR_Erreurs.* FROM SCOR_Erreurs;");
    sortie_ << "    SCOR_Erreurs : " << (rs ? rs->RecordCount() : 0) << " pièce(s) manquante(s)\n";
    bool feuille = false;
    for (; rs && !rs->EOF_(); rs->MoveNext()) {
        feuille = feuille || rs->champ("id_PJ").str() == "FSNC";
        sortie_ << "      facture " << texte(rs->champ("numeroFacture")) << " : "
                << texte(rs->champ("Nature_PJ")) << " (" << texte(rs->champ("id_PJ"))
                << "), client " << texte(rs->champ("Reference_Client")) << "\n";
    }
    if (!feuille) {
        echec("la feuille de soins de la facture dégradée devait manquer");
    }
}

// The claim form of a signed invoice is not needed: the fund leaves it to be handled by
// hand, and the optician withdraws it.
void Demo::supprimer_feuille_de_soins(const Facture& f) {
    auto rs =
        lire(base_pont_,
             "SELECT T_InfosSCor.* FROM T_InfosSCor WHERE (((T_InfosSCor.InfosSCor_NUMFAC)='" +
                 Nombre_SQL(f.numero) + "') AND ((T_InfosSCor.InfosSCor_Nature)='FSNC'));");
    titre("commande de suppression de l'hôte : la feuille de soins de la facture n° " + f.numero);
    if (!rs || rs->EOF_()) {
        echec("aucune feuille de soins enregistrée pour la facture " + f.numero);
        return;
    }
    const std::string id = texte(rs->champ("InfosSCor_ID"));
    const std::string pdf = rs->champ("InfosSCor_Chemin").str() + rs->champ("InfosSCor_nom").str();
    if (!ecrire_ordre("f_deldctsSCOR",
                      "<Dossier><Dossier>" + rs->champ("typeDossier").str() + "</Dossier><Id>" +
                          texte(rs->champ("idDossier")) + "</Id><Facture>" + f.numero +
                          "</Facture><id_Document>" + id +
                          "</id_Document><Nature>FSNC</Nature></Dossier>",
                      "pièce n° " + id) ||
        !operation("f_deldctsSCOR", "retrait de la feuille de soins")) {
        return;
    }
    montrer_suivi();
    sortie_ << "    " << pdf << " : " << (fichier_existe(pdf) ? "ENCORE PRÉSENT" : "supprimé")
            << "\n";
    if (fichier_existe(pdf)) {
        echec("le PDF de la pièce retirée est resté dans l'archive");
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

std::vector<std::string> Demo::derouler() {
    operation("f_LireVersion", "versions du middleware et du lecteur");
    montrer_versions();

    operation("f_LireCPS", "carte du professionnel");
    montrer_cps();

    operation("f_InitialisationPS", "initialisation du professionnel");

    titre(std::string("carte Vitale « ") + kCarteDemo + " » dans le lecteur");
    std::string erreur;
    if (sim::Inserer_Carte(inst_.zrsim, kCarteDemo, erreur)) {
        sortie_ << "    lecteur : carte " << kCarteDemo << "\n";
    } else {
        echec(erreur);
    }

    operation("f_LireCVitale", "lecture de la carte Vitale");
    const std::vector<Beneficiaire> liste = montrer_selection();

    titre("choix du bénéficiaire par l'opticien");
    if (liste.empty()) {
        echec("aucun bénéficiaire à choisir");
        montrer_traces();
        return echecs_;
    }
    const Beneficiaire& choisi = liste.front();
    sortie_ << "    choix : 1) " << choisi.nom << " " << choisi.prenom << "\n";
    const long client = choisir(choisi);
    if (client <= 0) {
        montrer_traces();
        return echecs_;
    }

    operation("f_MettreAJourIdEtc", "liaison du bénéficiaire au client");
    montrer_carte(client);

    titre("demande de l'opticien pour la complémentaire");
    if (ecrire_demande_complementaire(client, choisi)) {
        operation("f_LireInfosComplementaire", "droits auprès de la complémentaire");
        montrer_copies_complementaire();
    }

    if (const std::optional<Facture> facture = facturer()) {
        capturer(*facture);
        suivre_pieces(*facture, client);
    }

    montrer_traces();
    return echecs_;
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

std::vector<std::string> Derouler_Demo(const Installation& inst, std::ostream& sortie) {
    Demo demo(inst, sortie);
    return demo.derouler();
}

}  // namespace sv140::shop
