#include "admin/commands.h"

#include "admin/sso_map_command.h"
#include "admin/sub_words.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

const QString kConfigPath = QStringLiteral("/api/sso/config");

Lines ssoText(const QString& server, const QJsonObject& config) {
    if (!config.value(u"configured").toBool()) {
        return {QStringLiteral("SSO: not configured on %1").arg(server)};
    }
    return lines(
        QStringLiteral("SSO on %1:\n  issuer: %2\n  client id: %3\n  scopes: %4\n  secret: %5"),
        {server, config.value(u"issuer").toString(), config.value(u"client_id").toString(),
         config.value(u"scopes").toString(),
         config.value(u"secret_set").toBool() ? QStringLiteral("stored")
                                              : QStringLiteral("missing")});
}

int showSso(const Server& server, QStringList&) {
    const Reply reply = getJson(server, kConfigPath, QStringLiteral("sso show"));
    return finish(reply, ssoText(server.url, reply.object));
}

int testSso(const Server& server, QStringList&) {
    const Reply reply =
        postEmpty(server, QStringLiteral("/api/sso/config/test"), QStringLiteral("sso test"));
    return finish(reply, QStringLiteral("Provider reachable: sign-in at %1\n")
                             .arg(reply.object.value(u"authorization_endpoint").toString()));
}

int setSso(const Server& server, QStringList& args) {
    const QString issuer = takeOption(args, QStringLiteral("--issuer"));
    const QString clientId = takeOption(args, QStringLiteral("--client-id"));
    const QString secret = takeOption(args, QStringLiteral("--client-secret"));
    const QString scopes = takeOption(args, QStringLiteral("--scopes"));
    if (!args.isEmpty()) {
        return printUsage();
    }
    if (issuer.isEmpty() || clientId.isEmpty() || secret.isEmpty()) {
        return failWith(kExitUsage,
                        QStringLiteral("sso set needs --issuer --client-id --client-secret"));
    }
    const Reply reply = putJson(server, kConfigPath, QStringLiteral("sso set"),
                                {{QStringLiteral("issuer"), issuer},
                                 {QStringLiteral("client_id"), clientId},
                                 {QStringLiteral("client_secret"), secret},
                                 {QStringLiteral("scopes"), scopes}});
    return finish(
        reply,
        QStringLiteral("SSO configured: %1\n").arg(reply.object.value(u"issuer").toString()));
}

int clearSso(const Server& server, QStringList&) {
    const Reply reply = deleteResource(server, kConfigPath, QStringLiteral("sso clear"));
    return finish(reply, QStringLiteral("SSO cleared on %1\n").arg(server.url));
}

}  // namespace

int ssoCommand(QStringList args) {
    return onSubWord(std::move(args), {{QStringLiteral("show"), showSso},
                                       {QStringLiteral("test"), testSso},
                                       {QStringLiteral("set"), setSso, true},
                                       {QStringLiteral("clear"), clearSso},
                                       {QStringLiteral("map"), ssoMapCommand, true}});
}

}  // namespace quorvelle
