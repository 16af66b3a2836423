#include <gmock/gmock.h>

#include "support/outcomes.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {
namespace {

TEST(Dispatch, PrintsTheUsageWithoutACommand) {
    const Sandbox box;
    const QString usage = box.run({}).out;
    EXPECT_EQ(usage.indexOf("\n\nUsage:\n  quorvelle "), usage.indexOf(u'\n'));
    EXPECT_EQ(usage.section(u'\n', 0, 0), "Quorvelle CLI " + box.run({"version"}).out.trimmed());
    EXPECT_TRUE(
        usage.endsWith("\nGlobal:\n  --json         machine-readable output (same exit codes)\n"));
    for (const char* form :
         {"config list", "config get server|token",
          "config set server <url>       default server for push etc.",
          "config set token <token>      default auth token",
          "subscribe <server> <channel> --dir <path>\n            [--name <name>] [--interval "
          "<seconds|manual|default>]\n            [--self-heal <none|quick|full|default>] [--token "
          "<token>]",
          "unsubscribe <name>", "subscriptions",
          "subscription set-interval <name> <seconds|manual|default>",
          "subscription set-self-heal <name> <none|quick|full|default>\n            Tide channels: "
          "check an up-to-date install against the manifest",
          "push <dir> --channel <name> [--build <id>] [--server <url>]",
          "promote <channel> (<build-id> | --from <channel>) [--server <url>]",
          "sync [--name <subscription> | --server <url>] [--force]"}) {
        EXPECT_TRUE(usage.contains(QString("\n  quorvelle %1\n").arg(form))) << form;
    }
    expectUsage(box, {});
    expectUsage(box, {"--json", "--json"});
}

TEST(Dispatch, SendsUnknownWordsToStandardErrorInBothModes) {
    const Sandbox box;
    const QString usage = box.run({}).out;
    for (const QStringList& words :
         {args("server set-root http://h /n more"), args("server set-token http://h"),
          args("server"), args("subscription"), args("subscription other app"), args("100%1 %2"),
          args("Sync"), QStringList{"Ünïcode 日本"}, QStringList{""}}) {
        SCOPED_TRACE(words.join(u' ').toStdString());
        const QString said = "Unknown command '" + words.first() + "'\n\n";
        expectOutcome(box.run(words), 1, usage, said);
        expectOutcome(box.run(words + QStringList("--json")), 1, usage, said);
    }
}

}  // namespace
}  // namespace quorvelle::testing
