#pragma once

#include <QString>
#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

/// How far long work is, in one line. Pure but for the clock, which is an argument.

namespace quorvelle {

/// Time since some point in the past, never going back.
using Clock = std::function<std::chrono::milliseconds()>;

/// The clock of the machine.
std::chrono::milliseconds steadyTime();

/// How fast bytes move: over the last seconds, so that it follows a connection that gets
/// slower.
class Rate {
public:
    /// Bytes done by now. Fewer than before begin anew.
    void note(std::chrono::milliseconds now, qint64 bytes);

    /// Bytes a second; nothing before the first second is over.
    std::optional<double> perSecond() const;

private:
    std::deque<std::pair<std::chrono::milliseconds, qint64>> samples;
};

/// What the line says: bytes done, and bytes in all where that is known.
struct Progress {
    QString name;
    qint64 bytes = 0;
    std::optional<qint64> total;
};

/// The line: name, bar, bytes of bytes, rate and time left, of at most `columns` columns; in
/// less room than it takes the bar goes first, the bytes last.
QString progressText(const Progress& progress, std::optional<double> bytesPerSecond, int columns);

}  // namespace quorvelle
