#include "admin/invite.h"

#include <QRegularExpression>

#include "config/server_url.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

bool isPositiveNumber(const QString& text) {
    static const QRegularExpression kPositiveNumber(QStringLiteral("\\A0*[1-9][0-9]*\\z"));
    return kPositiveNumber.match(text).hasMatch();
}

}  // namespace

int runInviteCommand(QStringList args, const MakeInvite& make) {
    return onServer(std::move(args), [&make](const Server& server, QStringList& rest) {
        const auto groups = takeGiven(rest, QStringLiteral("--groups"));
        const auto days = takeGiven(rest, QStringLiteral("--days"));
        if (!areNames(rest, 1)) {
            return printUsage();
        }
        if (days && !isPositiveNumber(*days)) {
            return failWith(kExitUsage, QStringLiteral("--days must be a positive number"));
        }
        QueryItems terms;
        addGiven(terms, QStringLiteral("groups"), groups);
        addGiven(terms, QStringLiteral("days"), days);
        return make(server, rest.first(), terms);
    });
}

QString joinCommandLine(const QString& server, const QString& code) {
    return QStringLiteral("quorvelle join %1 %2 --install-root <path>")
        .arg(withoutUserInformation(server), code);
}

}  // namespace quorvelle
