// The result of a step that can fail, with its reason: what LevelDB calls a Status.
// Errors travel as values; no exception crosses from one layer to another.
#pragma once

#include <string>
#include <utility>

namespace sv140 {

class [[nodiscard]] Statut {
  public:
    /// Success.
    Statut() = default;
    /// A failure and its reason, in French, as the host or the log will read it.
    static Statut Echec(std::string raison) { return Statut(Cause::Autre, std::move(raison)); }
    /// A database that could not be opened, read or written: the reason names it.
    static Statut Echec_Base(std::string raison) { return Statut(Cause::Base, std::move(raison)); }
    /// A failure whose answer for the host is already written (an unreadable document,
    /// missing professional data): the caller must not write another one over it.
    static Statut Deja_Repondu(std::string raison) {
        return Statut(Cause::Repondu, std::move(raison));
    }

    bool ok() const { return cause_ == Cause::Aucune; }
    explicit operator bool() const { return ok(); }
    const std::string& raison() const { return raison_; }
    bool base() const { return cause_ == Cause::Base; }
    bool repondu() const { return cause_ == Cause::Repondu; }

  private:
    enum class Cause { Aucune, Autre, Base, Repondu };
    Statut(Cause cause, std::string raison) : raison_(std::move(raison)), cause_(cause) {}
    std::string raison_;
    Cause cause_ = Cause::Aucune;
};

/// A value, or the reason it could not be had.
template <class T>
class [[nodiscard]] Resultat {
  public:
    Resultat(T valeur) : valeur_(std::move(valeur)) {}
    Resultat(Statut echec) : statut_(std::move(echec)) {}

    bool ok() const { return statut_.ok(); }
    explicit operator bool() const { return ok(); }
    const Statut& statut() const { return statut_; }
    const T& operator*() const { return valeur_; }
    T& operator*() { return valeur_; }
    const T* operator->() const { return &valeur_; }
    T* operator->() { return &valeur_; }

  private:
    Statut statut_;
    T valeur_{};
};

}  // namespace sv140
