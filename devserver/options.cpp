#include "options.h"

namespace quorvelle::devserver {

std::variant<Options, QString> parseOptions(const QStringList& arguments) {
    Options options;
    for (qsizetype i = 0; i < arguments.size(); i += 2) {
        const QString& name = arguments[i];
        if (name != "--data" && name != "--port") {
            return QString("unknown argument '%1'").arg(name);
        }
        if (i + 1 == arguments.size() || arguments[i + 1].isEmpty()) {
            return QString("%1 needs a value").arg(name);
        }
        const QString& value = arguments[i + 1];
        if (name == "--data") {
            options.dataDir = value;
            continue;
        }
        bool isNumber = false;
        options.port = value.toUShort(&isNumber);
        if (!isNumber) {
            return QString("--port needs a number from 0 to 65535, not '%1'").arg(value);
        }
    }
    if (options.dataDir.isEmpty()) {
        return QString("--data is missing");
    }
    return options;
}

}  // namespace quorvelle::devserver
