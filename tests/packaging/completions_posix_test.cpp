#include <QStandardPaths>
#include <set>

#include "cli/command_table.h"
#include "cli/option_table.h"
#include "console/usage_forms.h"
#include "support/process_runner.h"
#include "support/server_api_page.h"

namespace quorvelle::testing {

namespace {

/// What is typed, the last word perhaps not to its end ("~" for its beginning), and the words
/// that are offered for that, in alphabetical order.
const QString kOffered = R"(
us                                         | user,users
config set ~                               | server,token
config set token ~                         |
--json config g                            | get
channel launch ~                           | add,clear,list,primary,remove
unsubscribe ~                              | live,my app's
run ~                                      | live,my app's
run live ~                                 | --target,--wait
run live -- bu                             | build.txt,builds
sync --name l                              | live
sync ~                                     | --force,--name,--server
sync --name live ~                         | --force
sync --name live -                         | --force,--help,--json
sync --force --server http://127.0.0.1:    | http://127.0.0.1:1
subscribe http://h:1 live --self-heal ~    | default,full,none,quick
subscribe http://h:1 live --dir bu         | builds
subscribe http://h:1 live --dir a --inter  | --interval
subscription set-interval live ~           | default,manual
push bu                                    | builds
promote live ~                             | --from,--server
promote --from live ~                      |
channel public live ~                      | false,true
user create bob --role ~                   | admin,member,publisher
user enable bob extra ~                    |
backup init --shared -                     | --help,--json,--server
storage init --token-file bu               | build.txt,builds
sso map default p                          | publisher
build delete 1 ~                           | --server
nothing ~                                  |)";

/// Writes the words that it is called with, separated by commas.
const char kProgram[] = R"(#!/bin/sh
[ "$1" != subscriptions ] || exec "$REAL" "$@"
IFS=,
echo "$*" >>"$RESULTS")";

// Both shells put all that they would offer into the line, which is then run.
const char kBash[] = R"(source "$COMPLETIONS/quorvelle.bash"
bind '"\C-t": insert-completions'
)";

const char kZsh[] = R"(zmodload zsh/zpty
zpty z zsh -f -i
zpty -w z "fpath=($COMPLETIONS \$fpath); autoload -Uz compinit; compinit -u -d zdump"
zpty -w z "zstyle ':completion:*' completer _all_matches _complete"
zpty -w z "zstyle ':completion:*' insert true; bindkey '^T' complete-word; echo all set"
while zpty -r z line; do [[ $line = all\ set* ]] && break; done
while read -r line; do zpty -w -n z "$line"$'\n'; done <lines
zpty -w z exit
while zpty -r z; do done
true)";

const char kFish[] = R"(source "$COMPLETIONS/quorvelle.fish"
while read line
    echo (complete -C (string sub -e -1 -- $line) | string replace -r '\t.*' '' | string join ,) >>$RESULTS
end <lines)";

struct Completions : ::testing::Test {
    Completions() {
        box.write("bin/quorvelle", kProgram);
        QFile::setPermissions(box.path("bin/quorvelle"), QFile::ReadOwner | QFile::ExeOwner);
        box.environment.insert("PATH", box.path("bin:") + box.environment.value("PATH"));
        box.environment.insert("REAL", quorvelleProgram());
        box.environment.insert("RESULTS", box.path("results"));
        box.environment.insert("COMPLETIONS", QUORVELLE_COMPLETIONS);
        box.environment.insert("TERM", "dumb");
        for (const char* name : {"live", "my app's"}) {
            box.run({"subscribe", "http://127.0.0.1:1", "live", "--dir", name, "--name", name});
        }
        QDir().mkpath(box.path("builds"));
        box.write("build.txt", "");
        box.write("results", "");
    }

    QString typed(const QStringList& row) const {
        return "quorvelle " + QString(row[0]).remove('~');
    }

    /// Runs the shell, told the lines with Ctrl-T at their ends, and compares.
    void check(const QString& shell, const QStringList& arguments, const char* script) {
        if (QStandardPaths::findExecutable(shell).isEmpty()) {
            GTEST_SKIP() << shell.toStdString() << " is not installed";
        }
        QByteArray lines;
        for (const QStringList& row : rows(kOffered)) {
            lines += typed(row).toUtf8() + "\x14\n";
        }
        box.write("lines", lines);
        box.write("script", script + QByteArray(shell == "bash" ? lines : ""));
        const Outcome outcome = box.runProgram(shell, arguments);
        const QStringList results = QString::fromUtf8(box.read("results")).split(u'\n');
        const QList<QStringList> expected = rows(kOffered);
        ASSERT_EQ(results.size(), expected.size() + 1) << outcome.err.toStdString();
        for (qsizetype at = 0; at < expected.size(); ++at) {
            const QString before = typed(expected[at]).section(u' ', 1, -2);
            QStringList words = results[at].split(u',', Qt::SkipEmptyParts);
            if (shell != "fish") {
                words = words.mid(args(before).size());
            }
            words.replaceInStrings(QRegularExpression("/$"), "");
            words.sort();
            EXPECT_EQ(words.join(u','), expected[at][1]) << expected[at][0].toStdString();
        }
    }

    Sandbox box;
};

}  // namespace

TEST_F(Completions, AreOfferedByBash) {
    check("bash", {"-c", "bash --norc --noprofile -i <script"}, kBash);
}

TEST_F(Completions, AreOfferedByZsh) {
    check("zsh", {"-f", "script"}, kZsh);
}

TEST_F(Completions, AreOfferedByFish) {
    check("fish", {"--no-config", "script"}, kFish);
}

TEST(OptionTable, ExplainsWhatTheUsageLinesShowAndNothingElse) {
    std::set<const OptionText*> explained{findOptionText({}, "--help"),
                                          findOptionText({}, "--json")};
    std::set<std::string> places;
    for (const Command& command : commandTable()) {
        for (const UsageForm& form : usageForms(command)) {
            for (const FormOption& option : form.options) {
                const std::string shown = option.shown().toStdString();
                explained.insert(findOptionText(command.words, shown));
                EXPECT_NE(findOptionText(command.words, shown), nullptr) << shown;
            }
            for (const Place& place : form.places) {
                places.insert(place.shown.toStdString());
                places.insert(std::string(command.words) + ' ' + place.shown.toStdString());
            }
        }
    }
    for (const OptionText& text : optionTexts()) {
        EXPECT_EQ(explained.count(&text), 1U) << text.option;
    }
    for (const PlaceMeaning& meaning : placeMeanings()) {
        EXPECT_EQ(places.count(std::string(meaning.place)), 1U) << meaning.place;
    }
}

TEST(ManualPage, IsWellFormedAndNamesTheVariablesOfTheReadme) {
    const QString page = QUORVELLE_COMPLETIONS "/quorvelle.1";
    QFile file(page);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(file.readAll()).remove(u'\\');
    static const QRegularExpression kVariable("[A-Z]+[0-9]*_[A-Z0-9_]+");
    int found = 0;
    const QString readme = DescribedRequest::page("README.md");
    for (const auto& name : kVariable.globalMatch(readme.section("\n## Environment\n", 1))) {
        EXPECT_TRUE(manual.contains(name.captured())) << name.captured().toStdString();
        ++found;
    }
    EXPECT_GT(found, 10);
    if (QStandardPaths::findExecutable("mandoc").isEmpty()) {
        GTEST_SKIP() << "mandoc is not installed";
    }
    expectOutcome(Sandbox().runProgram("mandoc", {"-T", "lint", page}), 0, "");
}

}  // namespace quorvelle::testing
