#include "client/config_document.h"

#include <gmock/gmock.h>

#include <QDir>

#include "support/notation.h"
#include "support/qt_printers.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

TEST(ConfigMigration, BringsEveryDocumentToVersionTwo) {
    struct Row {
        const char* name;
        const char* before;
        const char* after;
    };
    for (const Row& row : {
             Row{"empty", "{}", "{'schema_version':2}"},
             Row{"server", "{'server':'S'}", "{'schema_version':2,'server':'S'}"},
             Row{"channel", "{'channel':'C'}", "{'schema_version':2}"},
             Row{"folder", "{'download-dir':'/D'}", "{'schema_version':2}"},
             Row{"server, channel", "{'server':'S','channel':'C'}",
                 "{'schema_version':2,'server':'S'}"},
             Row{"server, folder", "{'download-dir':'/D','server':'S'}",
                 "{'schema_version':2,'server':'S'}"},
             Row{"channel, folder", "{'channel':'C','download-dir':'/D'}", "{'schema_version':2}"},
             Row{"all three", "{'channel':'C','download-dir':'/D','server':'S'}",
                 "{'schema_version':2,'server':'S','subscriptions':[{'channel':'C','dir':'/D',"
                 "'interval_seconds':60,'name':'C','server':'S','token':''}]}"},
             Row{"all three, token",
                 "{'schema_version':1,'channel':'C','download-dir':'/D','server':'S','token':'T'}",
                 "{'schema_version':2,'server':'S','subscriptions':[{'channel':'C','dir':'/D',"
                 "'interval_seconds':60,'name':'C','server':'S','token':'T'}],'token':'T'}"},
             Row{"token without the rest", "{'token':'T'}", "{'schema_version':2,'token':'T'}"},
             Row{"server, token", "{'server':'S','token':'T'}",
                 "{'schema_version':2,'server':'S','token':'T'}"},
             Row{"empty counts as missing", "{'channel':'','download-dir':'/D','server':'S'}",
                 "{'schema_version':2,'server':'S'}"},
             Row{"empty server", "{'channel':'C','download-dir':'/D','server':''}",
                 "{'schema_version':2}"},
             Row{"values of another type", "{'channel':1,'download-dir':['/D'],'server':{}}",
                 "{'schema_version':2}"},
             Row{"version two as it is",
                 "{'channel':'C','download-dir':'/D','own':[1],'schema_version':2,'server':'S'}",
                 "{'channel':'C','download-dir':'/D','own':[1],'schema_version':2,'server':'S'}"},
             Row{"a later version as it is", "{'own':null,'schema_version':3,'server':''}",
                 "{'own':null,'schema_version':3,'server':''}"},
         }) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(text(config::migrated(json(row.before))), row.after);
    }
}

TEST(ConfigServers, AreFoundByTheirExactUrl) {
    const QJsonObject document = json(
        "{'servers':[1,{'token':'no url'},{'server':'http://a','token':'t1'},"
        "{'server':'http://b/','token':'t2'},{'server':'http://a','token':'second'}]}");
    struct Row {
        const char* url;
        const char* entry;
    };
    for (const Row& row :
         {Row{"http://a", "{'server':'http://a','token':'t1'}"},
          Row{"http://b/", "{'server':'http://b/','token':'t2'}"}, Row{"http://a/", "{}"},
          Row{"http://b", "{}"}, Row{"HTTP://a", "{}"}, Row{"http://", "{}"}, Row{"", "{}"}}) {
        SCOPED_TRACE(row.url);
        EXPECT_EQ(text(config::findServer(document, row.url)), row.entry);
    }
    EXPECT_EQ(text(config::findServer({}, "http://a")), "{}");
    EXPECT_EQ(text(config::findServer(json("{'servers':'http://a'}"), "http://a")), "{}");
}

TEST(ConfigServers, AreStoredUnderTheUrlThatStandsAlready) {
    const QJsonObject document = json(
        "{'servers':[{'server':'http://a//'},{'server':'http://b'},{'server':'http://a'},"
        "{'server':'http://c/'}]}");
    struct Row {
        const char* typed;
        const char* stored;
    };
    for (const Row& row : {
             Row{"http://b", "http://b"},
             Row{"http://b///", "http://b"},
             Row{"http://c", "http://c/"},
             Row{"http://c//", "http://c/"},
             Row{"http://a", "http://a"},
             Row{"http://a//", "http://a//"},
             Row{"http://new", "http://new"},
             Row{"http://new//", "http://new"},
             Row{"HTTP://b/", "HTTP://b"},
         }) {
        SCOPED_TRACE(row.typed);
        EXPECT_EQ(config::storedServerUrl(document, row.typed), QString(row.stored));
    }
}

TEST(ConfigServers, KeepTheirOtherKeysWhenChanged) {
    QJsonObject document = json(
        "{'own':1,'servers':[{'server':'a','tide_public_key':'k','token':'old'},"
        "{'server':'b','token':'B'}]}");
    config::upsertServer(document, "a", "new", "/r");
    EXPECT_EQ(text(document),
              "{'own':1,'servers':[{'install_root':'/r','server':'a','tide_public_key':'k',"
              "'token':'new'},{'server':'b','token':'B'}]}");
    config::upsertServer(document, "a/", "t", "");
    EXPECT_EQ(text(document["servers"][2].toObject()),
              "{'install_root':'','server':'a/','token':'t'}");

    QJsonObject fresh;
    config::upsertServer(fresh, "a", "t", "/r");
    EXPECT_EQ(text(fresh), "{'servers':[{'install_root':'/r','server':'a','token':'t'}]}");
}

TEST(ConfigRepoint, MovesTheServersSubscriptions) {
    const char* before =
        "{'servers':[{'install_root':'/old','own':1,'server':'a','token':'t'}],"
        "'subscriptions':[{'channel':'x','dir':'/old/x','name':'n','own':2,'server':'a'},"
        "{'channel':'y','dir':'/y','server':'a/'},{'channel':'x','server':'a'},"
        "{'channel':'z.1','dir':'/q','server':'a'}]}";
    const char* after =
        "{'servers':[{'install_root':'/new','own':1,'server':'a','token':'t'}],"
        "'subscriptions':[{'channel':'x','dir':'/new/x','name':'n','own':2,'server':'a'},"
        "{'channel':'y','dir':'/y','server':'a/'},{'channel':'x','dir':'/new/x','server':'a'},"
        "{'channel':'z.1','dir':'/new/z.1','server':'a'}]}";
    QJsonObject document = json(before);
    EXPECT_EQ(config::repointServer(document, "a", "/new"), 3);
    EXPECT_EQ(text(document), after);

    EXPECT_EQ(config::repointServer(document, "a/", "/"), 1);
    EXPECT_EQ(document["subscriptions"][1]["dir"].toString(), QString("/y"));
    EXPECT_EQ(text(document["servers"][1].toObject()),
              "{'install_root':'/','server':'a/','token':''}");

    EXPECT_EQ(config::repointServer(document, "nobody", "/n"), 0);
    QJsonObject empty;
    EXPECT_EQ(config::repointServer(empty, "a", "/n"), 0);
    EXPECT_EQ(text(empty), "{'servers':[{'install_root':'/n','server':'a','token':''}]}");
}

TEST(ConfigInstallRoot, IsTheFirstOneGivenMadeAbsolute) {
    const ScopedVariable home("HOME", "/home/ada");
    const QJsonObject document =
        json("{'servers':[{'install_root':'/games','server':'a'},{'server':'b'}]}");
    struct Row {
        const char* url;
        const char* given;
        QString root;
    };
    for (const Row& row :
         {Row{"a", "/given", "/given"}, Row{"a", "", "/games"},
          Row{"a/", "", "/home/ada/Quorvelle-Builds"}, Row{"b", "", "/home/ada/Quorvelle-Builds"},
          Row{"a", "rel/ative", QDir::currentPath() + "/rel/ative"}, Row{"b", "/x/../y", "/y"}}) {
        SCOPED_TRACE(std::string(row.url) + " " + row.given);
        EXPECT_EQ(config::installRootFor(document, row.url, row.given), row.root);
    }
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

}  // namespace quorvelle::testing
