#include <sys/stat.h>

#include "support/raw_server.h"
#include "support/server_fixture.h"
#include "support/terminal_run.h"

namespace quorvelle::testing {
namespace {

/// A subscription "app" of the channel "a/b", installed with programs that tell what they
/// see. A program that is not waited for tells it through the pipe "said".
class Run : public ProgramTest {
protected:
    Run() {
        const QByteArray facts = R"(pwd; for a in "$@"; do echo "[$a]"; done)";
        install("tool", "echo to stderr >&2; " + facts + "; exit ${CODE:-3}");
        install("bin/tell", "{ echo $$; readlink /proc/self/fd/2; grep SigIgn /proc/self/status; " +
                                facts + "; } >\"$SAID\"");
        install("crash", "kill -ABRT $$");
        for (const char* file : {"plain", "readme.txt", "a b.ps1"}) {
            box.write(QString("app/") + file, "not executable");
        }
        ::mkfifo(box.path("said").toUtf8(), 0600);
        box.environment.insert("SAID", box.path("said"));
        offer("[]");
        subscribe("{}");
    }

    void install(const QString& name, const QByteArray& script) {
        box.write("app/" + name, "#!/bin/sh\n" + script + '\n');
        QFile::setPermissions(box.path("app/" + name), QFile::ReadOwner | QFile::ExeOwner);
    }

    /// What the administrator offers, and how the user's own subscription differs.
    void offer(const QByteArray& targets) {
        server.onJson("GET", "/api/channels/a%2Fb", json("{'launch_targets':" + targets + '}'));
    }
    void subscribe(const QByteArray& changes) {
        QJsonObject app{{"name", "app"},
                        {"server", server.url()},
                        {"channel", "a/b"},
                        {"dir", box.path("app")}};
        const QJsonObject more = json(changes);
        for (auto key = more.begin(); key != more.end(); ++key) {
            app[key.key()] = key.value();
        }
        box.writeConfig({{"subscriptions", QJsonArray{QJsonObject{{"name", "other"}}, app}}});
    }

    /// Runs the words and, when the program has told that it runs, does what `then` says to
    /// "$pid", in a process group of its own as a shell has it.
    int waitAnd(const char* then) const {
        const QString script = QString(R"(set -m; "$0" run app --wait & pid=$!
                                          read -r program <"$SAID"; kill %1; wait $pid)")
                                   .arg(then);
        return box.runProgram("bash", {"-c", script, quorvelleProgram()}).code;
    }

    /// The user's own targets alone.
    void own(const QByteArray& targets) { subscribe("{'launch_targets':" + targets + '}'); }
};

TEST_F(Run, WaitsAndPassesEverythingOn) {
    offer("[{'label':'x','exe':'crash'},{'label':'T','exe':'tool','args':'s','primary':true}]");
    subscribe(R"({'admin_overrides':{'T\u001ftool':{'pre_args':'\"u v\"','post_args':'w'}},
                  'token':'own','launch_targets':[{'label':'T','exe':'crash','primary':true}]})");
    const QStringList words{"run", "--wait", "app", "--", "--target", "a b", "", "--", "--wait"};
    const QString said =
        box.path("app") + "\n[u v]\n[s]\n[w]\n[--target]\n[a b]\n[]\n[--]\n[--wait]\n";
    expectOutcome(box.run(words), 3, said, "to stderr\n");
    expectOutcome(box.run(words + QStringList("--json")), 3,
                  said + R"({"exe":")" + box.path("app/tool") + R"(","exit_code":3})" + '\n',
                  "to stderr\n");
    EXPECT_EQ(server.lines()[0], "GET /api/channels/a%2Fb");
    EXPECT_EQ(server.requests()[0].header("Authorization"), "Bearer own");
    box.environment.insert("CODE", "0");
    EXPECT_EQ(box.run(words).code, 0);
}

/// What a terminal sends to all of its foreground, and what is sent to the one that waits.
TEST_F(Run, LeavesSignalsToTheProgramThatItWaitsFor) {
    install("trap",
            "for s in INT:7 QUIT:8 TERM:9 HUP:10; do trap \"exit ${s#*:}\" ${s%:*}; done; "
            "echo $$ >\"$SAID\"; while :; do sleep 0.02; done");
    own("[{'label':'t','exe':'trap'}]");
    EXPECT_EQ(waitAnd("-INT -- -$pid"), 7);
    EXPECT_EQ(waitAnd("-QUIT -- -$pid"), 8);
    EXPECT_EQ(waitAnd("-TERM $pid"), 9);
    EXPECT_EQ(waitAnd("-HUP $pid"), 10);
}

/// Builds come without permissions; what nobody vouches for is a person's.
TEST_F(Run, LetsTheProgramsOfAnInstalledBuildStart) {
    const QStringList words = args("run app --wait");
    const QString plain = box.path("app/plain");
    const QString outside = box.path("outside");
    own("[{'label':'p','exe':'plain'}]");
    for (const QString& file : {plain, outside}) {
        box.write(QDir(box.path("")).relativeFilePath(file), "#!/bin/sh\nexit 5\n");
        QFile::setPermissions(file, QFile::ReadOwner | QFile::ReadGroup);
    }
    EXPECT_EQ(box.run(words).code, 2);
    EXPECT_FALSE(QFile::exists(box.path(".quorvelle")));
    box.write(".quorvelle/app.installed.json", "{}");
    EXPECT_EQ(box.run(words).code, 2);
    box.write(".quorvelle/app.installed.json", R"({"build":"b"})");
    EXPECT_EQ(box.run(words).code, 5);
    struct stat found = {};
    EXPECT_EQ(::stat(plain.toUtf8(), &found), 0);
    EXPECT_EQ(found.st_mode & 07777, 0540U);
    QFile::remove(plain);
    QFile::link(outside, plain);
    EXPECT_EQ(box.run(words).code, 2);
}

TEST_F(Run, StartsDetached) {
    own(R"([{'label':'T %1','exe':'bin/tell','args':'a \"b c\"','working_dir':'bin'}])");
    for (const bool asJson : {false, true}) {
        const QStringList words = typed("run app --target T~%1");
        const Outcome got = box.run(words + (asJson ? args("--json -- %2") : args("-- %2")));
        ASSERT_EQ(got.code, 0) << got.err.toStdString();
        const QStringList said = QString::fromUtf8(box.read("said")).split('\n');
        EXPECT_THAT(said.mid(1), ElementsAre("/dev/null", "SigIgn:\t0000000000000000",
                                             box.path("app/bin"), "[a]", "[b c]", "[%2]", ""));
        expectOutcome(
            got, 0,
            asJson ? R"({"exe":")" + box.path("app/bin/tell") + R"(","pid":)" + said[0] + "}\n"
                   : "Started T %1: " + box.path("app/bin/tell") + " a b c %2  (pid " + said[0] +
                         ")\n");
    }
}

TEST_F(Run, StartsScriptsThroughTheirInterpreters) {
    own("[{'label':'p','exe':'a b.ps1','args':'x'}]");
    const QString file = box.path("app/a b.ps1");
    const QString interpreter = box.path("powershell.exe");
    const QStringList words{"run", "app", "--target", "p"};
    expectError(box, words, 2, "could not start " + file);
    expectError(box, words + QStringList("--wait"), 2, "could not start " + file);

    QFile::copy(box.path("app/tool"), interpreter);
    box.environment.insert("PATH", box.path("") + ':' + box.environment.value("PATH"));
    expectOutcome(
        box.run(words + QStringList{"--wait", "--", "y z"}), 3,
        box.path("app") + "\n[-ExecutionPolicy]\n[Bypass]\n[-File]\n[" + file + "]\n[x]\n[y z]\n",
        "to stderr\n");
    QFile::remove(interpreter);
    QFile::copy(box.path("app/bin/tell"), interpreter);
    const Outcome text = box.run(words);
    expectOutcome(text, 0, "Started p: " + file + " x\n");
    ASSERT_EQ(text.code, 0);
    EXPECT_TRUE(box.read("said").contains("\n[x]\n"));
    const Outcome asJson = box.run(words + QStringList("--json"));
    EXPECT_EQ(asJson.json(), (QJsonObject{{"exe", file}, {"pid", 0}}));
    ASSERT_EQ(asJson.code, 0);
    box.read("said");
}

TEST_F(Run, ReportsWhatDoesNotStart) {
    own("[{'label':'p','exe':'plain'},{'label':'w','exe':'tool','working_dir':'gone'},"
        "{'label':'c','exe':'crash'}]");
    for (const QStringList& row : rows(R"(
        p plain        | .*Permission denied
        p plain --wait | .*Permission denied
        w tool         | gone
        w tool --wait  | gone
        c crash --wait | ended by signal 6 .Aborted.)")) {
        SCOPED_TRACE(row[0].toStdString());
        const QStringList words = args(row[0]);
        const QStringList typed = QStringList{"run", "app", "--target", words[0]} + words.mid(2);
        const QString message = "could not start " + box.path("app/" + words[1]);
        expectError(box, typed, 2, message);
        const QString reason = row[1] == "gone" ? "no directory " + box.path("app/gone") : row[1];
        EXPECT_THAT(runAtTerminal(box, typed).err.toStdString(),
                    ::testing::MatchesRegex((message + ": " + reason + "\n").toStdString()));
    }
}

TEST_F(Run, RefusesBeforeItStartsAnything) {
    const QString none =
        "'app' has no launch targets (the channel admin defines them: quorvelle channel launch "
        "add ...)";
    QJsonObject document = box.config();
    document["servers"] = QJsonArray{QJsonObject{{"server", server.url()}, {"token", "entry"}}};
    box.environment.insert("QUORVELLE_TOKEN", "env");
    box.writeConfig(document);
    expectError(box, args("run App"), 1, "no subscription named 'App'");
    expectError(box, args("run app"), 1, none);
    EXPECT_EQ(server.requests().back().header("Authorization"), "Bearer entry");
    offer("[{'label':'a'},{'label':'%2','exe':'gone'}]");
    expectError(box, args("run app --target %2"), 1,
                "cannot run '%2': not found: " + box.path("app/gone") +
                    " (has this subscription synced yet?)");
    offer("[{'label':'d','exe':'readme.txt'}]");
    expectError(box, args("run app"), 1,
                "'" + box.path("app/readme.txt") +
                    "' is a document, not a program - the client opens it with its associated "
                    "app; the CLI does not");
}

TEST_F(Run, WaitsForASlowServer) {
    server.on("GET", "/api/channels/a%2Fb", [](const httplib::Request&, httplib::Response& reply) {
        std::this_thread::sleep_for(std::chrono::seconds(6));
        reply.set_content(R"({"launch_targets":[{"label":"T","exe":"tool"}]})", "application/json");
    });
    EXPECT_EQ(box.run(args("run app --wait")).code, 3);
}

/// A server that refuses, is not there, answers nonsense or nothing at all.
TEST_F(Run, GoesOnWithTheUsersTargetsWithoutAServer) {
    const RawServer silent({}, RawServer::Ending::kSilence);
    box.environment.insert("QUORVELLE_IDLE_TIMEOUT", "1");
    server.onJson("GET", "/api/channels/none", json("{'launch_targets':[{'label':'x'}]}"), 403);
    server.onBytes("GET", "/api/channels/text", "[{}]");
    server.onJson("GET", "/api/channels/wrong", json("{'launch_targets':{'x':{}}}"));
    for (const QString& row :
         {server.url() + " none", server.url() + " text", server.url() + " wrong",
          QString("http://127.0.0.1:1 c"), QString("nonsense c"), silent.url() + " c"}) {
        SCOPED_TRACE(row.toStdString());
        subscribe("{'server':'" + row.section(' ', 0, 0).toUtf8() + "','channel':'" +
                  row.section(' ', 1).toUtf8() +
                  "','admin_launch_targets':[{'label':'old','exe':'crash'}],"
                  "'launch_targets':[{'label':'T','exe':'tool'}]}");
        expectOutcome(box.run(args("run app --wait")), 3, box.path("app") + '\n', "to stderr\n");
    }
    const QString note =
        "reading the channel's launch targets failed%1 - going on with this "
        "subscription's own\n";
    EXPECT_EQ(runAtTerminal(box, args("run app --wait")).err,
              note.arg(": no data for 1 s") + "to stderr\n");
}

}  // namespace
}  // namespace quorvelle::testing
