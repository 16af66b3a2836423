#include "onboarding/bounded_calls.h"

#include <QEventLoop>
#include <QTimer>
#include <utility>

#include "onboarding/interrupts.h"

namespace quorvelle::onboarding {

BoundedCalls::BoundedCalls(const Interrupts& source, std::chrono::milliseconds grace)
    : interrupts(source), graceTime(grace) {}

bool BoundedCalls::isInterrupted() const {
    return interrupts.count() > 0;
}

CallResult BoundedCalls::send(HttpRequest request, const TimeLimit& limit,
                              OnInterrupt onInterrupt) {
    const QString interrupted = QStringLiteral("interrupted");
    if (onInterrupt == OnInterrupt::kGiveUp && isInterrupted()) {
        return {.reason = interrupted};
    }
    HttpExchange exchange(network, std::move(request));
    QEventLoop loop;
    QObject::connect(&exchange, &HttpExchange::finished, &loop, &QEventLoop::quit);
    QString givenUp;
    const auto giveUp = [&](const QString& reason) {
        givenUp = reason;
        exchange.abort(reason);
    };
    QTimer::singleShot(limit.time, &loop, [&] { giveUp(limit.text); });
    if (onInterrupt != OnInterrupt::kGoOn) {
        const int countBefore = interrupts.count();
        QObject::connect(&interrupts, &Interrupts::arrived, &loop, [&, countBefore] {
            if (onInterrupt == OnInterrupt::kGiveUp || interrupts.count() > countBefore + 1) {
                giveUp(interrupted);
            } else {
                QTimer::singleShot(graceTime, &loop, [&] { giveUp(interrupted); });
            }
        });
    }
    exchange.start();
    loop.exec();
    if (!givenUp.isEmpty()) {
        return {.reason = givenUp};
    }
    if (!exchange.succeeded()) {
        return {.status = exchange.statusCode(),
                .object = exchange.object(),
                .reason = exchange.failureReason()};
    }
    return {.succeeded = true, .status = exchange.statusCode(), .object = exchange.object()};
}

}  // namespace quorvelle::onboarding
