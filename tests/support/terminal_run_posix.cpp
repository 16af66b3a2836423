#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>

#include <QProcess>
#include <array>
#include <thread>

#include "support/terminal_run.h"

namespace quorvelle::testing {

namespace {

/// All that is written to the terminal, up to the end of its last writer.
QByteArray shownOn(int terminal) {
    QByteArray shown;
    std::array<char, 4096> block{};
    ssize_t size = 0;
    while ((size = ::read(terminal, block.data(), block.size())) > 0) {
        shown.append(block.data(), size);
    }
    return shown;
}

}  // namespace

Outcome runAtTerminal(const Sandbox& sandbox, const QStringList& words,
                      const std::vector<int>& streams) {
    int screen = -1;
    int side = -1;
    termios settings = {};
    ::cfmakeraw(&settings);
    EXPECT_EQ(::openpty(&screen, &side, nullptr, &settings, nullptr), 0);

    QProcess process;
    process.setProcessEnvironment(sandbox.environment);
    process.setWorkingDirectory(sandbox.path({}));
    process.setChildProcessModifier([side, &streams] {
        for (const int stream : streams) {
            ::dup2(side, stream);
        }
    });
    QByteArray shown;
    std::thread reader([&shown, screen] { shown = shownOn(screen); });
    process.start(quorvelleProgram(), words);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(-1));
    ::close(side);
    reader.join();
    ::close(screen);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(shown)};
}

}  // namespace quorvelle::testing
