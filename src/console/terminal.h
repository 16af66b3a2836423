#pragma once

#include <cstdio>

/// What a person sees of a standard stream. Whatever is for people alone asks here, so that
/// a script, a pipe or a file never meets it. Main thread only.

namespace quorvelle {

/// What there is at the other end of a stream.
struct Terminal {
    /// A person, and JSON mode is off; without one the rest means nothing.
    bool isThere = false;
    /// The columns of a line, at least 1; a window may change them at any time.
    int width = 80;
    /// Whether it obeys control sequences, so that a line can be drawn again. Not with
    /// TERM=dumb.
    bool redraws = false;
    /// Whether it may be shown colours: where it redraws, and without NO_COLOR.
    bool hasColors = false;
};

/// What `stream`, a standard stream, leads to now.
Terminal terminalOf(std::FILE* stream);

/// Makes terminalOf() answer with what `answer` says instead of asking the system, JSON mode
/// or not; null asks the system again. For tests.
void setTerminals(Terminal (*answer)(std::FILE* stream));

}  // namespace quorvelle
