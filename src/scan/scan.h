// Scanning, image conversion and the document forms.
#pragma once

#include <span>

#include "exchange/operation.h"

namespace sv140 {

/// The operations of this subsystem.
std::span<const Operation> Operations_Scan();

}  // namespace sv140
