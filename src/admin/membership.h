#pragma once

#include <QString>
#include <QStringList>

namespace quorvelle {

/// A command that puts one thing into a list of another, or takes it out: a user into a
/// group, a channel among those that a user or a group follows. Its two positionals name
/// the owner of the list, then the thing.
struct MembershipChange {
    /// The list's path, with "%1" in the place of its owner.
    QString path;
    /// The query item that names the thing.
    QString key;
    QString label;
    /// The line of success without its end; "%1" is the owner, "%2" the thing.
    QString text;
};

/// Runs the command that adds the thing, with POST.
int addMember(QStringList args, const MembershipChange& change);

/// Runs the command that takes it out, with DELETE.
int removeMember(QStringList args, const MembershipChange& change);

}  // namespace quorvelle
