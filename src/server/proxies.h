#pragma once

#include <QNetworkProxy>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <optional>

namespace quorvelle {

/// How an address is reached.
struct ProxyChoice {
    /// QNetworkProxy::NoProxy for directly; else of HttpProxy or Socks5Proxy type. Either
    /// looks the names of hosts up itself.
    QNetworkProxy proxy = QNetworkProxy::NoProxy;
    /// Why the address must not be asked for, or an empty text.
    QString problem = {};
};

/// The proxies that the environment asks for: `http_proxy`, `https_proxy`, and `all_proxy`
/// for what these leave out, as "[http://|socks5://|socks5h://][user:password@]host[:port]".
/// `no_proxy` lists hosts that are asked directly, with the hosts below them: names,
/// addresses, networks ("10.0.0.0/8"), or "*". Each counts in capitals as well, where the
/// small one is unset or empty; but `HTTP_PROXY` not beside `REQUEST_METHOD`, for then it is a
/// header that somebody sent to a web server. This machine itself is always asked directly.
class ProxyRules {
public:
    /// Reads one variable; an unset one is empty.
    using Read = std::function<QString(const char* name)>;

    explicit ProxyRules(const Read& read);

    /// The proxy for an http or https address; where no variable names any, the one of the
    /// system's settings.
    ProxyChoice choose(const QUrl& url) const;

private:
    struct Setting {
        QString variable;
        QString value;
    };
    bool goesDirect(const QString& host) const;

    Setting http;
    Setting https;
    QStringList direct;
};

/// The choice by this process's environment, which is read once. Any thread.
ProxyChoice proxyFor(const QUrl& url);

/// A proxy as the text by which others know it, with its user and password; empty for none.
QByteArray addressOf(const QNetworkProxy& proxy);

/// What the system's own settings say; nothing where it has none beside the environment.
std::optional<QNetworkProxy> systemProxy(const QUrl& url);

}  // namespace quorvelle
