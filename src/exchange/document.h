// How every routine reads a document: the middleware's answer, the host's input. A
// document is loaded synchronously and without validation; one that cannot be read,
// or that declares entities, is answered for the host with code 99 under the caller
// the routine names. Fields are read by group: every node the group's path selects is
// read in document order, and the last one's values stand.
#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xml.h"

namespace sv140 {

struct Run;

/// Loads `nom` from the program folder. When it cannot be read, writes the 99 answer
/// `message` under `appelant`, logs why, and returns nullopt.
std::optional<XmlDocument> Charger_Document(Run& run, std::string_view nom,
                                            std::string_view appelant, std::string_view message);
/// ZEMO_SvResponse.xml, answered "Impossible de lire ZEMO_SvResponse.xml" when it
/// cannot be read.
std::optional<XmlDocument> Charger_Reponse(Run& run, std::string_view appelant);

/// The fields of one group of nodes, by their path below the group's node. Only the
/// paths given at construction can be read: asking for another one is a mistake in the
/// routine (std::logic_error), never a silent "".
class Champs {
  public:
    Champs(std::initializer_list<std::string_view> chemins);

    /// Reads every field from each node `groupe` selects, in document order: the last
    /// node's values stand (a field that node lacks reads ""). Returns how many nodes
    /// were read; with none, the fields keep what they held.
    std::size_t lire(const XmlDocument& doc, std::string_view groupe);
    /// Reads every field from one node (a field it lacks reads "").
    void lire(const XmlNoeud& noeud);

    const std::string& operator()(std::string_view chemin) const;

  private:
    std::map<std::string, std::string, std::less<>> valeurs_;
};

}  // namespace sv140
