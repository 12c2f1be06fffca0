#include "sim/fonctions.h"

#include <charconv>
#include <chrono>
#include <functional>
#include <map>
#include <optional>

#include "platform/encodage.h"
#include "platform/xml.h"
#include "sim/appel.h"
#include "sim/facturation.h"
#include "sim/reponse.h"
#include "sim/scor.h"

namespace sv140::sim {

Reponse erreur(const Appel& a, int code, std::string libelle) {
    return reponse_erreur(a.operation, code, std::move(libelle));
}

bool chiffres(const std::string& t, std::size_t n) {
    if (t.size() != n) {
        return false;
    }
    for (char c : t) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return true;
}

std::string sans_zeros(const std::string& t) {
    const auto debut = t.find_first_not_of('0');
    return debut == std::string::npos ? (t.empty() ? t : "0") : t.substr(debut);
}

std::string avec_zeros(long long n, std::size_t largeur) {
    std::string t = std::to_string(n);
    return t.size() >= largeur ? t : std::string(largeur - t.size(), '0') + t;
}

std::optional<long long> nombre(const std::string& t) {
    long long valeur = 0;
    if (t.empty() || t.size() > 12 || !chiffres(t, t.size())) {
        return std::nullopt;
    }
    std::from_chars(t.data(), t.data() + t.size(), valeur);
    return valeur;
}

namespace {

std::string id_facturation(const Element& situation) {
    return situation.texte_de("NUM_IDFACPS") + situation.texte_de("CLE_IDFACPS");
}

}  // namespace

// Situation numbers are compared as numbers: the host may send "01" for situation 1.
Erreur verifier_PS(const Appel& a, ExigencesPS exigences) {
    const std::optional<Element> cps = a.depot.cps();
    if (!cps) {
        return erreur(a, kCPSAbsente, "Carte du professionnel de santé absente du lecteur");
    }
    const XmlNoeud ps = a.requete.selectionner_un("PS");
    if (!ps) {
        return erreur(a, kBlocPSAbsent, "Bloc PS absent de la requête");
    }
    const std::string idNat = ps.texte_de("idNat");
    if (idNat.empty() || idNat != cps->texte_de("NUM_IDN")) {
        return erreur(a, kIdNatInconnu,
                      "Identifiant national du professionnel inconnu : '" + idNat + "'");
    }
    if (exigences.motDePasse && ps.texte_de("motDePasse") != cps->texte_de("NUM_IDN")) {
        return erreur(a, kCodePorteurErrone, "Code porteur de la carte CPS erroné");
    }
    const std::string idFac = ps.texte_de("idFac");
    const bool avec_situation = static_cast<bool>(ps.selectionner_un("numSitu"));
    if (exigences.numSitu && !avec_situation) {
        return erreur(a, kSituationInconnue, "Numéro de situation absent de la requête");
    }
    if (avec_situation) {
        const std::string numSitu = ps.texte_de("numSitu");
        for (const Element* s : cps->tous("situation")) {
            if (!numSitu.empty() && sans_zeros(s->texte_de("NUM_SIT")) == sans_zeros(numSitu)) {
                if (idFac != id_facturation(*s)) {
                    return erreur(a, kIdFacInconnu,
                                  "Identifiant de facturation '" + idFac +
                                      "' inconnu pour la situation " + numSitu);
                }
                return std::nullopt;
            }
        }
        return erreur(a, kSituationInconnue,
                      "Situation '" + numSitu + "' inconnue sur la carte CPS");
    }
    for (const Element* s : cps->tous("situation")) {
        if (!idFac.empty() && idFac == id_facturation(*s)) {
            return std::nullopt;
        }
    }
    return erreur(a, kIdFacInconnu, "Identifiant de facturation '" + idFac + "' inconnu");
}

Erreur lire_carte(const Appel& a, Element& contexte) {
    const std::string id = a.depot.carte_lecteur();
    if (id.empty()) {
        return erreur(a, kCarteVitaleAbsente, "Carte Vitale absente du lecteur");
    }
    std::string raison;
    if (!a.depot.carte(id, contexte, raison)) {
        return erreur(a, kCarteVitaleIllisible, "Carte Vitale illisible ou invalide");
    }
    contexte.nom = "contexteCVitale";
    return std::nullopt;
}

namespace {

Element donnees_version() {
    Element v("donneesVersion");
    v.ajouter("versionDll", "3.2.7.0");
    v.ajouter("versionCDC", "1.40");
    v.ajouter("versionReferentiel", "1.40.14.2");
    Element& lecteur = v.ajouter("infosLecteur");
    lecteur.ajouter("constructeur", "Lecteurs Simulés");
    lecteur.ajouter("typeLecteur", "SIM-BI2");
    lecteur.ajouter("numSerie", "SIM0000421");
#if defined(_WIN32)
    lecteur.ajouter("typeOS", "Windows");
#else
    lecteur.ajouter("typeOS", "Linux");
#endif
    Element& appli = lecteur.ajouter("appliSV");
    appli.ajouter("nomAppli", "Appli SV Simulée");
    appli.ajouter("numVersion", "0540");
    appli.ajouter("dateAppli", "20230915");
    appli.ajouter("heureAppli", "103000");
    appli.ajouter("crcAppli", "5A3F");
    return v;
}

Reponse f_LireVersion(const Appel& a) {
    Reponse r = reponse_succes(a.operation);
    r.donnees.ajouter_arbre(donnees_version());
    return r;
}

Reponse f_MaJVersion(const Appel& a) {
    if (Erreur e = verifier_PS(a, {.numSitu = true})) {
        return *e;
    }
    Reponse r = reponse_succes(a.operation);
    r.donnees.ajouter_arbre(donnees_version());
    return r;
}

Reponse f_LireCPS(const Appel& a) {
    std::optional<Element> cps = a.depot.cps();
    if (!cps) {
        return erreur(a, kCPSAbsente, "Carte du professionnel de santé absente du lecteur");
    }
    cps->nom = "contextePS";
    Reponse r = reponse_succes(a.operation);
    r.donnees.ajouter_arbre(*cps);
    return r;
}

Reponse f_InitialisationPS(const Appel& a) {
    if (Erreur e = verifier_PS(a, {.numSitu = true, .motDePasse = true})) {
        return *e;
    }
    return reponse_succes(a.operation);
}

// The card in the reader, as its context and beneficiaries.
Reponse reponse_carte(const Appel& a) {
    Element contexte;
    if (Erreur e = lire_carte(a, contexte)) {
        return *e;
    }
    Reponse r = reponse_succes(a.operation);
    r.donnees.ajouter_arbre(contexte);
    return r;
}

Reponse f_LireCVitale(const Appel& a) {
    if (!chiffres(a.requete.texte_de("dateLecture"), 8)) {
        return erreur(a, kDateLectureInvalide, "Date de lecture absente ou invalide");
    }
    return reponse_carte(a);
}

// The update brings the card in line with the insurer's files; the simulated insurer
// agrees with the card, so the answer is the card as it stands.
Reponse f_MettreAJourCV(const Appel& a) {
    return reponse_carte(a);
}

std::string annee_en_cours() {
    using namespace std::chrono;
    const year_month_day jour{floor<days>(system_clock::now())};
    return std::to_string(static_cast<int>(jour.year()));
}

Reponse f_LireInfosComplementaire(const Appel& a) {
    if (Erreur e = verifier_PS(a, {.numSitu = true})) {
        return *e;
    }
    const XmlNoeud demande = a.requete.selectionner_un("donneesComplementaire");
    const std::string offre = a.requete.texte_de("offre");
    const std::string numero = demande.texte_de("numeroComplementaire");
    if (offre.empty() || !demande) {
        return erreur(a, kComplementaireIncomplet,
                      "Offre ou données complémentaires absentes de la requête");
    }
    if (numero.empty()) {
        return erreur(a, kComplementaireIncomplet,
                      "Numéro d'organisme complémentaire absent de la requête");
    }
    const std::string annee = annee_en_cours();
    Reponse r = reponse_succes(a.operation);
    Element& amc = r.donnees.ajouter("reponseComplementaire");
    amc.ajouter("offre", offre);
    amc.ajouter("numeroComplementaire", numero);
    amc.ajouter("libelleComplementaire", "Mutuelle simulée " + numero);
    amc.ajouter("codeRegime", demande.texte_de("codeRegime"));
    amc.ajouter("codeCaisse", demande.texte_de("codeCaisse"));
    amc.ajouter("codeCentre", demande.texte_de("codeCentre"));
    Element& droits = amc.ajouter("droitsAMC");
    droits.ajouter("etatDroits", "OUVERTS");
    droits.ajouter("dateDebut", annee + "0101");
    droits.ajouter("dateFin", annee + "1231");
    droits.ajouter("typeContrat", "RESPONSABLE");
    droits.ajouter("tiersPayant", "1");
    const struct {
        const char* code;
        const char* libelle;
        const char* taux;
        const char* plafond;
    } garanties[] = {
        {"MON", "Monture", "100", "0010000"},
        {"VER", "Verres", "100", "0042000"},
        {"LEN", "Lentilles", "100", "0015000"},
    };
    for (const auto& g : garanties) {
        Element& garantie = droits.ajouter("garantie");
        garantie.ajouter("codeGarantie", g.code);
        garantie.ajouter("libelleGarantie", g.libelle);
        garantie.ajouter("tauxRemboursement", g.taux);
        garantie.ajouter("plafond", g.plafond);
    }
    return r;
}

using Fonction = std::function<Reponse(const Appel&)>;

const std::map<std::string, Fonction, std::less<>>& fonctions() {
    static const std::map<std::string, Fonction, std::less<>> table = {
        {"f_LireVersion", f_LireVersion},
        {"f_MaJVersion", f_MaJVersion},
        {"f_LireCPS", f_LireCPS},
        {"f_InitialisationPS", f_InitialisationPS},
        {"f_LireCVitale", f_LireCVitale},
        {"f_MettreAJourCV", f_MettreAJourCV},
        {"f_LireInfosComplementaire", f_LireInfosComplementaire},
        {"f_CreerFacture", f_CreerFacture},
        {"f_LireFacture", f_LireFacture},
        {"f_SupprimerFacture", f_SupprimerFacture},
        {"f_ListerFactures", f_ListerFactures},
        {"f_EnvoyerToutesFactures", f_EnvoyerToutesFactures},
        {"f_LireInfosRetourFacture", f_LireInfosRetourFacture},
        {"f_TransfertPJ", f_TransfertPJ},
        {"f_LireInfosRetourPJ", f_LireInfosRetourPJ},
        {"f_ControlePJ", f_ControlePJ},
        {"f_SupprimerPJ", f_SupprimerPJ},
    };
    return table;
}

Sortie sortie(const Reponse& r) {
    Sortie s;
    s.operation = r.appelant;
    s.cle_attente = r.appelant;
    s.octets = ecrire_reponse(r, enveloppe_de(r.appelant));
    return s;
}

// The recovery of an answer that did not fit: the kept bytes go out as they were.
Sortie f_RecupMessage(const Appel& a) {
    const std::string ordre = a.requete.texte_de("ordreEnErreur");
    std::optional<std::string> octets = a.depot.message_conserve(ordre);
    if (!octets) {
        return sortie(
            erreur(a, kAucunMessage, "Aucun message en attente pour la fonction '" + ordre + "'"));
    }
    Sortie s;
    s.operation = a.operation;
    s.cle_attente = ordre;
    s.octets = std::move(*octets);
    s.message_rendu = true;
    return s;
}

}  // namespace

std::string libelle_taille(std::size_t attendue, long trouvee) {
    return "Taille de réponse insuffisante. Attendue: " + std::to_string(attendue) +
           " Trouvée: " + std::to_string(trouvee);
}

Sortie Repondre(const Depot& depot, std::string_view requete) {
    XmlDocument doc;
    bool lu = doc.charger_texte(requete);
    // A request without a declaration is still the host's code page, not UTF-8.
    if (!lu && requete.find("<?xml") == std::string_view::npos) {
        lu = doc.charger_texte(cp1252_vers_utf8(requete));
    }
    if (!lu) {
        return sortie(
            reponse_erreur("", kRequeteIllisible, "Requête XML illisible : " + doc.erreur()));
    }
    const XmlNoeud noeud = doc.selectionner_un("/ZRMESSAGE/requete/fonction/*");
    if (!noeud) {
        return sortie(reponse_erreur("", kFonctionAbsente,
                                     "Élément ZRMESSAGE/requete/fonction absent de la requête"));
    }
    const Appel appel{depot, noeud.nom(), noeud};

    if (std::optional<Panne> panne = depot.prendre_panne(appel.operation)) {
        if (panne->retour != 0) {
            Sortie s;
            s.retour = panne->retour;
            s.operation = appel.operation;
            return s;
        }
        return sortie(erreur(appel, panne->code, panne->libelle));
    }

    const bool connue =
        appel.operation == "f_RecupMessage" || fonctions().contains(appel.operation);
    if (!connue) {
        return sortie(erreur(appel, kFonctionInconnue, "Fonction inconnue : " + appel.operation));
    }
    if (!noeud.selectionner_un("versionMessage")) {
        return sortie(
            erreur(appel, kVersionMessageAbsente, "Élément versionMessage absent de la requête"));
    }
    if (appel.operation == "f_RecupMessage") {
        return f_RecupMessage(appel);
    }
    return sortie(fonctions().find(appel.operation)->second(appel));
}

}  // namespace sv140::sim
