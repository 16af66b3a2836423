#pragma once

#include "router.h"
#include "service.h"

namespace quorvelle::devserver {

/// Adds what a sync of a tide channel asks for: the descriptor, which needs the token,
/// and below "/tide/" the manifests, signatures and chunks, which need an expiring URL
/// out of a descriptor instead.
void addTideEndpoints(Router& router, const Service& service);

}  // namespace quorvelle::devserver
