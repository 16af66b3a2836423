#include "cli/unknown_command.h"

#include <algorithm>

#include "console/nearest_word.h"
#include "console/usage_forms.h"

namespace quorvelle {

namespace {

bool beginsWith(const QStringList& words, const QStringList& beginning) {
    return words.size() >= beginning.size() && words.first(beginning.size()) == beginning;
}

/// The words of a command, or the first ones of several, with what was typed in their place.
struct Guess {
    QStringList meant;
    qsizetype slips = 0;
};

/// How the typed words have to be changed to be these; nothing when they are not near.
std::optional<Guess> guess(const QStringList& typed, const QStringList& meant) {
    Guess guess{.meant = meant};
    for (qsizetype at = 0; at < meant.size(); ++at) {
        if (!isNear(typed.at(at), meant.at(at))) {
            return std::nullopt;
        }
        guess.slips += slips(typed.at(at), meant.at(at));
    }
    return guess;
}

/// The nearest of all beginnings of commands, the longer the better.
Guess bestGuess(const QStringList& typed, CommandTable table) {
    Guess best;
    for (const Command& command : table) {
        const QStringList words = wordsOf(command);
        for (qsizetype size = 1; size <= std::min(words.size(), typed.size()); ++size) {
            const std::optional<Guess> next = guess(typed, words.first(size));
            const auto isBetter = [&] {
                return size > best.meant.size() ||
                       (size == best.meant.size() && next->slips < best.slips);
            };
            if (next && isBetter()) {
                best = *next;
            }
        }
    }
    return best;
}

QString linesOf(const QStringList& words, CommandTable table) {
    const auto found = std::find_if(table.begin(), table.end(), [&](const Command& command) {
        return wordsOf(command) == words;
    });
    return found == table.end() ? linesBelow(words, table) : usageLines(*found, table);
}

}  // namespace

QString linesBelow(const QStringList& words, CommandTable table) {
    QString lines;
    for (const Command& command : table) {
        if (!words.isEmpty() && beginsWith(wordsOf(command), words)) {
            const QString own = usageLines(command, table);
            lines += lines.contains(own) ? QString() : own;
        }
    }
    return lines;
}

UnknownCommand unknownCommand(const QStringList& typed, CommandTable table) {
    const QString unknown = QStringLiteral("Unknown command '%1'.");
    const QStringList meant = bestGuess(typed, table).meant;
    if (meant.isEmpty()) {
        return {.mistake = unknown.arg(typed.first()),
                .lines = QStringLiteral("  quorvelle            lists all commands\n")};
    }
    const QString lines = linesOf(meant, table);
    if (typed.first(meant.size()) != meant) {
        return {.mistake = unknown.arg(typed.first(meant.size()).join(u' ')) +
                           didYouMean(meant.join(u' ')),
                .lines = lines};
    }
    const bool endsThere = typed.size() == meant.size() || typed.at(meant.size()).startsWith(u'-');
    return {.mistake = endsThere ? QStringLiteral("'%1' alone is no command.").arg(meant.join(u' '))
                                 : unknown.arg(typed.first(meant.size() + 1).join(u' ')),
            .lines = lines};
}

}  // namespace quorvelle
