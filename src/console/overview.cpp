#include "console/overview.h"

#include <QCoreApplication>
#include <algorithm>

#include "console/usage.h"
#include "console/usage_forms.h"

namespace quorvelle {

QString groupTitle(Group group) {
    switch (group) {
        case Group::kInstalls:
            return QStringLiteral("Installs on this machine");
        case Group::kServers:
            return QStringLiteral("Servers and signing in");
        case Group::kPublishing:
            return QStringLiteral("Builds and channels");
        case Group::kPeople:
            return QStringLiteral("People");
        case Group::kService:
            return QStringLiteral("Running a server");
        case Group::kProgram:
            break;
    }
    return QStringLiteral("This program");
}

QString overviewText(CommandTable table) {
    const auto longest = std::max_element(
        table.begin(), table.end(),
        [](const Command& a, const Command& b) { return a.words.size() < b.words.size(); });
    const auto line = [&](const QString& words, const QString& summary) {
        return QStringLiteral("  %1  %2\n")
            .arg(words.leftJustified(qsizetype(longest->words.size())), summary);
    };
    QString text = QStringLiteral("Quorvelle CLI %1\n").arg(QCoreApplication::applicationVersion());
    for (const Group group : kGroups) {
        text += u'\n' + groupTitle(group) + QStringLiteral(":\n");
        for (const Command& command : table) {
            if (command.group == group && !command.words.starts_with('-')) {
                text += line(fromTable(command.words), fromTable(command.summary));
            }
        }
    }
    return text + QStringLiteral("\nWith every command:\n") +
           line(QStringLiteral("--help"), kHelpOptionText) +
           line(QStringLiteral("--json"), kJsonOptionText);
}

}  // namespace quorvelle
