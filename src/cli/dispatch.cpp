#include "cli/dispatch.h"

#include <algorithm>

#include "config/config_file.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/question.h"
#include "console/usage.h"

namespace quorvelle {

namespace {

QStringList wordsOf(const Command& command) {
    return QString::fromUtf8(command.words.data(), qsizetype(command.words.size())).split(u' ');
}

bool matches(const Command& command, const QStringList& arguments) {
    const QStringList words = wordsOf(command);
    const qsizetype rest = arguments.size() - words.size();
    return rest >= command.leastArguments && rest <= command.mostArguments &&
           arguments.first(words.size()) == words;
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
    if (arguments.size() < 2) {
        return printUsage();
    }
    const QStringList typed = arguments.sliced(1);
    if (const Command* command = findCommand(typed, table)) {
        if (command->needsConfiguration && !config::hasFolder()) {
            printError(config::noHomeFolder());
            return kExitFailed;
        }
        QStringList rest = typed.sliced(wordsOf(*command).size());
        setAnsweredYes(command->asksFirst && takeFlag(rest, QStringLiteral("--yes")));
        return command->handler(std::move(rest));
    }
    printDiagnostic(QStringLiteral("Unknown command '%1'\n\n").arg(typed.first()));
    return printUsage();
}

}  // namespace quorvelle
