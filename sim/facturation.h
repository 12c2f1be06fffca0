// The invoicing functions of the simulated middleware: an invoice is created (and
// priced), read, deleted while it waits, sent in a lot of its paying organisation, and
// paid or rejected some simulated days later.
#pragma once

#include "sim/appel.h"

namespace sv140::sim {

Reponse f_CreerFacture(const Appel& a);
Reponse f_LireFacture(const Appel& a);
Reponse f_SupprimerFacture(const Appel& a);
Reponse f_ListerFactures(const Appel& a);
Reponse f_EnvoyerToutesFactures(const Appel& a);
Reponse f_LireInfosRetourFacture(const Appel& a);

}  // namespace sv140::sim
