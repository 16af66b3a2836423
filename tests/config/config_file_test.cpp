#include "config/config_file.h"

#include <thread>

#include "config/config_document.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

TEST(ConfigFile, StandsInTheUsersFolderWhenNoneIsChosen) {
    TemporaryConfig config;
    const ScopedVariable home("XDG_CONFIG_HOME", "/home/ada/.config");
    for (const QByteArray& unset : {QByteArray(""), QByteArray()}) {
        config.folder.set(unset);
        EXPECT_EQ(config::path(), QString("/home/ada/.config/Quorvelle/Quorvelle/config.json"));
    }
}

TEST(ConfigFile, IsMigratedInMemoryAndEmptyWhereItHoldsNoObject) {
    const TemporaryConfig config;
    const std::string empty = "{'schema_version':2}";
    EXPECT_EQ(text(config::load()), empty);
    const std::pair<QByteArray, std::string> table[] = {
        {"{\"server\":\"s\"}", "{'schema_version':2,'server':'s'}"},
        {"", empty},
        {"[{\"server\":\"s\"}]", empty},
        {"\"server\"", empty},
        {"{\"server\":\"s\",", empty},
        {"{\"server\":\"\xff\"}", empty},
        {"{\"server\":\"s\"} // x", empty}};
    for (const auto& [bytes, loaded] : table) {
        config.sandbox.write("config/config.json", bytes);
        EXPECT_EQ(text(config::load()), loaded) << bytes.toStdString();
        EXPECT_EQ(config.sandbox.read("config/config.json"), bytes);
    }
}

TEST(ConfigFile, IsKeptAsideWhereASaveWouldLoseIt) {
    const QByteArray cut = "{\"server\":\"s\",";
    const QByteArray unnumbered = "{\"servers\":[{\"server\":\"s\"}]}";
    const TemporaryConfig config;
    QStringList kept{"config/config.json={\n}\n"};
    // What is the same is not kept twice.
    for (const QByteArray& before : {cut, unnumbered, cut, QByteArray()}) {
        config.sandbox.write("config/config.json", before);
        ASSERT_TRUE(config::save({}));
    }
    for (const auto& [name, bytes] : {std::pair{"", cut}, {"-2", unnumbered}, {"-3", {}}}) {
        const QString copy = QString("config/config.json.corrupt") + name;
        kept.append(copy + '=' + bytes);
        EXPECT_TRUE(isOwnersAlone(config.sandbox.path(copy)));
    }
    EXPECT_TRUE(isOwnersAlone(config::path()));
    EXPECT_THAT(config.sandbox.tree("."), ::testing::UnorderedElementsAreArray(kept));
}

TEST(ConfigFile, IsSavedWithoutLeftoversOfKilledSavesAlone) {
    const TemporaryConfig config;
    const QStringList others{"config.json.backup", "config.json.tmp-BACKUP",
                             "config.json.tmp-backups", "old.json.tmp-x1y2z3"};
    for (const QString& name :
         others + args("config.json.tmp-x1y2z3 config.json.corrupt.tmp-000000")) {
        config.sandbox.write("config/" + name, {});
    }
    ASSERT_TRUE(config::save({}));
    EXPECT_THAT(QDir(config.sandbox.path("config")).entryList(QDir::Files),
                ::testing::UnorderedElementsAreArray(QStringList("config.json") + others));
}

TEST(ConfigFile, IsSavedAsIndentedJson) {
    const TemporaryConfig config;
    ASSERT_TRUE(config::save(json("{'own':[true],'server':'http://ü'}")));
    EXPECT_EQ(config.sandbox.tree("."),
              QStringList("config/config.json={\n    \"own\": [\n        true\n    ],\n"
                          "    \"server\": \"http://ü\"\n}\n"));
}

TEST(ConfigFile, IsNotSavedOverADirectoryOrBelowAFile) {
    TemporaryConfig config;
    config.sandbox.write("folder/config.json/inside", "kept");
    config.sandbox.write("file", "kept");
    for (const char* folder : {"folder", "file", "file/below"}) {
        config.folder.set(config.sandbox.path(folder).toUtf8());
        EXPECT_FALSE(config::save({}));
        EXPECT_EQ(config::change([](QJsonObject&) { return true; }), config::Changed::kNotSaved);
    }
    EXPECT_EQ(config.sandbox.tree("."),
              QStringList({"file=kept", "folder/config.json/inside=kept"}));
}

TEST(ConfigChange, LosesNothingOfFiftyCommandsAtOnce) {
    const TemporaryConfig config;
    std::vector<std::thread> commands;
    std::vector<int> codes(50, -1);
    QStringList names;
    for (std::size_t i = 0; i < codes.size(); ++i) {
        names.append(QString("app%1").arg(i, 2, 10, QChar('0')));
        commands.emplace_back([&config, &codes, i, name = names.last()] {
            codes[i] = config.sandbox.run(args("subscribe http://s " + name + " --dir d")).code;
        });
    }
    for (std::thread& command : commands) {
        command.join();
    }
    EXPECT_THAT(codes, ::testing::Each(0));
    QStringList stored;
    for (const QJsonValue& entry : config::subscriptions(config::load())) {
        stored.append(entry["name"].toString());
    }
    stored.sort();
    EXPECT_EQ(stored, names);
    EXPECT_EQ(QDir(config.sandbox.path("config")).entryList(QDir::Files | QDir::Hidden),
              QStringList("config.json"));
}

}  // namespace quorvelle::testing
