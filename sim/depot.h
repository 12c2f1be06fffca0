// The simulated middleware's state folder (`zrsim/` beside the library). Everything in
// it is a small text file an optician's developer may open and edit:
//
//   cps.xml              the professional card in its reader (`contextePS` with its
//                        `situation` children); absent = no professional card
//   cartes/<id>.xml      the library of Vitale cards, one `contexteCVitale` each
//   lecteur.txt          id of the Vitale card in the reader; empty or absent = none
//   factures.txt         the invoices the middleware knows and their numbering
//                        (format in registre.h); absent = none, numbering from 1
//   pieces.txt           the attachments received, their invoice and nature, day
//                        received, size, duplicate and deleted flags and forced status
//                        (format in pieces.h); absent = none
//   panne.xml            a one-shot failure for the next call of one function
//   jour.txt             days added to the system clock to make the simulated day;
//                        absent = 0
//   attente/<op>.xml     the last answer of <op> that did not fit the caller's buffer
//
// A missing folder is a valid state: no card of any kind, nothing pending.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/element.h"
#include "sim/registre.h"

namespace sv140::sim {

/// A failure planted for the next call of one function.
struct Panne {
    std::string fonction;
    /// Non-zero: the call itself fails with this number and writes no answer.
    int retour = 0;
    /// Otherwise the function answers this error code and label.
    int code = 0;
    std::string libelle;
};

class Depot {
  public:
    explicit Depot(std::string dossier) : dossier_(std::move(dossier)) {}
    const std::string& dossier() const { return dossier_; }

    /// Creates the folder and its `cartes` and `attente` subfolders (the parent must
    /// exist). False when they cannot be made.
    bool preparer(std::string& erreur) const;

    /// The professional card in the reader, or nothing when none (or unreadable).
    std::optional<Element> cps() const;
    bool ecrire_cps(const Element& contextePS, std::string& erreur) const;

    /// Ids of the cards of the library, sorted.
    std::vector<std::string> cartes() const;
    bool carte_existe(const std::string& id) const;
    /// One card of the library. False with `erreur` filled when absent or unreadable.
    bool carte(const std::string& id, Element& contexte, std::string& erreur) const;
    bool ecrire_carte(const std::string& id, const Element& contexte, std::string& erreur) const;

    /// Id of the card in the reader, "" when the reader is empty.
    std::string carte_lecteur() const;
    bool inserer(const std::string& id, std::string& erreur) const;

    /// The invoices known (none when the file is absent).
    Registre factures() const;
    bool ecrire_factures(const Registre& registre, std::string& erreur) const;

    /// The attachments received, in the order received (none when the file is absent).
    std::vector<PieceSimulee> pieces() const;
    bool ecrire_pieces(const std::vector<PieceSimulee>& pieces, std::string& erreur) const;

    /// Takes the failure planted for `fonction`, deleting it; nothing when none is
    /// planted for that function (a failure for another function stays).
    std::optional<Panne> prendre_panne(const std::string& fonction) const;
    bool planter_panne(const Panne& panne, std::string& erreur) const;

    /// The full answer of `operation` kept after it did not fit.
    bool conserver_message(const std::string& operation, const std::string& octets) const;
    std::optional<std::string> message_conserve(const std::string& operation) const;
    void oublier_message(const std::string& operation) const;
    /// Days the simulated day stands after the system clock's (0 when none is kept).
    int decalage_jours() const;
    bool ecrire_decalage_jours(int jours, std::string& erreur) const;
    /// Forgets every kept answer and planted failure.
    void effacer_attentes() const;

  private:
    std::string chemin(const std::string& nom) const;
    std::string chemin_carte(const std::string& id) const;
    std::string chemin_message(const std::string& operation) const;

    std::string dossier_;
};

/// True for a name usable as a file name in the state folder: letters, digits, '_'
/// and '-', at most 64 characters.
bool nom_sur(const std::string& nom);

}  // namespace sv140::sim
