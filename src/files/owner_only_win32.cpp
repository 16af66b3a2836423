#include "files/owner_only_win32.h"

#include <aclapi.h>
#include <sddl.h>

#include <string>
#include <vector>

namespace quorvelle {

namespace {

/// The user of this process in text form ("S-1-5-21-..."); empty on failure.
std::wstring userSid() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0) {
        return {};
    }
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<unsigned char> user(size);
    LPWSTR text = nullptr;
    const bool known =
        GetTokenInformation(token, TokenUser, user.data(), size, &size) != 0 &&
        ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, &text) != 0;
    CloseHandle(token);
    const std::wstring sid = known ? text : L"";
    LocalFree(text);
    return sid;
}

}  // namespace

OwnerOnlyAccess::OwnerOnlyAccess() {
    const std::wstring sid = userSid();
    // Protected from inheritance (P); one entry that allows (A) everything (FA).
    const std::wstring list = L"D:P(A;;FA;;;" + sid + L")";
    if (!sid.empty() && ConvertStringSecurityDescriptorToSecurityDescriptorW(
                            list.c_str(), SDDL_REVISION_1, &descriptor, nullptr) != 0) {
        security = {sizeof security, descriptor, FALSE};
    }
}

OwnerOnlyAccess::~OwnerOnlyAccess() {
    LocalFree(descriptor);
}

bool OwnerOnlyAccess::applyTo(HANDLE file) const {
    BOOL present = FALSE;
    BOOL isDefault = FALSE;
    PACL list = nullptr;
    return descriptor != nullptr &&
           GetSecurityDescriptorDacl(descriptor, &present, &list, &isDefault) != 0 &&
           SetSecurityInfo(file, SE_FILE_OBJECT,
                           DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION, nullptr,
                           nullptr, list, nullptr) == ERROR_SUCCESS;
}

}  // namespace quorvelle
