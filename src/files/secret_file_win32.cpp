#include "files/owner_only_win32.h"
#include "files/secret_file.h"
#include "files/win32.h"

namespace quorvelle {

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
    OwnerOnlyAccess access;
    if (access.attributes() == nullptr) {
        return false;
    }
    auto opened = std::make_unique<Handle>();
    opened->path = files::win32::extendedPath(path.toStdWString());
    opened->file = CreateFileW(opened->path.c_str(), GENERIC_WRITE | WRITE_DAC, 0,
                               access.attributes(), CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
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

}  // namespace quorvelle
