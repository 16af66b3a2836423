#pragma once

#include <QStringList>

/// What the server is allowed to do and what it costs: its license and, for a hosted
/// server, the billing portal. Handlers as the command table wants them.

namespace quorvelle {

/// `license`: the installed license and the seats in use.
int licenseCommand(QStringList args);

/// `license request-trial`: gets a trial license from the licensing service and installs it.
int requestTrialCommand(QStringList args);

/// `cloud portal`: a link to the billing portal that soon expires.
int cloudPortalCommand(QStringList args);

}  // namespace quorvelle
