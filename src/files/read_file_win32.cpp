#include "files/read_file.h"

#include <array>
#include <system_error>

#include "files/win32.h"

namespace quorvelle {

namespace {

using files::win32::Patience;

FileContent unreadable(DWORD error) {
    const std::string reason = std::system_category().message(static_cast<int>(error));
    return {.outcome = FileContent::Outcome::kUnreadable,
            .reason = QString::fromLocal8Bit(reason.c_str()).trimmed()};
}

}  // namespace

FileContent readWhole(const QString& path, files::WhenInUse inUse) {
    const std::wstring name = files::win32::extendedPath(path.toStdWString());
    HANDLE file = INVALID_HANDLE_VALUE;
    const bool waits = inUse == files::WhenInUse::kWait && !files::win32::isDirectory(name);
    const DWORD refused = files::win32::patiently(
        [&] {
            file = CreateFileW(name.c_str(), GENERIC_READ, files::win32::kShareAll, nullptr,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
            return file != INVALID_HANDLE_VALUE;
        },
        waits ? Patience::kFull : Patience::kNone);
    if (refused != 0) {
        return refused == ERROR_FILE_NOT_FOUND || refused == ERROR_PATH_NOT_FOUND
                   ? FileContent()
                   : unreadable(refused);
    }
    FileContent content{.outcome = FileContent::Outcome::kRead};
    std::array<char, 65536> block{};
    DWORD size = 0;
    bool read = false;
    while ((read = ReadFile(file, block.data(), static_cast<DWORD>(block.size()), &size, nullptr) !=
                   0) &&
           size > 0) {
        content.bytes.append(block.data(), static_cast<qsizetype>(size));
    }
    const DWORD error = GetLastError();
    CloseHandle(file);
    return read ? content : unreadable(error);
}

}  // namespace quorvelle
