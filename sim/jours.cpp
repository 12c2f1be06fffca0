#include "sim/jours.h"

#include "platform/horloge.h"
#include "sim/appel.h"

namespace sv140::sim {

using std::chrono::sys_days;

sys_days jour_simule(const Depot& depot) {
    const std::tm t = maintenant_local();
    const sys_days aujourdhui{std::chrono::year{t.tm_year + 1900} / (t.tm_mon + 1) / t.tm_mday};
    return aujourdhui + std::chrono::days{depot.decalage_jours()};
}

std::string texte_jour(sys_days jour) {
    const std::chrono::year_month_day j{jour};
    return avec_zeros(static_cast<int>(j.year()), 4) +
           avec_zeros(static_cast<unsigned>(j.month()), 2) +
           avec_zeros(static_cast<unsigned>(j.day()), 2);
}

std::optional<sys_days> lire_jour(const std::string& t) {
    std::string d;
    if (t.size() == 8) {
        d = t;
    } else if (t.size() == 10 && t[2] == '/' && t[5] == '/') {
        d = t.substr(6, 4) + t.substr(3, 2) + t.substr(0, 2);
    } else if (t.size() == 10 && t[4] == '-' && t[7] == '-') {
        d = t.substr(0, 4) + t.substr(5, 2) + t.substr(8, 2);
    }
    if (!chiffres(d, 8)) {
        return std::nullopt;
    }
    const std::chrono::year_month_day jour{
        std::chrono::year{std::stoi(d.substr(0, 4))},
        std::chrono::month{static_cast<unsigned>(std::stoi(d.substr(4, 2)))},
        std::chrono::day{static_cast<unsigned>(std::stoi(d.substr(6, 2)))}};
    return jour.ok() ? std::optional<sys_days>(jour) : std::nullopt;
}

}  // namespace sv140::sim
