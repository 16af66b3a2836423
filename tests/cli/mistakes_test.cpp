#include <algorithm>

#include "cli/command_table.h"
#include "cli/dispatch.h"
#include "console/output.h"
#include "console/overview.h"
#include "console/terminal.h"
#include "console/usage.h"
#include "console/usage_forms.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

namespace {

/// A line that is refused, and what a person is told of it; "~" is an empty word.
const QString kMistakes = R"(
promote stable --form beta            | Unknown option '--form'. Did you mean '--from'?
promote stable                        | One of these is missing: <build-id>, --from <channel>.
promote stable b1 --from beta         | --from does not go with the rest.
promote a b c                         | 'c' is one word too many.
builds --sever x                      | Unknown option '--sever'. Did you mean '--server'?
builds --server=http://h              | Unknown option '--server=http://h'. Did you mean '--server http://h'?
sync -q                               | Unknown option '-q'.
user create bob --role boss           | 'boss' is none of admin, member, publisher.
user create bob --role ~              | '' is none of admin, member, publisher.
user create --role pubisher           | 'pubisher' is none of admin, member, publisher. Did you mean 'publisher'?
user create                           | <name> is missing.
user set-role bob Admin               | 'Admin' is none of admin, member, publisher. Did you mean 'admin'?
subscribe s c --dir                   | --dir needs a value: --dir <path>
push --channel live                   | <dir> is missing.
config remove server                  | 'remove' is none of list, get, set.
storage                               | One of these is missing: init, show, test, forget, set.
storage Show                          | 'Show' is none of init, show, test, forget, set. Did you mean 'show'?
sso map rolle boss admin              | 'rolle' is none of list, role, group, remove, default, claims. Did you mean 'role'?
sso map role boss root                | 'root' is none of admin, publisher, member.
backup schedule ~                     | '' may not fit <HH:MM|off>.
channel public a yes                  | 'yes' is none of true, false.
channel public a True                 | 'True' is none of true, false. Did you mean 'true'?
channel launch add a --exe e          | --label <l> is missing.
channel launch add --label l --exe e --primary a --args | --args needs a value: --args <a>
channel launch primary a b --clear    | --clear does not go with the rest.
request-access s --name x             | --email <addr> is missing.
subscribe s c --dir d --interval 1.5  | '1.5' may not fit <seconds|manual|default>.
subscribe s c --dir d --self-heal 1   | '1' is none of none, quick, full, default.
build delete --yes --server http://h  | <id> is missing.
build delete ~                        | '' is empty where something is due
build delete 7 --server --yes         | --server needs a value: --server <url>
build delete 7 --yse                  | Unknown option '--yse'. Did you mean '--yes'?
run -- app                            | <subscription> is missing.
run app --target -- x                 | 'x' is one word too many.
server set-root url                   | <path> is missing.
server set-token url token more       | 'more' is one word too many.
set-root url path                     | Unknown command 'set-root'.
configs                               | Unknown command 'configs'. Did you mean 'config'?
subscription set-interval-x           | Unknown command 'subscription set-interval-x'. Did you mean 'subscription set-interval'?
snyc                                  | Unknown command 'snyc'. Did you mean 'sync'?
Sync --name a                         | Unknown command 'Sync'. Did you mean 'sync'?
chanel create x                       | Unknown command 'chanel create'. Did you mean 'channel create'?
channel crate x                       | Unknown command 'channel crate'. Did you mean 'channel create'?
channel list                          | Unknown command 'channel list'.
channel launch                        | 'channel launch' alone is no command.
channel --server x                    | 'channel' alone is no command.
frobnicate                            | Unknown command 'frobnicate'.
go                                    | Unknown command 'go'.)";

struct Seen {
    int code;
    std::string out;
    std::string err;
};

/// Runs a line that does nothing at a terminal, in this process; "~" is an empty word.
Seen seen(const QString& line) {
    const ApiServer api;
    api.config.sandbox.writeConfig({{"schema_version", 2}, {"server", api.server.url()}});
    setUsageTable(commandTable());
    setTerminals([](std::FILE*) { return Terminal{.isThere = true}; });
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const int code =
        dispatch(QStringList("quorvelle") + args(line).replaceInStrings("~", ""), commandTable());
    setTerminals(nullptr);
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(api.server.lines().size(), 0U);
    EXPECT_EQ(api.config.sandbox.config().size(), 2);
    return {code, ::testing::internal::GetCapturedStdout(), err};
}

}  // namespace

TEST(Mistakes, AreNamedInOneLine) {
    for (const QStringList& row : rows(kMistakes)) {
        const Seen got = seen(row[0]);
        EXPECT_EQ(got.err, row.mid(1).join(u'|').toStdString() + '\n') << row[0].toStdString();
        EXPECT_EQ(got.code, 1);
    }
}

TEST(Mistakes, AreShownWithTheLinesOfTheCommandThatWasMeant) {
    for (const auto& [line, out] :
         {std::pair<QString, std::string>(
              "logni http://h",
              "  quorvelle login <server> [--install-root <path>] [--no-browser]\n"),
          {"unsubscribe a b", "  quorvelle unsubscribe <name>\n"},
          {"server set-token x", "  quorvelle server set-token <url> <token>\n"},
          {"subscription",
           "  quorvelle subscription set-interval <name> <seconds|manual|default>\n"
           "  quorvelle subscription set-self-heal <name> <none|quick|full|default>\n"
           "            Tide channels: check an up-to-date install against the manifest\n"},
          {"frobnicate", "  quorvelle            lists all commands\n"}}) {
        EXPECT_EQ(seen(line).out, out);
    }
}

TEST(Overview, ShowsEveryCommandInALineOf80Columns) {
    const QStringList lines = overviewText(commandTable()).split(u'\n');
    for (const Command& command : commandTable()) {
        const QString words = wordsOf(command).join(u' ');
        const auto begins = [&](const QString& line) {
            return line.startsWith("  " + words + "  ");
        };
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(), begins), words != "--version")
            << words.toStdString();
    }
    for (const QString& line : lines) {
        EXPECT_LE(line.size(), 79) << line.toStdString();
    }
    for (const char* line : {"", "--help", "-h", "help"}) {
        const Seen got = seen(line);
        EXPECT_EQ(got.code, 1) << line;
        EXPECT_EQ(got.out, overviewText(commandTable()).toStdString());
        EXPECT_EQ(got.err, "") << line;
    }
    EXPECT_EQ(seen("help token").out, seen("token create -h").out);
}

}  // namespace quorvelle::testing
