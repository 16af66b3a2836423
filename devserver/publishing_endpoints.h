#pragma once

#include "router.h"
#include "service.h"

namespace quorvelle::devserver {

/// Adds what publishers change besides pushing and promoting: deleting and disabling
/// builds, deleting channels, their public mark and their launch targets.
void addPublishingEndpoints(Router& router, Service& service);

}  // namespace quorvelle::devserver
