// Shared helpers of the unit tests: a fresh folder per test, whole-file reads and
// writes, and a shop to run the bridge's routines against.
#pragma once

#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "exchange/run.h"

namespace sv140::test {

/// A fresh, empty folder removed at the end of the test.
class DossierTemporaire {
  public:
    DossierTemporaire();
    ~DossierTemporaire();
    const std::string& chemin() const { return chemin_; }
    std::string operator/(const std::string& nom) const { return chemin_ + "/" + nom; }

  private:
    std::string chemin_;
};

/// A local date and time.
std::tm date(int annee, int mois, int jour, int h, int m, int s);

std::string lire(const std::string& chemin);
void ecrire(const std::string& chemin, const std::string& octets);

/// A shop as the host installs it, with its starting rows.
class Magasin : public ::testing::Test {
  protected:
    void SetUp() override;
    /// A run against the shop. It keeps its databases open until it ends: let it end
    /// before the test writes.
    sv140::Run nouveau();
    void executer(const std::string& base, const std::string& sql);

    DossierTemporaire dossier;
    std::string racine = dossier.chemin() + "/Belvane_Classic";
    std::string programme = racine + "/SV140";
    std::string donnees = racine + "/_Magasin";
    std::string hote = donnees + "/Donnees_32.accdb";
    std::string pont = donnees + "/SV140.accdb";
};

}  // namespace sv140::test
