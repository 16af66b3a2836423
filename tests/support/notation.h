#pragma once

#include <gmock/gmock.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "support/qt_printers.h"

/// Short forms in which tests and their tables of cases stay readable.

namespace quorvelle::testing {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::Values;
using ::testing::ValuesIn;

/// The words of a line, split at blanks.
inline QStringList args(const QString& line) {
    return line.split(u' ', Qt::SkipEmptyParts);
}

/// The same where "~" stands for a blank inside a word.
inline QStringList typed(const QString& line) {
    return args(line).replaceInStrings("~", " ");
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
