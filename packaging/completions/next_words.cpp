#include "next_words.h"

#include <algorithm>
#include <sstream>

namespace quorvelle {

namespace {

const std::string kProgram = "quorvelle";

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        if (!part.empty()) {
            parts.push_back(part);
        }
    }
    return parts;
}

bool consistsOf(const std::string& text, const char* letters) {
    return text.find_first_not_of(letters) == std::string::npos;
}

constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789-";

/// A usage line without its margin and without the remark that stands behind two blanks.
std::string withoutRemark(const std::string& line) {
    const std::string text = line.substr(std::min(line.find_first_not_of(' '), line.size()));
    return text.substr(0, text.find("  "));
}

/// The options in a usage line, with the letters of "[--name <name>]" taken apart.
std::vector<std::string> optionsIn(const std::string& line) {
    std::vector<std::string> options;
    for (std::size_t at = line.find("--"); at != std::string::npos; at = line.find("--", at + 2)) {
        const std::size_t end = std::min(line.find_first_not_of(kLetters, at), line.size());
        if (end > at + 2) {
            options.push_back(line.substr(at, end - at));
        }
    }
    return options;
}

class Reader {
public:
    void add(const Command& command) {
        Paths paths = extended({kProgram}, split(std::string(command.words), ' '));
        for (const std::string& path : paths) {
            summarize(path, std::string(command.summary));
        }
        for (const std::string& line : split(std::string(command.usage), '\n')) {
            const std::string text = withoutRemark(line);
            std::vector<std::string> words = split(text, ' ');
            if (!words.empty() && words.front() == kProgram) {
                words.erase(words.begin());
                paths = extended({kProgram}, words);
            }
            for (const std::string& option : optionsIn(text)) {
                for (const std::string& path : paths) {
                    offer(path, option);
                }
            }
        }
    }

    NextWords take() {
        for (auto& [path, words] : found) {
            std::sort(words.begin(), words.end(), [](const NextWord& a, const NextWord& b) {
                const bool aIsOption = a.word.starts_with('-');
                const bool bIsOption = b.word.starts_with('-');
                return aIsOption != bIsOption ? bIsOption : a.word < b.word;
            });
        }
        return std::move(found);
    }

private:
    using Paths = std::vector<std::string>;

    NextWord& offer(const std::string& path, const std::string& word) {
        std::vector<NextWord>& words = found[path];
        const auto same = [&](const NextWord& next) { return next.word == word; };
        const auto known = std::find_if(words.begin(), words.end(), same);
        return known != words.end() ? *known : words.emplace_back(NextWord{word});
    }

    void summarize(const std::string& path, const std::string& summary) {
        const std::size_t blank = path.rfind(' ');
        offer(path.substr(0, blank), path.substr(blank + 1)).summary = summary;
    }

    /// Walks down the literal words, "a|b" in both ways, up to the first placeholder.
    Paths extended(Paths paths, const std::vector<std::string>& words) {
        for (const std::string& word : words) {
            if (!consistsOf(word, (std::string(kLetters) + '|').c_str()) ||
                (word.starts_with('-') && paths.front() != kProgram)) {
                break;
            }
            Paths longer;
            for (const std::string& path : paths) {
                for (const std::string& alternative : split(word, '|')) {
                    offer(path, alternative);
                    longer.push_back(path + ' ' + alternative);
                    offer(longer.back(), "--json");
                }
            }
            paths = std::move(longer);
        }
        return paths;
    }

    NextWords found = {{kProgram, {{"--json"}}}};
};

}  // namespace

NextWords nextWords(CommandTable table) {
    Reader reader;
    for (const Command& command : table) {
        reader.add(command);
    }
    return reader.take();
}

}  // namespace quorvelle
