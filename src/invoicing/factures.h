// Invoicing: the answers of the invoice operations.
#pragma once

#include <span>

#include "exchange/operation.h"
#include "tools/statut.h"

namespace sv140 {

struct Run;

/// The operations of this subsystem.
std::span<const Operation> Operations_Facturation();

/// f_ListerFactures: checks the list of invoices the middleware knows. Nothing is
/// stored: the host reads the list from ZEMO_Response.xml.
Statut Lire_Liste_Factures(Run& run);

}  // namespace sv140
