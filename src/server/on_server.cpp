#include "server/on_server.h"

#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/server_option.h"

namespace quorvelle {

int onServer(QStringList args, const ServerWork& work) {
    const auto server = resolveServer(args);
    return server ? work(*server, args) : kExitUsage;
}

int onServer(QStringList args, qsizetype positionals, const ServerWork& work) {
    return onServer(std::move(args), [&](const Server& server, QStringList& rest) {
        return areNames(rest, positionals) ? work(server, rest) : printUsage();
    });
}

int listOnServer(QStringList args, const ServerWork& work) {
    return onServer(std::move(args), [&](const Server& server, QStringList& rest) {
        return hasStrayOption(rest, {QStringLiteral("--server")}) ? printUsage()
                                                                  : work(server, rest);
    });
}

int finish(const Reply& reply, const QString& text) {
    if (!reply.ok) {
        return kExitFailed;
    }
    printResult(reply.object, text);
    return kExitSuccess;
}

}  // namespace quorvelle
