#pragma once

#include <QByteArray>
#include <functional>
#include <memory>

namespace quorvelle {

/// Decompresses a body of the content coding gzip or deflate piece by piece, in memory
/// that does not grow with it, and knows whether its end was reached.
///
/// The network layer could do this as well, but then no longer notices a connection that
/// breaks in the middle of a compressed body.
class Inflater {
public:
    /// Takes decompressed bytes, in pieces of at most 256 KiB; false stops feed().
    using Sink = std::function<bool(const QByteArray& bytes)>;

    Inflater();
    ~Inflater();

    /// Decompresses the next bytes into `sink`. False when they are damaged or the sink
    /// refused; the inflater is then of no further use.
    bool feed(const QByteArray& bytes, const Sink& sink);

    /// Whether the bytes so far end with a whole compressed stream, its checksum included;
    /// zeros may follow it.
    bool isComplete() const { return complete; }

private:
    struct Stream;
    std::unique_ptr<Stream> stream;
    bool complete = false;
};

}  // namespace quorvelle
