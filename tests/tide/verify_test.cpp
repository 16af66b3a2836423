#include "tide/verify.h"

#include <gmock/gmock.h>

#include "tide/limits.h"
#include "tide/tide_files.h"

namespace tide::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Build kBuild = {
    {"bin/app", {"first", "second"}}, {"data/\u00fcber.txt", {"text"}}, {"empty", {}}};

struct Check {
    bool ok = false;
    std::string err;
    std::vector<std::string> issues;
    std::vector<std::string> progress;
};

class VerifyTest : public ::testing::Test {
protected:
    VerifyTest() {
        for (const auto& [path, chunks] : kBuild) {
            writeFile(temp / ("install/" + path), joined(chunks));
        }
    }

    Check check(const Json::Value& manifest, bool quick) {
        Check result;
        result.ok = verifyFiles(
            files::utf8Text(temp / "install"), manifest,
            [&](std::uint64_t done, std::uint64_t all, std::int64_t bytes) {
                result.progress.push_back(std::to_string(done) + "/" + std::to_string(all) + " " +
                                          std::to_string(bytes));
            },
            [&](const std::string& path, const std::string& problem) {
                result.issues.push_back(path + ": " + problem);
            },
            &result.err, quick);
        return result;
    }

    TempDir temp;
};

TEST_F(VerifyTest, AGoodInstallHasNoIssues) {
    for (const bool quick : {true, false}) {
        const Check result = check(manifestOf(kBuild), quick);
        EXPECT_TRUE(result.ok);
        EXPECT_THAT(result.issues, IsEmpty());
        EXPECT_THAT(result.progress, ElementsAre("1/3 11", "2/3 15", "3/3 15"));
    }
}

TEST_F(VerifyTest, EachDamageHasItsWordInBothModes) {
    struct Row {
        const char* name;
        std::function<void(const fs::path& app)> damage;
        std::string quick;  // what is reported of "bin/app"; empty: nothing
        std::string full;
    };
    const Row rows[] = {
        {"gone", [](const fs::path& app) { fs::remove(app); }, "missing", "missing"},
        {"gone with its folder", [](const fs::path& app) { fs::remove_all(app.parent_path()); },
         "missing", "missing"},
        {"a folder", [](const fs::path& app) { fs::remove(app), fs::create_directory(app); },
         "missing", "missing"},
        {"shorter", [](const fs::path& app) { writeFile(app, "firstsecon"); }, "size mismatch",
         "size mismatch"},
        {"longer", [](const fs::path& app) { writeFile(app, "firstsecond!"); }, "size mismatch",
         "size mismatch"},
        {"other first chunk", [](const fs::path& app) { writeFile(app, "First+econd"); }, "",
         "chunk hash mismatch"},
        {"other last byte", [](const fs::path& app) { writeFile(app, "firstsecon!"); }, "",
         "chunk hash mismatch"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const fs::path app = temp / "install/bin/app";
        fs::remove_all(app);
        writeFile(app, "firstsecond");
        row.damage(app);
        for (const bool quick : {true, false}) {
            const std::string& problem = quick ? row.quick : row.full;
            const Check result = check(manifestOf(kBuild), quick);
            EXPECT_TRUE(result.ok);
            EXPECT_EQ(result.issues, problem.empty()
                                         ? std::vector<std::string>{}
                                         : std::vector<std::string>{"bin/app: " + problem});
            EXPECT_EQ(result.progress.size(), 3U);
        }
    }
}

TEST_F(VerifyTest, ChunksThatClaimMoreThanTheFileAreTruncation) {
    Json::Value manifest = manifestOf(kBuild);
    manifest["files"][0]["chunks"][1]["n"] = Json::UInt64{7};
    EXPECT_THAT(check(manifest, false).issues, ElementsAre("bin/app: truncated or unreadable"));
    manifest["files"][0]["chunks"][1]["n"] = Json::UInt64{~std::uint64_t{0}};
    EXPECT_THAT(check(manifest, false).issues, ElementsAre("bin/app: truncated or unreadable"));
    EXPECT_THAT(check(manifest, true).issues, IsEmpty());
}

}  // namespace
}  // namespace tide::testing
