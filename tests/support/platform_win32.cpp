#include "support/platform.h"

#include <windows.h>

#include <aclapi.h>

#include <QDir>
#include <QStandardPaths>

namespace quorvelle::testing {

namespace {

std::wstring native(const QString& path) {
    return QDir::toNativeSeparators(path).toStdWString();
}

}  // namespace

bool isOwnersAlone(const QString& path) {
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetNamedSecurityInfoW(native(path).c_str(), SE_FILE_OBJECT,
                              OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner,
                              nullptr, &list, nullptr, &descriptor) != ERROR_SUCCESS) {
        return false;
    }
    bool alone = list != nullptr && list->AceCount > 0;
    for (DWORD i = 0; alone && i < list->AceCount; ++i) {
        ACCESS_ALLOWED_ACE* entry = nullptr;
        GetAce(list, i, reinterpret_cast<void**>(&entry));
        const auto holder = reinterpret_cast<PSID>(&entry->SidStart);
        // Wine lists the system's own account with every file.
        alone = entry->Header.AceType != ACCESS_ALLOWED_ACE_TYPE || entry->Mask == 0 ||
                EqualSid(holder, owner) != 0 || IsWellKnownSid(holder, WinLocalSystemSid) != 0;
    }
    LocalFree(descriptor);
    return alone;
}

// Both are the user's, whatever the environment holds.
QString homeFolder(const QString&) {
    return QDir::homePath();
}

QString cacheFolder(const QString&) {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
}

QStringList obeyingPermissions() {
    return {};
}

struct Held::Hold {
    HANDLE handle;
};

// An open directory whose opener does not share its removal cannot be moved.
Held::Held(const QString& path, From from)
    : hold(new Hold{CreateFileW(native(path).c_str(), GENERIC_READ,
                                from == From::kMoves ? FILE_SHARE_READ | FILE_SHARE_WRITE : 0,
                                nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)}) {}

Held::~Held() {
    CloseHandle(hold->handle);
}

}  // namespace quorvelle::testing
