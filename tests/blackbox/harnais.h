// The black-box harness: a fresh shop in a temporary folder, the bridge run in it as
// the host runs it (under a fixed clock), and the means to read back what it left.
//
// With SV140_CIBLE=win32 the bridge run is sv140.exe under Wine, taken from
// SV140_WIN32_BIN (the environment's, else the configured one), with the scripted
// middleware and the simulator as DLLs; the shop is still made, and what the runs
// leave read back, by this Linux program.
#pragma once

#include <gtest/gtest.h>

#include <ctime>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct sqlite3;

namespace bb {

using Textes = std::vector<std::string>;

/// The bridge under test is sv140.exe under Wine.
bool sous_wine();
/// A path as the host gives it to the bridge and the bridge writes it: under Wine, the
/// Windows form (Z:\tmp\...).
std::string chemin_du_pont(const std::string& chemin);

/// How one run ended: the exit status (128 and above: a signal) and standard error.
struct Execution {
    int statut = -1;
    std::string erreurs;
    /// The message-box lines of standard error, in order, without "MsgBox : ".
    Textes boites() const;
};
/// The run ended by itself, without a signal, a watchdog kill, a sanitizer report or an
/// unhandled exception.
::testing::AssertionResult fin_propre(const Execution& e);

std::optional<std::string> lire(const std::string& chemin);
void ecrire(const std::string& chemin, const std::string& octets);
bool existe(const std::string& chemin);
/// The lines of a text, line ends (LF, CR LF) removed.
Textes lignes(const std::string& texte);
/// A text stored through the bridge's quoting rule reads back with double quotes doubled.
std::string stocke(const std::string& texte);

/// Rows of every statement of `sql` run on a database, each value as text ("NULL" for
/// null); fails the test on error and never creates the file.
using Lignes = std::vector<Textes>;
Lignes sql(const std::string& base, const std::string& requete);
/// Each path, then every table of its database with its rows; where no readable database
/// stands, what does: nothing, a folder, or the file's bytes.
Lignes instantane(const Textes& bases);

/// Another workstation's write transaction on a database, held while this lives. Meanwhile
/// nothing else in this process may open and close the database's file: POSIX releases a
/// process's locks on a file with the first of its descriptors closed.
class EcritureEnCours {
  public:
    explicit EcritureEnCours(const std::string& base);
    ~EcritureEnCours();
    EcritureEnCours(const EcritureEnCours&) = delete;
    EcritureEnCours& operator=(const EcritureEnCours&) = delete;

  private:
    sqlite3* db_ = nullptr;
};

/// A file made immutable (chattr +i) while this lives: not even root may write it, where
/// a file mode would not stop root. `pris` is false where the file system or the rights
/// of the tests do not allow it.
class Immuable {
  public:
    explicit Immuable(std::string chemin);
    ~Immuable();
    Immuable(const Immuable&) = delete;
    Immuable& operator=(const Immuable&) = delete;
    bool pris() const { return pris_; }

  private:
    std::string chemin_;
    bool pris_ = false;
};

/// The text of each node an XPath expression finds in an XML file (with `noms`, its
/// name); nothing when the file is missing or not well-formed.
Textes xml(const std::string& fichier, const std::string& xpath, bool noms = false);
/// appelant, codeErreur and libelleErreur of a response file.
inline Textes resultat(const std::string& fichier) {
    return xml(fichier, "/ZRMESSAGE/appelant | //codeErreur | //libelleErreur");
}

/// A middleware answer: appelant, result code and text, `donnees`; ISO-8859-1 bytes.
std::string reponse(const std::string& appelant, const std::string& code,
                    const std::string& libelle, const std::string& donnees = "");
/// The `donnees` of an f_LireVersion answer giving DLL version `dll`, the whole answer,
/// and the T_InfosVersion row the bridge stores from it.
std::string donnees_version(const std::string& dll);
inline std::string reponse_version(const std::string& dll) {
    return reponse("f_LireVersion", "0", "", donnees_version(dll));
}
Textes version_stockee(const std::string& dll);

/// Card fields by path ("MUT/MUT_NUM"), in document order; a path may repeat.
using Champs = std::vector<std::pair<std::string, std::string>>;
/// Fields written "PATH=value;PATH=value".
Champs champs(const std::string& table);
/// A beneficiary with every field the bridge reads and one period of each right, then
/// `retouches` ("COD_SEB=13;MUT/MUT_NUM=") over it.
Champs beneficiaire(const std::string& nom, const std::string& prenom, const std::string& naissance,
                    const std::string& rang, const std::string& retouches = "");
/// The f_LireCVitale answer for insured 1500175123456 key 42, fund 01 131 0000.
std::string reponse_carte(const std::vector<Champs>& beneficiaires);

/// Every test runs in its own shop, made by sv140-shop init, with the bridge copied in.
class BoiteNoire : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    std::string fichier(const std::string& nom) const { return programme + "/" + nom; }
    std::string pont() const { return magasin + "/SV140.accdb"; }
    std::string hote() const { return magasin + "/Donnees_32.accdb"; }
    /// The middleware library of the program folder.
    std::string bibliotheque() const {
        return fichier(sous_wine() ? "WebQuintara2.dll" : "WebQuintara2.so");
    }

    /// The bridge with these arguments, run from the shop root (natively under the fixed
    /// clock).
    Execution lancer(const Textes& arguments, const std::string& entree = "");
    Execution operation(const std::string& nom) { return lancer({nom, chemin_du_pont(magasin)}); }
    /// Another workstation of the shop: the program folder `nom` beside this one, a copy
    /// of it as it stands (bridge, middleware and the middleware's state); its path.
    std::string poste(const std::string& nom);
    /// The bridge of the program folder `dossier` running `nom` on this shop, as
    /// `operation` does (the runs' clock); safe to call from several threads at once.
    Execution operation_du_poste(const std::string& dossier, const std::string& nom);
    /// The time of the last run in strftime's `format`: the fixed clock's, or under Wine,
    /// which libfaketime does not reach, the real clock's at the run's start.
    std::string horloge(const char* format) const;
    /// The exchange file the last run archived as `prefixe` + its time + ".xml" in the
    /// month's folder; under Wine the latest of the seconds the run lasted.
    std::optional<std::string> archive(const std::string& prefixe) const;
    /// sv140-shop with these arguments.
    Execution outil(const Textes& arguments) {
        return executer({SV140_BIN_DIR "/sv140-shop"}, arguments, "");
    }

    /// Puts the scripted middleware in place with an empty script.
    void utiliser_script();
    std::string script(const std::string& nom) const { return programme + "/zrscript/" + nom; }
    /// What call `appel` returns and answers (0: every call without its own script).
    void scripter(int appel, const std::string& reponse, int retour = 0);
    int appels() const;

    /// Professional 10001234567 with situations 1 (12345678 key 9) and 2 (87654321 key
    /// 0); sets Num_Situ and the host's data version.
    void professionnel(const std::string& num_situ = "1", int version = 3600);
    /// Leaves only this client in T_Etat_Civil: [N°], [Sécurité sociale], [Date Naissance],
    /// RangNaissance, Divers as SQL values.
    void client(const std::string& valeurs) {
        sql(hote(),
            "DELETE FROM T_Etat_Civil; INSERT INTO T_Etat_Civil ([N°], [Sécurité sociale],"
            " [Date Naissance], RangNaissance, Divers) VALUES (" +
                valeurs + ")");
    }
    Lignes versions() const { return sql(pont(), "SELECT * FROM T_InfosVersion"); }
    /// LogsSV.txt in UTF-8 with LF line ends (Windows writes it in Windows-1252).
    std::string log() const;
    bool log_finit_par(const std::string& m) const { return log().find(m + "\n") != m.npos; }

    std::string racine, programme, magasin;
    /// The native runs' clock stands still at its instant; a run that must see time pass
    /// (a wait that gives up after a while) lets it run from there.
    bool horloge_figee = true;
    /// Seconds after which the next runs are killed (SIGKILL); 0: only a stuck run is.
    double tuer_apres = 0;

  private:
    Execution executer(Textes argv, const Textes& arguments, const std::string& entree);
    std::time_t debut_ = 0, fin_ = 0;  // the last run's clock
};

}  // namespace bb
