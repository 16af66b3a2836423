#include "tide/safe_path.h"

namespace tide {

bool staysInside(std::string_view path) {
    return path.find('\0') == std::string_view::npos;
}

std::string comparablePath(std::string_view path) {
    return std::string(path);
}

}  // namespace tide
