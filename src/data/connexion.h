// A connection to one of the shop's databases.
//
// The engine is chosen by the file's content: a file that starts with the SQLite
// header is opened with the SQLite ODBC driver, any other existing file with the
// Access driver. A missing file is never created. Statements are written in Access
// SQL; for SQLite they are rewritten by `Traduire_Access_SQL` before they are sent.
//
// A connection never commits by itself (autocommit is off): what its statements wrote
// becomes durable only through `valider()`, and `annuler()` or closing drops it, so a run
// that stops half-way leaves the database as it was. A failing statement changes nothing
// and leaves the transaction usable. Units of work are made with these two calls, never
// with SQL savepoints, which the Access driver does not take.
//
// On SQLite the connection works in WAL mode with synchronous=NORMAL (every commit
// survives a killed process, and many small commits stay cheap) and waits 5 seconds for
// a locked database before the statement fails. A unit's first write ends what it had
// only read so far, so that it waits for another workstation's write like any first
// statement instead of failing at once on the database as it stood before: from that
// write to the unit's end the unit holds the database, and what it read before is read
// as on the Access engine, without a snapshot.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/statut.h"

namespace sv140 {

enum class Moteur { Aucun, SQLite, Access };

/// One field value as read: null, or its text (numbers in their usual decimal form,
/// Yes/No as -1/0, dates as "YYYY-MM-DD HH:MM:SS").
struct Valeur {
    std::optional<std::string> texte;

    bool nul() const { return !texte.has_value(); }
    /// The text, "" for null.
    std::string str() const { return texte.value_or(std::string()); }
    /// The numeric value (the leading number of the text), 0 for null.
    double nombre() const;
    /// Yes/No: any non-zero number or "True" is True; null is False.
    bool booleen() const;
};

/// The rows a query returned, all read at once (a client-side cursor).
class Recordset {
  public:
    Recordset() = default;
    Recordset(std::vector<std::string> colonnes, std::vector<std::vector<Valeur>> lignes);

    std::size_t RecordCount() const { return lignes_.size(); }
    bool EOF_() const { return courante_ >= lignes_.size(); }
    void MoveFirst() { courante_ = 0; }
    void MoveNext() { ++courante_; }
    /// A field of the current row by name (case-insensitive, as Access matches
    /// names). A null value when the name is unknown or there is no current row.
    Valeur champ(std::string_view nom) const;
    const std::vector<std::string>& colonnes() const { return colonnes_; }

  private:
    std::vector<std::string> colonnes_;
    std::vector<std::vector<Valeur>> lignes_;
    std::size_t courante_ = 0;
};

class Connexion {
  public:
    using Journal = std::function<void(std::string_view)>;

    explicit Connexion(Journal journal = {});
    ~Connexion();  // rolls back what was not validated
    Connexion(const Connexion&) = delete;
    Connexion& operator=(const Connexion&) = delete;

    /// Opens an existing database file. A failure (also logged) when the file is
    /// missing, not a file, unreadable, or the driver refuses it; the statements sent
    /// to a connection that could not be opened then fail with that reason.
    Statut ouvrir(const std::string& chemin);
    /// `ouvrir` at the first statement sent to the connection: a database that no
    /// routine of the run uses costs only a look at its first bytes. A file that is no
    /// database is refused (and logged) at once, as `ouvrir` refuses it.
    void ouvrir_a_la_demande(const std::string& chemin);
    bool ouverte() const;
    Moteur moteur() const { return moteur_; }
    const std::string& chemin() const { return chemin_; }
    void fermer();  // rolls back what was not validated

    /// Runs an insert, update, delete or DDL statement. On failure (also logged with
    /// the statement) the statement changed nothing; the reason names the database.
    Statut Execute(std::string_view sql);
    /// Runs a query and reads all its rows. On failure (also logged with the
    /// statement) the reason names the database.
    Resultat<Recordset> Ouvrir(std::string_view sql);

    /// Makes the writes since the last validation durable. On failure (also logged)
    /// they are rolled back.
    Statut valider();
    /// Drops the writes since the last validation.
    void annuler();

    /// The engine a file calls for, by its first 16 bytes (Aucun when missing).
    static Moteur moteur_du_fichier(const std::string& chemin);
    /// Creates a new, empty SQLite database file (for sv140-shop only: the bridge
    /// itself never creates a database), in WAL mode. A failure says why.
    static Statut creer_sqlite(const std::string& chemin);

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
    Journal journal_;
    Moteur moteur_ = Moteur::Aucun;
    std::string chemin_;
    std::string refus_;                    // why the last opening failed
    std::optional<std::string> differee_;  // the file to open at the first statement
    void ouvrir_si_differee();
    // What the transaction in progress has done: on SQLite a transaction that has only
    // read keeps the database as it stood at its first read, and cannot become a write
    // once another workstation has written since.
    enum class Transaction { Aucune, Lecture, Ecriture };
    Transaction transaction_ = Transaction::Aucune;
    void journaliser(std::string_view message);
    Statut echec_instruction(std::string_view raison, std::string_view sql);
};

}  // namespace sv140
