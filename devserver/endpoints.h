#pragma once

#include "router.h"
#include "service.h"

namespace quorvelle::devserver {

/// Adds the endpoints of builds and channels, and those about the server itself.
void addEndpoints(Router& router, Service& service);

}  // namespace quorvelle::devserver
