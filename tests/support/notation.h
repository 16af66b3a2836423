#pragma once

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <string>

#include "support/qt_printers.h"

/// Short forms in which tables of cases stay readable.

namespace quorvelle::testing {

/// The words of a line, split at blanks.
inline QStringList args(const QString& line) {
    return line.split(u' ', Qt::SkipEmptyParts);
}

/// A table of cases: one line a row, its cells between "|" without the blanks around them.
inline QList<QStringList> rows(const QString& table) {
    QList<QStringList> result;
    for (const QString& line : table.trimmed().split(u'\n')) {
        result.append(line.split(u'|'));
        for (QString& cell : result.last()) {
            cell = cell.trimmed();
        }
    }
    return result;
}

/// What stands before the first "/" of an absolute path: nothing, or the current drive.
inline QString drive() {
    return QDir::currentPath().section(u'/', 0, 0);
}

/// A JSON object written with ' in the place of ".
inline QJsonObject json(QByteArray text) {
    return QJsonDocument::fromJson(text.replace('\'', '"')).object();
}

/// The object in the notation of json(), keys in alphabetical order.
inline std::string text(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact).replace('"', '\'').toStdString();
}

}  // namespace quorvelle::testing
