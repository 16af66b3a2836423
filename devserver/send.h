#pragma once

#include <httplib.h>

#include "reply.h"

namespace quorvelle::devserver {

/// Fills in the HTTP response. A file is opened now and streamed from disk
/// once the headers are out.
void send(httplib::Response& response, const Reply& reply);

}  // namespace quorvelle::devserver
