#include "admin/sub_words.h"

#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

int onSubWord(QStringList args, const QList<SubWord>& words) {
    return onServer(std::move(args), [&](const Server& server, QStringList& rest) {
        const QString typed = rest.isEmpty() ? QString() : rest.takeFirst();
        for (const SubWord& known : words) {
            if (known.word == typed && (known.takesArguments || rest.isEmpty())) {
                return known.work(server, rest);
            }
        }
        return printUsage();
    });
}

}  // namespace quorvelle
