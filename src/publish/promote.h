#pragma once

#include <QString>

#include "server/requests.h"

namespace quorvelle {

/// Points a channel at a build; a failure has been printed with the label "promote".
Reply promoteBuild(const Server& server, const QString& channel, const QString& build);

/// The line that says where a channel now stands, with its line end; `origin` is
/// appended as it is and may be empty.
QString promotedLine(const QString& channel, const QString& build, const QString& origin = {});

}  // namespace quorvelle
