#pragma once

#include "people.h"
#include "router.h"

namespace quorvelle::devserver {

/// Adds the sign-in through a browser: a page with one button, which makes whoever presses
/// it the user "guest" and sends the browser on to the client that waits on this machine
/// with a code; and the exchange of such a code for a token. A code is good for one
/// exchange within two minutes, and none outlives the server.
void addSignInEndpoints(Router& router, People& people);

}  // namespace quorvelle::devserver
