#include "tide/store/url_encode.h"

#include <gtest/gtest.h>

namespace tide {

TEST(UrlEncode, EncodesEveryByteButTheUnreserved) {
    struct Row {
        const char* text;
        const char* keepingSlash;
        const char* whole;
    };
    const Row rows[] = {
        {"AZaz09-_.~", "AZaz09-_.~", "AZaz09-_.~"},
        {"chunks/3f/3f9a", "chunks/3f/3f9a", "chunks%2F3f%2F3f9a"},
        {"?#[]@!$&'()*,;=:", "%3F%23%5B%5D%40%21%24%26%27%28%29%2A%2C%3B%3D%3A",
         "%3F%23%5B%5D%40%21%24%26%27%28%29%2A%2C%3B%3D%3A"},
        {"b\xc3\xaata\xff\x01", "b%C3%AAta%FF%01", "b%C3%AAta%FF%01"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(urlEncode(row.text, false), row.keepingSlash);
        EXPECT_EQ(urlEncode(row.text, true), row.whole);
    }
    EXPECT_EQ(urlEncode(std::string(1, '\0'), false), "%00");
}

}  // namespace tide
