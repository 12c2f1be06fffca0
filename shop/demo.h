// The card workflow of a shop, driven the way the host drives it: one run of the
// installed bridge per operation, the host's own writes between the runs, and a
// readable account of what each step answered and changed.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "shop/installation.h"

namespace sv140::shop {

/// Runs, on the installation `inst`: versions, professional card, initialisation,
/// the "famille" card put in the reader, Vitale card, the optician's choice of a
/// beneficiary, the link to the client, and the complementary-insurance query; then
/// the invoicing cycle for that beneficiary: claim document, invoice creation, the
/// host's slips, list of invoices, sending in lots, two simulated days, return
/// information and payments. Writes the account to `sortie`. Returns the steps that
/// failed ("[12] f_CreerFacture"), none when every operation answered code 0.
std::vector<std::string> Derouler_Demo(const Installation& inst, std::ostream& sortie);

/// The birth date the host stores for a card's "yyyymmdd" text: the Access date
/// literal "#mm/dd/yyyy#" when the text is a calendar date. A date no calendar has
/// (a card may carry day 31 of month 13) is stored as 1 January of its year with
/// `divers` set to "!" + day + month, so that the card's own date can be rebuilt;
/// `divers` is left empty otherwise. False when the text is not eight digits.
bool Date_Naissance_Hote(const std::string& aaaammjj, std::string& litteral, std::string& divers);

}  // namespace sv140::shop
