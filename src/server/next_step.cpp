#include "server/next_step.h"

#include <QStringList>
#include <algorithm>

#include "config/server_url.h"

namespace quorvelle {

namespace {

constexpr int kUnauthorized = 401;

bool isThisMachine(const QString& host) {
    const QStringList names{QStringLiteral("localhost"), QStringLiteral("127."),
                            QStringLiteral("[::1]")};
    return std::any_of(names.begin(), names.end(),
                       [&](const QString& name) { return host.startsWith(name); });
}

}  // namespace

QString addressHint(const QString& server) {
    if (server.isEmpty() || server.contains(u"://")) {
        return {};
    }
    return QStringLiteral("An address begins with http:// or https://. Did you mean %1://%2?")
        .arg(isThisMachine(server) ? QStringLiteral("http") : QStringLiteral("https"), server);
}

QString nextStep(const QString& server, int status) {
    if (status == kUnauthorized) {
        return QStringLiteral(
                   "To sign in: quorvelle login %1 (or, with an invite, quorvelle join %1 <code>)")
            .arg(withoutUserInformation(server));
    }
    return status == 0 ? addressHint(server) : QString();
}

}  // namespace quorvelle
