#include <QProcess>

#include "account/browser.h"
#include "files/win32.h"

namespace quorvelle {

bool startBrowser(const QString& url) {
    QProcess interpreter;
    interpreter.setProgram(QString::fromStdWString(files::win32::systemProgram(L"cmd.exe")));
    // The empty argument is the window's title, for "start" takes its first quoted argument
    // as that. In quotes an "&" of the URL does not end the command; an encoded URL holds
    // no quotes of its own.
    interpreter.setNativeArguments(QStringLiteral("/c start \"\" \"%1\"").arg(url));
    return interpreter.startDetached();
}

}  // namespace quorvelle
