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

/// Removes every element equal to `name`; true when there was at least one.
bool takeFlag(QStringList& args, const QString& name);

}  // namespace quorvelle
