#pragma once

#include <QString>

/// What people can do about a failure: for a terminal, below the error. Pure functions.

namespace quorvelle {

/// For an address without a scheme: how it may have been meant; else an empty text.
QString addressHint(const QString& server);

/// For a request to the server's base URL that failed with this HTTP status (0: none came),
/// or an empty text where there is nothing to say.
QString nextStep(const QString& server, int status);

}  // namespace quorvelle
