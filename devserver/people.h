#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <optional>

#include "document.h"
#include "reply.h"
#include "router.h"

namespace quorvelle::devserver {

/// Everybody that the server knows, as one JSON object of five tables:
///
///   "users"     name: "role", "service", "disabled", and the lists "groups", "follows",
///               "channels" (what a publisher may publish to)
///   "tokens"    token: "user", "name"
///   "groups"    name: "channels", "sso_managed"
///   "invites"   id: "code", "user", "groups", "expires_at"
///   "requests"  id: "name", "email", "message", "created_at"
using PeopleTables = QJsonObject;

/// The tables, in a file.
class People : public Document {
public:
    using Document::Document;

    /// Who a token belongs to.
    std::optional<Caller> callerOf(const QString& token) const;
};

/// One entry of a table; empty when there is none, for every entry has keys.
QJsonObject entryOf(const PeopleTables& tables, QStringView table, QStringView key);

/// Sets an entry; an empty one is removed.
void setEntry(PeopleTables& tables, QStringView table, const QString& key,
              const QJsonObject& entry);

/// Whether the text is a role that a user can have, and the refusal of one that is none.
bool isRole(const QString& role);
Refusal noRole(const QString& role);

/// A new user without groups.
QJsonObject newUser(const QString& role, bool isService);

/// Random text that nobody can guess.
QString newSecret();

/// A new token of the user, who must exist.
QString addToken(PeopleTables& tables, const QString& user, const QString& name);

/// The channels that a user follows by himself or through his groups, sorted, each once.
QStringList channelsOf(const PeopleTables& tables, const QString& user);

/// How many administrators and publishers may do something, the one that every data folder
/// knows included. Service accounts take no seat.
int privilegedSeats(const PeopleTables& tables);

/// Lets a user in on a machine, making him a member when he is new, and adds him to the
/// groups. Answers with "token", "user", "role", "groups" and "channels".
Reply openSession(PeopleTables& tables, const QString& user, const QStringList& groups,
                  const QString& machine);

/// The names of a JSON list, and the list with a name added (once) or removed.
QStringList namesIn(const QJsonValue& list);
QJsonArray withName(const QJsonValue& list, const QString& name, bool present);

/// Takes a name out of a list that each entry of a table has; returns how many had it.
int withdraw(PeopleTables& tables, QStringView table, QStringView list, const QString& name);

}  // namespace quorvelle::devserver
