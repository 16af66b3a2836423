#include "manual_page.h"

#include <algorithm>
#include <map>

#include "cli/option_table.h"
#include "console/overview.h"
#include "console/usage_forms.h"

namespace quorvelle {

namespace {

/// Text that the man formatter prints as it stands.
QString escaped(QString text) {
    return text.replace(u'\\', QStringLiteral("\\e")).replace(u'-', QStringLiteral("\\-"));
}

QString sentence(const QString& phrase) {
    return escaped(phrase.first(1).toUpper() + phrase.sliced(1)) + QStringLiteral(".\n");
}

/// The last blank of a usage line before a column that is not inside brackets; -1 without one.
qsizetype lastBreak(const QString& line, qsizetype column) {
    qsizetype found = -1;
    int depth = 0;
    const qsizetype margin = line.size() - line.trimmed().size();
    for (qsizetype at = margin; at < std::min(column, line.size()); ++at) {
        const QChar letter = line.at(at);
        depth += letter == u'[' || letter == u'<' ? 1 : letter == u']' || letter == u'>' ? -1 : 0;
        found = letter == u' ' && depth == 0 ? at : found;
    }
    return found;
}

/// The usage lines with a narrower margin, the long ones broken.
QString usageFor(const Command& command, CommandTable table) {
    constexpr qsizetype kMargin = 2;
    constexpr qsizetype kColumns = 66;
    QString text;
    for (const QString& whole : usageLines(command, table).split(u'\n', Qt::SkipEmptyParts)) {
        QString line = whole.sliced(kMargin);
        qsizetype at = 0;
        while (line.size() > kColumns && (at = lastBreak(line, kColumns)) > 0) {
            text += line.first(at) + u'\n';
            line = QString(10, u' ') + line.sliced(at).trimmed();
        }
        text += line + u'\n';
    }
    return escaped(text);
}

QString commands(CommandTable table) {
    QString text;
    for (const Group group : kGroups) {
        text += QStringLiteral(".SS %1\n").arg(groupTitle(group));
        for (const Command& command : table) {
            if (command.group == group) {
                text += QStringLiteral(".TP\n.B %1\n").arg(escaped(fromTable(command.words)));
                text += sentence(fromTable(command.summary));
                text += QStringLiteral(".nf\n%1.fi\n").arg(usageFor(command, table));
            }
        }
    }
    return text;
}

/// The commands that know an option, by the option as it is shown and what it is for there.
using Users = std::map<QString, std::map<QString, QStringList>>;

Users optionUsers(CommandTable table) {
    Users users;
    for (const Command& command : table) {
        for (const UsageForm& form : usageForms(command)) {
            for (const FormOption& option : form.options) {
                const OptionText* text =
                    findOptionText(command.words, option.shown().toStdString());
                QStringList& words =
                    users[option.shown()][text ? fromTable(text->text) : QString()];
                if (!words.contains(fromTable(command.words))) {
                    words.append(fromTable(command.words));
                }
            }
        }
    }
    for (const char* global : {"--help", "--json"}) {
        users[QString::fromLatin1(global)][fromTable(findOptionText({}, global)->text)] = {};
    }
    return users;
}

/// An option that more commands than these have is one of nearly all.
constexpr qsizetype kMostUsersNamed = 5;

QString options(CommandTable table) {
    QString text;
    for (const auto& [shown, meanings] : optionUsers(table)) {
        const QString name = shown.section(u' ', 0, 0);
        const QString value = shown.section(u' ', 1);
        text += QStringLiteral(".TP\n\\fB%1\\fR").arg(escaped(name));
        text += value.isEmpty() ? QStringLiteral("\n")
                                : QStringLiteral(" \\fI%1\\fR\n").arg(escaped(value));
        for (const auto& [meaning, words] : meanings) {
            text += sentence(meaning);
            if (!words.isEmpty() && words.size() <= kMostUsersNamed) {
                text += QStringLiteral("(%1)\n").arg(escaped(words.join(QStringLiteral(", "))));
            }
        }
    }
    return text;
}

}  // namespace

QString manualPage(QString page, CommandTable table, const QString& version) {
    return page.replace(QStringLiteral("@VERSION@"), version)
        .replace(QStringLiteral("@COMMANDS@"), commands(table))
        .replace(QStringLiteral("@OPTIONS@"), options(table));
}

}  // namespace quorvelle
