#pragma once

#include <string>
#include <string_view>

namespace tide {

/// Percent-encodes every byte but letters, digits and "-_.~", in upper-case hexadecimal
/// (a blank is "%20", never "+"). "/" stays as it is unless `encodeSlash` is set.
std::string urlEncode(std::string_view text, bool encodeSlash);

}  // namespace tide
