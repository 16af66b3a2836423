#include "sync/safe_path.h"

#include <gmock/gmock.h>

#include "support/qt_printers.h"

namespace quorvelle::testing {

namespace {

struct Row {
    QString path;
    bool safe;
};

}  // namespace

TEST(SafePath, IsRelativeAndStaysBelow) {
    for (const Row& row : {
             Row{"a", true},
             Row{"a/b.c", true},
             Row{"..a/b", true},
             Row{"a../..b", true},
             Row{".../.hidden", true},
             Row{" ", true},
             Row{"a b/größe 日", true},
             Row{"C:", true},
             Row{"C:/a", true},
             Row{"a:stream", true},
             Row{"~/a", true},
             Row{"%2e%2e/a", true},
             Row{"", false},
             Row{"/", false},
             Row{"/a", false},
             Row{"//a", false},
             Row{"a/", false},
             Row{"a//b", false},
             Row{".", false},
             Row{"./a", false},
             Row{"a/.", false},
             Row{"a/./b", false},
             Row{"..", false},
             Row{"../a", false},
             Row{"a/..", false},
             Row{"a/../b", false},
             Row{"\\", false},
             Row{"a\\b", false},
             Row{"..\\a", false},
             Row{"a/b\\", false},
             Row{QString(1024, u'a'), true},
             Row{QString(1025, u'a'), false},
             Row{QString("ab/").repeated(341) + "c", true},
             Row{QString("ab/").repeated(341) + "cd", false},
         }) {
        SCOPED_TRACE(row.path.toStdString());
        EXPECT_EQ(isSafeRelativePath(row.path), row.safe);
    }
}

TEST(SafePath, IsPlainOnWindowsToo) {
    for (const Row& row : {
             Row{"a/b.c", true},
             Row{".hidden", true},
             Row{" a/b c", true},
             Row{"console/nulls/aux1", true},
             Row{"com/com10/lpt", true},
             Row{"xcon.txt", true},
             Row{"größe/日", true},
             Row{"C:/a", false},
             Row{"a/C:", false},
             Row{"a:stream", false},
             Row{"a<b", false},
             Row{"a>b", false},
             Row{"a\"b", false},
             Row{"a|b", false},
             Row{"a?b", false},
             Row{"a*b", false},
             Row{"a\\b", false},
             Row{QString("a\tb"), false},
             Row{QString("a") + QChar(0) + "b", false},
             Row{QString("a") + QChar(31), false},
             Row{"a.", false},
             Row{"a./b", false},
             Row{"a ", false},
             Row{"a /b", false},
             Row{"...", false},
             Row{"CON", false},
             Row{"con", false},
             Row{"Prn.txt", false},
             Row{"a/aux/b", false},
             Row{"nul.tar.gz", false},
             Row{"NUL .txt", false},
             Row{"com1", false},
             Row{"COM9.log", false},
             Row{"lpt1", false},
             Row{"a/LPT9", false},
             Row{"COM¹", false},
             Row{"lpt³.x", false},
             Row{"CONIN$", false},
             Row{"conout$", false},
         }) {
        SCOPED_TRACE(row.path.toStdString());
        EXPECT_EQ(isWindowsSafePath(row.path), row.safe);
    }
}

TEST(SafePath, HoldsNoNulCharacterOnAnyPlatform) {
    EXPECT_TRUE(staysInside("a/b"));
    EXPECT_FALSE(staysInside(QString("a") + QChar(0)));
    EXPECT_FALSE(staysInside(QString("a/") + QChar(0) + "/b"));
}

}  // namespace quorvelle::testing
