// The answer document of the simulated middleware: ZRMESSAGE with `appelant` and
// `resultat` (`codeErreur`, `libelleErreur`, `donnees`), written as ISO-8859-1 bytes
// with CR LF after every element, the way the real middleware writes it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/element.h"

namespace sv140::sim {

/// The prologs the middleware is seen to use: a bare document type line, an XML
/// declaration, or both.
enum class Enveloppe { Doctype, Declaration, DeclarationEtDoctype };

struct Reponse {
    std::string appelant;
    int codeErreur = 0;
    std::string libelleErreur;
    /// Other children of `resultat`, written after the label on success and error
    /// alike (f_TransfertPJ's `accesService`).
    std::vector<Element> complements;
    /// Written on success; an error answer carries it only when asked to (the reasons
    /// f_TransfertPJ refuses an attachment for).
    Element donnees{"donnees"};
    bool donnees_en_erreur = false;
};

Reponse reponse_succes(std::string appelant);
Reponse reponse_erreur(std::string appelant, int code, std::string libelle);

/// The prolog the middleware uses for one function's answers.
Enveloppe enveloppe_de(std::string_view operation);

/// The answer's bytes (ISO-8859-1; characters beyond it as character references).
std::string ecrire_reponse(const Reponse& reponse, Enveloppe enveloppe);

}  // namespace sv140::sim
