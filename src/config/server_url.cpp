#include "config/server_url.h"

#include <QRegularExpression>

namespace quorvelle {

QString withoutTrailingSlashes(const QString& server) {
    qsizetype length = server.size();
    while (length > 0 && server.at(length - 1) == u'/') {
        --length;
    }
    return server.left(length);
}

QString withoutUserInformation(const QString& address) {
    static const QRegularExpression userInformation(QStringLiteral("\\A([^:/?#]+://)[^/?#]*@"));
    return QString(address).replace(userInformation, QStringLiteral("\\1"));
}

bool isSameServer(const QString& one, const QString& other) {
    return withoutTrailingSlashes(one) == withoutTrailingSlashes(other);
}

}  // namespace quorvelle
