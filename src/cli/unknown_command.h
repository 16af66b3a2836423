#pragma once

#include <QString>
#include <QStringList>

#include "console/command.h"

namespace quorvelle {

/// The usage lines of all commands that begin with these words; empty where none does.
QString linesBelow(const QStringList& words, CommandTable table);

/// What a person is told whose words are no command.
struct UnknownCommand {
    /// One line: the words, and the command that was probably meant.
    QString mistake;
    /// The usage lines of that command, or of those that begin like it.
    QString lines;
};

UnknownCommand unknownCommand(const QStringList& typed, CommandTable table);

}  // namespace quorvelle
