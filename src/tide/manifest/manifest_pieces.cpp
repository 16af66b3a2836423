#include "tide/manifest/manifest_pieces.h"

#include <algorithm>
#include <cstddef>

namespace tide {

namespace {

/// The reader's own bound is far above this.
constexpr std::size_t kMaxDepth = 100;
constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kFiles = "\"files\"";

/// Goes through a text from one punctuation mark outside of strings to the next.
class Walk {
public:
    explicit Walk(std::string_view json) : text(json) {}

    /// The next mark; 0 at the end of the text, and where a comment might begin.
    char next() {
        at = text.find_first_of("{}[],:\"/", at);
        if (at == std::string_view::npos || text[at] == '/') {
            return 0;
        }
        return text[at++];
    }

    /// Behind an opening quotation mark: goes behind the closing one. The string with its marks;
    /// empty where it has no end.
    std::string_view string() {
        const std::size_t begin = at - 1;
        while ((at = text.find_first_of("\\\"", at)) != std::string_view::npos) {
            if (text[at++] == '"') {
                return text.substr(begin, at - begin);
            }
            ++at;  // Whatever is escaped is no end.
        }
        return {};
    }

    /// Behind the last mark.
    std::size_t position() const { return std::min(at, text.size()); }

private:
    std::string_view text;
    std::size_t at = 0;
};

/// Finds the list and its entries in one pass.
class Splitter {
public:
    explicit Splitter(std::string_view json) : text(json), walk(json) {}

    std::optional<ManifestPieces> run() {
        // The reader takes a zero byte for the end of its text.
        if (text.find_first_not_of(kBlanks) != text.find('{') ||
            text.find('\0') != std::string_view::npos) {
            return std::nullopt;
        }
        while (!isOver) {
            const char mark = walk.next();
            if (mark == 0 || !(mark == '"' ? onString() : onMark(mark))) {
                return std::nullopt;
            }
        }
        if (end == 0) {
            return std::nullopt;
        }
        pieces.head = text.substr(0, begin);
        pieces.head += text.substr(end);
        return std::move(pieces);
    }

private:
    bool inDocument() const { return depth == 1; }
    bool inList() const { return depth == 2 && begin != 0 && end == 0; }

    bool onString() {
        const std::string_view string = walk.string();
        if (inDocument() && isName) {
            const bool isSecond = begin != 0 && string == kFiles;
            // An escape might spell the name of the list.
            if (isSecond || string.find('\\') != std::string_view::npos) {
                return false;
            }
            name = string;
        }
        return !string.empty();
    }

    bool onMark(char mark) {
        switch (mark) {
            case ':':
                isName = false;
                return true;
            case ',':
                isName = true;
                if (inList()) {
                    addEntry();
                }
                return true;
            case '{':
            case '[':
                return open(mark);
            default:
                return close(mark);
        }
    }

    bool open(char mark) {
        if (inDocument() && !isName && name == kFiles) {
            if (mark != '[') {
                return false;
            }
            begin = entry = walk.position();
        }
        isName = true;
        return ++depth <= kMaxDepth;
    }

    bool close(char mark) {
        if (inList()) {
            if (mark != ']') {
                return false;
            }
            addEntry();
            end = walk.position() - 1;
        }
        isOver = --depth == 0;
        return true;
    }

    void addEntry() {
        pieces.files.push_back(text.substr(entry, walk.position() - 1 - entry));
        entry = walk.position();
    }

    std::string_view text;
    Walk walk;
    ManifestPieces pieces;
    std::size_t depth = 0;
    /// Whether the next string of an object is a member's name.
    bool isName = true;
    /// Of the document's member that is being read, with its quotation marks.
    std::string_view name;
    /// Where the inside of the list begins and ends, and the entry that is being read begins.
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t entry = 0;
    bool isOver = false;
};

}  // namespace

std::optional<ManifestPieces> takeApart(std::string_view json) {
    return Splitter(json).run();
}

}  // namespace tide
