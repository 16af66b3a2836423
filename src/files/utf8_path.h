#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace files {

/// The native path of UTF-8 text, "/" or the platform's separator between its parts. A
/// narrow string must never become a path in any other way: on Windows that would read
/// it in the code page of the process.
std::filesystem::path utf8Path(std::string_view text);

/// The UTF-8 text of a native path, with the platform's separator alone between its parts, for
/// messages and comparisons. A name that is no text (Windows only) reads as empty.
std::string utf8Text(const std::filesystem::path& path);

}  // namespace files
