#include <gtest/gtest.h>

#include "next_words.h"
#include "scripts.h"

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

TEST(Completions, AreQuotedAsEachShellReadsThem) {
    const NextWords words = nextWords(kTable);
    EXPECT_NE(bashScript(words).find("  ['quorvelle set mode']='fast slow --json'\n"),
              std::string::npos);
    EXPECT_NE(zshScript(words).find(R"(disable:stop a user'\''s access)"), std::string::npos);
    EXPECT_NE(powerShellScript(words).find("'disable' = 'stop a user''s access'\n"),
              std::string::npos);
    EXPECT_NE(manualPage(kTable, "1.2").find("quorvelle set \\-\\-all\n"), std::string::npos);
}

}  // namespace
}  // namespace quorvelle::testing
