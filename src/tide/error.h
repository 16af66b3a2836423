#pragma once

#include <string>
#include <utility>

namespace tide {

/// How every function of the engine fails: assigns (never appends) the joined parts to
/// `*err` and returns false. With a null `err` nobody wants the text and none is built.
/// A part may be `*err` itself.
template <typename... Parts>
bool fail(std::string* err, const Parts&... parts) {
    if (err != nullptr) {
        std::string text;
        ((text += parts), ...);
        *err = std::move(text);
    }
    return false;
}

}  // namespace tide
