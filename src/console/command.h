#pragma once

#include <QStringList>
#include <limits>
#include <span>
#include <string_view>

namespace quorvelle {

/// A command's work: takes the arguments after the command words, returns the
/// exit code. Handlers throw nothing.
using Handler = int (*)(QStringList args);

inline constexpr int kAnyNumber = std::numeric_limits<int>::max();

/// What a command is about; the overview and the manual page show the commands by it.
enum class Group { kInstalls, kServers, kPublishing, kPeople, kService, kProgram };

/// One row of the command table, from which dispatch, usage text, manual page
/// and completions are made.
struct Command {
    /// The words that select the row, separated by one blank: "server set-root".
    std::string_view words = {};
    /// How many arguments must follow the words for the row to match, at least
    /// and at most; a count outside makes the words an unknown command. A handler
    /// that checks its own count leaves this wide.
    int leastArguments = 0;
    int mostArguments = kAnyNumber;
    Handler handler = nullptr;
    /// Whether a person is asked before anything is done (confirmed()); the command then
    /// takes "--yes" for the answer, which its usage lines do not name.
    bool asksFirst = false;
    /// Whether the command works on the configuration, so that it cannot run where none can
    /// be.
    bool needsConfiguration = true;
    Group group = Group::kProgram;
    /// One phrase for the overview, the manual and the completions, no full stop.
    std::string_view summary = {};
    /// The row's lines of the usage text, verbatim, each with its line end. Empty
    /// when an earlier row's lines cover this one ("disable|enable").
    std::string_view usage = {};
};

using CommandTable = std::span<const Command>;

}  // namespace quorvelle
