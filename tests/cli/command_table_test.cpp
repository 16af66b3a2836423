#include "cli/command_table.h"

#include <gmock/gmock.h>

#include <QRegularExpression>

#include "cli/dispatch.h"
#include "console/output.h"
#include "console/usage.h"
#include "console/usage_forms.h"
#include "support/notation.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

namespace {

/// Commands that take any further words for nothing, but no further options.
const QStringList kTakesAnything = {"backups",        "builds",        "channels", "cloud portal",
                                    "groups",         "invites",       "requests", "reconcile",
                                    "server-version", "subscriptions", "users",    "whoami"};

/// Commands that say of an empty name what they say of an unknown one.
const QStringList kOwnWords = {"login",
                               "push",
                               "run",
                               "unsubscribe",
                               "server set-root",
                               "subscription set-interval",
                               "subscription set-self-heal",
                               "license request-trial --name"};

/// Options whose values are names.
const QStringList kNames = {"--build", "--name",  "--from", "--target",
                            "--user",  "--label", "--exe",  "--email"};

QStringList usageLinesOf(const Command& row) {
    return QString::fromUtf8(row.usage.data(), qsizetype(row.usage.size())).split(u'\n');
}

/// The line once for each of the alternatives "(a | b)", "[a | b]" and "a|b" in it.
QStringList alternatives(const QString& line) {
    static const QRegularExpression group(R"([(\[]([^()\[\]]*) \| ([^()\[\]]*)[)\]])");
    static const QRegularExpression words(R"((?<![<\w|-])([\w-]+)\|([\w|-]+))");
    for (const QRegularExpression& either : {group, words}) {
        const QRegularExpressionMatch found = either.match(line);
        if (found.hasMatch()) {
            const auto with = [&](int which) {
                return alternatives(QString(line).replace(
                    found.capturedStart(), found.capturedLength(), found.captured(which)));
            };
            return with(1) + with(2);
        }
    }
    return {line};
}

std::set<QString> optionsIn(const QString& line) {
    static const QRegularExpression option("--[a-z][a-z-]*");
    std::set<QString> found;
    for (auto matches = option.globalMatch(line); matches.hasNext();) {
        found.insert(matches.next().captured());
    }
    return found;
}

/// A form of a command line that the usage shows, "user create <name> --role admin --service",
/// and every option of that line, also of its other forms.
struct Shown {
    QString line;
    std::set<QString> options;
};

std::vector<Shown> shownLines() {
    static const QRegularExpression option(R"(\[((?:(?! \| )[^\[\]])*)\])");
    std::vector<Shown> shown;
    for (const Command& row : commandTable()) {
        QStringList lines;
        for (const QString& line : usageLinesOf(row)) {
            const QString text = line.trimmed().section("  ", 0, 0).section(" [-- ", 0, 0);
            if (line.startsWith("  quorvelle ")) {
                lines.append(text.section(u' ', 1));
            } else if (text.startsWith(u'[') || text.startsWith(u'-')) {
                lines.last() += u' ' + text;
            }
        }
        for (QString& line : lines) {
            for (const QString& form : alternatives(line.replace(option, "\\1"))) {
                shown.push_back({form, optionsIn(line)});
            }
        }
    }
    return shown;
}

/// The words without the last one that is no option and no option's value.
QStringList withoutLastPositional(QStringList words) {
    for (qsizetype at = words.size() - 1; at > 0; --at) {
        if (!words[at].startsWith("--") && !words[at - 1].startsWith("--")) {
            words.removeAt(at);
            break;
        }
    }
    return words;
}

/// Runs command lines in this process, each with a configuration of its own.
struct CommandLines : ::testing::Test {
    CommandLines() { setUsageTable(commandTable()); }

    /// What a user types for the line: a value in the place of each "<...>".
    QStringList typed(QString line) const {
        static const QRegularExpression choice(R"(<[^<>]*\|([\w-]+)>)");
        static const QRegularExpression value("<[^<>]*>");
        line.replace("<url>", api.server.url()).replace("<server>", api.server.url());
        return args(line.replace(choice, "\\1").replace(value, "1"));
    }
    /// What a line prints that does nothing: no request, exit code 1. Else "(done)".
    std::string printedForNothing(const QStringList& words) {
        api.server.forget();
        api.config.sandbox.writeConfig({{"schema_version", 2}, {"server", api.server.url()}});
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int code = dispatch(QStringList("quorvelle") + words, commandTable());
        setJsonMode(false);
        ::testing::internal::GetCapturedStderr();
        const std::string printed = ::testing::internal::GetCapturedStdout();
        return code == 1 && api.server.lines().empty() ? printed : "(done)";
    }
    bool isRefused(const QStringList& words) { return printedForNothing(words) == usage; }

    const std::string usage = usageText(commandTable()).toStdString();
    ApiServer api;
    ScopedVariable cloudflare{"QUORVELLE_CLOUDFLARE_API_URL", api.server.url().toUtf8()};
    ScopedVariable trial{"QUORVELLE_TRIAL_URL", api.server.url().toUtf8()};
};

}  // namespace

TEST(CommandTable, ReachesEveryRow) {
    for (const Command& row : commandTable()) {
        SCOPED_TRACE(row.words);
        QStringList words = wordsOf(row);
        for (int i = 0; i < row.leastArguments; ++i) {
            words.append("x");
        }
        EXPECT_EQ(findCommand(words, commandTable()), &row);
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
        SCOPED_TRACE(row.words);
        EXPECT_FALSE(row.summary.empty());
        EXPECT_FALSE(row.summary.ends_with('.'));
        QStringList lines = usageLinesOf(row);
        EXPECT_EQ(lines.takeLast(), QString()) << "the last line has no end";
        for (const QString& line : lines) {
            EXPECT_TRUE(line.startsWith("  quorvelle ") ||
                        (line.startsWith(QString(12, u' ')) && line.at(12) != u' '))
                << line.toStdString();
        }
        EXPECT_TRUE(lines.isEmpty() || lines.first().startsWith("  quorvelle "));
    }
}

/// An option that a command does not take is one word too many.
TEST_F(CommandLines, TakeTheWordsAndOptionsThatAreShownAndNoOthers) {
    const std::vector<Shown> shown = shownLines();
    std::set<QString> everyOption;
    for (const Shown& form : shown) {
        everyOption.insert(form.options.begin(), form.options.end());
    }
    EXPECT_GT(everyOption.size(), 30U);
    for (const auto& [line, options] : shown) {
        SCOPED_TRACE(line.toStdString());
        const QStringList words = typed(line);
        const Command* row = findCommand(words, commandTable());
        ASSERT_NE(row, nullptr);
        const QString command = wordsOf(*row).join(u' ');
        // A sign-in would wait for the browser.
        EXPECT_TRUE(command == "login" || !isRefused(words));
        if (command == "version" || line == "config list") {
            continue;
        }
        const bool isList = kTakesAnything.contains(command);
        if (!isList && line.section(" --", 0, 0) != command) {
            EXPECT_TRUE(isRefused(withoutLastPositional(words))) << "a word too few";
        }
        EXPECT_NE(isRefused(words + QStringList("surplus")), isList);
        for (const QString& option : everyOption) {
            // Told apart, to be refused in words of their own.
            const bool isKnown = options.count(option) > 0 ||
                                 (line.startsWith("storage init") && option == "--token") ||
                                 line.startsWith("backup init --shared") ||
                                 (row->asksFirst && option == "--yes") ||
                                 (isList && option == "--token");
            EXPECT_TRUE(isKnown || (isList && option == "--server") ||
                        isRefused(words + QStringList(option)))
                << option.toStdString();
            EXPECT_TRUE(isKnown || isRefused(words + QStringList{option, "1"}))
                << option.toStdString();
        }
    }
}

/// As an unset variable of a shell leaves them.
TEST_F(CommandLines, RefuseEmptyNamesAndServers) {
    for (const auto& [line, options] : shownLines()) {
        if (line.startsWith("config ")) {
            continue;
        }
        const QStringList words = typed(line);
        const QString command = wordsOf(*findCommand(words, commandTable())).join(u' ');
        for (qsizetype at = command.count(u' ') + 1; at < words.size(); ++at) {
            const bool isValue = words[at - 1].startsWith("--");
            const bool isServer =
                words[at] == api.server.url() && (!isValue || words[at - 1] == "--server");
            const bool isOwn =
                kOwnWords.contains(isValue ? command + u' ' + words[at - 1] : command);
            QStringList empty = words;
            empty[at] = "";
            SCOPED_TRACE(empty.join(u' ').toStdString());
            if (words[at - 1] == "--server") {
                EXPECT_FALSE(isRefused(empty)) << "counts as none";
            } else if (!words[at].startsWith("--") && args(line)[at] != "<token>" &&
                       (!isValue || kNames.contains(words[at - 1]))) {
                EXPECT_TRUE(isRefused(empty) || isOwn);
                EXPECT_THAT(api.server.lines(), ::testing::IsEmpty());
            }
            if (isServer && command != "sync" && !line.startsWith("storage init")) {
                empty[at] = "//";
                EXPECT_TRUE(isRefused(empty) || isOwn);
            }
        }
    }
}

TEST_F(CommandLines, ShowTheCommandsOwnLinesForHelpAndDoNothing) {
    for (const Command& row : commandTable()) {
        SCOPED_TRACE(row.words);
        const std::string lines = usageLines(row, commandTable()).toStdString();
        EXPECT_NE(lines, "");
        for (const char* line : {"--help", "x -h", "x y --json --help z"}) {
            EXPECT_EQ(printedForNothing(wordsOf(row) + args(line)), lines) << line;
        }
    }
    EXPECT_EQ(usageLines(*findCommand(args("user enable"), commandTable()), commandTable()),
              "  quorvelle user disable|enable <user> [--server <url>]\n");
    EXPECT_EQ(printedForNothing(args("channel create -- --help")), usage);
    EXPECT_EQ(printedForNothing(args("channel launch add c --label --help --exe x")), "(done)");
    EXPECT_EQ(printedForNothing(args("channel --help")), usage);
}

/// Words in the right number; "~" stands for an empty one.
TEST_F(CommandLines, RefuseWrongWords) {
    for (const QStringList& row : rows(R"(
channel public a yes | channel public a True | channel launch add a --label l
channel launch add a --exe e | channel launch add --label l --exe e --primary a --args
channel launch primary a b --clear | user create x --role owner | user create x --role Admin
user create x --role ~ | user set-role x owner | token create t
invite create x y --days 0 | request-access s --name x | request-access s --email x@a
promote live b --from dev | storage Show | sso map role boss root | backup schedule ~
config remove server | subscribe http://n c | subscribe http://n c --dir x --interval 1.5
subscribe http://n c --dir x --self-heal 1 | run -- app | run app --target -- x)")) {
        for (const QString& line : row) {
            SCOPED_TRACE(line.toStdString());
            EXPECT_TRUE(isRefused(args(line).replaceInStrings("~", "")));
            EXPECT_EQ(api.config.sandbox.config().size(), 2) << "something was saved";
        }
    }
}

}  // namespace quorvelle::testing
