#include "cli/command_table.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QRegularExpression>
#include <algorithm>
#include <map>
#include <set>

#include "cli/dispatch.h"
#include "support/notation.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

namespace {

/// Every command in the order in which the words are compared, with the source files that
/// take its options.
struct Source {
    const char* words;
    const char* files;
};

constexpr Source kSources[] = {
    {"config", "cli/config_command.cpp"},
    {"subscribe", "cli/subscription_commands.cpp"},
    {"unsubscribe", "cli/subscription_commands.cpp"},
    {"subscriptions", "cli/subscription_commands.cpp"},
    {"subscription set-interval", "cli/subscription_commands.cpp"},
    {"subscription set-self-heal", "cli/subscription_commands.cpp"},
    {"backups", "admin/backup_commands.cpp admin/bucket_options.cpp"},
    {"run", "launch/run_command.cpp"},
    {"backup schedule", "admin/backup_commands.cpp admin/bucket_options.cpp"},
    {"backup init", "admin/backup_commands.cpp admin/bucket_options.cpp"},
    {"backup forget", "admin/backup_commands.cpp admin/bucket_options.cpp"},
    {"sso", "admin/sso_commands.cpp admin/sso_map_command.cpp"},
    {"storage init", "onboarding/storage_init_command.cpp"},
    {"storage", "admin/storage_commands.cpp admin/bucket_options.cpp"},
    {"backup", "admin/backup_commands.cpp admin/bucket_options.cpp"},
    {"server set-root", "cli/server_commands.cpp"},
    {"server set-token", "cli/server_commands.cpp"},
    {"server-version", "admin/version_info_command.cpp"},
    {"push", "admin/push_command.cpp"},
    {"builds", "admin/build_commands.cpp"},
    {"build delete", "admin/build_commands.cpp"},
    {"build disable", "admin/build_commands.cpp"},
    {"build enable", "admin/build_commands.cpp"},
    {"build", "admin/build_commands.cpp"},
    {"channels", "admin/channel_commands.cpp"},
    {"channel create", "admin/channel_commands.cpp"},
    {"channel delete", "admin/channel_commands.cpp"},
    {"channel public", "admin/channel_commands.cpp"},
    {"channel launch list", "admin/channel_launch_command.cpp"},
    {"channel launch add", "admin/channel_launch_command.cpp"},
    {"channel launch remove", "admin/channel_launch_command.cpp"},
    {"channel launch primary", "admin/channel_launch_command.cpp"},
    {"channel launch clear", "admin/channel_launch_command.cpp"},
    {"promote", "admin/promote_command.cpp"},
    {"whoami", "admin/whoami_command.cpp"},
    {"users", "admin/user_commands.cpp"},
    {"token create", "admin/token_command.cpp"},
    {"user create", "admin/user_commands.cpp"},
    {"user join-group", "admin/user_commands.cpp"},
    {"user leave-group", "admin/user_commands.cpp"},
    {"user follow", "admin/user_commands.cpp"},
    {"user unfollow", "admin/user_commands.cpp"},
    {"user disable", "admin/user_commands.cpp"},
    {"user enable", "admin/user_commands.cpp"},
    {"user delete", "admin/user_commands.cpp"},
    {"user set-role", "admin/user_commands.cpp"},
    {"groups", "admin/group_commands.cpp"},
    {"invite create", "admin/invite_commands.cpp admin/invite.cpp"},
    {"invite revoke", "admin/invite_commands.cpp admin/invite.cpp"},
    {"invites", "admin/invite_commands.cpp admin/invite.cpp"},
    {"login", "sync/login_command.cpp"},
    {"request-access", "admin/access_request_commands.cpp admin/invite.cpp"},
    {"requests", "admin/access_request_commands.cpp admin/invite.cpp"},
    {"request approve", "admin/access_request_commands.cpp admin/invite.cpp"},
    {"request decline", "admin/access_request_commands.cpp admin/invite.cpp"},
    {"license request-trial", "admin/license_commands.cpp"},
    {"license", "admin/license_commands.cpp"},
    {"cloud portal", "admin/license_commands.cpp"},
    {"join", "sync/join_command.cpp"},
    {"reconcile", "sync/reconcile_command.cpp"},
    {"group create", "admin/group_commands.cpp"},
    {"group assign-channel", "admin/group_commands.cpp"},
    {"group unassign-channel", "admin/group_commands.cpp"},
    {"group delete", "admin/group_commands.cpp"},
    {"sync", "sync/sync_command.cpp"},
    {"--version", "cli/version_command.cpp"},
    {"version", "cli/version_command.cpp"},
};

QString wordsOf(const Command& row) {
    return QString::fromUtf8(row.words.data(), qsizetype(row.words.size()));
}

QString usageOf(const Command& row) {
    return QString::fromUtf8(row.usage.data(), qsizetype(row.usage.size()));
}

std::set<std::string> captured(const QString& text, const char* pattern) {
    std::set<std::string> found;
    auto matches = QRegularExpression(pattern).globalMatch(text);
    while (matches.hasNext()) {
        found.insert(matches.next().captured(1).toStdString());
    }
    return found;
}

/// The options that a source file takes: words of the form "--x" that stand as a whole
/// literal, and "--server" where the server is resolved.
std::set<std::string> optionsTaken(const QString& files) {
    std::set<std::string> options;
    for (const QString& name : args(files)) {
        QFile file(QStringLiteral(QUORVELLE_SOURCE_DIR "/") + name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        const QString code = QString::fromUtf8(file.readAll());
        options.merge(captured(code, "\"(--[a-z][a-z-]*)\""));
        if (code.contains(QRegularExpression("(resolve|take|on)Server(Option)?\\("))) {
            options.insert("--server");
        }
    }
    return options;
}

}  // namespace

TEST(CommandTable, HoldsTheCommandsInTheOrderInWhichWordsAreCompared) {
    QStringList expected;
    for (const Source& source : kSources) {
        expected.append(source.words);
    }
    QStringList rows;
    for (const Command& row : commandTable()) {
        rows.append(wordsOf(row));
    }
    EXPECT_EQ(rows, expected);
}

TEST(CommandTable, ReachesEveryRow) {
    for (const Command& row : commandTable()) {
        SCOPED_TRACE(wordsOf(row).toStdString());
        QStringList typed = args(wordsOf(row));
        for (int i = 0; i < row.leastArguments; ++i) {
            typed.append("x");
        }
        EXPECT_EQ(findCommand(typed, commandTable()), &row);
        EXPECT_LE(row.leastArguments, row.mostArguments);
        EXPECT_NE(row.handler, nullptr);
    }
}

TEST(CommandTable, KnowsNothingElse) {
    for (const char* line :
         {"Config", "configs", "subscription", "subscription rename x", "subscription Set-Interval",
          "server", "server set-root", "server set-root url", "server set-root url path more",
          "server set-token url", "server set-token url token more", "set-root url path",
          "channel rename x", "build", "cloud", "--help", "", "subscription set-interval-x"}) {
        SCOPED_TRACE(line);
        EXPECT_EQ(findCommand(QString(line).split(u' '), commandTable()), nullptr);
    }
}

TEST(CommandTable, DescribesEveryRow) {
    for (const Command& row : commandTable()) {
        SCOPED_TRACE(wordsOf(row).toStdString());
        EXPECT_FALSE(row.summary.empty());
        EXPECT_FALSE(row.summary.ends_with('.'));
        QStringList lines = usageOf(row).split(u'\n');
        EXPECT_EQ(lines.takeLast(), QString()) << "the last line has no end";
        for (const QString& line : lines) {
            EXPECT_TRUE(line.startsWith("  quorvelle ") ||
                        (line.startsWith(QString(12, u' ')) && line.at(12) != u' '))
                << line.toStdString();
        }
        EXPECT_TRUE(lines.isEmpty() || lines.first().startsWith("  quorvelle "));
    }
}

/// Rows that share source files are compared together.
TEST(CommandTable, ShowsExactlyTheOptionsThatTheHandlersTake) {
    std::map<QString, std::set<std::string>> shown;
    for (const Command& row : commandTable()) {
        const auto* source =
            std::find_if(std::begin(kSources), std::end(kSources),
                         [&](const Source& candidate) { return wordsOf(row) == candidate.words; });
        ASSERT_NE(source, std::end(kSources)) << wordsOf(row).toStdString();
        shown[source->files].merge(captured(usageOf(row), "(?<![\\w-])(--[a-z][a-z-]*)"));
    }
    for (const auto& [files, options] : shown) {
        EXPECT_EQ(options, optionsTaken(files)) << files.toStdString();
    }
    EXPECT_THAT(shown["sync/sync_command.cpp"],
                ::testing::ElementsAre("--force", "--name", "--server"));
}

}  // namespace quorvelle::testing
