#pragma once

#include <QString>
#include <chrono>

namespace quorvelle {

class HttpExchange;

/// How long an exchange may take, and what it fails with afterwards.
struct TimeLimit {
    std::chrono::milliseconds time;
    QString text;
};

/// Starts an exchange and waits in a local event loop for its end, however long that takes.
void await(HttpExchange& exchange);

/// The same, but gives it up at the limit. True when the exchange ended before that.
bool awaitFor(HttpExchange& exchange, const TimeLimit& limit);

}  // namespace quorvelle
