#include "files/secret_file.h"

#include <QFile>
#include <QFileInfo>

#include "support/process_runner.h"

namespace quorvelle::testing {

/// Each row: what the file holds before ("-" for no file), and what is written ("-" for
/// nothing, as after a failure) and therefore stands there afterwards.
TEST(SecretFile, KeepsWhatItHeldUntilTheNewTextIsWritten) {
    for (const auto& [before, written, after] : {std::tuple{"-", "-", "(missing)"},
                                                 {"-", "new", "new"},
                                                 {"old", "-", "old"},
                                                 {"older and longer", "new", "new"}}) {
        const Sandbox box;
        if (*before != '-') {
            box.write("secret", before);
        }
        {
            SecretFile file;
            ASSERT_TRUE(file.open(box.path("secret")));
            if (*written != '-') {
                EXPECT_TRUE(file.write(written));
                EXPECT_FALSE(file.write(written));
            } else {
                EXPECT_EQ(QFileInfo(box.path("secret")).size(), *before == '-' ? 0 : 3);
            }
        }
        EXPECT_EQ(box.read("secret"), after);
    }
    const Sandbox box;
    SecretFile nowhere;
    EXPECT_FALSE(nowhere.open(box.path("none/secret")));
    EXPECT_FALSE(nowhere.write("text"));
}

TEST(SecretFile, IsReadableByItsOwnerAlone) {
    const Sandbox box;
    box.write("old", "");
    QFile::setPermissions(box.path("old"), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther);
    for (const char* name : {"old", "new"}) {
        SecretFile file;
        EXPECT_TRUE(file.open(box.path(name)));
        EXPECT_TRUE(isOwnersAlone(box.path(name))) << name;
    }
}

}  // namespace quorvelle::testing
