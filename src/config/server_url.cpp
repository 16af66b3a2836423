#include "config/server_url.h"

namespace quorvelle {

QString withoutTrailingSlashes(const QString& server) {
    qsizetype length = server.size();
    while (length > 0 && server.at(length - 1) == u'/') {
        --length;
    }
    return server.left(length);
}

bool isSameServer(const QString& one, const QString& other) {
    return withoutTrailingSlashes(one) == withoutTrailingSlashes(other);
}

}  // namespace quorvelle
