#pragma once

#include <QString>
#include <QStringList>

namespace quorvelle {

/// `sso map list|role|group|remove|default|claims`: which roles and groups of the sign-in
/// provider become which here. `args` begins after "map"; the server is resolved.
///
/// A change reads the whole mapping and writes it back, with all that it does not know.
int ssoMapCommand(const QString& server, QStringList& args);

}  // namespace quorvelle
