#pragma once

#include <QString>

namespace quorvelle {

/// The roles that a user can have.
inline constexpr QLatin1String kAdmin("admin");
inline constexpr QLatin1String kMember("member");
inline constexpr QLatin1String kPublisher("publisher");

inline bool isRole(const QString& text) {
    return text == kAdmin || text == kMember || text == kPublisher;
}

}  // namespace quorvelle
