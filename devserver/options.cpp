#include "options.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace quorvelle::devserver {

namespace {

constexpr int kWrongUsage = 1;

const QCommandLineOption kHelp(QStringLiteral("help"), QStringLiteral("Show this text."));
const QCommandLineOption kData(QStringLiteral("data"),
                               QStringLiteral("Folder of all state, made when it is missing."),
                               QStringLiteral("DIR"));
const QCommandLineOption kPort(QStringLiteral("port"),
                               QStringLiteral("Port on 127.0.0.1, 0 for any free one."),
                               QStringLiteral("N"), QStringLiteral("8420"));
const QCommandLineOption kTideChannel(
    QStringLiteral("tide-channel"),
    QStringLiteral("A channel of the engine tide to create; any number of times."),
    QStringLiteral("NAME"));
const QCommandLineOption kLog(QStringLiteral("log"),
                              QStringLiteral("Append a line per answered request to this file."),
                              QStringLiteral("FILE"));

/// What is wrong with what was parsed; empty when it says how to serve.
QString faultOf(const QCommandLineParser& parser) {
    if (!parser.positionalArguments().isEmpty()) {
        return QStringLiteral("unknown argument '%1'").arg(parser.positionalArguments().first());
    }
    for (const QString& name : parser.optionNames()) {
        if (parser.values(name).contains(QString())) {
            return QStringLiteral("--%1 needs a value").arg(name);
        }
    }
    if (!parser.isSet(kData)) {
        return QStringLiteral("--data is missing");
    }
    bool isNumber = false;
    parser.value(kPort).toUShort(&isNumber);
    return isNumber ? QString()
                    : QStringLiteral("--port needs a number from 0 to 65535, not '%1'")
                          .arg(parser.value(kPort));
}

}  // namespace

std::variant<Options, Ending> parseOptions() {
    QCommandLineParser parser;
    parser.addOptions({kHelp, kData, kPort, kTideChannel, kLog});
    const bool parsed = parser.parse(QCoreApplication::arguments());
    if (parser.isSet(kHelp)) {
        return Ending{parser.helpText()};
    }
    const QString fault = parsed ? faultOf(parser) : parser.errorText();
    if (!fault.isEmpty()) {
        return Ending{QStringLiteral("quorvelle-devserver: %1\n%2").arg(fault, parser.helpText()),
                      kWrongUsage};
    }
    return Options{parser.value(kData), parser.value(kPort).toInt(), parser.values(kTideChannel),
                   parser.value(kLog)};
}

}  // namespace quorvelle::devserver
