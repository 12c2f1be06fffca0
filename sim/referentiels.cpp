#include "sim/referentiels.h"

#include <algorithm>
#include <iterator>

namespace sv140::sim {

namespace {

// Class A products (the fully covered basket) have a real base; class B frames and
// lenses a token one, so that a shop sees both kinds of invoice.
constexpr TarifLPP kTarifs[] = {
    {"2210546", "M", 3000},  // adult frame, class A
    {"2223342", "M", 5},     // adult frame, class B
    {"2227908", "V", 3260},  // single-vision lens, class A
    {"2227920", "V", 8090},  // multifocal lens, class A
    {"2269025", "V", 4},     // single-vision lens, class B
    {"2203240", "L", 3963},  // contact lenses, yearly allowance
    {"2340119", "P", 450},   // fitting and pairing of the lenses
};

// Telephone and fax numbers are in the ranges kept for fiction.
constexpr Organisme kOrganismes[] = {
    {"01", "751", "", "CPAM DE PARIS", "14 RUE DES TISSERANDS \\TSA 61001", "75948", "PARIS",
     "CEDEX 19", "0199001001", "0199001002"},
    {"01", "131", "", "CPAM DES BOUCHES-DU-RHONE", "8 RUE DES CALANQUES \\BAT B", "13281",
     "MARSEILLE", "CEDEX 06", "0465710101", ""},
    {"01", "441", "", "CPAM DE LOIRE-ATLANTIQUE", "9 QUAI DES CORDIERS", "44958", "NANTES",
     "CEDEX 9", "0261910101", "0261910102"},
    {"01", "331", "", "CPAM DE LA GIRONDE", "PLACE DE L'ESTUAIRE \\CS 41001", "33085", "BORDEAUX",
     "CEDEX", "0536490101", ""},
    {"01", "691", "", "CPAM DU RHONE", "276 COURS DES CANUTS", "69100", "VILLEURBANNE \\LYON", "",
     "0465710202", "0465710203"},
    {"01", "591", "", "CPAM DE LILLE-DOUAI", "2 RUE DES FILATURES \\CS 30001", "59895", "LILLE",
     "CEDEX 9", "0353010101", ""},
    {"01", "671", "", "CPAM DU BAS-RHIN", "16 RUE DES BATELIERS", "67090", "STRASBOURG", "CEDEX",
     "0353010202", ""},
    {"02", "441", "", "MSA LOIRE-ATLANTIQUE - VENDEE", "2 IMPASSE DES VENDANGES \\ST HERBLAIN",
     "44957", "NANTES", "CEDEX 9", "0261910303", ""},
    {"02", "691", "", "MSA AIN-RHONE", "35 RUE DES MOISSONS", "69232", "LYON", "CEDEX 02",
     "0465710404", "0465710405"},
    {"03", "751", "0101", "SECURITE SOCIALE DES INDEPENDANTS IDF",
     "22 RUE DES ARTISANS \\IMM. LE DELTA", "75017", "PARIS", "", "0199001303", ""},
    {"10", "751", "0001", "CRPCEN", "5 BIS RUE DES NOTAIRES", "75008", "PARIS", "", "0199001404",
     "0199001405"},
    {"91", "751", "0912", "MGEN SECTION DE PARIS", "3 SQUARE DES ENSEIGNANTS", "75748", "PARIS",
     "CEDEX 15", "0199001505", ""},
};

}  // namespace

const TarifLPP* tarif_lpp(std::string_view code) {
    const auto it = std::find_if(std::begin(kTarifs), std::end(kTarifs),
                                 [&](const TarifLPP& t) { return t.code == code; });
    return it == std::end(kTarifs) ? nullptr : &*it;
}

bool paye_par_caisse(const std::string& regime) {
    return regime == "01" || regime == "02";
}

const Organisme* organisme(const std::string& regime, const std::string& caisse,
                           const std::string& centre) {
    const bool par_caisse = paye_par_caisse(regime);
    const auto it =
        std::find_if(std::begin(kOrganismes), std::end(kOrganismes), [&](const Organisme& o) {
            return o.regime == regime && o.caisse == caisse && (par_caisse || o.centre == centre);
        });
    return it == std::end(kOrganismes) ? nullptr : &*it;
}

}  // namespace sv140::sim
