#include "files/safe_path.h"

#include <algorithm>

namespace files {

namespace {

constexpr std::size_t kMaxUnits = 1024;

std::size_t utf16Length(std::string_view path) {
    std::size_t units = 0;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        units += byte < 0x80 || byte >= 0xC0 ? 1 : 0;
        units += byte >= 0xF0 ? 1 : 0;
    }
    return units;
}

template <typename Predicate>
bool allParts(std::string_view path, Predicate holds) {
    for (;;) {
        const std::size_t slash = path.find('/');
        if (!holds(path.substr(0, slash))) {
            return false;
        }
        if (slash == std::string_view::npos) {
            return true;
        }
        path.remove_prefix(slash + 1);
    }
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isDeviceName(std::string_view part) {
    std::string base(part.substr(0, part.find('.')));
    base.erase(base.find_last_not_of(' ') + 1);
    base.erase(0, base.find_first_not_of(' '));
    std::transform(base.begin(), base.end(), base.begin(), upper);
    if (base == "CON" || base == "PRN" || base == "AUX" || base == "NUL" || base == "CONIN$" ||
        base == "CONOUT$") {
        return true;
    }
    if (!base.starts_with("COM") && !base.starts_with("LPT")) {
        return false;
    }
    const std::string digit = base.substr(3);
    // Windows takes the superscript digits one to three for digits here.
    return (digit.size() == 1 && digit.front() >= '0' && digit.front() <= '9') ||
           digit == "\u00b9" || digit == "\u00b2" || digit == "\u00b3";
}

/// What Windows would read otherwise than it is written in a part of a path.
enum class Flaw { kNone, kCharacter, kEnding, kDevice };

Flaw flawOf(std::string_view part) {
    const bool plain = std::none_of(part.begin(), part.end(), [](char c) {
        return static_cast<unsigned char>(c) < 32 ||
               std::string_view("<>:\"|?*\\").find(c) != std::string_view::npos;
    });
    if (!plain) {
        return Flaw::kCharacter;
    }
    if (part.ends_with('.') || part.ends_with(' ')) {
        return Flaw::kEnding;
    }
    return isDeviceName(part) ? Flaw::kDevice : Flaw::kNone;
}

/// The first part of a path that has a flaw.
struct FlawedPart {
    Flaw flaw = Flaw::kNone;
    std::string_view part = {};
};

FlawedPart findFlaw(std::string_view path) {
    FlawedPart found;
    allParts(path, [&](std::string_view part) {
        found = {flawOf(part), part};
        return found.flaw == Flaw::kNone;
    });
    return found;
}

/// How a flaw goes on after the name that has it.
std::string_view flawText(Flaw flaw) {
    switch (flaw) {
        case Flaw::kCharacter:
            return " holds a character that Windows reserves";
        case Flaw::kEnding:
            return " ends in a dot or a blank, which Windows leaves out";
        default:
            return " is the name of a device";
    }
}

/// What stands behind the drive ("C:/") or the share ("//host/share/").
std::string_view withoutVolume(std::string_view path) {
    std::size_t begin = std::min(path.find_first_not_of('/'), path.size());
    if (path.starts_with("//")) {
        const std::size_t share = std::min(path.find('/', begin), path.size());
        begin = std::min(path.find('/', std::min(share + 1, path.size())), path.size());
    } else if (path.substr(begin).find(':') == 1) {
        begin += 2;
    }
    const std::size_t rest = path.find_first_not_of('/', begin);
    return path.substr(std::min(rest, path.size()));
}

}  // namespace

bool isSafeRelativePath(std::string_view path) {
    return utf16Length(path) <= kMaxUnits && path.find('\\') == std::string_view::npos &&
           allParts(path,
                    [](std::string_view part) {
                        return !part.empty() && part != "." && part != "..";
                    }) &&
           isPlatformSafePath(path);
}

bool isWindowsSafePath(std::string_view path) {
    return findFlaw(path).flaw == Flaw::kNone;
}

std::string whyNoWindowsInstallDirectory(std::string_view path) {
    const std::string_view inside = withoutVolume(path);
    if (inside.empty()) {
        return "a drive cannot be replaced as a whole - name a folder in it";
    }
    const auto [flaw, part] = findFlaw(inside);
    return flaw == Flaw::kNone ? std::string()
                               : '\'' + std::string(part) + '\'' + std::string(flawText(flaw));
}

}  // namespace files
