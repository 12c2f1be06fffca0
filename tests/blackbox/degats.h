// What the bad-input tables inflict: each kind of damaged document and database the
// bridge meets in a shop, and the field texts that try to break out of SQL, XPath, a
// file name or a log line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "harnais.h"

namespace bb {

enum class DocumentAbime { Absent, Vide, Malforme, MalEncode, Entite, Enorme };
inline const std::vector<DocumentAbime> kDocumentsAbimes = {
    DocumentAbime::Absent,    DocumentAbime::Vide,   DocumentAbime::Malforme,
    DocumentAbime::MalEncode, DocumentAbime::Entite, DocumentAbime::Enorme};
std::string nom(DocumentAbime d);
/// The bytes of `valide` (a well-formed document with an XML declaration) damaged this
/// way; nothing for a missing file. Enorme stays well-formed: 100 MB of small elements
/// that no reader of the bridge asks for, inside the root.
std::optional<std::string> abimer(DocumentAbime d, const std::string& valide);

enum class BaseAbimee { Absente, Vide, Corrompue, LectureSeule, Verrouillee, ColonneManquante };
inline const std::vector<BaseAbimee> kBasesAbimees = {
    BaseAbimee::Absente,      BaseAbimee::Vide,        BaseAbimee::Corrompue,
    BaseAbimee::LectureSeule, BaseAbimee::Verrouillee, BaseAbimee::ColonneManquante};
std::string nom(BaseAbimee b);

/// A database damaged while this lives, then put back byte for byte. ColonneManquante
/// drops `colonne` from `table`; LectureSeule is an immutable file (root's writes fail
/// too); Verrouillee is another workstation's write transaction held open. `pris` is
/// false where the damage could not be made here (chattr refused).
class Degat {
  public:
    Degat(BaseAbimee b, std::string base, const std::string& table = "",
          const std::string& colonne = "");
    ~Degat();
    Degat(const Degat&) = delete;
    Degat& operator=(const Degat&) = delete;
    bool pris() const { return pris_; }

  private:
    std::string base_, copie_;
    bool pris_ = true;
    std::optional<Immuable> immuable_;
    std::optional<EcritureEnCours> ecriture_;
};

/// Texts for every field that reaches SQL, XPath, a file name or a log line: each
/// quoting character alone and inside a name, NUL, 10 000 characters, and letters
/// outside Windows-1252. In UTF-8.
const Textes& textes_hostiles();

}  // namespace bb
