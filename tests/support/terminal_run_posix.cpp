#include <pty.h>
#include <termios.h>

#include <QProcess>
#include <algorithm>
#include <array>
#include <csignal>
#include <thread>

#include "support/terminal_run.h"

namespace quorvelle::testing {

namespace {

constexpr unsigned short kRows = 24;
constexpr unsigned short kColumns = 80;

/// All that is written to the terminal, up to the end of its last writer.
QByteArray shownOn(int terminal, const AtTerminal& there, pid_t process) {
    QByteArray shown;
    std::array<char, 4096> block{};
    ssize_t size = 0;
    bool isAwaited = !there.awaited.isEmpty();
    while ((size = ::read(terminal, block.data(), block.size())) > 0) {
        shown.append(block.data(), size);
        if (isAwaited && shown.contains(there.awaited)) {
            isAwaited = false;
            ::kill(process, there.signal);
        }
    }
    return shown;
}

}  // namespace

Outcome runAtTerminal(const Sandbox& sandbox, const QStringList& words,
                      const std::vector<int>& streams, const AtTerminal& there) {
    int screen = -1;
    int side = -1;
    termios settings = {};
    ::cfmakeraw(&settings);
    const winsize size{.ws_row = kRows, .ws_col = kColumns, .ws_xpixel = 0, .ws_ypixel = 0};
    EXPECT_EQ(::openpty(&screen, &side, nullptr, &settings, &size), 0);
    EXPECT_EQ(::write(screen, there.typed.data(), static_cast<std::size_t>(there.typed.size())),
              there.typed.size());

    QProcess process;
    QProcessEnvironment environment = sandbox.environment;
    environment.insert(QStringLiteral("TERM"), there.kind);
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(sandbox.path({}));
    process.setChildProcessModifier([side, &streams] {
        for (const int stream : streams) {
            ::dup2(side, stream);
        }
    });
    QByteArray shown;
    process.start(quorvelleProgram(), words);
    EXPECT_TRUE(process.waitForStarted(-1));
    std::thread reader(
        [&, id = static_cast<pid_t>(process.processId())] { shown = shownOn(screen, there, id); });
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(-1));
    ::close(side);
    reader.join();
    ::close(screen);
    const bool killed = process.exitStatus() == QProcess::CrashExit;
    return {killed ? -process.exitCode() : process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(shown)};
}

QStringList screenAfter(const QString& written) {
    QStringList screen(1);
    qsizetype row = 0;
    qsizetype column = 0;
    const QString eraseBelow = QStringLiteral("\x1B[J");
    for (qsizetype i = 0; i < written.size(); ++i) {
        if (written.mid(i, eraseBelow.size()) == eraseBelow) {
            screen.resize(row + 1);
            screen[row].truncate(column);
            i += eraseBelow.size() - 1;
        } else if (written.at(i) == u'\r') {
            column = 0;
        } else if (written.at(i) == u'\n' || column == kColumns) {
            i -= written.at(i) == u'\n' ? 0 : 1;
            column = 0;
            if (++row == screen.size()) {
                screen.append(QString());
            }
        } else {
            EXPECT_GE(written.at(i), u' ') << written.mid(i, 20).toStdString();
            screen[row] = screen[row].leftJustified(column).left(column) + written.at(i) +
                          screen[row].mid(column + 1);
            ++column;
        }
    }
    return screen.last(std::min<qsizetype>(screen.size(), kRows));
}

}  // namespace quorvelle::testing
