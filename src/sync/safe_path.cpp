#include "sync/safe_path.h"

#include <QStringList>
#include <algorithm>

namespace quorvelle {

namespace {

constexpr qsizetype kMostCharacters = 1024;

bool isDeviceName(const QString& part) {
    const QString base = part.section(u'.', 0, 0).trimmed().toUpper();
    if (base == u"CON" || base == u"PRN" || base == u"AUX" || base == u"NUL" || base == u"CONIN$" ||
        base == u"CONOUT$") {
        return true;
    }
    static const QString digits = QStringLiteral("0123456789\u00b9\u00b2\u00b3");
    return base.size() == 4 && (base.startsWith(u"COM") || base.startsWith(u"LPT")) &&
           digits.contains(base.at(3));
}

bool isWindowsName(const QString& part) {
    static const QString reserved = QStringLiteral("<>:\"|?*\\");
    const bool plain = std::none_of(
        part.begin(), part.end(), [](QChar c) { return c.unicode() < 32 || reserved.contains(c); });
    return plain && !part.endsWith(u'.') && !part.endsWith(u' ') && !isDeviceName(part);
}

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

bool isWindowsSafePath(const QString& safePath) {
    const QStringList parts = safePath.split(u'/');
    return std::all_of(parts.begin(), parts.end(), isWindowsName);
}

}  // namespace quorvelle
