// Shared helpers of the unit tests: a fresh folder per test and whole-file reads and writes.
#pragma once

#include <string>

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

std::string lire(const std::string& chemin);
void ecrire(const std::string& chemin, const std::string& octets);

}  // namespace sv140::test
