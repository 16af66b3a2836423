#include "sync/safe_path.h"

#include <QStringList>
#include <algorithm>

#include "tide/safe_path.h"

namespace quorvelle {

namespace {

constexpr qsizetype kMostCharacters = 1024;

}  // namespace

bool isSafeRelativePath(const QString& path) {
    if (path.isEmpty() || path.size() > kMostCharacters || path.contains(u'\\') ||
        path.startsWith(u'/')) {
        return false;
    }
    const QStringList parts = path.split(u'/');
    return std::none_of(parts.begin(), parts.end(), [](const QString& part) {
        return part.isEmpty() || part == u"." || part == u"..";
    });
}

bool staysInside(const QString& safePath) {
    return tide::isSafePath(safePath.toStdString());
}

}  // namespace quorvelle
