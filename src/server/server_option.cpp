#include "server/server_option.h"
#include "config/server_url.h"

#include "config/config_document.h"
#include "config/config_file.h"
#include "console/arguments.h"
#include "console/output.h"
#include "server/url.h"

namespace quorvelle {

namespace {

QString tokenOverride;

}  // namespace

QString takeServerOption(QStringList& args) {
    QString server = takeOption(args, QStringLiteral("--server"));
    if (server.isEmpty()) {
        server = config::load().value(u"server").toString();
    }
    if (server.isEmpty()) {
        printError(QStringLiteral("'%1' is not configured (quorvelle config set %1 <value>)")
                       .arg(QStringLiteral("server")));
    }
    return server;
}

QString selectServer(const QString& typed) {
    const QString server = withoutTrailingSlashes(typed);
    tokenOverride = config::findServer(config::load(), server).value(u"token").toString();
    return server;
}

QString resolveServer(QStringList& args) {
    const QString typed = takeServerOption(args);
    return typed.isEmpty() ? typed : selectServer(typed);
}

QString requestToken() {
    return tokenOverride.isEmpty() ? resolveToken() : tokenOverride;
}

QString resolveToken() {
    const QString fromEnvironment = qEnvironmentVariable("QUORVELLE_TOKEN");
    return fromEnvironment.isEmpty() ? config::load().value(u"token").toString() : fromEnvironment;
}

}  // namespace quorvelle
