// The local time on Linux: the system clock in the machine's time zone, through the
// conversion that keeps no shared buffer.
#include "platform/horloge.h"

#include <time.h>

namespace sv140 {

std::tm maintenant_local() {
    const std::time_t maintenant = std::time(nullptr);
    std::tm t{};
    if (localtime_r(&maintenant, &t) == nullptr) {
        return std::tm{};
    }
    return t;
}

}  // namespace sv140
