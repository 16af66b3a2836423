#include "account/browser.h"

#include <QUrl>

namespace quorvelle {

bool isWebUrl(const QString& url) {
    const QUrl parsed(url);
    return parsed.isValid() && !parsed.host().isEmpty() &&
           (parsed.scheme() == QStringLiteral("http") ||
            parsed.scheme() == QStringLiteral("https"));
}

bool openBrowser(const QString& url) {
    return isWebUrl(url) && startBrowser(QUrl(url).toString(QUrl::FullyEncoded));
}

}  // namespace quorvelle
