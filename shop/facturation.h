// What a host developer needs to try invoicing by hand on a shop: the claim document
// the host writes before it asks for f_CreerFacture, made for one beneficiary of a test
// card of the simulated reader's library, and the simulated day that decides what the
// insurers have answered.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "platform/xml.h"

namespace sv140::shop {

/// One beneficiary of a test card, with what the card says of its insured. Every
/// member has an initializer, so that a reading names only what it sets.
struct Beneficiaire_Carte {
    std::string nom{}, prenom{}, naissance{}, rang{};  // naissance as on the card, yyyymmdd
    std::string nir{}, cle{};                          // the insured's NIR and key
    std::string regime{}, caisse{}, centre{};
    std::string mutuelle{}, adherent{};        // complementary insurer and member number
    std::string debut_droits{}, fin_droits{};  // its rights, yyyymmdd
};

/// Beneficiary `numero` (1 for the first, in the card's order, as the reader lists
/// them) of card `id_carte` of the library in the simulator's state folder `zrsim`.
/// Nothing, with `erreur` filled, when the card or the beneficiary is not there.
std::optional<Beneficiaire_Carte> Lire_Beneficiaire(const std::string& zrsim,
                                                    const std::string& id_carte, int numero,
                                                    std::string& erreur);

/// The claim for a pair of glasses: a frame and two lenses, dated today, on
/// prescription, the complementary insurer paying its share to the optician.
/// `simulation` asks for a quote ("Simulation") instead of an invoice ("Facture").
struct Demande_Facture {
    Beneficiaire_Carte beneficiaire;
    bool simulation = false;
};

/// The host's ZEMO_Request.xml for `demande` (root BelvaneClassicII), dated by the
/// system clock. Saved with XmlDocument::enregistrer, it is in the encoding the bridge
/// reads, accents and quotes of the card's names included.
XmlDocument Document_Facture(const Demande_Facture& demande);

/// A few lines, each starting with `marge`, saying what the claim holds.
void Decrire_Demande(const Demande_Facture& demande, std::ostream& sortie, std::string_view marge);

/// The date `jours` days after today's by the system clock, "yyyymmdd".
std::string Date_Du_Jour(int jours = 0);

/// "dd/mm/yyyy" for a "yyyymmdd" text.
std::string Date_Lisible(std::string_view aaaammjj);

/// Moves the simulated day of the middleware in `zrsim` `jours` days on (back when
/// negative). The new simulated date, "yyyymmdd", in `date`. False with `erreur` filled
/// when the state cannot be written.
bool Avancer_Jour_Simule(const std::string& zrsim, int jours, std::string& date,
                         std::string& erreur);

}  // namespace sv140::shop
