#include "sync/browser.h"

#include <QUrl>

namespace quorvelle {

bool openBrowser(const QString& url) {
    const QUrl parsed(url);
    const bool isWeb =
        parsed.scheme() == QStringLiteral("http") || parsed.scheme() == QStringLiteral("https");
    return isWeb && parsed.isValid() && startBrowser(parsed.toString(QUrl::FullyEncoded));
}

}  // namespace quorvelle
