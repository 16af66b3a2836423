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

/// What was asked for instead of a server, or what is wrong with the command line: a text
/// for the terminal, and the exit code to end with.
struct Ending {
    QString text;
    int exitCode = 0;
};

/// Reads the command line that the application object holds.
std::variant<Options, Ending> parseOptions();

}  // namespace quorvelle::devserver
