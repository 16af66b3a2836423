#pragma once

#include "people.h"
#include "router.h"

namespace quorvelle::devserver {

/// Adds the endpoints of users, groups, tokens, invites and access requests, and the one
/// that tells a caller who he is.
void addPeopleEndpoints(Router& router, People& people);

}  // namespace quorvelle::devserver
