#include "config/config_document.h"

#include "config/json_number.h"
#include "config/subscription.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

/// The cells: a document, what it becomes, and whether that has less than it held.
TEST(ConfigMigration, BringsEveryDocumentToVersionTwo) {
    for (const QStringList& row : rows(R"(
        {}                                          | {'schema_version':2} |
        {'server':'S','channel':'C'}                | {'schema_version':2,'server':'S'} |
        {'channel':'C','download-dir':'/D'}         | {'schema_version':2} |
        {'channel':'','download-dir':'/D','server':'S'}   | {'schema_version':2,'server':'S'} |
        {'channel':1,'download-dir':['/D'],'server':{}}   | {'schema_version':2} |
        {'schema_version':0,'server':'S','token':'T'} | {'schema_version':2,'server':'S','token':'T'} |
        {'servers':[{}]}                            | {'schema_version':2} | drops
        {'subscriptions':[{}],'schema_version':1}   | {'schema_version':2} | drops
        {'subscriptions':[{}],'schema_version':1.9} | {'schema_version':2} | drops
        {'subscriptions':[{}],'schema_version':'x'} | {'schema_version':2} | drops
        {'subscriptions':[{}],'schema_version':null} | {'schema_version':2} | drops)")) {
        SCOPED_TRACE(row[0].toStdString());
        const QJsonObject before = json(row[0].toUtf8());
        EXPECT_EQ(text(config::migrated(before)), row[1].toStdString());
        EXPECT_EQ(config::losesInMigration(before), row[2] == "drops");
    }
    EXPECT_EQ(text(config::migrated(json("{'channel':'C','download-dir':'/D','server':'S'}"))),
              "{'schema_version':2,'server':'S','subscriptions':[{'channel':'C','dir':'/D',"
              "'interval_seconds':60,'name':'C','server':'S','token':''}]}");
    EXPECT_EQ(text(config::migrated(json("{'schema_version':1,'channel':'C','download-dir':'/D',"
                                         "'server':'S','token':'T'}"))),
              "{'schema_version':2,'server':'S','subscriptions':[{'channel':'C','dir':'/D',"
              "'interval_seconds':60,'name':'C','server':'S','token':'T'}],'token':'T'}");
}

TEST(ConfigMigration, LeavesNewerDocumentsAsTheyAre) {
    for (const char* version : {"2", "3", "2.5", "3000000000", "1e300", "'2'", "'3000000000.5'"}) {
        const QJsonObject document = json(
            "{'channel':'C','download-dir':'/D','own':[null],"
            "'servers':[1],'server':'S','schema_version':" +
            QByteArray(version) + '}');
        EXPECT_EQ(config::migrated(document), document) << version;
        EXPECT_FALSE(config::losesInMigration(document)) << version;
    }
}

/// The cells: a URL, that under which it is stored, the token of its entry, that of the entry
/// that is exactly equal.
TEST(ConfigServers, AreFoundUnderTheUrlThatStandsAlready) {
    const QJsonObject document = json(
        "{'servers':[1,{'token':'no url'},{'server':'http://a//','token':'1'},"
        "{'server':'http://b','token':'2'},{'server':'http://a','token':'3'},"
        "{'server':'http://c/','token':'4'},{'server':'http://a','token':'second'}]}");
    for (const QStringList& row : rows(R"(
        http://b     | http://b   | 2 | 2
        http://b///  | http://b   | 2 |
        http://c//   | http://c/  | 4 |
        http://c/    | http://c/  | 4 | 4
        http://a     | http://a   | 3 | 3
        http://a//   | http://a// | 1 | 1
        http://new// | http://new |   |
        HTTP://b/    | HTTP://b   |   |
        http:        | http:      |   |
                     |            |   |)")) {
        SCOPED_TRACE(row[0].toStdString());
        EXPECT_EQ(config::storedServerUrl(document, row[0]), row[1]);
        EXPECT_EQ(config::serverEntry(document, row[0])["token"].toString(), row[2]);
        EXPECT_EQ(config::findServer(document, row[0])["token"].toString(), row[3]);
        const QJsonObject subscription{{"server", row[0]}};
        EXPECT_TRUE(config::isOnServer(document, subscription, row[1]));
        EXPECT_EQ(config::isOnServer(document, subscription, "http://a///"), row[2] == "1");
    }
    EXPECT_EQ(text(config::findServer(json("{'servers':'http://a'}"), "http://a")), "{}");
}

TEST(ConfigInstallRoot, IsTheFirstOneGivenMadeAbsolute) {
    const ScopedVariable home("HOME", "/home/ada");
    const QJsonObject document =
        json("{'servers':[{'install_root':'/games','server':'a'},{'server':'b'}]}");
    for (const QStringList& row : rows(R"(
        a   | /given     | DRIVE/given
        a   |            | DRIVE/games
        a/  |            | DRIVE/games
        b   |            | HOME/Quorvelle-Builds
        b   | /x/../y    | DRIVE/y)")) {
        const QString root =
            QString(row[2]).replace("DRIVE", drive()).replace("HOME", homeFolder("/home/ada"));
        EXPECT_EQ(config::installRootFor(document, row[0], row[1]), root) << row[0].toStdString();
    }
    EXPECT_EQ(config::installRootFor(document, "a", "x/y"), QDir::currentPath() + "/x/y");
}

TEST(ConfigSubscriptions, AreFoundByName) {
    EXPECT_TRUE(config::subscriptions(json("{'subscriptions':{'name':'a'}}")).isEmpty());
    const QJsonArray entries =
        config::subscriptions(json("{'subscriptions':[{},'b',{'name':'b'},{'name':'b'}]}"));
    EXPECT_EQ(entries.size(), 4);
    EXPECT_EQ(config::indexOfSubscription(entries, "b"), 2);
    EXPECT_EQ(config::indexOfSubscription(entries, "B"), -1);
    EXPECT_EQ(config::indexOfSubscription(entries, ""), -1);
}

TEST(SubscriptionSettings, AreParsed) {
    for (const QStringList& row : rows(R"(
        manual | 0
        0 | 0
        MANUAL | 0
        default | -1
        1 | 1
        007 | 7
        2147483647 | 2147483647)")) {
        for (const QString& typed : {row[0], " \t" + row[0] + ' '}) {
            EXPECT_EQ(parseInterval(typed), row[1].toInt()) << row[0].toStdString();
        }
    }
    for (const char* invalid :
         {"2147483648", "4294967297", "-1", "+5", "1.5", "0x10", "60s", "", "manually", "٦٠"}) {
        EXPECT_EQ(parseInterval(invalid), std::nullopt) << invalid;
    }
    for (const auto& [typed, stored] :
         {std::pair{"none", 0}, {"quick", 1}, {"full", 2}, {"default", -1}, {" Full\n", 2}}) {
        EXPECT_EQ(parseSelfHeal(typed), stored) << typed;
    }
    for (const char* invalid : {"", "0", "1", "off", "fully", "full quick"}) {
        EXPECT_EQ(parseSelfHeal(invalid), std::nullopt) << invalid;
    }
}

/// The cells: a value, the number, the whole number where 7 stands for none.
TEST(JsonNumbers, MayBeSentAsText) {
    for (const QStringList& row : rows(R"(
        3                    | 3    | 3
        '3'                  | 3    | 3
        '-1'                 | -1   | -1
        2.5                  | 2.5  | 7
        '2.5'                | 2.5  | 7
        '1e3'                | 1000 | 1000
        9007199254740993     | 9007199254740992 | 9007199254740993
        '9007199254740993'   | 9007199254740992 | 9007199254740993
        '3 seats'            | none | 7
        '0x10'               | none | 7
        'inf'                | none | 7
        'nan'                | none | 7
        ''                   | none | 7
        true                 | none | 7
        [3]                  | none | 7
        null                 | none | 7)")) {
        SCOPED_TRACE(row[0].toStdString());
        const QJsonValue value = json("{'v':" + row[0].toUtf8() + '}')["v"];
        EXPECT_EQ(numberIn(value),
                  row[1] == "none" ? std::nullopt : std::optional(row[1].toDouble()));
        EXPECT_EQ(wholeNumberIn(value, 7), row[2].toLongLong());
    }
}

}  // namespace quorvelle::testing
