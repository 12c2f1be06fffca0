// Invoicing: the answers of the invoice operations.
#pragma once

namespace sv140 {

struct Run;

/// f_ListerFactures: checks the list of invoices the middleware knows. Nothing is
/// stored: the host reads the list from ZEMO_Response.xml.
bool Lire_Liste_Factures(Run& run);

}  // namespace sv140
