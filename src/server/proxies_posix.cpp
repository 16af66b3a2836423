#include "server/proxies.h"

namespace quorvelle {

/// The environment is where the system keeps it.
std::optional<QNetworkProxy> systemProxy(const QUrl&) {
    return std::nullopt;
}

}  // namespace quorvelle
