#include "cli/command_table.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QRegularExpression>
#include <algorithm>
#include <map>
#include <set>

#include "cli/dispatch.h"
#include "support/notation.h"

namespace quorvelle::testing {

namespace {

/// Every command in the order in which the words are compared, behind the source files
/// that take its options.
const QList<QStringList> kSources = rows(R"(
cli/config_command.cpp | config
cli/subscription_commands.cpp | subscribe | unsubscribe | subscriptions
cli/subscription_commands.cpp | subscription set-interval | subscription set-self-heal
admin/backup_commands.cpp admin/bucket_options.cpp | backups
launch/run_command.cpp | run
admin/backup_commands.cpp admin/bucket_options.cpp | backup schedule | backup init | backup forget
admin/sso_commands.cpp admin/sso_map_command.cpp | sso
onboarding/storage_init_command.cpp admin/storage_commands.cpp admin/bucket_options.cpp | storage
admin/backup_commands.cpp admin/bucket_options.cpp | backup
cli/server_entry_commands.cpp | server set-root | server set-token
admin/server_version_command.cpp | server-version
publish/push_command.cpp | push
admin/build_commands.cpp | builds | build delete | build disable | build enable | build
admin/channel_commands.cpp | channels | channel create | channel delete | channel public
admin/channel_launch_command.cpp | channel launch list | channel launch add
admin/channel_launch_command.cpp | channel launch remove | channel launch primary
admin/channel_launch_command.cpp | channel launch clear
publish/promote_command.cpp | promote
admin/whoami_command.cpp | whoami
admin/user_commands.cpp | users
admin/token_command.cpp | token create
admin/user_commands.cpp | user create | user join-group | user leave-group | user follow
admin/user_commands.cpp | user unfollow | user disable | user enable | user delete | user set-role
admin/group_commands.cpp | groups
admin/invite_commands.cpp admin/invite.cpp | invite create | invite revoke | invites
account/login_command.cpp | login
admin/access_request_commands.cpp admin/invite.cpp | request-access | requests | request approve
admin/access_request_commands.cpp admin/invite.cpp | request decline
admin/license_commands.cpp | license request-trial | license | cloud portal
account/join_command.cpp | join
account/reconcile_command.cpp | reconcile
admin/group_commands.cpp | group create | group assign-channel | group unassign-channel
admin/group_commands.cpp | group delete
sync/sync_command.cpp | sync
cli/version_command.cpp | --version | version)");

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
        if (code.contains(QRegularExpression("((resolve|take|on)Server(Option)?\\(|onSubWord|"
                                             "runListCommand)|runListCommand|onSubWord"))) {
            options.insert("--server");
        }
    }
    return options;
}

}  // namespace

TEST(CommandTable, HoldsTheCommandsInTheOrderInWhichWordsAreCompared) {
    QStringList expected;
    for (const QStringList& source : kSources) {
        expected += source.mid(1);
    }
    QStringList words;
    for (const Command& row : commandTable()) {
        words.append(wordsOf(row));
    }
    EXPECT_EQ(words, expected);
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
         {"Config", "configs", "subscription", "subscription rename x", "server set-root url",
          "server set-root url path more", "server set-token url token more", "set-root url path",
          "channel rename x", "build", "--help", "", "subscription set-interval-x"}) {
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
        const auto source = std::find_if(
            kSources.begin(), kSources.end(),
            [&](const QStringList& files) { return files.mid(1).contains(wordsOf(row)); });
        ASSERT_NE(source, kSources.end()) << wordsOf(row).toStdString();
        shown[source->first()].merge(captured(usageOf(row), "(?<![\\w-])(--[a-z][a-z-]*)"));
    }
    for (const auto& [files, options] : shown) {
        EXPECT_EQ(options, optionsTaken(files)) << files.toStdString();
    }
    EXPECT_EQ(shown["sync/sync_command.cpp"].size(), 3U);
}

}  // namespace quorvelle::testing
