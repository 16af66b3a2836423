#include "files/utf8_path.h"

#include <system_error>

namespace files {

std::filesystem::path utf8Path(std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

std::string utf8Text(const std::filesystem::path& path) {
    try {
        const std::u8string text = std::filesystem::path(path).make_preferred().u8string();
        return std::string(text.begin(), text.end());
    } catch (const std::system_error&) {
        return {};
    }
}

}  // namespace files
