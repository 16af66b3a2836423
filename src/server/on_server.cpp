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

namespace {

template <typename Text>
int finishWith(const Reply& reply, const Text& text) {
    if (!reply.ok) {
        return kExitFailed;
    }
    printResult(reply.object, text);
    return kExitSuccess;
}

}  // namespace

int finish(const Reply& reply, const QString& line) {
    return finishWith(reply, line);
}

int finish(const Reply& reply, const Lines& lines) {
    return finishWith(reply, lines);
}

}  // namespace quorvelle
