#pragma once

#include <QStringList>

namespace quorvelle {

/// `sso show|test|set|clear|map`: the OpenID Connect provider through which people sign
/// in to a server. The handler tells the words apart by itself.
int ssoCommand(QStringList args);

}  // namespace quorvelle
