// The local time on Windows: the system clock through the C runtime's checked
// conversion, which applies the machine's time zone.
#include "platform/horloge.h"

#include <time.h>

namespace sv140 {

std::tm maintenant_local() {
    const std::time_t maintenant = std::time(nullptr);
    std::tm t{};
    if (localtime_s(&t, &maintenant) != 0) {
        return std::tm{};
    }
    return t;
}

}  // namespace sv140
