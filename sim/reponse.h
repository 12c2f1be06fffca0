// The answer document of the simulated middleware: ZRMESSAGE with `appelant` and
// `resultat` (`codeErreur`, `libelleErreur`, `donnees`), written as ISO-8859-1 bytes
// with CR LF after every element, the way the real middleware writes it.
#pragma once

#include <string>
#include <string_view>

#include "sim/element.h"

namespace sv140::sim {

/// The prologs the middleware is seen to use: a bare document type line, an XML
/// declaration, or both.
enum class Enveloppe { Doctype, Declaration, DeclarationEtDoctype };

struct Reponse {
    std::string appelant;
    int codeErreur = 0;
    std::string libelleErreur;
    /// Written only on success; error answers carry no data.
    Element donnees{"donnees"};
};

Reponse reponse_succes(std::string appelant);
Reponse reponse_erreur(std::string appelant, int code, std::string libelle);

/// The prolog the middleware uses for one function's answers.
Enveloppe enveloppe_de(std::string_view operation);

/// The answer's bytes (ISO-8859-1; characters beyond it as character references).
std::string ecrire_reponse(const Reponse& reponse, Enveloppe enveloppe);

}  // namespace sv140::sim
