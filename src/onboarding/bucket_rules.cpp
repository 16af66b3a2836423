#include "onboarding/bucket_rules.h"

namespace quorvelle::onboarding {

namespace {

constexpr qsizetype kShortestName = 3;
constexpr qsizetype kLongestName = 63;

bool isAllowed(char32_t character) {
    return (character >= U'a' && character <= U'z') || (character >= U'0' && character <= U'9') ||
           character == U'-';
}

}  // namespace

QString bucketNameProblem(const QString& name) {
    for (const char32_t character : name.toStdU32String()) {
        if (!isAllowed(character)) {
            return QStringLiteral(
                       "A bucket name uses only lowercase letters, numbers and hyphens - "
                       "'%1' is not allowed.")
                .arg(QString::fromUcs4(&character, 1));
        }
    }
    if (name.startsWith(u'-') || name.endsWith(u'-')) {
        return QStringLiteral("A bucket name cannot start or end with a hyphen.");
    }
    if (name.size() < kShortestName || name.size() > kLongestName) {
        return QStringLiteral("A bucket name is between 3 and 63 characters long.");
    }
    return {};
}

QString defaultBucketName(quint64 random) {
    return QStringLiteral("quorvelle-builds-%1").arg(random & 0xFFFFFF, 6, 16, QLatin1Char('0'));
}

}  // namespace quorvelle::onboarding
