#include "server/reply_body.h"

#include <QJsonDocument>
#include <algorithm>
#include <utility>

namespace quorvelle {

namespace {

constexpr qint64 kMaxKeptBytes = 256LL * 1024 * 1024;
constexpr qint64 kMaxErrorBytes = 16LL * 1024 * 1024;
constexpr qint64 kAnyRatioBytes = 1024 * 1024;
constexpr qint64 kMaxExpansion = 200;
// What a compressed reply may come to in memory once it is read: of its first MiB on the
// wire, and of each byte that follows.
constexpr qint64 kMaxMemory = 160LL * 1024 * 1024;
constexpr qint64 kMaxMemoryExpansion = 2000;
// What a byte and a value of a JSON text come to, copies included.
constexpr qint64 kMemoryOfByte = 5;
constexpr qint64 kMemoryOfValue = 100;

QString damaged() {
    return QStringLiteral("the compressed reply is damaged");
}

/// Empty for a body that is sent as it is.
QByteArray codingOf(const ReplyHead& head) {
    const QByteArray coding = head.coding.trimmed().toLower();
    return coding == "identity" ? QByteArray() : coding;
}

/// Whether a body that is said to be JSON begins as a document and does not end as one.
bool isUnfinishedJson(const ReplyHead& head, const QByteArray& body) {
    const QByteArray text = body.trimmed();
    return head.type.trimmed().toLower().startsWith("application/json") &&
           (text.startsWith('{') || text.startsWith('[')) && QJsonDocument::fromJson(text).isNull();
}

}  // namespace

void ReplyBody::streamTo(Sink newSink) {
    sink = std::move(newSink);
}

void ReplyBody::expectLength(std::optional<qint64> bytes) {
    expectedLength = bytes;
}

void ReplyBody::begin() {
    inflater.reset();
    kept.clear();
    received = 0;
    unfolded = 0;
    values = 0;
}

QString ReplyBody::take(const ReplyHead& head, const QByteArray& bytes) {
    received += bytes.size();
    const QByteArray coding = codingOf(head);
    if (coding.isEmpty()) {
        return takeUnfolded(head.status, bytes);
    }
    if (coding != "gzip" && coding != "x-gzip" && coding != "deflate") {
        return QStringLiteral("the reply has the unknown content coding \"%1\"")
            .arg(QString::fromLatin1(coding));
    }
    if (!inflater) {
        inflater.emplace();
    }
    QString problem;
    const bool whole = inflater->feed(bytes, [&](const QByteArray& piece) {
        problem = takeUnfolded(head.status, piece);
        return problem.isEmpty();
    });
    return whole || !problem.isEmpty() ? problem : damaged();
}

QString ReplyBody::takeUnfolded(int status, const QByteArray& piece) {
    unfolded += piece.size();
    const bool isError = status >= 300;
    if (sink && !isError) {
        return sink(piece) ? QString() : QStringLiteral("the reply could not be stored");
    }
    return keep(piece, isError ? kMaxErrorBytes : kMaxKeptBytes);
}

QString ReplyBody::keep(const QByteArray& piece, qint64 most) {
    values += std::count_if(piece.begin(), piece.end(),
                            [](char c) { return c == ',' || c == ':' || c == '[' || c == '{'; });
    if (inflater && isBomb()) {
        return damaged();
    }
    if (unfolded > most) {
        return QStringLiteral("the reply is larger than %1 MiB").arg(most / (1024 * 1024));
    }
    kept += piece;
    return {};
}

/// A few KiB that unfold to gigabytes are no document.
bool ReplyBody::isBomb() const {
    const qint64 memory = kMemoryOfByte * unfolded + kMemoryOfValue * values;
    const qint64 furtherBytes = std::max<qint64>(received - kAnyRatioBytes, 0);
    return unfolded > kAnyRatioBytes && (unfolded / kMaxExpansion > received ||
                                         memory > kMaxMemory + kMaxMemoryExpansion * furtherBytes);
}

bool ReplyBody::isCutShort(const ReplyHead& head) const {
    if (inflater) {
        return !inflater->isComplete();
    }
    if (head.tellsLength) {
        return false;
    }
    if (!codingOf(head).isEmpty()) {
        return true;  // Even an empty body is some bytes of a compressed stream.
    }
    // The network layer takes a chunked body without its end for a whole one, now and then.
    return sink ? expectedLength && *expectedLength != unfolded : isUnfinishedJson(head, kept);
}

QJsonObject ReplyBody::object() const {
    return QJsonDocument::fromJson(kept).object();
}

bool ReplyBody::isOtherThanObject() const {
    return !kept.isEmpty() && !QJsonDocument::fromJson(kept).isObject();
}

}  // namespace quorvelle
