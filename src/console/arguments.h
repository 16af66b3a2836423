#pragma once

#include <QString>
#include <QStringList>
#include <optional>

/// Options are taken out of a handler's argument list one by one, wherever they
/// stand; what remains are the positionals, addressed by index from 0.

namespace quorvelle {

/// Removes the first element equal to `name` together with the element after it
/// and returns that element. Without a following element, or without the name,
/// the list stays as it is and `fallback` is returned.
QString takeOption(QStringList& args, const QString& name, const QString& fallback = {});

/// The same for an option that may be absent or may be given an empty value, which are
/// not the same: nothing, or the value.
std::optional<QString> takeGiven(QStringList& args, const QString& name);

/// Whether a name was given that is empty, as an unset variable of a shell leaves it: it must
/// not stand for all things of its kind, or for none.
bool isEmptyName(const std::optional<QString>& name);

/// Whether that many positionals are left and each, as the name or id of something, holds a
/// text: an empty one would turn a request for one thing into one for all of them.
bool areNames(const QStringList& args, qsizetype count);

/// Whether something is left that looks like an option ("--sever"), but is none of the
/// command's own, all of which have a value, nor "--token". For commands that ignore surplus
/// words; a "--server" at the end, without its value, is one.
bool hasStrayOption(const QStringList& args, const QStringList& own = {});

/// Removes every element equal to `name`; true when there was at least one.
bool takeFlag(QStringList& args, const QString& name);

}  // namespace quorvelle
