// sv140-shop: builds a shop installation for the host's developers and the tests, puts
// cards in the simulated reader, injects middleware failures, and plays the card
// workflow and the invoicing cycle of the host against the installed bridge; for trying
// one invoice by hand, writes the host's claim document and moves the simulated day.
#include <algorithm>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "platform/intergiciel.h"
#include "platform/systeme.h"
#include "shop/demo.h"
#include "shop/facturation.h"
#include "shop/installation.h"
#include "shop/schema.h"
#include "sim/depot.h"
#include "sim/etat.h"

namespace {

using namespace sv140;
using namespace sv140::shop;

constexpr int kReussite = 0;
constexpr int kEchec = 1;
constexpr int kRefus = 2;

int usage() {
    std::cerr << "usage :\n"
                 "  sv140-shop init DIR                           installation vide sous DIR\n"
                 "  sv140-shop demo DIR                           installation, parcours "
                 "de la carte Vitale\n"
                 "                                                puis cycle de facturation\n"
                 "  sv140-shop carte DIR ID|aucune                carte dans le lecteur simulé\n"
                 "  sv140-shop panne DIR FONCTION CODE LIBELLE    prochaine réponse en erreur\n"
                 "  sv140-shop cartes DIR                         cartes de test disponibles\n"
                 "  sv140-shop facture DIR ID [N] [--simulation]  ZEMO_Request.xml d'une paire "
                 "de lunettes\n"
                 "                                                pour le bénéficiaire n° N "
                 "(1 par défaut)\n"
                 "                                                de la carte ID, à créer par "
                 "f_CreerFacture\n"
                 "  sv140-shop avancer DIR JOURS                  avance le jour simulé du "
                 "middleware\n"
                 "  sv140-shop pieces DIR                         pièces jointes reçues par le "
                 "middleware\n"
                 "  sv140-shop statut-pj DIR NOM CODE|aucun       statut imposé à la pièce "
                 "jointe NOM\n";
    return kRefus;
}

// The bridge splits its command line at blanks: a data folder holding one cannot be
// passed to it.
bool contient_un_blanc(const std::string& chemin) {
    return chemin.find(' ') != std::string::npos;
}

int init(const std::string& dossier) {
    std::string erreur;
    switch (Installer(dossier, dossier_programme(), erreur)) {
        case Issue::Existe:
            std::cerr << "sv140-shop : installation déjà présente, rien n'est écrasé : " << erreur
                      << "\n";
            return kRefus;
        case Issue::Echec:
            std::cerr << "sv140-shop : installation impossible : " << erreur << "\n";
            return kEchec;
        case Issue::Faite:
            break;
    }
    const Installation inst = Disposition(dossier);
    std::cout << "Installation créée sous " << inst.racine << "\n"
              << "  pont                 " << inst.pont() << "\n"
              << "  middleware simulé    " << joindre(inst.programme, kNomIntergiciel) << "\n"
              << "  état du simulateur   " << inst.zrsim << "\n"
              << "  données du magasin   " << inst.magasin << "\n"
              << "    base du pont       " << joindre(inst.magasin, kBasePont) << "\n"
              << "    base du magasin    " << joindre(inst.magasin, kBaseHote) << "\n"
              << "  base temporaire      " << inst.temporaire << "\n"
              << "Le pont se lance ainsi : " << inst.pont() << " OPERATION " << inst.magasin
              << "\n";
    if (contient_un_blanc(inst.magasin)) {
        std::cerr << "sv140-shop : attention, le pont coupe sa ligne de commande aux blancs et "
                     "ne pourra pas recevoir "
                  << inst.magasin << "\n";
    }
    return kReussite;
}

/// The whole text as a whole number.
bool entier(const std::string& texte, int& valeur) {
    std::size_t lus = 0;
    try {
        valeur = std::stoi(texte, &lus);
    } catch (const std::exception&) {
        return false;
    }
    return lus == texte.size();
}

bool installation_presente(const Installation& inst) {
    if (dossier_existe(inst.zrsim)) {
        return true;
    }
    std::cerr << "sv140-shop : aucune installation sous " << inst.racine
              << " (sv140-shop init d'abord)\n";
    return false;
}

void lister_cartes(const Installation& inst, const char* suite) {
    std::cerr << "cartes disponibles :";
    for (const std::string& disponible : sim::Cartes_Disponibles(inst.zrsim)) {
        std::cerr << " " << disponible;
    }
    std::cerr << suite << "\n";
}

int carte(const std::string& dossier, const std::string& id) {
    const Installation inst = Disposition(dossier);
    if (!installation_presente(inst)) {
        return kRefus;
    }
    std::string erreur;
    if (!sim::Inserer_Carte(inst.zrsim, id == "aucune" ? "" : id, erreur)) {
        std::cerr << "sv140-shop : " << erreur << "\n";
        lister_cartes(inst, " (ou aucune)");
        return kEchec;
    }
    std::cout << (id == "aucune" ? "Lecteur vide\n" : "Carte " + id + " dans le lecteur\n");
    return kReussite;
}

int panne(const std::string& dossier, const std::string& fonction, const std::string& code,
          const std::string& libelle) {
    const Installation inst = Disposition(dossier);
    if (!installation_presente(inst)) {
        return kRefus;
    }
    int numero = 0;
    if (!entier(code, numero)) {
        std::cerr << "sv140-shop : code d'erreur non numérique : " << code << "\n";
        return kRefus;
    }
    std::string erreur;
    if (!sim::Injecter_Erreur(inst.zrsim, fonction, numero, libelle, erreur)) {
        std::cerr << "sv140-shop : " << erreur << "\n";
        return kEchec;
    }
    std::cout << "Prochain appel de " << fonction << " : erreur " << code << " (" << libelle
              << ")\n";
    return kReussite;
}

int cartes(const std::string& dossier) {
    const Installation inst = Disposition(dossier);
    if (!installation_presente(inst)) {
        return kRefus;
    }
    for (const std::string& id : sim::Cartes_Disponibles(inst.zrsim)) {
        std::cout << id << "\n";
    }
    return kReussite;
}

// facture DIR ID [N] [--simulation]
int facture(const std::string& dossier, std::vector<std::string> options) {
    const Installation inst = Disposition(dossier);
    if (!installation_presente(inst)) {
        return kRefus;
    }
    Demande_Facture demande;
    if (!options.empty() && options.back() == "--simulation") {
        demande.simulation = true;
        options.pop_back();
    }
    int numero = 1;
    if (options.empty() || options.size() > 2 ||
        (options.size() == 2 && !entier(options[1], numero))) {
        return usage();
    }
    const std::string& carte = options[0];
    std::string erreur;
    auto beneficiaire = Lire_Beneficiaire(inst.zrsim, carte, numero, erreur);
    if (!beneficiaire) {
        std::cerr << "sv140-shop : " << erreur << "\n";
        if (!sim::Depot(inst.zrsim).carte_existe(carte)) {
            lister_cartes(inst, "");
        }
        return kEchec;
    }
    demande.beneficiaire = *beneficiaire;
    const std::string chemin = joindre(inst.programme, "ZEMO_Request.xml");
    if (!Document_Facture(demande).enregistrer(chemin)) {
        std::cerr << "sv140-shop : impossible d'écrire " << chemin << "\n";
        return kEchec;
    }
    std::cout << "Demande de facture écrite : " << chemin << "\n";
    Decrire_Demande(demande, std::cout, "  ");
    const std::string lecteur = sim::Depot(inst.zrsim).carte_lecteur();
    if (lecteur != carte) {
        std::cout << "La carte " << carte << " n'est pas dans le lecteur (sv140-shop carte "
                  << dossier << " " << carte << ")"
                  << (lecteur.empty() ? " : sans carte, la facture est dégradée" : "") << "\n";
    }
    std::cout << "Pour créer la facture : " << inst.pont() << " f_CreerFacture " << inst.magasin
              << "\n";
    return kReussite;
}

int avancer(const std::string& dossier, const std::string& texte) {
    const Installation inst = Disposition(dossier);
    if (!installation_presente(inst)) {
        return kRefus;
    }
    int jours = 0;
    if (!entier(texte, jours)) {
        std::cerr << "sv140-shop : nombre de jours non numérique : " << texte << "\n";
        return kRefus;
    }
    std::string date;
    std::string erreur;
    if (!Avancer_Jour_Simule(inst.zrsim, jours, date, erreur)) {
        std::cerr << "sv140-shop : " << erreur << "\n";
        return kEchec;
    }
    std::cout << "Jour simulé du middleware : " << Date_Lisible(date)
              << " (horloge du système : " << Date_Lisible(Date_Du_Jour()) << ")\n";
    return kReussite;
}

int pieces(const std::string& dossier) {
    const Installation inst = Disposition(dossier);
    if (!installation_presente(inst)) {
        return kRefus;
    }
    const std::vector<sim::PieceEtStatut> recues = sim::Lire_Pieces(inst.zrsim);
    if (recues.empty()) {
        std::cout << "Aucune pièce jointe reçue\n";
    }
    for (const auto& [p, statut] : recues) {
        std::cout << p.nomPJ << "\n    "
                  << (p.numeroFacture > 0
                          ? "facture " + std::to_string(p.numeroFacture) + " " + p.nature
                          : std::string("sans facture"))
                  << ", reçue le " << Date_Lisible(p.jourReception) << ", " << p.taille
                  << " octets, statut " << statut << (p.statutForce ? " (imposé)" : "")
                  << (p.doublon ? ", doublon" : "") << (p.supprimee ? ", supprimée" : "") << "\n";
    }
    return kReussite;
}

// statut-pj DIR NOM CODE|aucun
int statut_pj(const std::string& dossier, const std::string& nom, const std::string& code) {
    const Installation inst = Disposition(dossier);
    if (!installation_presente(inst)) {
        return kRefus;
    }
    std::optional<int> statut;
    if (code != "aucun") {
        int numero = 0;
        if (!entier(code, numero)) {
            std::cerr << "sv140-shop : statut non numérique : " << code << "\n";
            return kRefus;
        }
        statut = numero;
    }
    const std::vector<sim::PieceEtStatut> recues = sim::Lire_Pieces(inst.zrsim);
    if (std::none_of(recues.begin(), recues.end(),
                     [&](const sim::PieceEtStatut& r) { return r.piece.nomPJ == nom; })) {
        std::cerr << "sv140-shop : pièce jointe inconnue du middleware simulé : " << nom
                  << " (sv140-shop pieces " << dossier << ")\n";
        return kRefus;
    }
    std::string erreur;
    if (!sim::Forcer_Statut_Piece(inst.zrsim, nom, statut, erreur)) {
        std::cerr << "sv140-shop : " << erreur << "\n";
        return kEchec;
    }
    std::cout << "Statut de " << nom << " : "
              << (statut ? std::to_string(*statut) : "celui du déroulement simulé") << "\n";
    return kReussite;
}

int demo(const std::string& dossier) {
    const Installation inst = Disposition(dossier);
    if (contient_un_blanc(inst.magasin)) {
        std::cerr << "sv140-shop : le dossier " << inst.magasin
                  << " contient un blanc ; le pont ne pourrait pas le recevoir\n";
        return kRefus;
    }
    const int installe = init(dossier);
    if (installe != kReussite) {
        return installe;
    }
    const std::vector<std::string> echecs = Derouler_Demo(inst, std::cout);
    if (echecs.empty()) {
        std::cout << "\nToutes les opérations ont répondu le code 0.\n";
        return kReussite;
    }
    std::cout << "\nÉtape(s) en échec :\n";
    for (const std::string& etape : echecs) {
        std::cout << "  " << etape << "\n";
    }
    return kEchec;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() < 2) {
        return usage();
    }
    const std::string& commande = args[0];
    const std::string dossier = chemin_absolu(args[1]);
    if (commande == "init" && args.size() == 2) {
        return init(dossier);
    }
    if (commande == "demo" && args.size() == 2) {
        return demo(dossier);
    }
    if (commande == "carte" && args.size() == 3) {
        return carte(dossier, args[2]);
    }
    if (commande == "panne" && args.size() == 5) {
        return panne(dossier, args[2], args[3], args[4]);
    }
    if (commande == "cartes" && args.size() == 2) {
        return cartes(dossier);
    }
    if (commande == "facture" && args.size() >= 3) {
        return facture(dossier, {args.begin() + 2, args.end()});
    }
    if (commande == "avancer" && args.size() == 3) {
        return avancer(dossier, args[2]);
    }
    if (commande == "pieces" && args.size() == 2) {
        return pieces(dossier);
    }
    if (commande == "statut-pj" && args.size() == 4) {
        return statut_pj(dossier, args[2], args[3]);
    }
    return usage();
}
