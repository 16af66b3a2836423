#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include "console/shown_text.h"

namespace quorvelle {

/// A command that shows what a server has of one kind, a line each.
struct ListCommand {
    /// The command's name in messages, and the key of the array in the reply.
    QString name;
    QString path;
    /// The first line; "%1" stands for the server. None of the lines carries a line end.
    QString heading;
    /// The line in its place where there is nothing.
    QString none;
    QString (*line)(const QJsonObject& thing) = nullptr;
    /// In its place where a thing may take more lines than one.
    Lines (*lines)(const QJsonObject& thing) = nullptr;
};

/// Runs it. Surplus words are ignored, see listOnServer().
int runListCommand(QStringList args, const ListCommand& command);

}  // namespace quorvelle
