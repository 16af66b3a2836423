#include "cli/commands.h"

#include <QDir>

#include "config/config_document.h"
#include "config/config_file.h"
#include "config/server_url.h"
#include "config/subscription.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"

namespace quorvelle {

namespace {

int couldNotSave() {
    return failWith(kExitFailed, QStringLiteral("could not save config"));
}

}  // namespace

int setServerRootCommand(QStringList args) {
    if (args.at(1).isEmpty()) {
        return printUsage();
    }
    const QString root = absolutePath(args.at(1));
    QString url;
    config::Repointed repointed;
    const auto outcome = config::change([&](QJsonObject& document) {
        url = config::storedServerUrl(document, args.at(0));
        if (config::serverEntry(document, url).isEmpty()) {
            return false;
        }
        repointed = config::repointServer(document, url, root);
        return true;
    });
    if (outcome == config::Changed::kNotWanted) {
        return failWith(kExitUsage,
                        QStringLiteral("no such server in the client config: %1").arg(args.at(0)));
    }
    if (outcome == config::Changed::kNotSaved) {
        return couldNotSave();
    }
    printResult(
        {{QStringLiteral("server"), url},
         {QStringLiteral("install_root"), root},
         {QStringLiteral("repointed"), repointed.subscriptions}},
        QStringLiteral("Install root for %1 is now %2 (%3 subscription(s) repointed; "
                       "nothing moved - the next sync reuses what is there).\n")
            .arg(url, QDir::toNativeSeparators(root), QString::number(repointed.subscriptions)));
    for (const QString& refused : repointed.refused) {
        printError(refused);
    }
    return repointed.refused.isEmpty() ? kExitSuccess : kExitFailed;
}

int setServerTokenCommand(QStringList args) {
    if (withoutTrailingSlashes(args.at(0)).isEmpty()) {
        return printUsage();
    }
    QString url;
    const auto outcome = config::change([&](QJsonObject& document) {
        url = config::storedServerUrl(document, args.at(0));
        const QString root = config::serverEntry(document, url).value(u"install_root").toString();
        config::upsertServer(document, url, args.at(1), root);
        config::setSubscriptionTokens(document, url, args.at(1), config::Whose::kAll);
        return true;
    });
    if (outcome != config::Changed::kSaved) {
        return couldNotSave();
    }
    printResult({{QStringLiteral("server"), url}},
                QStringLiteral("Token stored for %1\n").arg(url));
    return kExitSuccess;
}

}  // namespace quorvelle
