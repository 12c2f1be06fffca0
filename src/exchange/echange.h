// The middleware exchange: the call, the answer file, the response check and the
// error response.
#pragma once

#include <string>
#include <string_view>

#include "tools/statut.h"

namespace sv140 {

struct Run;

/// Sends ZEMO_SvRequest.xml to the middleware and writes its answer to
/// ZEMO_SvResponse.xml. `taille` 0 means the configured buffer size. When the request
/// file is missing, writes the code 1 error response and sets `run.interruption`: the
/// run then ends before the archive and the copy for the host.
bool Envoyer_Requete(Run& run, std::string_view operation, long taille);
/// One middleware call with a request text in Windows-1252.
bool Executer_ZR(Run& run, const std::string& requete, long taille);
/// Cleans a middleware answer and writes it to ZEMO_SvResponse.xml.
void Ecrire_Reponse(Run& run, std::string_view reponse);
/// The cleaning Ecrire_Reponse applies (cut at the first NUL, document type line
/// replaced by or dropped beside the declaration, CR LF pairs removed).
std::string Nettoyer_Reponse(std::string_view reponse);
/// Writes the error response document over ZEMO_SvResponse.xml.
void Reponse_Erreur(Run& run, std::string_view code, std::string_view message,
                    std::string_view appelant);
/// The response check: True when the answer reports no error.
bool Lire_Reponse(Run& run);
/// Envoyer_Requete for an operation that reads its own answer, with the check's
/// recovery of an answer that did not fit in the buffer (code 271): fetched again,
/// with the size the middleware asks for, up to the check's number of attempts.
void Envoyer_Et_Recuperer(Run& run, std::string_view operation);

/// An answer-buffer size from a number read anywhere (a parameter, an error text):
/// at least 1, at most 64 MiB, so that no stored or received value can ask for more.
long Taille_Tampon(double taille);

/// The answer of a document the bridge cannot read, code 99.
inline constexpr const char* kReponseIllisible = "Impossible de lire ZEMO_SvResponse.xml";

}  // namespace sv140
