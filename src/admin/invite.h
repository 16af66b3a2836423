#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "client/url.h"

/// What making an invite and approving an access request, which makes one, have in common.

namespace quorvelle {

/// What the command line says about the new invite.
struct InviteTerms {
    /// "--groups": the names of the groups to be joined, separated by commas.
    std::optional<QString> groups = {};
    /// "--days": for how many days the invite is good, as typed.
    std::optional<QString> days = {};

    /// False after printing which option has a value that makes no sense.
    bool check() const;

    /// Appends the query items of the options that were given.
    void addTo(QueryItems& query) const;
};

InviteTerms takeInviteTerms(QStringList& args);

/// The command with which an invited person joins from a terminal.
QString joinCommandLine(const QString& server, const QString& code);

}  // namespace quorvelle
