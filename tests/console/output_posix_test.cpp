#include "console/output.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <array>
#include <functional>

#include "console/terminal.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

namespace {

using Ends = std::array<int, 2>;

/// Does something while a descriptor is the second of two ends, which is closed then.
void whileItIs(int descriptor, const Ends& ends, const std::function<void()>& work) {
    const int before = ::dup(descriptor);
    ::dup2(ends[1], descriptor);
    work();
    ::dup2(before, descriptor);
    ::close(before);
    ::close(ends[1]);
}

/// A terminal of so many columns (0: it does not tell).
Ends terminal(unsigned short columns = 80) {
    Ends ends{};
    const winsize size{.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    EXPECT_EQ(::openpty(&ends[0], &ends[1], nullptr, nullptr, &size), 0);
    return ends;
}

/// What a note puts on standard error.
QByteArray noted(const Ends& ends) {
    whileItIs(STDERR_FILENO, ends, [] { printNote("kept as ä"); });
    std::array<char, 64> shown{};
    const ssize_t size = ::read(ends[0], shown.data(), shown.size());
    ::close(ends[0]);
    return size > 0 ? QByteArray(shown.data(), size) : QByteArray();
}

/// What is found of a terminal behind standard input, with these settings of the environment.
Terminal found(unsigned short columns, const QByteArray& kind, const QByteArray& noColor) {
    qputenv("TERM", kind);
    qputenv("NO_COLOR", noColor);
    const Ends ends = terminal(columns);
    Terminal result;
    whileItIs(STDIN_FILENO, ends, [&result] { result = terminalOf(stdin); });
    ::close(ends[0]);
    return result;
}

}  // namespace

TEST(Terminal, IsTakenForWhatItSaysAndTheEnvironmentAllows) {
    for (const auto& [kind, noColor, redraws, colors] : {std::tuple("xterm", "", true, true),
                                                         {"xterm", "1", true, false},
                                                         {"dumb", "", false, false},
                                                         {"", "", false, false}}) {
        const Terminal seen = found(132, kind, noColor);
        EXPECT_TRUE(seen.isThere);
        EXPECT_EQ(seen.width, 132);
        EXPECT_EQ(seen.redraws, redraws) << kind;
        EXPECT_EQ(seen.hasColors, colors) << kind << noColor;
    }
    EXPECT_EQ(found(0, "xterm", "").width, 80);
    setJsonMode(true);
    EXPECT_FALSE(found(132, "xterm", "").isThere);
    setJsonMode(false);
}

TEST(Note, IsForAPersonAtATerminalAlone) {
    EXPECT_EQ(noted(terminal()), QByteArray("kept as ä\r\n"));
    Ends ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    EXPECT_EQ(noted(ends), QByteArray());
    setJsonMode(true);
    EXPECT_EQ(noted(terminal()), QByteArray());
    setJsonMode(false);
}

}  // namespace quorvelle::testing
