#include "config/json_number.h"

#include <QString>
#include <cmath>

namespace quorvelle {

std::optional<double> numberIn(const QJsonValue& value) {
    bool isNumber = value.isDouble();
    const double number =
        value.isString() ? value.toString().toDouble(&isNumber) : value.toDouble();
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

qint64 wholeNumberIn(const QJsonValue& value, qint64 otherwise) {
    if (!value.isString()) {
        return value.toInteger(otherwise);
    }
    bool isWhole = false;
    const qint64 exact = value.toString().toLongLong(&isWhole);
    const std::optional<double> number = isWhole ? std::nullopt : numberIn(value);
    return isWhole ? exact : number ? QJsonValue(*number).toInteger(otherwise) : otherwise;
}

}  // namespace quorvelle
