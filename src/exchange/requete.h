// The request envelope and the requests that need nothing else.
#pragma once

#include <string>
#include <string_view>

#include "platform/xml.h"
#include "tools/statut.h"

namespace sv140 {

struct Run;
struct IdentifiantsPS;

/// A request document: declaration, ZRMESSAGE, programme, requete/fonction/<operation>
/// and its versionMessage. Parameters are appended to `operation()`.
class Requete {
  public:
    explicit Requete(std::string_view operation, std::string_view versionMessage = "0001");
    XmlNoeud& operation() { return operation_; }
    /// Appends the professional block PS from Lire_Identifiants_PS. The block is
    /// written even when the identifiers could not be read, with what was found; the
    /// failure says so, its code 99 answer already written.
    Statut ajouter_PS(Run& run, bool avec_numSitu, bool avec_motDePasse) {
        return ajouter_PS(run, operation_, avec_numSitu, avec_motDePasse);
    }
    /// The same block appended to `parent`, a group of the request.
    Statut ajouter_PS(Run& run, XmlNoeud parent, bool avec_numSitu, bool avec_motDePasse);
    /// The block from identifiers read earlier, for a run that sends many requests
    /// without reading the database between its middleware calls.
    void ajouter_PS(const IdentifiantsPS& ps, bool avec_numSitu, bool avec_motDePasse);
    /// Saves ZEMO_SvRequest.xml in the program folder.
    Statut enregistrer(Run& run) const;

  private:
    XmlDocument doc_;
    XmlNoeud operation_;
};

// The requests of the card slice, each saved as ZEMO_SvRequest.xml; a failure when it
// could not be saved.
Statut Requete_f_LireCVitale(Run& run);
Statut Requete_f_InitialisationPS(Run& run);
Statut Requete_f_LireVersion(Run& run);
Statut Requete_f_MaJVersion(Run& run);
Statut Requete_f_MettreAJourCV(Run& run);
Statut Requete_f_LireCPS(Run& run);
Statut Requete_f_ListerFactures(Run& run);
/// The message-recovery request for an answer that did not fit in the buffer.
Statut Requete_f_RecupMessage(Run& run, std::string_view ordreEnErreur);

}  // namespace sv140
