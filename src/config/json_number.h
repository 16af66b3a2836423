#pragma once

#include <QJsonValue>
#include <QtGlobal>
#include <optional>

/// The numbers of replies and documents. Some servers send them as text ("3"), which counts
/// as the number that it spells.

namespace quorvelle {

/// Nothing where the value is no number and spells none.
std::optional<double> numberIn(const QJsonValue& value);

/// A whole number up to 64 bits; `otherwise` for anything else, fractions among it.
qint64 wholeNumberIn(const QJsonValue& value, qint64 otherwise = 0);

}  // namespace quorvelle
