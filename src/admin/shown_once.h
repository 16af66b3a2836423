#pragma once

#include <QString>

#include "console/shown_text.h"
#include "server/requests.h"

namespace quorvelle {

/// Ends a command with its last request as finish() does, when the reply holds, under
/// `key`, a text that the server tells only once: where standard output cannot take it, it
/// goes to standard error. A reply that lacks it may hold it somewhere else and is written
/// to standard error as it came, in text mode, beside the command's lines.
int finishShownOnce(const Reply& reply, const QString& key, const Lines& text);

}  // namespace quorvelle
