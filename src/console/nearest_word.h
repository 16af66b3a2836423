#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace quorvelle {

/// How many letters were missed, added, changed or swapped with their neighbour between
/// two words, capitals aside.
qsizetype slips(const QString& typed, const QString& meant);

/// Whether so few slips lie between them that one may be meant by the other.
bool isNear(const QString& typed, const QString& meant);

/// The known word that was probably meant, the first of those that are equally near;
/// nothing when none is near.
std::optional<QString> nearestWord(const QString& typed, const QStringList& known);

/// " Did you mean '%1'?", or nothing where nothing was meant.
QString didYouMean(const std::optional<QString>& meant);

}  // namespace quorvelle
