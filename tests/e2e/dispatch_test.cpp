#include <QRegularExpression>

#include "support/server_fixture.h"

namespace quorvelle::testing {

using Dispatch = ProgramTest;

TEST_F(Dispatch, PrintsTheUsageWithoutACommand) {
    const QString usage = box.run({}).out;
    EXPECT_EQ(usage.indexOf("\n\nUsage:\n  quorvelle "), usage.indexOf(u'\n'));
    EXPECT_EQ(usage.section(u'\n', 0, 0), "Quorvelle CLI " + box.run({"version"}).out.trimmed());
    EXPECT_TRUE(
        usage.endsWith("\nGlobal:\n  --json         machine-readable output (same exit codes)\n"));
    EXPECT_TRUE(
        usage.contains("\n  quorvelle sync [--name <subscription> | --server <url>] [--force]\n"));
    expectUsage(box, {});
    expectUsage(box, {"--json", "--json"});
}

TEST_F(Dispatch, TakesJsonModeFromAnywhere) {
    for (const char* line :
         {"--json config set token t", "config --json set --json token t --json"}) {
        EXPECT_EQ(box.run(args(line)).json(), json("{'token':'t'}")) << line;
    }
    for (const char* word : {"--JSON", "--json=1"}) {
        expectOutcome(box.run({"config", "set", "token", word}), 0,
                      "token = " + QString(word) + '\n');
    }
}

TEST_F(Dispatch, PrintsTheVersionForBothWordsInBothModes) {
    const Outcome version = box.run({"version"});
    const QRegularExpression pattern("\\A0\\.7\\.10\\+g([0-9a-f]+|unknown)\n\\z");
    EXPECT_TRUE(pattern.match(version.out).hasMatch()) << version.out.toStdString();
    expectOutcome(box.run(args("--version surplus")), 0, version.out);
    EXPECT_EQ(box.run(args("--version --json")).json(),
              (QJsonObject{{"version", version.out.trimmed()}}));
}

TEST_F(Dispatch, SendsUnknownWordsToStandardErrorInBothModes) {
    const QString usage = box.run({}).out;
    for (const QStringList& words : {args("server set-token http://h"), args("100%1 %2"),
                                     QStringList{"Ünïcode 日本"}, QStringList{""}}) {
        SCOPED_TRACE(words.join(u' ').toStdString());
        const QString said = "Unknown command '" + words.first() + "'\n\n";
        expectOutcome(box.run(words), 1, usage, said);
        expectOutcome(box.run(words + QStringList("--json")), 1, usage, said);
    }
}

}  // namespace quorvelle::testing
