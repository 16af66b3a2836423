#include "sync/safe_path.h"

#include <gmock/gmock.h>

#include "support/qt_printers.h"

namespace quorvelle::testing {

TEST(SafePath, IsRelativeAndStaysBelow) {
    for (const char* safe : {"a", "a/b.c", "..a/b", "a../..b", ".../.hidden", " ", "a b/größe 日",
                             "C:", "C:/a", "a:stream", "~/a", "%2e%2e/a"}) {
        EXPECT_TRUE(isSafeRelativePath(safe)) << safe;
    }
    for (const char* unsafe : {"", "/", "/a", "//a", "a/", "a//b", ".", "./a", "a/.", "a/./b", "..",
                               "../a", "a/..", "a/../b", "\\", "a\\b", "..\\a", "a/b\\"}) {
        EXPECT_FALSE(isSafeRelativePath(unsafe)) << unsafe;
    }
    const QString parts = QString("ab/").repeated(341);
    EXPECT_TRUE(isSafeRelativePath(QString(1024, u'a')));
    EXPECT_TRUE(isSafeRelativePath(parts + "c"));
    EXPECT_FALSE(isSafeRelativePath(QString(1025, u'a')));
    EXPECT_FALSE(isSafeRelativePath(parts + "cd"));
}

TEST(SafePath, HoldsNoNulCharacterOnAnyPlatform) {
    EXPECT_TRUE(staysInside("a/b"));
    EXPECT_FALSE(staysInside(QString("a") + QChar(0)));
    EXPECT_FALSE(staysInside(QString("a/") + QChar(0) + "/b"));
}

}  // namespace quorvelle::testing
