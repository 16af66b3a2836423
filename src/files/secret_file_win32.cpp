#include "files/owner_only_win32.h"
#include "files/secret_file.h"
#include "files/win32.h"

namespace quorvelle {

namespace {

/// Takes away what is left of a longer text; devices and pipes hold none.
bool cutOff(HANDLE file) {
    return GetFileType(file) != FILE_TYPE_DISK || SetEndOfFile(file) != 0;
}

}  // namespace

struct SecretFile::Handle {
    /// Removes the file that it made, unless it was written.
    ~Handle() {
        CloseHandle(file);
        if (isNew && !isWritten) {
            DeleteFileW(path.c_str());
        }
    }

    std::wstring path;
    HANDLE file = INVALID_HANDLE_VALUE;
    bool isNew = false;
    bool isWritten = false;
};

SecretFile::SecretFile() = default;
SecretFile::~SecretFile() = default;

bool SecretFile::open(const QString& path) {
    OwnerOnlyAccess access;
    if (access.attributes() == nullptr) {
        return false;
    }
    const std::wstring name = files::win32::extendedPath(path.toStdWString());
    const auto openAs = [&](DWORD disposition, DWORD flags) {
        return CreateFileW(name.c_str(), GENERIC_WRITE | WRITE_DAC, 0, access.attributes(),
                           disposition, FILE_ATTRIBUTE_NORMAL | flags, nullptr);
    };
    // A link stands for itself here, so that none that leads nowhere gets a file at its end.
    HANDLE file = openAs(CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT);
    const bool isNew = file != INVALID_HANDLE_VALUE;
    if (!isNew) {
        file = openAs(OPEN_EXISTING, 0);
    }
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    handle = std::make_unique<Handle>();
    handle->path = name;
    handle->file = file;
    handle->isNew = isNew;
    // A file that was there kept its access list.
    return isNew || access.applyTo(file);
}

bool SecretFile::write(const QByteArray& text) {
    const std::unique_ptr<Handle> opened = std::move(handle);
    if (!opened) {
        return false;
    }
    QByteArray lines = text;
    lines.replace('\n', "\r\n");
    const auto size = static_cast<DWORD>(lines.size());
    DWORD count = 0;
    opened->isWritten = WriteFile(opened->file, lines.constData(), size, &count, nullptr) != 0 &&
                        count == size && cutOff(opened->file) &&
                        FlushFileBuffers(opened->file) != 0;
    return opened->isWritten;
}

}  // namespace quorvelle
