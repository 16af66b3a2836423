#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>

class QNetworkReply;

namespace quorvelle {

/// How long a request may stand still, phase by phase; zero means without end.
struct IdleLimits {
    /// From the start until the request leaves: names, connection, TLS.
    std::chrono::milliseconds connect = std::chrono::seconds(60);
    /// Between two bytes, either way.
    std::chrono::milliseconds idle = std::chrono::seconds(300);
    /// Before the first byte of the answer to a request that changes something, for servers
    /// work in silence.
    std::chrono::milliseconds answer = std::chrono::hours(1);
};

/// The limits of this run: QUORVELLE_IDLE_TIMEOUT (whole seconds, 0 for none) takes the place
/// of `idle` and `answer`, and `connect` is never longer. Any other text counts as unset.
IdleLimits idleLimits();

/// What matters of a request.
struct WatchedRequest {
    /// It changes something, and may take long to answer.
    bool changes = false;
    /// The network layer does not tell when it left, only that a secure connection was made.
    bool leavesUnseen = false;
};

/// Notices a request that no longer moves. Whatever still moves, however slowly, goes on:
/// the network layer alone would wait for ever, and a sync that waits holds its directory's
/// lock.
class IdleWatch : public QObject {
    Q_OBJECT

public:
    explicit IdleWatch(const IdleLimits& wanted, QObject* parent = nullptr);

    /// Watches a reply that was just asked for, from its first phase on. Ends with the reply,
    /// or with the next call.
    void watch(const QNetworkReply& reply, const WatchedRequest& request);

    void stop() { timer.stop(); }

Q_SIGNALS:
    /// Nothing moved for too long; the text says so to the user.
    void expired(const QString& reason);

private:
    void wait(std::chrono::milliseconds limit, const QString& reason);
    void waitForBytes(std::chrono::milliseconds limit);

    IdleLimits limits;
    QTimer timer;
    QString text;
    bool answered = false;
};

}  // namespace quorvelle
