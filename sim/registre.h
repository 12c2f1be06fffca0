// The invoice book of the simulated middleware (`factures.txt` in its state folder).
//
// One record per line, its fields separated by tabs; a line starting with '#' is a
// comment:
//
//   numerotation <TAB> derniereFacture=12 <TAB> dernierLot=3
//   facture <TAB> numeroFacture=12 <TAB> dateFacture=20240305 <TAB> codeRegime=01 ...
//   acte <TAB> codeActeNGAP=PAU <TAB> codeAffineDetaille=2340119 ...
//
// An `acte` line belongs to the `facture` line above it. Fields are name=value in any
// order; a missing field keeps its default, an unknown one is ignored. Tabs and line
// ends inside values are written as blanks. A line per record keeps ten thousand
// invoices readable and writable in a few tens of milliseconds.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/etat.h"

namespace sv140::sim {

struct Registre {
    long long derniere_facture = 0;  ///< the last invoice number given
    long long dernier_lot = 0;       ///< the last lot number given
    std::vector<FactureSimulee> factures;

    /// The invoice of that number, or null.
    FactureSimulee* trouver(long long numero);
    const FactureSimulee* trouver(long long numero) const;
};

std::string texte_registre(const Registre& registre);
Registre lire_registre(std::string_view texte);

}  // namespace sv140::sim
