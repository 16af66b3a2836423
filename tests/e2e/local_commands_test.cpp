#include "support/process_runner.h"

namespace quorvelle::testing {
namespace {

const char kJoined[] = R"({"schema_version":2,"server":"http://d","token":"top","servers":[
  {"server":"http://h","token":"old","install_root":"/games","note":7},
  {"server":"http://s/","token":"slash","install_root":"/s"}],"subscriptions":[
  {"name":"app","server":"http://h","channel":"stable","dir":"/games/stable",
   "interval_seconds":-1,"self_heal":-1,"token":"old"},
  {"name":"kit","server":"http://h","channel":"kit","dir":"/kit","managed":true,
   "interval_seconds":90,"self_heal":2,"token":"own"},
  {"name":"odd","server":"http://o","channel":"c","dir":"/o","interval_seconds":0,
   "self_heal":7},
  {"name":"%1","server":"%2","channel":"c","dir":"/q","managed":false,"interval_seconds":1,
   "self_heal":1},{"name":"n","server":"","channel":"","dir":"/n","self_heal":0}]})";

/// Sets the value at a path such as "servers/0/token"; null takes an array's element out.
void change(QJsonObject& document, const QString& path, const QJsonValue& value) {
    const QStringList at = path.split(u'/');
    if (at.size() == 1) {
        document[path] = value;
        return;
    }
    QJsonArray list = document[at[0]].toArray();
    const int index = at[1].toInt();
    if (value.isNull()) {
        list.removeAt(index);
    } else if (at.size() == 2) {
        list.insert(index, value);
    } else {
        QJsonObject entry = list[index].toObject();
        entry[at[2]] = value;
        list[index] = entry;
    }
    document[at[0]] = list;
}

/// A command and all that it does in both modes. "{box}" stands for the sandbox's folder,
/// where the commands run, and "{drive}" for the drive it is on, if drives have names. A
/// path in backquotes is shown with the separators of the platform.
struct Command {
    QStringList words;
    /// Text mode: standard output of a success, else the line on standard error.
    QString said;
    /// Standard output of a success in JSON mode; empty for a refusal.
    QString json = {};
    QJsonObject changes = {};
    QByteArray before = kJoined;
    QString environmentToken = {};
};

QString shown(const QString& text) {
    QStringList parts = text.split(u'`');
    for (int i = 1; i < parts.size(); i += 2) {
        parts[i] = QDir::toNativeSeparators(parts[i]);
    }
    return parts.join(QString());
}

void check(const Command& command) {
    SCOPED_TRACE(command.words.join(u' ').toStdString());
    const bool fails = command.json.isEmpty();
    for (const bool asJson : {false, true}) {
        Sandbox box;
        const QString folder = box.path({});
        const auto placed = [&](QString text) {
            return text.replace("{box}", folder).replace("{drive}", folder.section(u'/', 0, 0));
        };
        box.environment.insert("QUORVELLE_TOKEN", command.environmentToken);
        QStringList words = command.words;
        words.replaceInStrings("{drive}", placed("{drive}"));
        if (!command.before.isEmpty()) {
            box.write("config/config.json", command.before);
        }
        if (fails) {
            expectError(box, words, 1, command.said);
        } else if (asJson) {
            const Outcome got = box.run(words + QStringList("--json"));
            EXPECT_EQ(got.json(), object(placed(command.json)));
            EXPECT_EQ(got.err + QString::number(got.code), QString("0"));
        } else {
            expectOutcome(box.run(words), 0, shown(placed(command.said)));
        }
        if (command.changes.isEmpty()) {
            EXPECT_EQ(box.read("config/config.json"),
                      command.before.isEmpty() ? "(missing)" : command.before);
        } else {
            QJsonObject expected = object(command.before);
            for (auto at = command.changes.begin(); at != command.changes.end(); ++at) {
                change(expected, at.key(), at.value());
            }
            EXPECT_EQ(box.config(), object(placed(QJsonDocument(expected).toJson())));
        }
        EXPECT_FALSE(QFileInfo::exists(box.path("config/config.json.lock")));
    }
}

TEST(LocalCommands, List) {
    const QStringList all{
        "app: stable @ http://h -> `/games/stable`  (the global default, self-heal default)\n",
        "kit: kit @ http://h -> `/kit`  (every 90s, self-heal full)  [managed]\n",
        "odd: c @ http://o -> `/o`  (manual (no auto-sync), self-heal default)\n",
        "%1: c @ %2 -> `/q`  (every 1s, self-heal quick)\n",
        "n:  @  -> `/n`  (the global default, self-heal none)\n"};
    const QString file = "\nConfig file: `{box}/config/config.json`\n";
    check({args("config list x"),
           "server = http://d\ntoken = (set)\n\nSubscriptions:\n  " + all.join("  ") + file,
           kJoined});
    for (const char* before : {"", R"({"schema_version":2,"token":""})"}) {
        check({args("config"),
               "server = (not set)\ntoken = (not set)\n\nSubscriptions:\n  (none)\n" + file,
               *before == '\0' ? R"({"schema_version":2})" : before,
               {},
               before});
    }
    const QJsonObject entries{{"subscriptions", object(kJoined)["subscriptions"]}};
    check({args("subscriptions"), all.join(QString()), QJsonDocument(entries).toJson()});
    check({args("subscriptions x"),
           "No subscriptions. Add one with:\n  quorvelle subscribe <server> <channel> --dir "
           "<path>\n",
           R"({"subscriptions":[]})",
           {},
           ""});
    check({args("config get token"), "token is not set", {}, {}, ""});
}

TEST(LocalCommands, Refuse) {
    for (const QStringList& row : rows(R"(
config get 100%1 | Unknown key '100%1'. Known keys: server, token
config set colour red | Unknown key 'colour'. Known keys: server, token
config get download-dir | 'download-dir' moved into subscriptions - use 'quorvelle subscribe' / 'quorvelle subscriptions'
config set channel x | 'channel' moved into subscriptions - use 'quorvelle subscribe' / 'quorvelle subscriptions'
server set-root http://o/ /n | no such server in the client config: http://o/
server set-root %1 /n | no such server in the client config: %1
subscribe http://n c --dir x --name app | A subscription named 'app' already exists - pick another with --name
subscribe http://n odd --dir x | A subscription named 'odd' already exists - pick another with --name
subscription set-interval nobody 1.5 | interval must be a positive number of seconds, 'manual', or 'default'
subscription set-interval 100%1 5 | no subscription named '100%1'
subscription set-self-heal app 2 | self-heal must be 'none', 'quick', 'full', or 'default'
subscription set-self-heal App full | no subscription named 'App'
unsubscribe 100%1 | No subscription named '100%1')")) {
        check({args(row[0]), row[1]});
    }
}

TEST(LocalCommands, SayThatTheyCannotSave) {
    Sandbox box;
    box.write("config/config.json", kJoined);
    box.write("config/config.json.lock/in-the-way", "");
    const QString file = QDir::toNativeSeparators(box.configPath());
    for (const QStringList& row : rows(R"(
config set server http://n                | Could not write FILE
server set-token http://h new             | could not save config
server set-root http://h /n               | could not save config
subscribe http://n c --dir x              | could not write FILE
unsubscribe app                           | could not write FILE
subscription set-interval app 5           | could not write FILE
subscription set-self-heal app full       | could not write FILE)")) {
        SCOPED_TRACE(row[0].toStdString());
        expectError(box, args(row[0]), 2, QString(row[1]).replace("FILE", file));
    }
    EXPECT_EQ(box.read("config/config.json"), kJoined);
}

TEST(LocalCommands, SaveNothingOverAFileThatTheyCannotRead) {
    const Sandbox box;
    box.write("config/config.json", kJoined);
    {
        const Held held(box.configPath(), Held::From::kReads);
        EXPECT_EQ(runObeyingPermissions(box, args("config set server http://n")).code, 2);
        expectOutcome(runObeyingPermissions(box, args("unsubscribe app")), 2, {},
                      "could not write " + QDir::toNativeSeparators(box.configPath()) + '\n');
    }
    EXPECT_EQ(box.tree("config"), QStringList("config.json=" + QString(kJoined)));
}

/// Each row: the words, the text, the JSON object, what changes.
TEST(LocalCommands, ChangeAndSayWhatTheyWereAskedFor) {
    const QString repointed =
        " subscription(s) repointed; nothing moved - the next sync reuses what is there).\n";
    for (const QStringList& row : rows(R"(
config get server | http://d | {'server':'http://d'} | {}
config get token | top | {'token':'top'} | {}
config set server ~http://N// | server =  http://N// | {'server':' http://N//'} | {'server':' http://N//'}
config set token 100%1 | token = 100%1 | {'token':'100%1'} | {'token':'100%1'}
config set token Ünïcode~日本 | token = Ünïcode 日本 | {'token':'Ünïcode 日本'} | {'token':'Ünïcode 日本'}
server set-root http://h {drive}/m | Install root for http://h is now `{drive}/m` (2 | {'server':'http://h','install_root':'{drive}/m','repointed':2} | {'servers/0/install_root':'{drive}/m','subscriptions/0/dir':'{drive}/m/stable','subscriptions/1/dir':'{drive}/m/kit'}
server set-root http://h// sub | Install root for http://h is now `{box}/sub` (2 | {'server':'http://h','install_root':'{box}/sub','repointed':2} | {'servers/0/install_root':'{box}/sub','subscriptions/0/dir':'{box}/sub/stable','subscriptions/1/dir':'{box}/sub/kit'}
server set-token http://h/ new | Token stored for http://h | {'server':'http://h'} | {'servers/0/token':'new','subscriptions/0/token':'new','subscriptions/1/token':'new'}
server set-token http://o// %1 | Token stored for http://o | {'server':'http://o'} | {'servers/2':{'server':'http://o','token':'%1','install_root':''},'subscriptions/2/token':'%1'}
unsubscribe kit | Unsubscribed 'kit' (installed files stay on disk) | {'unsubscribed':'kit'} | {'subscriptions/1':null})")) {
        const QString ending = row[1].contains("Install root") ? repointed : "\n";
        check({typed(row[0]), row[1] + ending, QString(row[2]).replace('\'', '"'),
               json(row[3].toUtf8())});
    }
    check({typed("unsubscribe Ü~%1"),
           "Unsubscribed 'Ü %1' (installed files stay on disk)\n",
           R"({"unsubscribed":"Ü %1"})",
           {{"subscriptions", QJsonArray()}},
           R"({"schema_version":2,"subscriptions":[{"name":"Ü %1"}]})"});
}

/// Each row: a subscription's name, server and channel, its folder and the one afterwards.
TEST(LocalCommands, SetRootGivesEverySubscriptionAFolderOfItsOwn) {
    const Sandbox box;
    QJsonArray before;
    QJsonArray after;
    for (const QStringList& row : rows(R"(
        a | http://h  | c | old          | new/c-2
        b | http://h/ | c | new/c-2/deep | new/c-3
        z | http://z  | c | new/c        | new/c
        d | http://h  | d | old          | new/d
        y | http://y  | e | taken        | taken)")) {
        QJsonObject entry{{"name", row[0]}, {"server", row[1]}, {"channel", row[2]}};
        entry["dir"] = box.path(row[3]);
        before.append(entry);
        entry["dir"] = box.path(row[4]);
        after.append(entry);
    }
    box.writeConfig(
        {{"servers", QJsonArray{QJsonObject{{"server", "http://h"}}}}, {"subscriptions", before}});
    EXPECT_EQ(box.run(args("server set-root http://h new --json")).json()["repointed"], 3);
    EXPECT_EQ(box.config()["subscriptions"].toArray(), after);

    const Outcome refused = box.run(args("server set-root http://h taken/below"));
    EXPECT_EQ(refused.code, 2);
    const QString line = "http://h: channel '%1' has no free folder below " +
                         QDir::toNativeSeparators(box.path("taken/below")) +
                         " - subscribe to it by hand\n";
    EXPECT_EQ(refused.err, line.arg("c") + line.arg("c") + line.arg("d"));
    EXPECT_TRUE(refused.out.contains(" (0 subscription(s) repointed;"));
    EXPECT_EQ(box.config()["subscriptions"].toArray(), after);
    expectUsage(box, {"server", "set-root", "http://h", ""});
}

/// Each row: the words, the settings in the text, what the entry holds besides what most
/// entries do, other changes, the token in the environment.
TEST(LocalCommands, Subscribe) {
    for (const QStringList& row : rows(R"(
http://n/// c | the global default, self-heal default | {} | {} |
http://h/ c | the global default, self-heal default | {'server':'http://h','token':'old'} | {} | env
http://s c | the global default, self-heal default | {'server':'http://s/','token':'slash'} | {} |
http://n c | the global default, self-heal default | {'token':'env'} | {} | env
http://h c --token mine | the global default, self-heal default | {'server':'http://h','token':'mine'} | {'servers/0/token':'mine'} |
http://n/ c --token mine | the global default, self-heal default | {'token':'mine'} | {'servers/2':{'server':'http://n','token':'mine','install_root':''}} |
http://n c --interval ~2147483647~ | every 2147483647s, self-heal default | {'interval_seconds':2147483647} | {} |
http://n stable --name n2 --self-heal Full | the global default, self-heal full | {'name':'n2','self_heal':2} | {} |
http://n %1 --name 100%2 | the global default, self-heal default | {'name':'100%2'} | {} |
http://n Ünïcode~日本 | the global default, self-heal default | {} | {} |)")) {
        const QStringList words = typed(row[0]);
        QJsonObject entry{{"name", words[1]},  {"channel", words[1]}, {"server", "http://n"},
                          {"dir", "{box}/in"}, {"token", "top"},      {"interval_seconds", -1},
                          {"self_heal", -1}};
        const QJsonObject own = json(row[2].toUtf8());
        for (auto part = own.begin(); part != own.end(); ++part) {
            entry.insert(part.key(), part.value());
        }
        QJsonObject changes = json(row[3].toUtf8());
        changes["subscriptions/5"] = entry;
        check({QStringList("subscribe") + words + args("--dir in"),
               QString("Subscribed:\n  %1: %2 @ %3 -> `{box}/in`  (%4)\n")
                   .arg(entry["name"].toString(), words[1], entry["server"].toString(), row[1]),
               QJsonDocument(entry).toJson(), changes, kJoined, row[4]});
    }
}

TEST(LocalCommands, ChangeASetting) {
    for (const QStringList& row : rows(R"(
set-interval  | Off     | now syncs manual (no auto-sync)  | interval_seconds | 0
set-interval  | DEFAULT | now syncs the global default     | interval_seconds | -1
set-self-heal | Full    | self-heal check: full            | self_heal        | 2)")) {
        QJsonObject entry = object(kJoined)["subscriptions"][0].toObject();
        entry[row[3]] = row[4].toInt();
        check({{"subscription", row[0], "app", row[1]},
               "Subscription 'app' " + row[2] + '\n',
               QJsonDocument(entry).toJson(),
               {{"subscriptions/0/" + row[3], row[4].toInt()}}});
    }
}

}  // namespace
}  // namespace quorvelle::testing
