#include <gmock/gmock.h>

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include "support/outcomes.h"
#include "support/qt_printers.h"

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
   "self_heal":7}]})";

const char kAppLine[] =
    "app: stable @ http://h -> /games/stable  (the global default, self-heal default)\n";
const char kKitLine[] = "kit: kit @ http://h -> /kit  (every 90s, self-heal full)  [managed]\n";
const char kOddLine[] = "odd: c @ http://o -> /o  (manual (no auto-sync), self-heal default)\n";

/// The value with the part at a path such as "servers/0/token" set; an undefined part
/// takes an array's element out.
QJsonValue changed(const QJsonValue& whole, const QStringList& path, const QJsonValue& part) {
    if (path.isEmpty()) {
        return part;
    }
    if (!whole.isArray()) {
        QJsonObject result = whole.toObject();
        result.insert(path.first(), changed(result.value(path.first()), path.sliced(1), part));
        return result;
    }
    QJsonArray result = whole.toArray();
    const qsizetype at = path.first().toLongLong();
    const QJsonValue element = changed(result.at(at), path.sliced(1), part);
    if (element.isUndefined()) {
        result.removeAt(at);
    } else if (at == result.size()) {
        result.append(element);
    } else {
        result.replace(at, element);
    }
    return result;
}

/// One command on a configuration and all that it does. "{box}" stands for the sandbox's
/// folder, where the commands run.
struct Row {
    const char* name;
    const char* before;
    QStringList words;
    int code;
    /// Text mode: standard output of a success, else the line on standard error.
    QString said;
    /// Standard output of a success in JSON mode.
    QString json = {};
    std::vector<std::pair<const char*, QJsonValue>> changes = {};
    const char* environmentToken = "";
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class LocalCommand : public ::testing::TestWithParam<Row> {
protected:
    QString placed(QString text) const { return text.replace("{box}", box.path({})); }

    void run(const QStringList& words) {
        const Row& row = GetParam();
        box.environment.insert("QUORVELLE_TOKEN", row.environmentToken);
        const bool none = *row.before == '\0';
        if (!none) {
            box.write("config/config.json", row.before);
        }
        got = box.run(words);
        EXPECT_EQ(got.code, row.code);
        if (row.changes.empty()) {
            EXPECT_EQ(box.read("config/config.json"), none ? "(missing)" : row.before);
        } else {
            QJsonValue expected = object(row.before);
            for (const auto& [path, value] : row.changes) {
                expected = changed(expected, QString(path).split(u'/'), value);
            }
            EXPECT_EQ(box.config(), object(placed(QJsonDocument(expected.toObject()).toJson())));
        }
        EXPECT_FALSE(QFileInfo::exists(box.path("config/config.json.lock")));
    }

    Sandbox box;
    Outcome got;
};

TEST_P(LocalCommand, InTextMode) {
    const Row& row = GetParam();
    run(row.words);
    EXPECT_EQ(got.out, row.code == 0 ? placed(row.said) : QString());
    EXPECT_EQ(got.err, row.code == 0 ? QString() : row.said + u'\n');
}

TEST_P(LocalCommand, InJsonMode) {
    const Row& row = GetParam();
    run(row.words + QStringList("--json"));
    EXPECT_EQ(got.err, QString());
    const QJsonObject refusal{{"error", row.said}};
    EXPECT_EQ(got.json(), row.code == 0 ? object(placed(row.json)) : refusal);
}

std::string rowName(const ::testing::TestParamInfo<Row>& info) {
    return info.param.name;
}

const QString kMoved =
    "'%1' moved into subscriptions - use 'quorvelle subscribe' / 'quorvelle subscriptions'";
const QString kUnknown = "Unknown key '%1'. Known keys: server, token";
const QString kListed = QString("server = http://d\ntoken = (set)\n\nSubscriptions:\n  ") +
                        kAppLine + "  " + kKitLine + "  " + kOddLine +
                        "\nConfig file: {box}/config/config.json\n";
const QString kListedEmpty =
    "server = (not set)\ntoken = (not set)\n\nSubscriptions:\n  (none)\n\n"
    "Config file: {box}/config/config.json\n";

/// A command that succeeds on kJoined.
Row done(const char* name, const QStringList& words, const QString& said, const QString& json,
         const decltype(Row::changes)& changes = {}) {
    return {name, kJoined, words, 0, said, json, changes};
}

/// A command that is refused and leaves kJoined as it is.
Row refused(const char* name, const QString& line, const QString& said) {
    return {name, kJoined, args(line), 1, said};
}

INSTANTIATE_TEST_SUITE_P(
    ConfigList, LocalCommand,
    ::testing::Values(done("all", args("config list"), kListed, kJoined),
                      done("more_words", args("config list x"), kListed, kJoined),
                      Row{"nothing", "", args("config"), 0, kListedEmpty,
                          R"({"schema_version":2})"},
                      Row{"empty_token", R"({"schema_version":2,"token":""})", args("config"), 0,
                          kListedEmpty, R"({"schema_version":2,"token":""})"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    ConfigKeys, LocalCommand,
    ::testing::Values(
        done("server", args("config get server"), "http://d\n", R"({"server":"http://d"})"),
        done("token", args("config get token"), "top\n", R"({"token":"top"})"),
        Row{"unset", "", args("config get token"), 1, "token is not set"},
        refused("get_unknown", "config get colour", kUnknown.arg("colour")),
        refused("get_percent", "config get 100%1", kUnknown.arg("100%1")),
        refused("set_unknown", "config set colour red", kUnknown.arg("colour")),
        refused("get_channel", "config get channel", kMoved.arg("channel")),
        refused("get_download_dir", "config get download-dir", kMoved.arg("download-dir")),
        refused("set_channel", "config set channel x", kMoved.arg("channel")),
        done("as_typed", {"config", "set", "server", " http://N//"}, "server =  http://N//\n",
             R"({"server":" http://N//"})", {{"server", " http://N//"}}),
        done("percent", args("config set token 100%1"), "token = 100%1\n", R"({"token":"100%1"})",
             {{"token", "100%1"}}),
        done("beyond_ascii", {"config", "set", "token", "Ünïcode 日本"}, "token = Ünïcode 日本\n",
             R"({"token":"Ünïcode 日本"})", {{"token", "Ünïcode 日本"}})),
    rowName);

const QString kRoot =
    "Install root for %1 is now %2 (%3 subscription(s) repointed; nothing moved - the next sync "
    "reuses what is there).\n";
const char kStranger[] = "no such server in the client config: ";

QJsonObject server(const char* url, const char* token) {
    return {{"server", url}, {"token", token}, {"install_root", ""}};
}

INSTANTIATE_TEST_SUITE_P(
    Server, LocalCommand,
    ::testing::Values(
        done("root", args("server set-root http://h /n"), kRoot.arg("http://h", "/n", "2"),
             R"({"server":"http://h","install_root":"/n","repointed":2})",
             {{"servers/0/install_root", "/n"},
              {"subscriptions/0/dir", "/n/stable"},
              {"subscriptions/1/dir", "/n/kit"}}),
        done("root_relative", args("server set-root http://h// sub"),
             kRoot.arg("http://h", "{box}/sub", "2"),
             R"({"server":"http://h","install_root":"{box}/sub","repointed":2})",
             {{"servers/0/install_root", "{box}/sub"},
              {"subscriptions/0/dir", "{box}/sub/stable"},
              {"subscriptions/1/dir", "{box}/sub/kit"}}),
        done("root_of_stored_slash", args("server set-root http://s /n"),
             kRoot.arg("http://s/", "/n", "0"),
             R"({"server":"http://s/","install_root":"/n","repointed":0})",
             {{"servers/1/install_root", "/n"}}),
        refused("root_of_stranger", "server set-root http://o/ /n",
                kStranger + QString("http://o/")),
        refused("root_of_percent", "server set-root %1 /n", kStranger + QString("%1")),
        done("token", args("server set-token http://h/ new"), "Token stored for http://h\n",
             R"({"server":"http://h"})",
             {{"servers/0/token", "new"},
              {"subscriptions/0/token", "new"},
              {"subscriptions/1/token", "new"}}),
        done("token_of_new_entry", args("server set-token http://o// %1"),
             "Token stored for http://o\n", R"({"server":"http://o"})",
             {{"servers/2", server("http://o", "%1")}, {"subscriptions/2/token", "%1"}})),
    rowName);

const char kDefaults[] = "the global default, self-heal default";

/// A successful "subscribe <server> <channel> ..." of the directory "in". `entry` is what
/// is stored, but for the values that most entries share; `settings` is what the line says
/// of them.
Row subscribed(const char* label, const QStringList& words, const QString& settings,
               const QJsonObject& entry) {
    QJsonObject whole{{"name", words.at(1)}, {"channel", words.at(1)}, {"server", "http://n"},
                      {"dir", "{box}/in"},   {"token", "top"},         {"interval_seconds", -1},
                      {"self_heal", -1}};
    for (auto part = entry.begin(); part != entry.end(); ++part) {
        whole.insert(part.key(), part.value());
    }
    const QString said =
        QString("Subscribed:\n  %1: %2 @ %3 -> {box}/in  (%4)\n")
            .arg(whole["name"].toString(), words.at(1), whole["server"].toString(), settings);
    return done(label, QStringList("subscribe") + words + args("--dir in"), said,
                QJsonDocument(whole).toJson(), {{"subscriptions/3", whole}});
}

Row withToken(const char* token, Row row) {
    row.environmentToken = token;
    return row;
}

Row alsoStoring(Row row, const char* path, const QJsonValue& value) {
    row.changes.emplace_back(path, value);
    return row;
}

const QString kTaken = "A subscription named '%1' already exists - pick another with --name";

INSTANTIATE_TEST_SUITE_P(
    Subscribe, LocalCommand,
    ::testing::Values(
        subscribed("defaults", args("http://n/// c"), kDefaults, {}),
        withToken("env", subscribed("token_of_entry", args("http://h/ c"), kDefaults,
                                    {{"server", "http://h"}, {"token", "old"}})),
        subscribed("stored_slash", args("http://s c"), kDefaults,
                   {{"server", "http://s/"}, {"token", "slash"}}),
        withToken("env", subscribed("token_of_environment", args("http://n c"), kDefaults,
                                    {{"token", "env"}})),
        alsoStoring(subscribed("token_option", args("http://h c --token mine"), kDefaults,
                               {{"server", "http://h"}, {"token", "mine"}}),
                    "servers/0/token", "mine"),
        alsoStoring(subscribed("token_option_new_server", args("http://n/ c --token mine"),
                               kDefaults, {{"token", "mine"}}),
                    "servers/2", server("http://n", "mine")),
        subscribed("manual", args("http://n c --interval MANUAL"),
                   "manual (no auto-sync), self-heal default", {{"interval_seconds", 0}}),
        subscribed("seconds", {"http://n", "c", "--interval", " 2147483647 "},
                   "every 2147483647s, self-heal default", {{"interval_seconds", 2147483647}}),
        subscribed("full", args("http://n stable --name n2 --self-heal Full"),
                   "the global default, self-heal full", {{"name", "n2"}, {"self_heal", 2}}),
        subscribed("percent", args("http://n %1 --name 100%2"), kDefaults, {{"name", "100%2"}}),
        subscribed("beyond_ascii", {"http://n", "Ünïcode 日本"}, kDefaults, {}),
        refused("name_taken", "subscribe http://n c --dir x --name app", kTaken.arg("app")),
        refused("channel_taken", "subscribe http://n odd --dir x", kTaken.arg("odd"))),
    rowName);

/// A change of one setting of "app", which prints the changed entry in JSON mode.
Row setting(const char* label, const QString& word, const QString& typed, const QString& said,
            const char* key, int stored) {
    QJsonObject entry = object(kJoined)["subscriptions"][0].toObject();
    entry.insert(key, stored);
    return done(label, {"subscription", word, "app", typed}, "Subscription 'app' " + said + u'\n',
                QJsonDocument(entry).toJson(), {{"subscriptions/0", entry}});
}

Row interval(const char* label, const QString& typed, int stored, const QString& text) {
    return setting(label, "set-interval", typed, "now syncs " + text, "interval_seconds", stored);
}

Row selfHeal(const char* label, const QString& typed, int stored, const QString& text) {
    return setting(label, "set-self-heal", typed, "self-heal check: " + text, "self_heal", stored);
}

const char kInterval[] = "interval must be a positive number of seconds, 'manual', or 'default'";
const char kSelfHeal[] = "self-heal must be 'none', 'quick', 'full', or 'default'";

INSTANTIATE_TEST_SUITE_P(
    Settings, LocalCommand,
    ::testing::Values(interval("one", "1", 1, "every 1s"),
                      interval("off", "Off", 0, "manual (no auto-sync)"),
                      interval("global", "DEFAULT", -1, "the global default"),
                      refused("value_first", "subscription set-interval nobody 1.5", kInterval),
                      refused("interval_of_nobody", "subscription set-interval 100%1 5",
                              "no subscription named '100%1'"),
                      selfHeal("full", "Full", 2, "full"),
                      selfHeal("heal_default", "default", -1, "default"),
                      refused("heal_number", "subscription set-self-heal app 2", kSelfHeal),
                      refused("heal_of_nobody", "subscription set-self-heal App full",
                              "no subscription named 'App'")),
    rowName);

const QString kSubscriptions =
    QJsonDocument(QJsonObject{{"subscriptions", object(kJoined)["subscriptions"]}}).toJson();

INSTANTIATE_TEST_SUITE_P(
    Subscriptions, LocalCommand,
    ::testing::Values(
        done("lines", args("subscriptions"), QString(kAppLine) + kKitLine + kOddLine,
             kSubscriptions),
        Row{"surplus_words", "", args("subscriptions x"), 0,
            "No subscriptions. Add one with:\n  quorvelle subscribe <server> <channel> --dir "
            "<path>\n",
            R"({"subscriptions":[]})"},
        done("remove", args("unsubscribe kit"),
             "Unsubscribed 'kit' (installed files stay on disk)\n", R"({"unsubscribed":"kit"})",
             {{"subscriptions/1", QJsonValue::Undefined}}),
        Row{"remove_last",
            R"({"schema_version":2,"subscriptions":[{"name":"Ü %1"}]})",
            {"unsubscribe", "Ü %1"},
            0,
            "Unsubscribed 'Ü %1' (installed files stay on disk)\n",
            R"({"unsubscribed":"Ü %1"})",
            {{"subscriptions", QJsonArray()}}},
        refused("remove_nobody", "unsubscribe 100%1", "No subscription named '100%1'")),
    rowName);

TEST(LocalCommandUsage, IsPrintedForWrongWordsAndNothingIsSaved) {
    const Sandbox box;
    for (const char* line :
         {"config get", "config get server x", "config set server", "config set server a b",
          "config remove server", "subscribe http://n c", "subscribe http://n c --dir",

          "subscribe c --dir x", "subscribe http://n c d --dir x",
          "subscribe http://n c --dir x --interval -5", "subscribe http://n c --dir x --interval",
          "subscribe http://n c --dir x --interval 1.5",
          "subscribe http://n c --dir x --interval 2147483648",
          "subscribe http://n c --dir x --self-heal 1", "subscription set-interval app",
          "subscription set-interval app 5 6", "subscription set-self-heal", "unsubscribe",
          "unsubscribe app kit"}) {
        SCOPED_TRACE(line);
        expectUsage(box, args(line));
        EXPECT_EQ(box.read("config/config.json"), "(missing)");
    }
}

}  // namespace
}  // namespace quorvelle::testing
