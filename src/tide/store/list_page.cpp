#include "tide/store/list_page.h"

#include <charconv>
#include <cstdlib>
#include <optional>

#include "tide/store/url_encode.h"

namespace tide {

namespace {

// The text of the first element of that name; `xml` is advanced past it.
std::optional<std::string_view> takeElement(std::string_view& xml, std::string_view name) {
    const std::string opening = '<' + std::string(name) + '>';
    const std::string closing = "</" + std::string(name) + '>';
    const std::size_t begin = xml.find(opening);
    const std::size_t end = xml.find(closing, begin);
    if (begin == std::string_view::npos || end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t text = begin + opening.size();
    const std::string_view element = xml.substr(text, end - text);
    xml.remove_prefix(end + closing.size());
    return element;
}

// The same, for looking without advancing.
std::optional<std::string_view> findElement(std::string_view xml, std::string_view name) {
    return takeElement(xml, name);
}

void appendUtf8(std::string& text, unsigned long code) {
    const auto append = [&text](unsigned long byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
        append(code);
        return;
    }
    if (code < 0x800) {
        append(0xC0 | code >> 6);
    } else if (code < 0x10000) {
        append(0xE0 | code >> 12);
        append(0x80 | (code >> 6 & 0x3F));
    } else {
        append(0xF0 | code >> 18);
        append(0x80 | (code >> 12 & 0x3F));
        append(0x80 | (code >> 6 & 0x3F));
    }
    append(0x80 | (code & 0x3F));
}

// Appends what "&<name>;" stands for; false when it stands for nothing known.
bool appendEntity(std::string& text, std::string_view name) {
    static constexpr std::pair<std::string_view, char> kNamed[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& [known, character] : kNamed) {
        if (name == known) {
            text += character;
            return true;
        }
    }
    if (!name.starts_with('#')) {
        return false;
    }
    const bool isHex = name.starts_with("#x");
    name.remove_prefix(isHex ? 2 : 1);
    unsigned long code = 0;
    const auto [end, error] =
        std::from_chars(name.data(), name.data() + name.size(), code, isHex ? 16 : 10);
    if (error != std::errc() || end != name.data() + name.size() || code > 0x10FFFF) {
        return false;
    }
    appendUtf8(text, code);
    return true;
}

std::string unescaped(std::string_view xml) {
    // With the "&" and the ";". Without a bound a text of "&" alone would be searched to
    // its end once for each.
    constexpr std::size_t kLongestEntity = 12;
    std::string text;
    while (!xml.empty()) {
        const std::size_t end =
            xml.front() == '&' ? xml.substr(0, kLongestEntity).find(';') : std::string_view::npos;
        if (end != std::string_view::npos && appendEntity(text, xml.substr(1, end - 1))) {
            xml.remove_prefix(end + 1);
        } else {
            text += xml.front();
            xml.remove_prefix(1);
        }
    }
    return text;
}

std::uint64_t sizeOf(std::string_view digits) {
    const long long size = std::strtoll(std::string(digits).c_str(), nullptr, 10);
    return size < 0 ? 0 : static_cast<std::uint64_t>(size);
}

}  // namespace

ListPage parseListPage(std::string_view xml) {
    ListPage page;
    page.truncated = findElement(xml, "IsTruncated") == "true";
    if (page.truncated) {
        page.nextToken = unescaped(findElement(xml, "NextContinuationToken").value_or(""));
    }
    while (const auto contents = takeElement(xml, "Contents")) {
        if (const auto key = findElement(*contents, "Key")) {
            page.entries.push_back(
                {unescaped(*key), sizeOf(findElement(*contents, "Size").value_or("0"))});
        }
    }
    return page;
}

std::string listQuery(const std::string& prefix, const std::string& token) {
    std::string query;
    if (!token.empty()) {
        query = "continuation-token=" + urlEncode(token, true) + '&';
    }
    query += "list-type=2";
    if (!prefix.empty()) {
        query += "&prefix=" + urlEncode(prefix, true);
    }
    return query;
}

}  // namespace tide
