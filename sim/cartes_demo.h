// The professional card and the Vitale cards of the demo state.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "sim/element.h"

namespace sv140::sim {

/// The demo professional card (`contextePS` with two situations).
Element cps_demo();

/// The demo Vitale cards (`contexteCVitale` each), by id, in the order of kCartesDemo.
std::vector<std::pair<std::string, Element>> cartes_demo();

/// The two-digit key of a 13-digit NIR (97 minus the NIR modulo 97); "" when the text
/// is not 13 digits.
std::string cle_nir(const std::string& nir);

}  // namespace sv140::sim
