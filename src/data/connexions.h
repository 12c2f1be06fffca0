// The three databases of a run and the units of work written to them.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "data/connexion.h"
#include "tools/statut.h"

namespace sv140 {

/// The host, temporary and bridge databases of a run, each opened at most once.
struct Connexions {
    explicit Connexions(Connexion::Journal journal)
        : hote(journal), temporaire(journal), pont(journal) {}
    Connexion hote;        // Donnees_32.accdb in the shop's data folder
    Connexion temporaire;  // Temporaire.accdb beside the program folder
    Connexion pont;        // SV140.accdb in the shop's data folder
    bool ouvertes = false;
};

/// Opens the host, temporary and bridge databases, in this order, unless they already
/// were. A database that cannot be opened stays closed (and is logged): the statements
/// sent to it fail with the reason, so only the routines that need it fail.
void Ouvrir_Connexions(Connexions& c, const std::string& hote, const std::string& temporaire,
                       const std::string& pont);

/// One unit of work on the run's databases: what their statements wrote since the unit
/// began is committed together by `valider`, or rolled back when the guard goes out of
/// scope without it (a failed statement, an early return, an exception).
class UniteDeTravail {
  public:
    explicit UniteDeTravail(Connexions& c) : c_(c) {}
    ~UniteDeTravail();
    UniteDeTravail(const UniteDeTravail&) = delete;
    UniteDeTravail& operator=(const UniteDeTravail&) = delete;

    /// Commits every open database. On failure what was not yet committed is rolled
    /// back, and the reason names the database.
    Statut valider();
    /// Rolls back every open database now.
    void annuler();

  private:
    Connexions& c_;
    bool termine_ = false;
};

/// Records `nombre` items, each as its own unit of work: `enregistrer(i)` runs the
/// item's statements; the item is committed as soon as they succeeded, rolled back alone
/// when one failed, and the next item is recorded either way. A failure names every item
/// that was not recorded, by `nom(i)`, with the first reason.
Statut Enregistrer_Par_Unite(Connexions& c, std::size_t nombre,
                             const std::function<Statut(std::size_t)>& enregistrer,
                             const std::function<std::string(std::size_t)>& nom);

}  // namespace sv140
