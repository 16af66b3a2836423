#include "server/server_option.h"

#include "config/config_document.h"
#include "config/config_file.h"
#include "config/server_url.h"
#include "console/arguments.h"
#include "console/output.h"
#include "console/usage.h"

namespace quorvelle {

QString takeServerOption(QStringList& args) {
    const QString typed = takeOption(args, QStringLiteral("--server"));
    const QString server = typed.isEmpty() ? config::load().value(u"server").toString() : typed;
    if (!withoutTrailingSlashes(server).isEmpty()) {
        return server;
    }
    if (typed.isEmpty()) {
        printError(QStringLiteral("'%1' is not configured (quorvelle config set %1 <value>)")
                       .arg(QStringLiteral("server")));
    } else {
        printUsage();
    }
    return {};
}

Server selectServer(const QString& typed) {
    const QString url = withoutTrailingSlashes(typed);
    return {.url = url, .token = tokenFor(config::load(), url)};
}

std::optional<Server> resolveServer(QStringList& args) {
    const QString typed = takeServerOption(args);
    return typed.isEmpty() ? std::nullopt : std::optional(selectServer(typed));
}

QString tokenFor(const QJsonObject& document, const QString& url) {
    const QString stored = config::findServer(document, url).value(u"token").toString();
    return stored.isEmpty() ? resolveToken(document) : stored;
}

QString resolveToken(const QJsonObject& document) {
    const QString fromEnvironment = qEnvironmentVariable("QUORVELLE_TOKEN");
    return fromEnvironment.isEmpty() ? document.value(u"token").toString() : fromEnvironment;
}

QString resolveToken() {
    return resolveToken(config::load());
}

}  // namespace quorvelle
