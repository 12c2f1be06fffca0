// The black-box harness: a fresh shop in a temporary folder, the bridge run in it as
// the host runs it (under a fixed clock), and the means to read back what it left:
// files, XML documents, the SQLite databases, the console lines.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bb {

/// The clock every run sees.
inline constexpr const char* kHorloge = "2024-03-05 14:30:12";

/// How one run of a program ended.
struct Execution {
    int statut = -1;  // exit status, -1 when killed by a signal
    int signal = 0;   // the signal that ended it, 0 when it exited
    bool delai_depasse = false;
    std::string sortie;   // standard output
    std::string erreurs;  // standard error

    /// The message-box lines of standard error, in order, without "MsgBox : ".
    std::vector<std::string> boites() const;
};

// --- files -------------------------------------------------------------------------
bool existe(const std::string& chemin);
/// The whole file, nullopt when it cannot be read.
std::optional<std::string> lire(const std::string& chemin);
void ecrire(const std::string& chemin, std::string_view octets);
void copier(const std::string& source, const std::string& destination);
/// The lines of a text, line ends (LF, CR LF) removed.
std::vector<std::string> lignes(std::string_view texte);
/// The first `n` characters of a UTF-8 text.
std::string premiers(const std::string& utf8, std::size_t n);
/// A text the bridge stored through its quoting rule, as the database gives it back:
/// the rule doubles double quotes too, and inside a single-quoted literal neither
/// Access nor SQLite undoes that, so each double quote reads back doubled.
std::string stocke_par_regle(const std::string& texte);
/// UTF-8 to ISO-8859-1 bytes (characters beyond it become '?').
std::string latin1(std::string_view utf8);

// --- XML ---------------------------------------------------------------------------
/// A parsed XML document (libxml2); text comes back in UTF-8.
class Xml {
  public:
    /// Parses a file; `ok()` is false when it is missing or not well-formed.
    explicit Xml(const std::string& chemin);
    ~Xml();
    Xml(const Xml&) = delete;
    Xml& operator=(const Xml&) = delete;

    bool ok() const { return doc_ != nullptr; }
    /// The encoding named by the declaration ("" without one).
    std::string encodage() const;
    /// Text of the first node found, nullopt when none.
    std::optional<std::string> texte(const std::string& xpath) const;
    /// Texts of every node found, in document order.
    std::vector<std::string> textes(const std::string& xpath) const;
    /// Names of the child elements of the first node found.
    std::vector<std::string> enfants(const std::string& xpath) const;
    std::size_t compter(const std::string& xpath) const;

  private:
    void* doc_ = nullptr;
};

/// The three fields of a response document's result.
struct Resultat {
    std::string appelant, code, libelle;
};
/// Reads appelant, resultat/codeErreur and resultat/libelleErreur; nullopt when the
/// file is missing or not well-formed.
std::optional<Resultat> resultat(const std::string& chemin);
/// The result code of a response file, "<none>" when it is missing or not well-formed.
std::string code_reponse(const std::string& chemin);

// --- SQLite ------------------------------------------------------------------------
using Ligne = std::vector<std::optional<std::string>>;

/// A shop database opened by the test (never created by it).
class Base {
  public:
    explicit Base(const std::string& chemin);
    ~Base();
    Base(const Base&) = delete;
    Base& operator=(const Base&) = delete;

    bool ok() const { return db_ != nullptr; }
    /// Runs statements; fails the current test on error.
    void executer(const std::string& sql);
    /// Rows of a query; fails the current test on error.
    std::vector<Ligne> lignes(const std::string& sql);
    /// The first column of the first row, nullopt when there is no row or it is null.
    std::optional<std::string> valeur(const std::string& sql);
    long compter(const std::string& table);
    /// The whole content of every table, as text, to compare before and after a run.
    std::string instantane();

  private:
    void* db_ = nullptr;
    std::string chemin_;
};

// --- the card response a middleware gives --------------------------------------------
/// Elements by path ("MUT/MUT_NUM"), in document order; a path may repeat.
using Champs = std::vector<std::pair<std::string, std::string>>;

struct CarteTest {
    Champs contexte;
    std::vector<Champs> beneficiaires;
};

/// Sets the first element at `chemin` (appended when absent).
void fixer(Champs& champs, const std::string& chemin, const std::string& valeur);
/// A beneficiary with every element the bridge reads.
Champs beneficiaire(const std::string& nom, const std::string& prenom, const std::string& naissance,
                    const std::string& rang);
/// A card context for the insured 1500175123456 key 42, fund 01 131 0000.
Champs contexte_carte();
/// The f_LireCVitale answer for this card, in ISO-8859-1 bytes.
std::string reponse_carte(const CarteTest& carte);
/// An answer envelope: declaration, appelant, resultat with code, text and `donnees`
/// (UTF-8 in, ISO-8859-1 bytes out).
std::string reponse(const std::string& appelant, const std::string& code,
                    const std::string& libelle, const std::string& donnees = "");

/// The `donnees` of an f_LireVersion answer, versionDll `dll`, and the whole answer.
std::string donnees_version(const std::string& dll);
std::string reponse_version(const std::string& dll);

// --- a shop with the bridge installed -------------------------------------------------
class Boutique {
  public:
    /// A fresh install under a new temporary folder.
    Boutique();
    ~Boutique();

    /// Installs through sv140-shop init. False with `erreur` on failure.
    bool installer(std::string& erreur);

    std::string racine;      // the temporary folder
    std::string programme;   // Belvane_Classic/SV140
    std::string magasin;     // Belvane_Classic/_Magasin
    std::string temporaire;  // Belvane_Classic/Temporaire.accdb
    bool garder = false;     // keep the folder for inspection (a failed test)

    std::string fichier(std::string_view nom) const { return programme + "/" + std::string(nom); }
    std::string base_pont() const { return magasin + "/SV140.accdb"; }
    std::string base_hote() const { return magasin + "/Donnees_32.accdb"; }

    // The scripted middleware.
    void utiliser_script();
    void scripter(int appel, int retour, std::string_view reponse);
    void scripter_reponse(int appel, std::string_view reponse) { scripter(appel, 0, reponse); }
    void scripter_retour(int appel, int retour);
    void scripter_toujours(int retour, std::string_view reponse);
    void scripter_fichier(int appel, const std::string& suffixe, std::string_view contenu);
    std::string script(std::string_view nom) const {
        return programme + "/zrscript/" + std::string(nom);
    }
    int appels() const;
    std::string requete(int appel) const;
    long taille(int appel) const;

    /// Stores a professional (national identifier 10001234567) with two situations:
    /// 1 invoicing as 12345678 key 9, 2 as 87654321 key 0; sets Num_Situ and the host's
    /// data version.
    void professionnel(const std::string& num_situ = "1", int version = 3600);

    // sv140-shop commands on this shop.
    Execution outil(const std::vector<std::string>& arguments);

    /// Runs the bridge with these arguments from another folder, under the fixed clock.
    Execution lancer(const std::vector<std::string>& arguments, const std::string& entree = "");
    /// `sv140 operation data-folder`.
    Execution operation(const std::string& nom, const std::string& entree = "") {
        return lancer({nom, magasin}, entree);
    }
    /// Starts the bridge without waiting.
    pid_t demarrer(const std::vector<std::string>& arguments, const std::string& entree,
                   const std::string& etiquette);
    Execution attendre(pid_t pid, const std::string& etiquette);

    std::string log() const { return lire(fichier("LogsSV.txt")).value_or(""); }
    /// True when a line of LogsSV.txt ends with `message` (UTF-8 or its ISO-8859-1
    /// form: the log's encoding is the platform's).
    bool log_finit_par(const std::string& message) const;
    bool log_contient(const std::string& morceau) const;
};

/// Every test runs in its own shop.
class BoiteNoire : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    Boutique b;
};

/// Checks a run ended by itself, without a crash or a sanitizer report.
::testing::AssertionResult fin_propre(const Execution& e);

}  // namespace bb
