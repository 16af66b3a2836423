#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

#include "console/shown_text.h"

/// What joining and signing in do with the server's answer: an object with "token", "user",
/// "role" and "groups".

namespace quorvelle {

/// Whether a session of the server can be stored with that explicit install root or none:
/// prints why not when the default root would be needed and the home folder is not known.
bool canStoreSession(const QString& server, const QString& explicitRoot);

/// Stores the answer's token and the install root (the explicit one, else the stored one,
/// else the default) in the server's configuration entry, and the token in its managed
/// subscriptions. Of those made by hand that still carry the former token a terminal is
/// told. Returns the entry; nothing after an error was printed: the answer holds no token
/// (`label` names the command), or the configuration cannot be written, when the token is
/// shown so that it is not lost.
std::optional<QJsonObject> storeSession(const QString& server, const QJsonObject& answer,
                                        const QString& explicitRoot, const QString& label);

/// "Joined http://s as 'ann' (member)" and the line of her groups; `opening` is "Joined" or
/// the like.
Lines sessionText(const QString& opening, const QString& server, const QJsonObject& answer);

}  // namespace quorvelle
