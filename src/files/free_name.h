#pragma once

#include <QString>
#include <functional>

namespace quorvelle {

/// The wanted name, or where that is taken the first free one of "name-2", "name-3", ...
/// Never returns while every name is taken.
inline QString freeName(const QString& wanted, const std::function<bool(const QString&)>& isTaken) {
    QString name = wanted;
    for (int count = 2; isTaken(name); ++count) {
        name = wanted + u'-' + QString::number(count);
    }
    return name;
}

}  // namespace quorvelle
