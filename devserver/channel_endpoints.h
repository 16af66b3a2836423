#pragma once

#include "router.h"
#include "service.h"

namespace quorvelle::devserver {

/// Adds the endpoints of channels: creating, promoting, showing, publishing and deleting
/// them, and their launch targets.
void addChannelEndpoints(Router& router, Service& service);

}  // namespace quorvelle::devserver
