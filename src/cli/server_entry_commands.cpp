#include "cli/commands.h"

#include <QDir>

#include "config/config_document.h"
#include "config/config_file.h"
#include "config/subscription.h"
#include "console/exit_code.h"
#include "console/output.h"

namespace quorvelle {

namespace {

/// Saves the change; prints why when that fails.
bool savedServers(config::Change& change) {
    const bool done = change.save();
    if (!done) {
        printError(QStringLiteral("could not save config"));
    }
    return done;
}

}  // namespace

int setServerRootCommand(QStringList args) {
    config::Change change;
    const QString url = config::storedServerUrl(change.document, args.at(0));
    if (config::findServer(change.document, url).isEmpty()) {
        return failWith(kExitUsage,
                        QStringLiteral("no such server in the client config: %1").arg(args.at(0)));
    }
    const QString root = absolutePath(args.at(1));
    const int repointed = config::repointServer(change.document, url, root);
    if (!savedServers(change)) {
        return kExitFailed;
    }
    printResult({{QStringLiteral("server"), url},
                 {QStringLiteral("install_root"), root},
                 {QStringLiteral("repointed"), repointed}},
                QStringLiteral("Install root for %1 is now %2 (%3 subscription(s) repointed; "
                               "nothing moved - the next sync reuses what is there).\n")
                    .arg(url, QDir::toNativeSeparators(root), QString::number(repointed)));
    return kExitSuccess;
}

int setServerTokenCommand(QStringList args) {
    config::Change change;
    const QString url = config::storedServerUrl(change.document, args.at(0));
    const QString root = config::findServer(change.document, url).value(u"install_root").toString();
    config::upsertServer(change.document, url, args.at(1), root);
    config::setSubscriptionTokens(change.document, url, args.at(1));
    if (!savedServers(change)) {
        return kExitFailed;
    }
    printResult({{QStringLiteral("server"), url}},
                QStringLiteral("Token stored for %1\n").arg(url));
    return kExitSuccess;
}

}  // namespace quorvelle
