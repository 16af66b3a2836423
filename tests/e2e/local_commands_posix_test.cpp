#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QProcess>
#include <QThread>
#include <array>

#include "e2e/session.h"
#include "support/faulty_run.h"
#include "support/terminal_run.h"

namespace quorvelle::testing {
namespace {

/// Each row: the configuration, the words, what a terminal is told. "FILE" stands for the
/// configuration's path.
TEST(LocalCommands, TellATerminalWhatAScriptIsNotToSee) {
    for (const QStringList& row : rows(R"(
{"a | subscriptions    | FILE is no JSON object and counts as empty
{"a | config get token | FILE is no JSON object and counts as empty
{"a | config set token t | what FILE held is kept as FILE.corrupt
{"servers":[{}]} | config set token t | what FILE held is kept as FILE.corrupt
{"servers":[{}],"schema_version":2.5} | config set token t |
{"schema_version":2,"subscriptions":[{"name":"a","dir":"/x/a"},{"name":"b","dir":"/x/b"}]} | subscribe http://s c --dir /x/b/in | 'b' installs in /x/b already - each sync of one replaces what the other installed)")) {
        SCOPED_TRACE(row.join(',').toStdString());
        for (const bool asJson : {false, true}) {
            const Sandbox box;
            box.write("config/config.json", row[0].toUtf8());
            const QStringList words = args(row[1]) + (asJson ? args("--json") : QStringList());
            QString told = asJson || row[2].isEmpty() ? QString() : row[2] + '\n';
            told.replace("FILE", box.configPath());
            if (row[1] == "config get token" && !asJson) {
                told += "token is not set\n";
            }
            EXPECT_EQ(runAtTerminal(box, words).err, told);
        }
    }
    const Sandbox box;
    box.write("config/config.json/in the way", "");
    const QString unreadable =
        box.configPath() + " cannot be read and counts as empty: Is a directory\n";
    EXPECT_EQ(runAtTerminal(box, args("subscriptions")).err, unreadable);
    EXPECT_EQ(runAtTerminal(box, args("config set token t")).err,
              unreadable + "Could not write " + box.configPath() + '\n');
}

/// What is wrong goes to one stream, how it is right to the other; each looks at its own.
TEST(LocalCommands, GuideTheStreamThatIsATerminal) {
    const Sandbox box;
    const QString usage = box.run({}).out;
    const QString sync = "  quorvelle sync [--name <subscription> | --server <url>] [--force]\n";
    const QString unknown = "Unknown command 'snyc'. Did you mean 'sync'?\n";
    const QString option = "Unknown option '--nam'. Did you mean '--name'?\n";
    expectOutcome(runAtTerminal(box, {"snyc"}), 1, usage, unknown);
    expectOutcome(runAtTerminal(box, args("sync --nam x")), 1, usage, option);
    expectOutcome(runAtTerminal(box, args("sync --nam x --json")), 1, usage);
    const std::vector<int> both{STDOUT_FILENO, STDERR_FILENO};
    expectOutcome(runAtTerminal(box, {"snyc"}, both), 1, "", unknown + sync);
    expectOutcome(runAtTerminal(box, args("sync --nam x"), both), 1, "", option + sync);
    expectOutcome(runAtTerminal(box, args("sync -h"), both), 0, "", sync);
    expectOutcome(runAtTerminal(box, args("sync -h --json"), both), 1, "", sync);
}

TEST_F(Session, JoinTellsATerminalWhoKeepsTheFormerToken) {
    QJsonArray entries;
    for (const char* name : {"hand", "own", "managed"}) {
        entries.append(QJsonObject{{"name", name},
                                   {"server", server.url()},
                                   {"channel", "app"},
                                   {"token", *name == 'o' ? "own" : "old"},
                                   {"managed", *name == 'm'}});
    }
    joined({QJsonObject{{"server", server.url()}, {"token", "old"}}}, entries);
    const QString note =
        "still with the former token, as made by hand: hand (for a new one in all of them: "
        "quorvelle server set-token $ <token>)\n";
    EXPECT_EQ(runAtTerminal(box, join()).err, at(note));
    EXPECT_EQ(runAtTerminal(box, join()).err, QString());
}

/// A pipe that takes no byte more.
class FullPipe {
public:
    FullPipe() {
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        ::fcntl(ends[1], F_SETFL, O_NONBLOCK);
        while (::write(ends[1], "x", 1) == 1) {
        }
        ::fcntl(ends[1], F_SETFL, 0);
    }
    ~FullPipe() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    FullPipe(const FullPipe&) = delete;
    FullPipe& operator=(const FullPipe&) = delete;

    int writeEnd() const { return ends[1]; }

private:
    std::array<int, 2> ends{};
};

TEST(LocalCommands, HoldNoLockWhileNobodyReadsTheirOutput) {
    const Sandbox box;
    box.write("config/config.json", R"({"schema_version":2,"subscriptions":[{"name":"a"}]})");
    const FullPipe pipe;
    QProcess stuck;
    stuck.setProcessEnvironment(box.environment);
    stuck.setChildProcessModifier([&pipe] { ::dup2(pipe.writeEnd(), STDOUT_FILENO); });
    stuck.start(quorvelleProgram(), args("subscription set-interval a 5"));
    QDeadlineTimer saved(std::chrono::seconds(60));
    while (box.config()["subscriptions"][0]["interval_seconds"] != 5 && !saved.hasExpired()) {
        QThread::msleep(5);
    }
    const Outcome other = box.runProgram(
        "timeout", QStringList{"60", quorvelleProgram()} + args("config set token t"));
    EXPECT_EQ(other.code, 0);
    EXPECT_FALSE(stuck.waitForFinished(0));
    stuck.kill();
    stuck.waitForFinished();
}

TEST(LocalCommands, FindTheHomeFolderWithoutTheEnvironment) {
    Sandbox box;
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "QUORVELLE_CONFIG_DIR"}) {
        box.environment.remove(name);
    }
    const QString home = ::getpwuid(::geteuid())->pw_dir;
    EXPECT_THAT(box.run({"config"}).out.toStdString(),
                HasSubstr("Config file: " + home.toStdString() + "/.config/Quorvelle/"));

    const auto expectRefused = [&box](const QString& line) {
        SCOPED_TRACE(line.toStdString());
        expectOutcome(runFaulty(box, args(line), {}), 2, {},
                      "cannot find your home directory - set QUORVELLE_CONFIG_DIR\n");
    };
    box.environment.insert("FAULT_NO_USERS", "1");
    for (const char* line : {"config set token t", "builds --server http://127.0.0.1:1"}) {
        expectRefused(line);
    }
    EXPECT_EQ(runFaulty(box, {"version"}, {}).code, 0);
    box.environment.insert("QUORVELLE_CONFIG_DIR", box.path("config"));
    EXPECT_EQ(runFaulty(box, args("config set token t"), {}).code, 0);
    for (const char* line : {"join http://127.0.0.1:1 c", "login http://127.0.0.1:1"}) {
        expectRefused(line);
    }
}

}  // namespace
}  // namespace quorvelle::testing
