#include "server/inflater.h"

#include <zlib.h>

#include <algorithm>
#include <new>

namespace quorvelle {

namespace {

constexpr int kPieceBytes = 256 * 1024;
/// The largest window, and the header (gzip or zlib) told from the data.
constexpr int kAnyHeader = 15 + 32;

bool isPadding(const z_stream& state) {
    return std::all_of(state.next_in, state.next_in + state.avail_in,
                       [](Bytef byte) { return byte == 0; });
}

}  // namespace

struct Inflater::Stream {
    z_stream state = {};

    Stream() {
        if (inflateInit2(&state, kAnyHeader) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Stream() { inflateEnd(&state); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
};

Inflater::Inflater() : stream(std::make_unique<Stream>()) {}
Inflater::~Inflater() = default;

bool Inflater::feed(const QByteArray& bytes, const Sink& sink) {
    z_stream& state = stream->state;
    QByteArray input = bytes;
    state.next_in = reinterpret_cast<Bytef*>(input.data());
    state.avail_in = static_cast<uInt>(input.size());
    QByteArray piece;
    do {
        if (complete && state.avail_in > 0) {
            // A gzip body may be several streams, one after another, and padding behind them.
            if (isPadding(state)) {
                return true;
            }
            inflateReset(&state);
            complete = false;
        }
        piece.resize(kPieceBytes);
        state.next_out = reinterpret_cast<Bytef*>(piece.data());
        state.avail_out = static_cast<uInt>(piece.size());
        const int result = inflate(&state, Z_NO_FLUSH);
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
            return false;
        }
        complete = result == Z_STREAM_END;
        piece.truncate(kPieceBytes - static_cast<qsizetype>(state.avail_out));
        if (!piece.isEmpty() && !sink(piece)) {
            return false;
        }
    } while (state.avail_in > 0 || piece.size() == kPieceBytes);
    return true;
}

}  // namespace quorvelle
