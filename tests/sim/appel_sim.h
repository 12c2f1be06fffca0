// Helpers of the simulator's tests: a scratch state folder, requests written the way
// the bridge writes them, and answers read the way the bridge reads them.
#pragma once

#include <string>
#include <string_view>

#include "platform/xml.h"

namespace sv140::sim::test {

/// The demo professional's identifiers.
inline constexpr const char* kIdNat = "991234567";
inline constexpr const char* kIdFacSituation1 = "991001231";
inline constexpr const char* kIdFacSituation2 = "991004565";

/// A fresh folder, removed with everything in it at destruction.
class DossierTemporaire {
  public:
    DossierTemporaire();
    ~DossierTemporaire();
    DossierTemporaire(const DossierTemporaire&) = delete;
    DossierTemporaire& operator=(const DossierTemporaire&) = delete;
    const std::string& chemin() const { return chemin_; }
    /// A path inside the folder.
    std::string sous(std::string_view nom) const;

  private:
    std::string chemin_;
};

/// A request document as the bridge sends it: declaration, CR LF line ends,
/// Windows-1252. `parametres` (UTF-8 markup) follow `versionMessage`.
std::string requete(std::string_view operation, std::string_view parametres = {},
                    bool avec_version = true);

/// The professional block; an empty `numSitu` or `motDePasse` is left out.
std::string bloc_ps(std::string_view idNat, std::string_view idFac, std::string_view numSitu = {},
                    std::string_view motDePasse = {});

/// The cleaning the bridge applies before saving an answer: cut at the first NUL
/// (whole buffer when none), the document type line replaced by a declaration or
/// dropped beside one, CR LF pairs removed.
std::string nettoyer(std::string_view tampon);

struct Resultat {
    int retour = 0;
    /// The buffer's bytes up to the first NUL (all of them when none).
    std::string brut;
    XmlDocument doc;
    bool lisible = false;

    std::string code() const {
        return doc.selectionner_un("/ZRMESSAGE/resultat/codeErreur").texte();
    }
    std::string libelle() const {
        return doc.selectionner_un("/ZRMESSAGE/resultat/libelleErreur").texte();
    }
    std::string appelant() const { return doc.selectionner_un("/ZRMESSAGE/appelant").texte(); }
    std::size_t nombre(std::string_view xpath) const { return doc.selectionner(xpath).size(); }
};

/// One call of the in-process entry with a NUL-filled buffer of `taille` bytes.
Resultat appeler(const std::string& dossier_zrsim, const std::string& texte_requete,
                 int taille = 102400);

}  // namespace sv140::sim::test
