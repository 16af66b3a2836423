#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

#include "console/command.h"

/// The usage lines read back: which words and options a command line may hold. Help,
/// mistakes, completions and the manual page ask here, so that the lines are the one place
/// where they are written down.

namespace quorvelle {

/// One place of a command line.
struct Place {
    /// As the usage lines show it: "<name>", "eu|us|none", "<seconds|manual|default>".
    QString shown;
    /// The words that the lines spell out for it.
    QStringList words;
    /// Whether another word may stand there as well.
    bool takesAny = false;

    bool accepts(const QString& word) const { return takesAny || words.contains(word); }
};

struct FormOption {
    /// "--dir"
    QString name;
    /// What follows it; nothing for a switch.
    std::optional<Place> value;
    /// Whether the command line is incomplete without it.
    bool isNeeded = true;

    /// "--dir <path>"
    QString shown() const { return value ? name + u' ' + value->shown : name; }
};

/// One way to write a command line. Of "a (b | --c)" there are two.
struct UsageForm {
    /// The command's words first; none may be left out.
    QList<Place> places;
    /// May stand in any order behind the words, each once.
    QList<FormOption> options;
    /// Whether any further words may follow behind "--".
    bool takesRest = false;

    const FormOption* option(const QString& name) const;
    /// How many places in front have spelt-out words alone.
    qsizetype fixedPlaces() const;
};

/// A text of the table.
QString fromTable(std::string_view text);

/// The words that select a row of the table.
QStringList wordsOf(const Command& command);

/// The row whose usage lines show this command: itself, or an earlier one that covers it
/// ("disable|enable"), or one that does the same.
const Command& rowShowing(const Command& command, CommandTable table);

/// The usage lines of that row, each with its line end.
QString usageLines(const Command& command, CommandTable table);

/// The forms that a row's own usage lines show, without the program's name.
QList<UsageForm> usageForms(const Command& command);

}  // namespace quorvelle
