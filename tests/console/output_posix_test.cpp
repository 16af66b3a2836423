#include "console/output.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <array>

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

}  // namespace

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
