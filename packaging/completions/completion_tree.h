#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <map>
#include <optional>

#include "cli/option_table.h"
#include "console/command.h"

/// The command lines of the table as a tree that a shell can walk, word by word.

namespace quorvelle {

/// A word that may come next, with a phrase that says what it does; words that open a group
/// of commands and literal arguments have none.
struct NextWord {
    QString word;
    QString summary = {};
};

/// What to offer where a value is due.
struct Offer {
    QStringList words;
    Takes takes = Takes::kAnything;
};

struct CompletionOption {
    QString name;
    QString text;
    /// What is offered behind it; nothing for a switch.
    std::optional<Offer> value;
    /// The options beside which it cannot stand.
    QStringList excludedBy;
};

/// What may follow some words of a command line.
struct CompletionNode {
    QList<NextWord> words;
    /// The place that takes other words too, "<server>"; empty where none may stand.
    QString place;
    Takes takes = Takes::kAnything;
    /// Whether a command may end here, so that no further word is due.
    bool isComplete = false;
    QList<CompletionOption> options;
    /// Whether any words may follow behind "--".
    bool takesRest = false;
};

/// Keys are the words that lead to the node, "quorvelle" first, with a "<name>" where any
/// word stood: "quorvelle channel public <name> true".
using CompletionTree = std::map<QString, CompletionNode>;

/// Reads the tree from the rows' words and usage lines, and what the option table adds.
CompletionTree completionTree(CommandTable table);

/// The options that may stand behind any command.
QList<NextWord> globalOptions();

}  // namespace quorvelle
