#include <QProcess>

#include "account/browser.h"

namespace quorvelle {

bool startBrowser(const QString& url) {
    QProcess opener;
    opener.setProgram(QStringLiteral("xdg-open"));
    opener.setArguments({url});
    // It outlives this process and would keep our streams open, and write into them.
    opener.setStandardInputFile(QProcess::nullDevice());
    opener.setStandardOutputFile(QProcess::nullDevice());
    opener.setStandardErrorFile(QProcess::nullDevice());
    return opener.startDetached();
}

}  // namespace quorvelle
