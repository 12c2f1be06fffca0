// The simulated middleware's own reference tables: what the insurer bases an optical
// product on, and where each paying organisation receives its lots.
#pragma once

#include <string>
#include <string_view>

namespace sv140::sim {

/// The reimbursement base of one LPP code.
struct TarifLPP {
    std::string_view code;
    std::string_view typePrestation;  ///< "M" frame, "V" lens, "L" contact lens, "P" service
    long long base = 0;               ///< cents per unit
};

/// The tariff of an LPP code, or null when the table lacks it.
const TarifLPP* tarif_lpp(std::string_view code);

/// A paying organisation as the middleware describes it in its lot answers. Addresses
/// and towns may hold backslashes, the way the middleware's own reference data does.
struct Organisme {
    std::string_view regime, caisse, centre;
    std::string_view libelle, adresse, codePostal, commune, cedex, telephone, fax;
};

/// Regimes "01" and "02" pay at caisse level: their invoices go to one organisation and
/// one lot whatever their centre.
bool paye_par_caisse(const std::string& regime);

/// The organisation that pays the invoices of these codes, or null when the table
/// lacks it.
const Organisme* organisme(const std::string& regime, const std::string& caisse,
                           const std::string& centre);

}  // namespace sv140::sim
