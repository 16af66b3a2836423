#include "admin/invite.h"

#include <QRegularExpression>

#include "admin/server_command.h"
#include "cli/console/output.h"

namespace quorvelle {

bool InviteTerms::check() const {
    static const QRegularExpression kPositiveNumber(QStringLiteral("\\A0*[1-9][0-9]*\\z"));
    if (days && !kPositiveNumber.match(*days).hasMatch()) {
        printError(QStringLiteral("--days must be a positive number"));
        return false;
    }
    return true;
}

void InviteTerms::addTo(QueryItems& query) const {
    addGiven(query, QStringLiteral("groups"), groups);
    addGiven(query, QStringLiteral("days"), days);
}

InviteTerms takeInviteTerms(QStringList& args) {
    return {.groups = takeGiven(args, QStringLiteral("--groups")),
            .days = takeGiven(args, QStringLiteral("--days"))};
}

QString joinCommandLine(const QString& server, const QString& code) {
    return QStringLiteral("quorvelle join %1 %2 --install-root <path>").arg(server, code);
}

}  // namespace quorvelle
