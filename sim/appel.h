// What the functions of the simulated middleware share: the call they answer and the
// checks every function acting for a professional makes.
#pragma once

#include <optional>
#include <string>

#include "platform/xml.h"
#include "sim/depot.h"
#include "sim/reponse.h"

namespace sv140::sim {

/// What a function sees of the call: the state and its request element.
struct Appel {
    const Depot& depot;
    std::string operation;
    XmlNoeud requete;
};

/// A check's refusal, or nothing when the request passes it.
using Erreur = std::optional<Reponse>;

Reponse erreur(const Appel& a, int code, std::string libelle);

/// True when `t` is exactly `n` digits.
bool chiffres(const std::string& t, std::size_t n);

/// `t` without its leading zeros ("0" for zeros only): numbers the host may pad.
std::string sans_zeros(const std::string& t);

/// `n` (not negative) written with at least `largeur` digits.
std::string avec_zeros(long long n, std::size_t largeur);

/// The value of a text of digits only (at most twelve), or nothing.
std::optional<long long> nombre(const std::string& t);

struct ExigencesPS {
    bool numSitu = false;
    bool motDePasse = false;
};

/// The professional block checks of the functions that act for a professional: the
/// card must be in its reader and the `PS` child of the request must name it and one
/// of its situations.
Erreur verifier_PS(const Appel& a, ExigencesPS exigences);

/// The Vitale card in the reader, or the error that its absence gives.
Erreur lire_carte(const Appel& a, Element& contexte);

}  // namespace sv140::sim
