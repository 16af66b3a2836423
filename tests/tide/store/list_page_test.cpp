#include "tide/store/list_page.h"

#include <gmock/gmock.h>

namespace tide {

static void PrintTo(const ObjectEntry& entry, std::ostream* out) {
    *out << entry.key << " (" << entry.size << ')';
}

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ListPage, ReadsKeysSizesAndTheNextToken) {
    const ListPage page = parseListPage(R"(<?xml version="1.0" encoding="UTF-8"?>
<ListBucketResult xmlns="http://s3.amazonaws.com/doc/2006-03-01/">
  <Name>b</Name><Prefix>chunks/</Prefix><KeyCount>2</KeyCount>
  <IsTruncated>true</IsTruncated>
  <ContinuationToken>old</ContinuationToken>
  <NextContinuationToken>1/a&amp;b+=</NextContinuationToken>
  <Contents>
    <Key>chunks/3f/3f9a</Key><LastModified>2024-02-29T12:34:56.000Z</LastModified>
    <ETag>&quot;0&quot;</ETag><Size>4294967296</Size>
    <Owner><ID>x</ID><DisplayName>y</DisplayName></Owner>
  </Contents>
  <Contents><Size>0</Size><Key>chunks/b&#234;ta &lt;1&gt; &#x65E5;&#x1F600;</Key></Contents>
</ListBucketResult>)");
    EXPECT_THAT(page.entries, ElementsAre(ObjectEntry{"chunks/3f/3f9a", 4294967296},
                                          ObjectEntry{"chunks/bêta <1> 日😀", 0}));
    EXPECT_TRUE(page.truncated);
    EXPECT_EQ(page.nextToken, "1/a&b+=");
}

TEST(ListPage, LeavesOutWhatIsBroken) {
    struct Row {
        const char* xml;
        std::vector<ObjectEntry> entries;
        bool truncated = false;
    };
    const Row rows[] = {
        {"<html>busy</html>", {}},
        {"<Contents><Key>a</Key><Size>1</Size>", {}},
        {"<IsTruncated>true</IsTruncated><Contents><Key>a", {}, true},
        {"<Contents><Size>1</Size></Contents>", {}},
        {"<Contents><Key>a</Key></Contents>", {{"a", 0}}},
        {"<Contents><Key>a</Key><Size>-5</Size></Contents>", {{"a", 0}}},
        {"<Contents><Key>&x;&#;&#x110000;&#xZ;&amp</Key></Contents>",
         {{"&x;&#;&#x110000;&#xZ;&amp", 0}}},
        {"<Contents><Key>&#000000065;&#0000000065;</Key></Contents>", {{"A&#0000000065;", 0}}},
        {"<IsTruncated>false</IsTruncated><NextContinuationToken>t</NextContinuationToken>", {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.xml);
        const ListPage page = parseListPage(row.xml);
        EXPECT_EQ(page.entries, row.entries);
        EXPECT_EQ(page.truncated, row.truncated);
        EXPECT_THAT(page.nextToken, IsEmpty());
    }
}

TEST(ListPage, AsksInSortedOrder) {
    EXPECT_EQ(listQuery("", ""), "list-type=2");
    EXPECT_EQ(listQuery("chunks/a b", ""), "list-type=2&prefix=chunks%2Fa%20b");
    EXPECT_EQ(listQuery("c", "1/+="), "continuation-token=1%2F%2B%3D&list-type=2&prefix=c");
}

}  // namespace
}  // namespace tide
