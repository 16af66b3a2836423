#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "support/sync_fixture.h"

namespace quorvelle::testing {
namespace {

const std::string kData(512 * 1024, 'd');
/// Only "exe" changes; the other files are shared or copied.
const TideFiles kBefore{{"data", {kData}}, {"exe", {"one"}}, {"log", {"small"}}};
const TideFiles kAfter{{"data", {kData}}, {"exe", {"two"}}, {"log", {"small"}}};

const QString kSteps = "33% (0.5 MB),66% (0.5 MB),100% (0.5 MB)";

/// Programs that write into a file of the install in place, while a sync shares it with the
/// build to come or has done so.
class Writers : public TideTest {
protected:
    void installBefore() {
        QDir(box.path("apps")).removeRecursively();
        publishTide(server, "stable", "b1", kBefore);
        ASSERT_EQ(box.run({"sync"}).code, 0);
        for (const char* name : {"data", "log"}) {
            age(name);
        }
        publishTide(server, "stable", "b2", kAfter);
    }

    /// Files of an hour ago: of what changed this very moment nobody can tell whether it
    /// changed again.
    void age(const char* name) const {
        struct stat about = {};
        ASSERT_EQ(::stat(fileName(name).c_str(), &about), 0);
        const timespec times[] = {about.st_mtim, {about.st_mtim.tv_sec - 3600, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, fileName(name).c_str(), times, 0), 0);
    }

    std::string fileName(const char* name) const {
        return box.path("apps/app/").toStdString() + name;
    }

    ino_t inodeOf(const char* name) const {
        struct stat about = {};
        ::stat(fileName(name).c_str(), &about);
        return about.st_ino;
    }

    /// Lets somebody write while the last chunk is on its way: the other files are shared.
    void writeWhileExeIsFetched(const std::function<void()>& write) {
        server.on("GET", chunkTarget("two"), [write](const auto&, auto& response) {
            write();
            response.set_content("two", "");
        });
    }

    void expectAfter() const {
        EXPECT_TRUE(box.read("apps/app/data") == QByteArray::fromStdString(kData));
        EXPECT_EQ(box.read("apps/app/exe"), "two");
        EXPECT_EQ(box.read("apps/app/log"), "small");
    }
};

struct InPlace {
    const char* name;
    std::function<void(const std::string& file)> write;
};

const InPlace kWrites[] = {
    {"same size",
     [](const std::string& file) {
         const int opened = ::open(file.c_str(), O_WRONLY);
         EXPECT_EQ(::pwrite(opened, "X", 1, 3), 1);
         ::close(opened);
     }},
    {"appended",
     [](const std::string& file) {
         const int opened = ::open(file.c_str(), O_WRONLY | O_APPEND);
         EXPECT_EQ(::write(opened, "X", 1), 1);
         ::close(opened);
     }},
    {"truncated", [](const std::string& file) { EXPECT_EQ(::truncate(file.c_str(), 2), 0); }},
};

// What shares costs no space; the others prove that it is not done at any price.
TEST_F(Writers, WhoStayAwayLetTheFileBeShared) {
    installBefore();
    const ino_t before = inodeOf("data");
    const ino_t small = inodeOf("log");
    expectSync("synced", whole("b2", kSteps), retried("b2"));
    expectAfter();
    EXPECT_EQ(inodeOf("data"), before);
    EXPECT_NE(inodeOf("log"), small);
}

TEST_F(Writers, AfterTheSwapDoNotReachWhatIsKept) {
    installBefore();
    ASSERT_TRUE(QFile::remove(box.path("apps/.quorvelle/app.installed.json")));
    expectSync("synced", whole("b2", kSteps), retried("b2"));
    ASSERT_EQ(::truncate(fileName("data").c_str(), 2), 0);
    EXPECT_TRUE(box.read("apps/.quorvelle/app.replaced/data") == QByteArray::fromStdString(kData));
}

TEST_F(Writers, BeforeTheSwapDoNotReachTheNewBuild) {
    for (const auto& [name, write] : kWrites) {
        SCOPED_TRACE(name);
        for (const char* file : {"data", "log"}) {
            installBefore();
            writeWhileExeIsFetched([&] { write(fileName(file)); });
            expectSync("synced", whole("b2", kSteps), retried("b2"));
            expectAfter();
        }
    }
}

TEST_F(Writers, WhileTheSwapIsBlockedDoNotReachTheNewBuild) {
    for (const auto& [name, write] : kWrites) {
        SCOPED_TRACE(name);
        installBefore();
        {
            const Held held(box.path("apps/app"), Held::From::kMoves);
            expectResult(runObeyingPermissions(box, {"sync"}), "blocked", whole("b2", kSteps),
                         inUse("b2"));
        }
        write(fileName("data"));
        expectSync("synced", whole("b2", kSteps), retried("b2"));
        expectAfter();
    }
}

// The two who came before the sync, and the one who came in the middle of it.
TEST_F(Writers, WhoKeepTheFileOpenDoNotReachTheNewBuild) {
    for (const bool mapped : {false, true}) {
        for (const bool late : {false, true}) {
            SCOPED_TRACE(std::string(mapped ? "mapped" : "open") + (late ? " late" : ""));
            installBefore();
            int opened = -1;
            void* memory = MAP_FAILED;
            const auto open = [&] {
                opened = ::open(fileName("data").c_str(), O_RDWR);
                if (mapped) {
                    memory = ::mmap(nullptr, kData.size(), PROT_READ | PROT_WRITE, MAP_SHARED,
                                    opened, 0);
                    ::close(opened);
                }
            };
            if (late) {
                writeWhileExeIsFetched(open);
            } else {
                open();
            }
            expectSync("synced", whole("b2", kSteps), retried("b2"));
            if (mapped) {
                ASSERT_NE(memory, MAP_FAILED);
                static_cast<char*>(memory)[3] = 'X';
                ::munmap(memory, kData.size());
            } else {
                EXPECT_EQ(::pwrite(opened, "X", 1, 3), 1);
                ::close(opened);
            }
            expectAfter();
        }
    }
}

}  // namespace
}  // namespace quorvelle::testing
