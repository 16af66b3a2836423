#pragma once

#include <QString>

namespace quorvelle {

/// The server's base URL without any "/" at its end.
QString withoutTrailingSlashes(const QString& server);

}  // namespace quorvelle
