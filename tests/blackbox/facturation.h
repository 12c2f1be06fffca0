// What the invoicing scenarios share: the host's claim document and the middleware's
// invoicing answers, written as the host and the middleware write them.
#pragma once

#include <string>
#include <vector>

#include "harnais.h"

namespace bb {

/// The host's claim document for a pair of glasses (frame, two lenses), then
/// `retouches` over it ("donneesTP/numeroMutuelle" = value; the value "-" drops the
/// element), with these act lines when given (each line's elements by name).
std::string document_facture(const Champs& retouches = {},
                             const std::vector<Champs>* actes = nullptr);

/// An f_CreerFacture answer for invoice `numero` ("" for none) with these act lines.
std::string reponse_creation(const std::string& numero, const std::vector<Champs>& actes,
                             const std::string& totaux = "");

/// One invoice of a lot answer.
struct FactureEnvoyee {
    std::string numero, lot, regime, caisse, centre, libelle, adresse = "1 RUE DE LA PAIX",
                                                              commune = "PARIS";
};
/// The `donneesEnvoi` of a lot answer, one `lot` per invoice.
std::string donnees_envoi(const std::vector<FactureEnvoyee>& factures);

}  // namespace bb
