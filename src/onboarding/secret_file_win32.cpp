#include <windows.h>

#include <aclapi.h>
#include <sddl.h>
#include <QDir>

#include "onboarding/secret_file.h"

namespace quorvelle::onboarding {

namespace {

/// Full access for the owner, nothing inherited, nobody else.
constexpr wchar_t kOwnerOnly[] = L"D:P(A;;FA;;;OW)";

/// The access list in the form that the system takes.
class OwnerOnlyAccess {
public:
    OwnerOnlyAccess() {
        ConvertStringSecurityDescriptorToSecurityDescriptorW(kOwnerOnly, SDDL_REVISION_1,
                                                             &descriptor, nullptr);
    }
    ~OwnerOnlyAccess() { LocalFree(descriptor); }
    OwnerOnlyAccess(const OwnerOnlyAccess&) = delete;
    OwnerOnlyAccess& operator=(const OwnerOnlyAccess&) = delete;

    bool isValid() const { return descriptor != nullptr; }
    PSECURITY_DESCRIPTOR get() const { return descriptor; }

    bool applyTo(HANDLE file) const {
        BOOL present = FALSE;
        BOOL isDefault = FALSE;
        PACL list = nullptr;
        return GetSecurityDescriptorDacl(descriptor, &present, &list, &isDefault) != 0 &&
               SetSecurityInfo(file, SE_FILE_OBJECT,
                               DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                               nullptr, nullptr, list, nullptr) == ERROR_SUCCESS;
    }

private:
    PSECURITY_DESCRIPTOR descriptor = nullptr;
};

}  // namespace

struct SecretFile::Handle {
    std::wstring path;
    HANDLE file = INVALID_HANDLE_VALUE;
    bool isNew = false;
};

SecretFile::SecretFile() = default;

SecretFile::~SecretFile() {
    if (handle) {
        CloseHandle(handle->file);
        if (handle->isNew) {
            DeleteFileW(handle->path.c_str());
        }
    }
}

bool SecretFile::open(const QString& path) {
    const OwnerOnlyAccess access;
    if (!access.isValid()) {
        return false;
    }
    SECURITY_ATTRIBUTES attributes = {sizeof(SECURITY_ATTRIBUTES), access.get(), FALSE};
    auto opened = std::make_unique<Handle>();
    opened->path = QDir::toNativeSeparators(path).toStdWString();
    opened->file = CreateFileW(opened->path.c_str(), GENERIC_WRITE | WRITE_DAC, 0, &attributes,
                               CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    // Otherwise there was a file, which kept its access list.
    opened->isNew = GetLastError() != ERROR_ALREADY_EXISTS;
    if (opened->file == INVALID_HANDLE_VALUE) {
        return false;
    }
    handle = std::move(opened);
    return handle->isNew || access.applyTo(handle->file);
}

bool SecretFile::write(const QByteArray& text) {
    const std::unique_ptr<Handle> written = std::move(handle);
    if (!written) {
        return false;
    }
    QByteArray lines = text;
    lines.replace('\n', "\r\n");
    DWORD count = 0;
    const bool stored = WriteFile(written->file, lines.constData(),
                                  static_cast<DWORD>(lines.size()), &count, nullptr) != 0 &&
                        count == static_cast<DWORD>(lines.size()) &&
                        FlushFileBuffers(written->file) != 0;
    return CloseHandle(written->file) != 0 && stored;
}

}  // namespace quorvelle::onboarding
