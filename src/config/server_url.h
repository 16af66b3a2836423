#pragma once

#include <QString>

namespace quorvelle {

/// The server's base URL without any "/" at its end.
QString withoutTrailingSlashes(const QString& server);

/// Whether two base URLs differ in nothing but slashes at their ends.
bool isSameServer(const QString& one, const QString& other);

}  // namespace quorvelle
