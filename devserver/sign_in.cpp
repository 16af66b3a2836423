#include "sign_in.h"

#include <QDateTime>
#include <QMap>
#include <memory>
#include <mutex>

namespace quorvelle::devserver {

namespace {

constexpr char kGuest[] = "guest";
constexpr qint64 kCodeSeconds = 120;
constexpr char kPage[] = R"(<!doctype html><meta charset=utf-8><title>Sign in</title>
<body style='font-family:system-ui;background:#f3f5f8;color:#182230;display:grid;place-items:center;height:100vh;margin:0'>
<form method=post action='/api/sso/confirm?port=%1' style='text-align:center'>
<h2>Quorvelle development server</h2>
<p>The quorvelle client on this machine wants to sign in.</p>
<button style='font:inherit;padding:.6em 2em'>Sign in as %2</button>
</form>
)";

/// The codes that wait for their exchange, with the second at which each expires.
class Codes {
public:
    QString add() {
        const std::lock_guard lock(mutex);
        const QString code = newSecret();
        expiry.insert(code, QDateTime::currentSecsSinceEpoch() + kCodeSeconds);
        return code;
    }
    bool take(const QString& code) {
        const std::lock_guard lock(mutex);
        return expiry.take(code) > QDateTime::currentSecsSinceEpoch();
    }

private:
    std::mutex mutex;
    QMap<QString, qint64> expiry;
};

/// The port of the waiting client, or 0.
int portOf(const Call& call) {
    return call.item(u"port").toUShort();
}

const Refusal kNoPort{400, QStringLiteral("the query item 'port' is no port of this machine")};

}  // namespace

void addSignInEndpoints(Router& router, People& people) {
    const auto codes = std::make_shared<Codes>();
    const auto start = [](const Call& call) -> Reply {
        const int port = portOf(call);
        return port == 0 ? Reply(kNoPort) : Page{QString(kPage).arg(port).arg(kGuest)};
    };
    const auto confirm = [codes](const Call& call) -> Reply {
        const int port = portOf(call);
        return port == 0 ? Reply(kNoPort)
                         : Redirect{QStringLiteral("http://127.0.0.1:%1/?handoff=%2")
                                        .arg(QString::number(port), codes->add())};
    };
    const auto exchange = [codes, &people](const Call& call) -> Reply {
        if (!codes->take(jsonBody(call)[u"code"].toString())) {
            return Refusal{403, QStringLiteral("the code is unknown, spent or too old")};
        }
        return people.with([](PeopleTables& tables) {
            return openSession(tables, kGuest, {}, QStringLiteral("browser"));
        });
    };
    router.add("GET", u"api/sso/start", start, Router::Access::kOpen);
    router.add("POST", u"api/sso/confirm", confirm, Router::Access::kOpen);
    router.add("POST", u"api/sso/handoff", exchange, Router::Access::kOpen);
}

}  // namespace quorvelle::devserver
