#pragma once

#include "router.h"
#include "service.h"

namespace quorvelle::devserver {

/// Adds the endpoints of builds: uploading, finalizing, showing, disabling and deleting them.
void addBuildEndpoints(Router& router, Service& service);

}  // namespace quorvelle::devserver
