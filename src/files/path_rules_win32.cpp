#include <windows.h>

#include "files/safe_path.h"

namespace files {

namespace {

// UTF-16 of the text, empty when it is no UTF-8.
std::wstring widened(std::string_view text) {
    const int size = static_cast<int>(text.size());
    const int length =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, wide.data(), length);
    return wide;
}

std::string narrowed(const std::wstring& wide) {
    const int size = static_cast<int>(wide.size());
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
    return text;
}

}  // namespace

bool isPlatformSafePath(std::string_view path) {
    return isWindowsSafePath(path) && !widened(path).empty();
}

std::string whyNoInstallDirectory(std::string_view path) {
    return whyNoWindowsInstallDirectory(path);
}

std::string comparablePath(std::string_view path) {
    std::wstring wide = widened(path);
    CharUpperBuffW(wide.data(), static_cast<DWORD>(wide.size()));
    return narrowed(wide);
}

}  // namespace files
