#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <functional>
#include <optional>

#include "server/inflater.h"

namespace quorvelle {

/// What the head of a reply says of its body.
struct ReplyHead {
    /// The HTTP status; 0 before one arrived.
    int status = 0;
    /// "Content-Encoding" and "Content-Type" as they were sent; empty where they were not.
    QByteArray coding = {};
    QByteArray type = {};
    /// Whether it tells the length.
    bool tellsLength = false;
};

/// The body of a reply, and how much of it is believed: unfolds what is compressed, refuses
/// what is too large, hands on or keeps the rest, and knows what was cut short. It sees no
/// network; whoever reads from one hands it the pieces as they come.
class ReplyBody {
public:
    /// Takes the next bytes, unfolded; false when they could not be stored.
    using Sink = std::function<bool(const QByteArray& bytes)>;

    /// Hands the bodies of successful replies (below 300) to `sink` instead of keeping them.
    void streamTo(Sink newSink);

    /// The length in bytes that a streamed body has by another source, or nothing. One that
    /// tells no length of its own counts as cut short when it has another.
    void expectLength(std::optional<qint64> bytes);

    /// Forgets what was taken: the body of another reply follows.
    void begin();

    /// Takes the next bytes off the wire. Returns why the reply must not be read any further,
    /// or an empty text. Of a success up to 256 MiB are kept, of a failure 16 MiB; of a
    /// compressed body past its first MiB at most 200 times what came over the wire, and no
    /// more than what 160 MiB of memory hold once it is read, if at most 1 MiB came.
    QString take(const ReplyHead& head, const QByteArray& bytes);

    /// Whether bytes are missing at the end of a body that the network layer takes for whole.
    bool isCutShort(const ReplyHead& head) const;

    /// What was kept.
    const QByteArray& bytes() const { return kept; }

    /// The same as a JSON object; empty when it is none.
    QJsonObject object() const;

    /// Whether something was kept that is no JSON object.
    bool isOtherThanObject() const;

private:
    QString takeUnfolded(int status, const QByteArray& piece);
    QString keep(const QByteArray& piece, qint64 most);
    bool isBomb() const;

    Sink sink;
    std::optional<qint64> expectedLength;
    /// Of a compressed body.
    std::optional<Inflater> inflater;
    QByteArray kept;
    /// Bytes on the wire, and unfolded.
    qint64 received = 0;
    qint64 unfolded = 0;
    /// At least as many as the kept body has JSON values.
    qint64 values = 0;
};

}  // namespace quorvelle
