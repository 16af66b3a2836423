#include "tide/verify.h"

#include <gmock/gmock.h>

#include "tide/tide_files.h"

namespace tide::testing {
namespace {

using ::testing::_;
using ::testing::ElementsAre;

const Build kBuild = {
    {"bin/app", {"first", "second"}}, {"data/\u00fcber.txt", {"text"}}, {"empty", {}}};

class VerifyTest : public ::testing::Test {
protected:
    VerifyTest() {
        for (const auto& [path, chunks] : kBuild) {
            writeFile(temp / ("install/" + path), joined(chunks));
        }
    }

    /// What a check of the three files says of each, and how far it is after it.
    std::vector<std::string> check(const Json::Value& manifest, bool quick) {
        std::vector<std::string> said(1);
        std::string err;
        const bool checked = verifyFiles(
            files::utf8Text(temp / "install"), manifest,
            [&](std::uint64_t done, std::uint64_t all, std::int64_t bytes) {
                said.back() += std::to_string(done) + "/" + std::to_string(all);
                said.back() += " " + std::to_string(bytes);
                said.emplace_back();
            },
            [&](const std::string& path, const std::string& problem) {
                said.back() += path + ": " + problem + " ";
            },
            &err, quick);
        EXPECT_TRUE(checked) << err;
        EXPECT_EQ(said.back(), "");
        said.pop_back();
        return said;
    }

    TempDir temp;
};

TEST_F(VerifyTest, TellsHowFarItIs) {
    for (const bool quick : {true, false}) {
        EXPECT_THAT(check(manifestOf(kBuild), quick), ElementsAre("1/3 11", "2/3 15", "3/3 15"));
    }
}

TEST_F(VerifyTest, EachDamageHasItsWordInBothModes) {
    const fs::path app = temp / "install/bin/app";
    struct Row {
        const char* name;
        std::function<void()> damage;
        std::string quick;  // what is said of "bin/app"
        std::string full;
    };
    const std::string missing = "bin/app: missing 1/3 0";
    const std::string otherSize = "bin/app: size mismatch 1/3 0";
    const Row rows[] = {
        {"gone", [&] { fs::remove(app); }, missing, missing},
        {"gone with its folder", [&] { fs::remove_all(app.parent_path()); }, missing, missing},
        {"a folder", [&] { fs::remove(app), fs::create_directory(app); }, missing, missing},
        {"shorter", [&] { writeFile(app, "firstsecon"); }, otherSize, otherSize},
        {"longer", [&] { writeFile(app, "firstsecond!"); }, otherSize, otherSize},
        {"other first chunk", [&] { writeFile(app, "First+econd"); }, "1/3 11",
         "bin/app: chunk hash mismatch 1/3 0"},
        {"other last byte", [&] { writeFile(app, "firstsecon!"); }, "1/3 11",
         "bin/app: chunk hash mismatch 1/3 5"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        fs::remove_all(app);
        writeFile(app, "firstsecond");
        row.damage();
        EXPECT_THAT(check(manifestOf(kBuild), true), ElementsAre(row.quick, _, _));
        EXPECT_THAT(check(manifestOf(kBuild), false), ElementsAre(row.full, _, _));
    }
}

TEST_F(VerifyTest, ChunksThatClaimMoreThanTheFileAreTruncation) {
    Json::Value manifest = manifestOf(kBuild);
    for (const std::uint64_t length : {std::uint64_t{7}, ~std::uint64_t{0}}) {
        manifest["files"][0]["chunks"][1]["n"] = Json::UInt64{length};
        EXPECT_THAT(check(manifest, false),
                    ElementsAre("bin/app: truncated or unreadable 1/3 5", _, _));
    }
    EXPECT_THAT(check(manifest, true), ElementsAre("1/3 11", _, _));
    // Nobody has to be told.
    EXPECT_TRUE(verifyFiles(files::utf8Text(temp / "install"), manifest, {}, {}, nullptr, false));
}

TEST_F(VerifyTest, LinksCountAsWhatTheyLeadTo) {
    fs::remove(temp / "install/empty");
    fs::create_symlink("nowhere", temp / "install/empty");
    fs::rename(temp / "install/bin/app", temp / "elsewhere");
    fs::create_symlink(temp / "elsewhere", temp / "install/bin/app");
    for (const bool quick : {true, false}) {
        EXPECT_THAT(check(manifestOf(kBuild), quick),
                    ElementsAre("1/3 11", "2/3 15", "empty: missing 3/3 15"));
    }
}

}  // namespace
}  // namespace tide::testing
