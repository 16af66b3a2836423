#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "server/server.h"

namespace quorvelle {

/// A word behind a command's own, told apart by the handler since options may stand
/// before it.
struct SubWord {
    QString word;
    /// Does the work with what follows the word; the options of the server are taken.
    int (*work)(const Server& server, QStringList& args);
    /// Whether anything may follow the word.
    bool takesArguments = false;
};

/// Resolves the server and hands on to the first argument's word; another word, or
/// arguments where none may follow, print the usage.
int onSubWord(QStringList args, const QList<SubWord>& words);

}  // namespace quorvelle
