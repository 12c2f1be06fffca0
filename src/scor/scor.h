// SCOR attachments: capture sessions, transfer, status, control and deletion.
#pragma once

#include <span>

#include "exchange/operation.h"

namespace sv140 {

/// The operations of this subsystem.
std::span<const Operation> Operations_Scor();

}  // namespace sv140
