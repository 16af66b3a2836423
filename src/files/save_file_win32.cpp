#include "files/owner_only_win32.h"
#include "files/save_file.h"
#include "files/win32.h"

namespace quorvelle {

namespace {

constexpr int kMaxNames = 16;

}  // namespace

struct SaveFile::File {
    QString name;
    std::wstring target;
    std::wstring temporary = {};
    HANDLE handle = INVALID_HANDLE_VALUE;
    bool writeFailed = false;

    explicit File(const QString& path)
        : name(path), target(files::win32::extendedPath(path.toStdWString())) {}
    ~File() { discard(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool create(SECURITY_ATTRIBUTES* security) {
        if (files::win32::isDirectory(target)) {
            return false;
        }
        DWORD error = ERROR_FILE_EXISTS;
        for (int i = 0; i < kMaxNames && error == ERROR_FILE_EXISTS; ++i) {
            temporary = files::win32::extendedPath(temporaryPath(name).toStdWString());
            handle = CreateFileW(temporary.c_str(), GENERIC_WRITE, FILE_SHARE_READ, security,
                                 CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
            error = isOpen() ? 0 : GetLastError();
        }
        return isOpen();
    }

    bool isOpen() const { return handle != INVALID_HANDLE_VALUE; }

    void close() {
        CloseHandle(handle);
        handle = INVALID_HANDLE_VALUE;
    }

    void discard() {
        if (isOpen()) {
            close();
            remove();
        }
    }

    void remove() const {
        files::win32::patiently([this] { return DeleteFileW(temporary.c_str()) != 0; });
    }
};

SaveFile::SaveFile(const QString& path) : file(std::make_unique<File>(path)) {}
SaveFile::~SaveFile() = default;

bool SaveFile::open(Access access) {
    if (access == Access::kDefault) {
        return file->create(nullptr);
    }
    OwnerOnlyAccess owner;
    return owner.attributes() != nullptr && file->create(owner.attributes());
}

bool SaveFile::write(const QByteArray& bytes) {
    for (qsizetype at = 0; at < bytes.size() && !file->writeFailed;) {
        DWORD written = 0;
        const auto left = static_cast<DWORD>(qMin(bytes.size() - at, qsizetype{1} << 30));
        file->writeFailed =
            WriteFile(file->handle, bytes.constData() + at, left, &written, nullptr) == 0;
        at += written;
    }
    return !file->writeFailed;
}

bool SaveFile::commit(OnDisk when) {
    if (!file->isOpen() || file->writeFailed ||
        (when == OnDisk::kNow && FlushFileBuffers(file->handle) == 0)) {
        file->discard();
        return false;
    }
    file->close();
    if (files::win32::moveEntry(file->temporary, file->target) != 0) {
        file->remove();
        return false;
    }
    return true;
}

}  // namespace quorvelle
