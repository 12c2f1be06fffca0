// The shop the store and host-document targets run the bridge against: real SQLite
// databases in a temporary folder, made once per process and put back as they were
// before each input, and a middleware that answers the input (or a fixed answer) to
// every call.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace sv140::fuzz {

/// One operation as a target runs it: the host document it reads, if any, and the
/// answer the middleware usually gives it.
struct Cas {
    std::string_view operation;
    /// "ZEMO_Request.xml", "dctsScor.xml", or "" when the operation reads neither.
    std::string_view document;
    /// What the host leaves in `document`: a file of fuzz/magasin/.
    std::string_view modele;
    /// The middleware's usual answer: a file of fuzz/reponses/.
    std::string_view reponse;
};

/// The operations, in the order the first byte of an input picks them (the seeds
/// depend on it: add new rows at the end).
std::span<const Cas> Cas_Operations();

/// A file of the fuzz folder (fuzz/magasin/..., fuzz/reponses/...), read whole once.
const std::string& Fichier_Fuzz(std::string_view chemin);

/// Runs `cas` as the host would start it, on a shop put back as it was: `document`
/// holds `hote`, and the middleware answers `reponse` to every call. An operation
/// that calls no middleware finds `reponse` as the answer the previous run left.
void Executer(const Cas& cas, std::string_view hote, std::string_view reponse);

}  // namespace sv140::fuzz
