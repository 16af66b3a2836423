#pragma once

#include <QStringList>

#include "server/server.h"

namespace quorvelle {

/// `sso map list|role|group|remove|default|claims`: which roles and groups of the sign-in
/// provider become which here. `args` begins after "map"; the server is resolved.
///
/// A change reads the whole mapping and writes it back, with all that it does not know.
int ssoMapCommand(const Server& server, QStringList& args);

}  // namespace quorvelle
