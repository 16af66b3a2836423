#pragma once

#include <QString>
#include <QStringList>
#include <variant>

namespace quorvelle::devserver {

/// How the server was asked to run. Port 0 stands for any free port, an empty log
/// file for none.
struct Options {
    QString dataDir;
    int port = 8420;
    QStringList tideChannels = {};
    QString logFile = {};
};

/// Reads the command line without the program's name. The alternative is a
/// sentence that says what is wrong with it.
std::variant<Options, QString> parseOptions(const QStringList& arguments);

}  // namespace quorvelle::devserver
