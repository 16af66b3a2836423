#include "console/output.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <array>

#include "console/terminal.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

namespace {

/// What a note puts on standard error while that is the given descriptor, whose other side
/// is read.
QByteArray noted(int side, int read) {
    const int before = ::dup(STDERR_FILENO);
    ::dup2(side, STDERR_FILENO);
    printNote("kept as ä");
    ::dup2(before, STDERR_FILENO);
    ::close(before);
    ::close(side);
    std::array<char, 64> shown{};
    const ssize_t size = ::read(read, shown.data(), shown.size());
    ::close(read);
    return size > 0 ? QByteArray(shown.data(), size) : QByteArray();
}

QByteArray notedOnTerminal() {
    int screen = -1;
    int side = -1;
    EXPECT_EQ(::openpty(&screen, &side, nullptr, nullptr, nullptr), 0);
    return noted(side, screen);
}

/// What is found of a terminal of so many columns (0: it does not tell) behind standard
/// input, with these settings of the environment.
Terminal found(unsigned short columns, const QByteArray& kind, const QByteArray& noColor) {
    int screen = -1;
    int side = -1;
    const winsize size{.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    EXPECT_EQ(::openpty(&screen, &side, nullptr, nullptr, &size), 0);
    const int before = ::dup(STDIN_FILENO);
    ::dup2(side, STDIN_FILENO);
    qputenv("TERM", kind);
    qputenv("NO_COLOR", noColor);
    const Terminal terminal = terminalOf(stdin);
    ::dup2(before, STDIN_FILENO);
    for (const int open : {before, side, screen}) {
        ::close(open);
    }
    return terminal;
}

}  // namespace

TEST(Terminal, IsTakenForWhatItSaysAndTheEnvironmentAllows) {
    for (const auto& [kind, noColor, redraws, colors] : {std::tuple("xterm", "", true, true),
                                                         {"xterm", "1", true, false},
                                                         {"dumb", "", false, false},
                                                         {"", "", false, false}}) {
        const Terminal terminal = found(132, kind, noColor);
        EXPECT_TRUE(terminal.isThere);
        EXPECT_EQ(terminal.width, 132);
        EXPECT_EQ(terminal.redraws, redraws) << kind;
        EXPECT_EQ(terminal.hasColors, colors) << kind << noColor;
    }
    EXPECT_EQ(found(0, "xterm", "").width, 80);
    setJsonMode(true);
    EXPECT_FALSE(found(132, "xterm", "").isThere);
    setJsonMode(false);
}

TEST(Note, IsForAPersonAtATerminalAlone) {
    EXPECT_EQ(notedOnTerminal(), QByteArray("kept as ä\r\n"));
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    EXPECT_EQ(noted(ends[1], ends[0]), QByteArray());
    setJsonMode(true);
    EXPECT_EQ(notedOnTerminal(), QByteArray());
    setJsonMode(false);
}

}  // namespace quorvelle::testing
