#include "admin/reply_text.h"

#include <QJsonArray>
#include <QStringList>

#include "config/json_number.h"

namespace quorvelle {

QString joinedNames(const QJsonValue& names) {
    QStringList texts;
    for (const QJsonValue& name : names.toArray()) {
        texts.append(name.toString());
    }
    return texts.join(QStringLiteral(", "));
}

QString namesOrNone(const QJsonValue& names) {
    const QString text = joinedNames(names);
    return text.isEmpty() ? QStringLiteral("(none)") : text;
}

QString wholeNumber(const QJsonValue& value) {
    return QString::number(wholeNumberIn(value));
}

QString idText(const QJsonValue& value) {
    return value.isDouble() ? wholeNumber(value) : value.toString();
}

}  // namespace quorvelle
