#include <gtest/gtest.h>

#include "cli/command_table.h"
#include "next_words.h"
#include "scripts.h"
#include "support/outcomes.h"

namespace quorvelle::testing {
namespace {

constexpr Command kTable[] = {
    {.words = "user disable",
     .summary = "stop a user's access",
     .usage = "  quorvelle user disable|enable <name>   a remark with words\n"
              "            [--server <url>] [--days <n>]\n"},
    {.words = "user enable"},
    {.words = "set", .usage = "  quorvelle set mode fast|slow <x> y\n  quorvelle set --all\n"},
    {.words = "--version", .summary = "print the version"},
};

std::string listed() {
    std::string text;
    for (const auto& [path, words] : nextWords(kTable)) {
        text += path + ':';
        for (const NextWord& next : words) {
            text += ' ' + next.word + (next.summary.empty() ? "" : "=" + next.summary);
        }
        text += '\n';
    }
    return text;
}

TEST(Completions, OfferTheWordsOfTheTable) {
    EXPECT_EQ(listed(),
              "quorvelle: set user --json --version=print the version\n"
              "quorvelle --version: --json\n"
              "quorvelle set: mode --all --json\n"
              "quorvelle set mode: fast slow --json\n"
              "quorvelle set mode fast: --json\n"
              "quorvelle set mode slow: --json\n"
              "quorvelle user: disable=stop a user's access enable --json\n"
              "quorvelle user disable: --days --json --server\n"
              "quorvelle user enable: --days --json --server\n");
}

TEST(Completions, AreOfferedByBash) {
    const char kComplete[] = R"(source ./quorvelle.bash
        complete -p quorvelle
        for line in "$@"; do
            read -ra COMP_WORDS <<<"$line"
            [[ $line != *' ' ]] || COMP_WORDS+=("")
            COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) COMPREPLY=(left over)
            _quorvelle
            echo "$line: ${COMPREPLY[*]}"
        done)";
    const Sandbox box;
    box.write("quorvelle.bash", QByteArray::fromStdString(bashScript(nextWords(commandTable()))));
    expectOutcome(
        box.runProgram("bash", {"-c", kComplete, "bash", "quorvelle us", "quorvelle config set ",
                                "quorvelle --json sync --f", "quorvelle user disable bob --",
                                "quorvelle channel launch ", "quorvelle nothing x"}),
        0,
        "complete -o default -F _quorvelle quorvelle\n"
        "quorvelle us: user users\n"
        "quorvelle config set : server token --json\n"
        "quorvelle --json sync --f: --force\n"
        "quorvelle user disable bob --: --json --server\n"
        "quorvelle channel launch : add clear list primary remove --json\n"
        "quorvelle nothing x: \n");
}

TEST(Completions, AreQuotedForTheOtherShells) {
    const NextWords words = nextWords(kTable);
    EXPECT_NE(zshScript(words).find(R"(disable:stop a user'\''s access)"), std::string::npos);
    EXPECT_NE(powerShellScript(words).find("'disable' = 'stop a user''s access'\n"),
              std::string::npos);
    EXPECT_NE(manualPage(kTable, "1.2").find("quorvelle set \\-\\-all\n"), std::string::npos);
}

}  // namespace
}  // namespace quorvelle::testing
