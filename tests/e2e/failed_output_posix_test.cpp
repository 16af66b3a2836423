#include "e2e/session.h"
#include "support/fake_cloudflare.h"
#include "support/terminal_run.h"

namespace quorvelle::testing {
namespace {

/// A standard output that takes nothing, as a shell makes it, and what the system calls that.
struct Sink {
    const char* redirection;
    QString reason;
};

const Sink kSinks[] = {
    {"exec \"$@\" > /dev/full", "No space left on device"},
    {"exec \"$@\" >&-", "Bad file descriptor"},
    // A pipe whose only reader has gone before the program starts.
    {"mkfifo p$$ && exec 3<> p$$ 4> p$$ 3<&- && exec \"$@\" >&4", "Broken pipe"}};

struct FailedOutput : Session {
    void check(const Sink& sink, const QStringList& words, int code, const QString& err) const {
        SCOPED_TRACE((words.join(u' ') + " into: " + sink.reason).toStdString());
        const QStringList shell{"-c", sink.redirection, "sh", quorvelleProgram()};
        expectOutcome(box.runProgram("/bin/sh", shell + words), code, {}, err);
    }

    static QString reasonLine(const Sink& sink) {
        return "could not write the output: " + sink.reason + '\n';
    }
};

TEST_F(FailedOutput, TurnsASuccessIntoAFailureWhenTheWorkIsDone) {
    for (const Sink& sink : kSinks) {
        const QString said = sink.reason == "Broken pipe" ? QString() : reasonLine(sink);
        joined({});
        check(sink, args("config set server http://h"), 2, said);
        EXPECT_EQ(box.config()["server"].toString(), "http://h");
        check(sink, args("config get server --json"), 2, said);
        check(sink, args("unsubscribe nothing"), 1, "No subscription named 'nothing'\n");
        check(sink, {}, 1, said);
    }
}

/// Each row: a command and what a server tells it once.
TEST_F(FailedOutput, SendsWhatIsToldOnceToStandardError) {
    server.onAnythingElse(answering(R"({"token":"T1","code":"C1","encryption_key":"K1"})"));
    for (const QStringList& row : rows(R"(
        token create t --user u | T1
        invite create u         | C1
        request approve 1       | C1
        backup init --shared    | K1)")) {
        for (const char* mode : {"", " --json"}) {
            const QStringList words = args(row[0] + mode + " --server " + server.url());
            const QString shown = box.run(words).out;
            EXPECT_TRUE(shown.contains(row[1])) << shown.toStdString();
            for (const Sink& sink : kSinks) {
                check(sink, words, 2, shown + reasonLine(sink));
            }
        }
    }
    refuseSaves();
    for (const Sink& sink : kSinks) {
        check(sink, join() + QStringList("--json"), 2,
              "{\"error\":\"" + kSaveIt + "\"}\n" + reasonLine(sink));
    }
}

TEST_F(FailedOutput, LeavesTheCiCredentialToStandardError) {
    FakeCloudflare cloudflare;
    box.environment.insert("QUORVELLE_CLOUDFLARE_API_URL", cloudflare.server.url());
    box.environment.insert("CLOUDFLARE_API_TOKEN", "operator-secret");
    const QString line = "storage init --yes --bucket b-1 --server " + cloudflare.server.url();
    for (const Sink& sink : kSinks) {
        for (const char* mode : {"", " --json"}) {
            cloudflare.reset(false);
            const Outcome got = box.runProgram(
                "/bin/sh",
                QStringList{"-c", sink.redirection, "sh", quorvelleProgram()} + args(line + mode));
            EXPECT_EQ(got.code, 2);
            EXPECT_TRUE(got.err.contains("TIDE_S3_SECRET")) << got.err.toStdString();
            EXPECT_TRUE(got.err.endsWith(reasonLine(sink))) << got.err.toStdString();
            EXPECT_EQ(cloudflare.left().size(), 3U);
        }
    }
}

TEST_F(FailedOutput, ShowsALicenseThatTheServerRefusedToAPersonAlone) {
    box.environment.insert("QUORVELLE_TRIAL_URL", server.url());
    server.onJson("POST", "/api/trial", json("{'blob':'B'}"));
    server.onJson("POST", "/api/license", json("{'error':'no'}"), 403);
    const QString line = "license request-trial --name n --server " + server.url();
    const QString error = "install trial failed (HTTP 403): no";
    expectError(box, args(line), 2, error);
    EXPECT_EQ(runAtTerminal(box, args(line)).err,
              error + "\nThe license that was not installed:\n{\"blob\":\"B\"}\n");
    EXPECT_EQ(runAtTerminal(box, args(line + " --json")).err, QString());
}

}  // namespace
}  // namespace quorvelle::testing
