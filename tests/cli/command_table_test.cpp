#include "cli/command_table.h"

#include "cli/dispatch.h"
#include "console/output.h"
#include "console/usage.h"
#include "console/usage_forms.h"
#include "support/server_api_page.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

namespace {

/// Commands that take any further words for nothing, but no further options.
const QStringList kTakesAnything = {"backups",        "builds",        "channels", "cloud portal",
                                    "groups",         "invites",       "requests", "reconcile",
                                    "server-version", "subscriptions", "users",    "whoami"};

/// Commands that say of an empty name what they say of an unknown one.
const QStringList kOwnWords =
    QString(
        "login,push,run,unsubscribe,server set-root,subscription set-interval,"
        "subscription set-self-heal,license request-trial --name")
        .split(u',');

/// Options whose values are names.
const QStringList kNames = {"--build", "--name",  "--from", "--target",
                            "--user",  "--label", "--exe",  "--email"};

/// The command lines that the usage shows, with all their options, once for each of the words
/// "a|b": "user create <name> --role admin --service".
QStringList shownLines() {
    const auto choices = [](const Place& place) {
        return place.shown.startsWith(u'<') ? QStringList(place.shown) : place.words;
    };
    QStringList shown;
    for (const Command& row : commandTable()) {
        for (const UsageForm& form : usageForms(row)) {
            QList<QStringList> parts;
            for (const Place& place : form.places) {
                parts << choices(place);
            }
            for (const FormOption& option : form.options) {
                parts << QStringList(option.name);
                parts << (option.value ? choices(*option.value) : QStringList(""));
            }
            QStringList lines{""};
            for (const QStringList& part : parts) {
                QStringList longer;
                for (const QString& line : lines) {
                    for (const QString& word : part) {
                        longer << (line + u' ' + word).trimmed();
                    }
                }
                lines = longer;
            }
            shown += lines;
        }
    }
    return shown;
}

/// The words that such a line begins with.
QString fixedWords(const QString& line) {
    return line.section(QRegularExpression(" [<-]"), 0, 0);
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

TEST(CommandTable, ReachesAndDescribesEveryRow) {
    static const QRegularExpression lines("\\A((  quorvelle .*\n)( {12}[^ ].*\n)*)*\\z");
    for (const Command& row : commandTable()) {
        SCOPED_TRACE(row.words);
        const QStringList further(row.leastArguments, "x");
        EXPECT_EQ(findCommand(wordsOf(row) + further, commandTable()), &row);
        EXPECT_FALSE(row.summary.empty() || row.summary.ends_with('.'));
        EXPECT_TRUE(lines.match(fromTable(row.usage)).hasMatch()) << row.usage;
    }
}

/// Every row, and every spelling of the words that a command line begins with.
TEST(CommandTable, StandsInThePageOfJson) {
    QStringList commands;
    for (const Command& row : commandTable()) {
        commands << (row.words == "--version" ? "version" : fromTable(row.words));
    }
    for (const QString& line : shownLines()) {
        commands << fixedWords(line);
    }
    EXPECT_THAT(commands, ::testing::Contains("sso map group"));
    const QString page = DescribedRequest::page("docs/json.md");
    for (const QString& words : commands) {
        EXPECT_TRUE(
            page.contains(QRegularExpression("\\$ .*quorvelle " + words + "( .*)? --json\n\\{")))
            << words.toStdString();
    }
}

/// An option that a command does not take is one word too many.
TEST_F(CommandLines, TakeTheWordsAndOptionsThatAreShownAndNoOthers) {
    std::map<QString, QStringList> options;
    std::set<QString> everyOption;
    for (const QString& line : shownLines()) {
        const QStringList own = args(line).filter(QRegularExpression("^--"));
        options[fixedWords(line)] += own;
        everyOption.insert(own.begin(), own.end());
    }
    EXPECT_GT(everyOption.size(), 30U);
    for (const QString& line : shownLines()) {
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
            const bool isKnown = options[fixedWords(line)].contains(option) ||
                                 (line.startsWith("storage init") && option == "--token") ||
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
    for (const QString& line : shownLines()) {
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

}  // namespace quorvelle::testing
