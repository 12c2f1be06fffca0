// The Access-SQL rewriter, on any statement text.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "data/access_sql.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t taille) {
    std::tm jour{};
    jour.tm_year = 126;
    jour.tm_mon = 10;
    jour.tm_mday = 24;
    sv140::Traduire_Access_SQL(std::string_view(reinterpret_cast<const char*>(octets), taille),
                               jour);
    return 0;
}
