#include "options.h"

#include <optional>

namespace quorvelle::devserver {
namespace {

/// Takes one option's value over; what is wrong with it comes back as a sentence.
std::optional<QString> take(const QString& name, const QString& value, Options& options) {
    if (name == "--data") {
        options.dataDir = value;
    } else if (name == "--log") {
        options.logFile = value;
    } else if (name == "--tide-channel") {
        options.tideChannels.append(value);
    } else {
        bool isNumber = false;
        options.port = value.toUShort(&isNumber);
        if (!isNumber) {
            return QString("--port needs a number from 0 to 65535, not '%1'").arg(value);
        }
    }
    return std::nullopt;
}

}  // namespace

std::variant<Options, QString> parseOptions(const QStringList& arguments) {
    Options options;
    for (qsizetype i = 0; i < arguments.size(); i += 2) {
        const QString& name = arguments[i];
        if (!QStringList{"--data", "--port", "--tide-channel", "--log"}.contains(name)) {
            return QString("unknown argument '%1'").arg(name);
        }
        if (i + 1 == arguments.size() || arguments[i + 1].isEmpty()) {
            return QString("%1 needs a value").arg(name);
        }
        if (const auto error = take(name, arguments[i + 1], options)) {
            return *error;
        }
    }
    if (options.dataDir.isEmpty()) {
        return QString("--data is missing");
    }
    return options;
}

}  // namespace quorvelle::devserver
