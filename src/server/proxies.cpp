#include "server/proxies.h"

#include <QHostAddress>
#include <QRegularExpression>
#include <algorithm>
#include <initializer_list>

namespace quorvelle {

namespace {

constexpr int kSocksPort = 1080;
constexpr int kHttpPort = 80;

const QString kHttp = QStringLiteral("http");

bool isThisMachine(const QString& host) {
    return host == QStringLiteral("localhost") || host.endsWith(QStringLiteral(".localhost")) ||
           QHostAddress(host).isLoopback();
}

/// `entry` is one of `no_proxy`, in small letters, without "*." or "." before it.
bool covers(const QString& entry, const QString& host) {
    if (entry == QStringLiteral("*") || host == entry || host.endsWith(u'.' + entry)) {
        return true;
    }
    const QHostAddress address(host);
    return !address.isNull() &&
           (entry.contains(u'/') ? address.isInSubnet(QHostAddress::parseSubnet(entry))
                                 : address == QHostAddress(entry));
}

QStringList directHosts(const QString& list) {
    static const QRegularExpression separators(QStringLiteral("[,\\s]+"));
    static const QRegularExpression around(QStringLiteral("^(\\*?\\.|\\[)|\\]$"));
    QStringList hosts = list.toLower().split(separators, Qt::SkipEmptyParts);
    for (QString& host : hosts) {
        host.remove(around);
    }
    return hosts;
}

/// Nothing for what is no address of a proxy that both ways to the network know.
std::optional<QNetworkProxy> parseProxy(const QString& text) {
    const QUrl url(text.contains(QStringLiteral("://")) ? text : QStringLiteral("http://") + text);
    const QString scheme = url.scheme();
    const bool isHttp = scheme == kHttp;
    const bool isSocks = scheme == QStringLiteral("socks5") || scheme == QStringLiteral("socks5h");
    if (!url.isValid() || url.host().isEmpty() || !(isHttp || isSocks)) {
        return std::nullopt;
    }
    return QNetworkProxy(isHttp ? QNetworkProxy::HttpProxy : QNetworkProxy::Socks5Proxy, url.host(),
                         static_cast<quint16>(url.port(isHttp ? kHttpPort : kSocksPort)),
                         url.userName(QUrl::FullyDecoded), url.password(QUrl::FullyDecoded));
}

}  // namespace

ProxyRules::ProxyRules(const Read& read) {
    const auto first = [&](std::initializer_list<const char*> names) {
        for (const char* name : names) {
            if (QString value = read(name).trimmed(); !value.isEmpty()) {
                return Setting{QString::fromLatin1(name), std::move(value)};
            }
        }
        return Setting{};
    };
    http = read("REQUEST_METHOD").isEmpty()
               ? first({"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"})
               : first({"http_proxy", "all_proxy", "ALL_PROXY"});
    https = first({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"});
    direct = directHosts(first({"no_proxy", "NO_PROXY"}).value);
}

bool ProxyRules::goesDirect(const QString& host) const {
    return isThisMachine(host) || std::any_of(direct.begin(), direct.end(), [&](const auto& entry) {
               return covers(entry, host);
           });
}

ProxyChoice ProxyRules::choose(const QUrl& url) const {
    QString host = url.host().toLower();
    if (host.endsWith(u'.')) {
        host.chop(1);
    }
    if (goesDirect(host)) {
        return {};
    }
    if (http.value.isEmpty() && https.value.isEmpty()) {
        return {systemProxy(url).value_or(QNetworkProxy::NoProxy)};
    }
    const Setting& setting = url.scheme() == kHttp ? http : https;
    if (setting.value.isEmpty()) {
        return {};
    }
    const auto proxy = parseProxy(setting.value);
    if (!proxy) {
        // Not the value: it may hold a password.
        return {.problem = QStringLiteral("%1 is no address of an http or socks5 proxy")
                               .arg(setting.variable)};
    }
    return {*proxy};
}

ProxyChoice proxyFor(const QUrl& url) {
    static const ProxyRules rules([](const char* name) { return qEnvironmentVariable(name); });
    return rules.choose(url);
}

QByteArray addressOf(const QNetworkProxy& proxy) {
    if (proxy.type() == QNetworkProxy::NoProxy) {
        return {};
    }
    QUrl url;
    url.setScheme(proxy.type() == QNetworkProxy::Socks5Proxy ? QStringLiteral("socks5h") : kHttp);
    url.setHost(proxy.hostName());
    url.setPort(proxy.port());
    if (!proxy.user().isEmpty()) {
        url.setUserName(proxy.user(), QUrl::DecodedMode);
        url.setPassword(proxy.password(), QUrl::DecodedMode);
    }
    return url.toEncoded();
}

}  // namespace quorvelle
