#include "server/await_exchange.h"

#include <QEventLoop>
#include <QTimer>

#include "server/http_exchange.h"

namespace quorvelle {

void await(HttpExchange& exchange) {
    QEventLoop loop;
    QObject::connect(&exchange, &HttpExchange::finished, &loop, &QEventLoop::quit);
    exchange.start();
    loop.exec();
}

bool awaitFor(HttpExchange& exchange, const TimeLimit& limit) {
    QObject timer;
    bool expired = false;
    QTimer::singleShot(limit.time, &timer, [&] {
        expired = true;
        exchange.abort(limit.text);
    });
    await(exchange);
    return !expired;
}

}  // namespace quorvelle
