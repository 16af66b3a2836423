#include <gmock/gmock.h>

#include <QDir>
#include <QFile>

#include "support/outcomes.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {
namespace {

const char kJoined[] = R"({"schema_version":2,"servers":[{"server":"http://h","token":"old"}],
  "subscriptions":[{"name":"app","server":"http://h","channel":"stable","dir":"/app"}]})";

TEST(ConfigFile, IsPrivateAndLeavesNothingBeside) {
    Sandbox box;
    box.environment.insert("QUORVELLE_CONFIG_DIR", box.path("not/yet/there"));
    box.environment.insert("LC_ALL", "C");
    expectOutcome(box.run({"config", "set", "token", "日本"}), 0, "token = 日本\n");
    EXPECT_EQ(QDir(box.path("not/yet/there"))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList("config.json"));
    const QString file = box.path("not/yet/there/config.json");
    const auto isPrivate = [&] {
        const auto owner = QFile::ReadOwner | QFile::WriteOwner;
        const auto group = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup;
        const auto other = QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
        return (QFile::permissions(file) & (owner | QFile::ExeOwner | group | other)) == owner;
    };
    EXPECT_TRUE(isPrivate());
    ASSERT_TRUE(QFile::setPermissions(file, QFile::permissions(file) | QFile::ReadGroup));
    EXPECT_EQ(box.run(args("config set token other")).code, 0);
    EXPECT_TRUE(isPrivate());
}

TEST(ConfigFile, StandsInTheUsersFolderWhenNoneIsNamed) {
    Sandbox box;
    box.environment.insert("QUORVELLE_CONFIG_DIR", "");
    box.environment.remove("XDG_CONFIG_HOME");
    EXPECT_EQ(box.run(args("config set server http://h")).code, 0);
    EXPECT_EQ(object(box.read(".config/Quorvelle/Quorvelle/config.json")),
              object(R"({"schema_version":2,"server":"http://h"})"));
}

TEST(ConfigFile, KeepsACorruptPredecessor) {
    const Sandbox box;
    box.write("config/config.json", "{\"token\": oops");
    EXPECT_EQ(box.run(args("config set server http://h")).code, 0);
    EXPECT_EQ(box.config(), object(R"({"schema_version":2,"server":"http://h"})"));
    EXPECT_EQ(box.read("config/config.json.corrupt"), "{\"token\": oops");
}

TEST(ConfigFile, WritesTheMigrationWithTheNextChange) {
    const Sandbox box;
    box.write("config/config.json",
              R"({"server":"http://l","channel":"c","download-dir":"/l","token":"t"})");
    EXPECT_EQ(box.run(args("subscription set-self-heal c none")).code, 0);
    EXPECT_EQ(box.config(), object(R"({"schema_version":2,"server":"http://l","token":"t",
        "subscriptions":[{"name":"c","server":"http://l","channel":"c","dir":"/l",
        "interval_seconds":60,"self_heal":0,"token":"t"}]})"));
}

/// A command that saves, and what it says when it cannot. "{file}" stands for the
/// configuration's path.
struct Save {
    const char* line;
    const char* message;
    bool needsEntry;
};

constexpr Save kSaves[] = {
    {"config set server http://n", "Could not write {file}", false},
    {"server set-token http://h new", "could not save config", false},
    {"subscribe http://n c --dir x", "could not write {file}", false},
    {"server set-root http://h /n", "could not save config", true},
    {"unsubscribe app", "could not write {file}", true},
    {"subscription set-interval app 5", "could not write {file}", true},
    {"subscription set-self-heal app full", "could not write {file}", true},
};

using Runner = Outcome (*)(const Sandbox&, const QStringList&);

Outcome runPlainly(const Sandbox& box, const QStringList& words) {
    return box.run(words);
}

void expectSavesFail(const Sandbox& box, Runner run, bool readable) {
    const QStringList before = box.tree(".");
    for (const Save& save : kSaves) {
        if (save.needsEntry && !readable) {
            continue;
        }
        SCOPED_TRACE(save.line);
        const QString message = QString(save.message).replace("{file}", box.configPath());
        expectOutcome(run(box, args(save.line)), 2, {}, message + u'\n');
        const Outcome json = run(box, args(save.line) + QStringList("--json"));
        EXPECT_EQ(json.code, 2);
        EXPECT_EQ(json.err, QString());
        EXPECT_EQ(json.json(), (QJsonObject{{"error", message}}));
        EXPECT_EQ(box.tree("."), before);
    }
}

TEST(SaveFailure, OfAFullDiskLeavesTheOldFile) {
    const Sandbox box;
    box.write("config/config.json", kJoined);
    expectSavesFail(box, runOnFullDisk, true);
}

TEST(SaveFailure, OfAFullDiskLeavesACorruptFile) {
    const Sandbox box;
    box.write("config/config.json", "oops");
    expectSavesFail(box, runOnFullDisk, false);
}

TEST(SaveFailure, OfADirectoryInTheFilesPlace) {
    const Sandbox box;
    box.write("config/config.json/kept", "kept");
    expectSavesFail(box, runPlainly, false);
}

TEST(SaveFailure, OfAFileInTheFoldersPlace) {
    const Sandbox box;
    box.write("config", "kept");
    expectSavesFail(box, runPlainly, false);
}

TEST(SaveFailure, OfAFileThatCannotBeRead) {
    const Sandbox box;
    box.write("config/config.json", kJoined);
    ASSERT_TRUE(QFile::setPermissions(box.configPath(), QFile::WriteOwner));
    expectSavesFail(box, runObeyingPermissions, false);
    ASSERT_TRUE(QFile::setPermissions(box.configPath(), QFile::ReadOwner));
    EXPECT_EQ(box.read("config/config.json"), kJoined);
}

}  // namespace
}  // namespace quorvelle::testing
