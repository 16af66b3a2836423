#include "cli/dispatch.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "cli/unknown_command.h"
#include "config/config_file.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/overview.h"
#include "console/question.h"
#include "console/terminal.h"
#include "console/usage.h"
#include "console/usage_forms.h"

namespace quorvelle {

namespace {

bool isNamed(const Command& command, const QStringList& typed) {
    const QStringList words = wordsOf(command);
    return typed.size() >= words.size() && typed.first(words.size()) == words;
}

bool matches(const Command& command, const QStringList& typed) {
    const qsizetype rest = typed.size() - wordsOf(command).size();
    return rest >= command.leastArguments && rest <= command.mostArguments &&
           isNamed(command, typed);
}

/// The first row whose words begin what was typed, whatever follows them.
const Command* findNamed(const QStringList& typed, CommandTable table) {
    const auto found = std::find_if(table.begin(), table.end(), [&](const Command& command) {
        return isNamed(command, typed);
    });
    return found == table.end() ? nullptr : &*found;
}

bool asksForHelp(const QString& word) {
    return word == u"--help" || word == u"-h";
}

/// Whether a command line of these forms asks for help: not behind "--", nor where a value
/// is due.
bool asksForHelp(const QStringList& words, const QList<UsageForm>& forms) {
    for (qsizetype at = 0; at < words.size() && words.at(at) != u"--"; ++at) {
        if (asksForHelp(words.at(at))) {
            return true;
        }
        const auto takesNext = [&](const UsageForm& form) {
            const FormOption* option = form.option(words.at(at));
            return option != nullptr && option->value;
        };
        at += std::any_of(forms.begin(), forms.end(), takesNext) ? 1 : 0;
    }
    return false;
}

/// Helps a person who asked before any whole command: "help", "help user", "user --help".
/// Nothing when no help was asked for.
std::optional<int> helpPerson(const QStringList& typed, CommandTable table) {
    const bool asksFirst =
        typed.isEmpty() || typed.first() == u"help" || asksForHelp(typed.first());
    const bool asksLast = !asksFirst && asksForHelp(typed.last());
    const QString lines = linesBelow(asksLast    ? typed.first(typed.size() - 1)
                                     : asksFirst ? typed.mid(1)
                                                 : QStringList(),
                                     table);
    if (!lines.isEmpty()) {
        return printHelp(lines);
    }
    if (!asksFirst) {
        return std::nullopt;
    }
    print(overviewText(table));
    return kExitUsage;
}

int reportUnknown(const QStringList& typed, CommandTable table) {
    if (!terminalOf(stderr).isThere) {
        printDiagnostic(QStringLiteral("Unknown command '%1'\n\n").arg(typed.first()));
    }
    if (const Command* named = findNamed(typed, table)) {
        setTypedLine(*named, typed);
        return printUsage();
    }
    const UnknownCommand unknown = unknownCommand(typed, table);
    if (terminalOf(stderr).isThere) {
        printDiagnostic(Lines{unknown.mistake});
    }
    if (!terminalOf(stdout).isThere) {
        return printUsage();
    }
    print(unknown.lines);
    return kExitUsage;
}

}  // namespace

const Command* findCommand(const QStringList& typed, CommandTable table) {
    const auto found = std::find_if(table.begin(), table.end(), [&](const Command& command) {
        return matches(command, typed);
    });
    return found == table.end() ? nullptr : &*found;
}

int dispatch(QStringList arguments, CommandTable table) {
    setJsonMode(takeFlag(arguments, QStringLiteral("--json")));
    const QStringList typed = arguments.mid(1);
    if (const Command* named = findNamed(typed, table)) {
        const QStringList rest = typed.sliced(wordsOf(*named).size());
        if (asksForHelp(rest, usageForms(rowShowing(*named, table)))) {
            return printHelp(usageLines(*named, table));
        }
    } else if (terminalOf(stdout).isThere) {
        if (const std::optional<int> code = helpPerson(typed, table)) {
            return *code;
        }
    }
    if (typed.isEmpty()) {
        return printUsage();
    }
    const Command* command = findCommand(typed, table);
    if (command == nullptr) {
        return reportUnknown(typed, table);
    }
    if (command->needsConfiguration && !config::hasFolder()) {
        printError(config::noHomeFolder());
        return kExitFailed;
    }
    QStringList rest = typed.sliced(wordsOf(*command).size());
    setAnsweredYes(command->asksFirst && takeFlag(rest, QString::fromLatin1(kYesOption)));
    // Without the answer, which would pass for the value of an option before it.
    setTypedLine(*command, wordsOf(*command) + rest);
    return command->handler(std::move(rest));
}

}  // namespace quorvelle
