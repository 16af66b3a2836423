#include "admin/shown_once.h"

#include "console/exit_code.h"
#include "console/output.h"

namespace quorvelle {

int finishShownOnce(const Reply& reply, const QString& key, const Lines& text) {
    if (!reply.ok) {
        return kExitFailed;
    }
    printResult(reply.object, text, Kept::kAlways);
    const QByteArray body = reply.body.trimmed();
    if (!jsonMode() && !body.isEmpty() && reply.object.value(key).toString().isEmpty()) {
        printDiagnostic(Lines{QString::fromUtf8(body)});
    }
    return kExitSuccess;
}

}  // namespace quorvelle
