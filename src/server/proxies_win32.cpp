#include "server/proxies.h"

namespace quorvelle {

std::optional<QNetworkProxy> systemProxy(const QUrl& url) {
    // In the order of preference; a script of the network's administrator may have its say.
    for (const QNetworkProxy& proxy :
         QNetworkProxyFactory::systemProxyForQuery(QNetworkProxyQuery(url))) {
        switch (proxy.type()) {
            case QNetworkProxy::NoProxy:
            case QNetworkProxy::Socks5Proxy:
                return proxy;
            case QNetworkProxy::HttpProxy:
            case QNetworkProxy::HttpCachingProxy:
                return QNetworkProxy(QNetworkProxy::HttpProxy, proxy.hostName(), proxy.port(),
                                     proxy.user(), proxy.password());
            default:
                break;
        }
    }
    return std::nullopt;
}

}  // namespace quorvelle
