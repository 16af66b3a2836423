#include "console/shown_text.h"

#include <QRegularExpression>
#include <algorithm>

namespace quorvelle {

namespace {

bool isControl(QChar c) {
    return c < u' ' || (c >= u'\x7F' && c < u'\xA0');
}

bool turnsDirection(QChar c) {
    return (c >= u'\u202A' && c <= u'\u202E') || (c >= u'\u2066' && c <= u'\u2069');
}

QString hexadecimal(QChar c) {
    return QString::number(c.unicode(), 16).toUpper();
}

QString filled(const QString& pattern, const QStringList& values) {
    QString text;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const int number = pattern.at(i) == u'%' ? pattern.mid(i + 1, 1).toInt() : 0;
        if (number > 0) {
            text += values.value(number - 1);
            ++i;
        } else {
            text += pattern.at(i);
        }
    }
    return text;
}

}  // namespace

Lines lines(const QString& pattern, const QStringList& values) {
    Lines result = pattern.split(u'\n');
    for (QString& line : result) {
        line = filled(line, values);
    }
    return result;
}

QString withoutPasswords(const QString& text) {
    // User information ends at the last "@" of an authority, and may hold further ones.
    static const QRegularExpression password(QStringLiteral("(://[^/?#\\s@:]*):[^/?#\\s]*@"));
    return text.contains(u"://") ? QString(text).replace(password, QStringLiteral("\\1:***@"))
                                 : text;
}

QString withVisibleControls(const QString& line) {
    if (std::none_of(line.begin(), line.end(),
                     [](QChar c) { return isControl(c) || turnsDirection(c); })) {
        return line;
    }
    QString shown;
    for (const QChar c : line) {
        if (isControl(c)) {
            shown += QStringLiteral("\\x") + hexadecimal(c).rightJustified(2, u'0');
        } else if (turnsDirection(c)) {
            shown += QStringLiteral("\\u") + hexadecimal(c);
        } else {
            shown += c;
        }
    }
    return shown;
}

QString withVisibleControlsInLines(const QString& text) {
    Lines own = text.split(u'\n');
    for (QString& line : own) {
        line = withVisibleControls(line);
    }
    return own.join(u'\n');
}

}  // namespace quorvelle
