#pragma once

#include <QString>

namespace quorvelle {

/// The server's base URL without any "/" at its end.
QString withoutTrailingSlashes(const QString& server);

/// The address without the user name and password that may stand in it: as it may be shown
/// to others, opened and copied.
QString withoutUserInformation(const QString& address);

/// Whether two base URLs differ in nothing but slashes at their ends.
bool isSameServer(const QString& one, const QString& other);

}  // namespace quorvelle
