#include "aide_test.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

namespace sv140::test {

DossierTemporaire::DossierTemporaire() {
    std::random_device alea;
    auto base = std::filesystem::temp_directory_path();
    for (;;) {
        auto p = base / ("sv140-test-" + std::to_string(alea()));
        if (std::filesystem::create_directory(p)) {
            chemin_ = p.string();
            return;
        }
    }
}

DossierTemporaire::~DossierTemporaire() {
    std::error_code ec;
    std::filesystem::remove_all(chemin_, ec);
}

std::string lire(const std::string& chemin) {
    std::ifstream f(chemin, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

void ecrire(const std::string& chemin, const std::string& octets) {
    std::ofstream(chemin, std::ios::binary) << octets;
}

}  // namespace sv140::test
