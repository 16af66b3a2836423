#include "onboarding/bounded_calls.h"

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
    // Ends with the call, and with it what waits for an interrupt.
    QObject context;
    bool gaveUp = false;
    const auto giveUp = [&] {
        gaveUp = true;
        exchange.abort(interrupted);
    };
    if (onInterrupt != OnInterrupt::kGoOn) {
        const int countBefore = interrupts.count();
        QObject::connect(&interrupts, &Interrupts::arrived, &context, [&, countBefore] {
            if (onInterrupt == OnInterrupt::kGiveUp || interrupts.count() > countBefore + 1) {
                giveUp();
            } else {
                QTimer::singleShot(graceTime, &context, giveUp);
            }
        });
    }
    if (!awaitFor(exchange, limit)) {
        return {.reason = limit.text};
    }
    if (gaveUp) {
        return {.reason = interrupted};
    }
    if (!exchange.succeeded()) {
        return {.status = exchange.statusCode(),
                .object = exchange.object(),
                .reason = exchange.failureReason()};
    }
    return {.succeeded = true, .status = exchange.statusCode(), .object = exchange.object()};
}

}  // namespace quorvelle::onboarding
