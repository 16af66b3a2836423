#include "files/safe_path.h"

namespace files {

bool isPlatformSafePath(std::string_view path) {
    return path.find('\0') == std::string_view::npos;
}

std::string whyNoInstallDirectory(std::string_view) {
    return {};
}

std::string comparablePath(std::string_view path) {
    return std::string(path);
}

}  // namespace files
