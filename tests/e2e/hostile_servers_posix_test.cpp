#include <sys/resource.h>

#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>
#include <map>

#include "support/fake_builds.h"
#include "support/hostile_server_posix.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

namespace {

const QString kSecret = QStringLiteral("our-own-secret");
/// With this, all begins that no other origin may learn.
constexpr char kOurs[] = "our-own";
const TideFiles kHostileBuild{{"a", {"one", "two"}}, {"d/b", {"one"}}};

/// Nothing that a server does may make a run last longer; what has no answer ends after 1 s.
constexpr int kLongestMs = 60'000;
/// Of sanitized programs, the memory says nothing.
constexpr long kMostKiB = !QUORVELLE_SANITIZED ? 300 * 1024 : 1L << 40;

/// Between "|", the lines after each other; "%1" is the server. What is secret begins with
/// `kSecret` or `kOurs`.
constexpr char kCommands[] = R"(
sync --name cargo | sync --name tide | sync --name tide --force | sync --name signed | sync
push src --channel c --server %1 | promote c b1 --server %1 | promote c --from d --server %1
join %1 our-own-code --install-root apps | reconcile | run cargo --wait
request-access %1 --name u --email e | requests | request approve i | request decline i
builds | build b1 | build delete b1 | build disable b1
channels | channel create c | channel delete c | channel public c true | channel launch list c
channel launch add c --label l --exe e | channel launch remove c l
channel launch primary c l | channel launch clear c
whoami | users | user create u | user delete u | user set-role u member | user follow u c
token create t --user u | invites | invite create u | invite revoke i
groups | group create g | group delete g | group assign-channel g c
server-version | license | license request-trial --name l | cloud portal
backup | backups | backup init --shared | backup schedule 03:00 | backup forget
storage show | storage test | storage forget
storage set --endpoint e --bucket b --access-key k --secret-key our-own-secret-key
storage init --yes --bucket new-bucket --ci-secret-file config/ci
sso set --issuer i --client-id c --client-secret our-own-secret-too
sso show | sso test | sso clear | sso map list | sso map role r admin | sso map remove r)";

/// An answer that is good for every request of the API, with all keys that any of them has.
/// "THING" stands for whatever has a name.
constexpr char kGoodObject[] = R"({'schema_version':1, 'build':'b1', 'channels':['c','d'],
    'files':[{'path':'a','size':3},{'path':'d/b','size':3}], 'launch_targets':[THING],
    'builds':[THING], 'users':[THING], 'invites':[THING], 'requests':[THING],
    'snapshots':[THING], 'groups':['c','d'], 'token':'theirs', 'code':'x', 'user':'u',
    'role':'admin', 'name':'n', 'version':'1', 'status':'trial', 'url':'https://x/',
    'configured':true, 'mapping':{'roles':{'r':'admin'}}, 'encryption_key':'k',
    'schedule':{'daily_at':'03:00','keep':7}, 'last':THING, 'success':true, 'result':[THING]})";
constexpr char kThing[] = R"({'build':'b1','channel':'c','name':'n','id':'i','path':'a','size':3,
    'channels':['c','d'],'groups':['c','d'],'members':['c','d'],'label':'l','exe':'a',
    'primary':true,'code':'x','disabled':false,'file_count':1})";

QJsonObject goodObject(const QString& server) {
    QJsonObject chunks;
    for (const char* bytes : {"one", "two"}) {
        chunks.insert(chunkId(bytes), server + QString::fromStdString(chunkTarget(bytes)));
    }
    QJsonObject object = json(QByteArray(kGoodObject).replace("THING", kThing));
    object.insert("manifest_url", server + kManifestTarget);
    object.insert("manifest_sig_url", server + kSignatureTarget);
    object.insert("chunks", chunks);
    return object;
}

GoodReply goodReply(const std::string& target, const QString& server) {
    const auto contains = [&](const char* part) { return target.find(part) != std::string::npos; };
    if (contains("/store/chunks/")) {
        return {target == chunkTarget("one") ? "one" : "two", false};
    }
    if (contains("/store/")) {
        const std::string manifest = tideManifest("tide", kHostileBuild);
        return {QByteArray::fromStdString(contains(".sig") ? signatureOf(manifest) : manifest),
                !contains(".sig")};
    }
    if (contains("files?path=")) {
        return {"one", false};
    }
    QJsonObject object = goodObject(server);
    if (contains("/channels/tide")) {
        object.insert("engine", "tide");
    }
    const QJsonArray things = object.value("users").toArray();
    if (target == "/api/channels") {
        object.insert("channels", things);
    } else if (contains("/r2/buckets")) {
        object.insert("result", QJsonObject{{"buckets", things}});
    } else if (target == "/user/tokens") {
        object.insert("result", QJsonObject{{"id", "i"}, {"value", "v"}});
    }
    return {QJsonDocument(object).toJson(QJsonDocument::Compact)};
}

/// The program's home, with everything that it may touch and some things that it may not.
class Home {
public:
    explicit Home(const QString& server) : url(server) {
        for (const char* name :
             {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR", "TMPDIR"}) {
            QDir().mkpath(box.path("home/" + QString(name)));
            box.environment.insert(name, box.path("home/" + QString(name)));
        }
        for (const auto& [name, value] :
             std::map<QString, QString>{{"QUORVELLE_IDLE_TIMEOUT", "1"},
                                        {"QUORVELLE_TRIAL_URL", server},
                                        {"QUORVELLE_CLOUDFLARE_API_URL", server},
                                        {"CLOUDFLARE_API_TOKEN", kSecret + "-of-the-operator"},
                                        {"HOME", box.path("home")}}) {
            box.environment.insert(name, value);
        }
        // Else a sanitizer ends with 1, as the program may.
        for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS"}) {
            box.environment.insert(name, box.environment.value(name) + ":exitcode=99");
        }
        box.write("src/a", "one");
        box.write("src/outside", "untouched");
    }

    void configure() {
        QJsonArray subscriptions;
        for (const QString name : {"cargo", "tide", "signed"}) {
            QJsonObject entry{{"name", name},
                              {"server", url},
                              {"channel", name == "signed" ? "tide" : name},
                              {"dir", box.path("apps/" + name)}};
            if (name == "signed") {
                entry.insert("tide_public_key", signingKey());
            }
            subscriptions.append(entry);
        }
        box.writeConfig({{"server", url},
                         {"token", kSecret},
                         {"install_root", box.path("apps")},
                         {"servers", QJsonArray{QJsonObject{{"server", url}, {"token", kSecret}}}},
                         {"subscriptions", subscriptions}});
    }

    /// All files but those of installs, their state, the configuration and the cache.
    QStringList outside() const {
        QStringList files = box.tree(".");
        files.removeIf([](const QString& file) {
            return file.startsWith("apps/") || file.startsWith("config/") ||
                   file.startsWith("home/XDG_CACHE_HOME/");
        });
        return files;
    }

    Sandbox box;

private:
    QString url;
};

/// The most memory that any run of a program (RUSAGE_CHILDREN) or this one had so far.
long peakKiB(int whose) {
    rusage usage{};
    ::getrusage(whose, &usage);
    return usage.ru_maxrss;
}

int number(const char* variable, int otherwise) {
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) : otherwise;
}

}  // namespace

/// Every command against a server that spoils its answers. HOSTILE_SECONDS and HOSTILE_SEED
/// make it longer and another; HOSTILE_FIRST leaves runs out.
TEST(HostileServers, DoNoHarm) {
    QString url;
    HostileServer other([&](const std::string& target) { return goodReply(target, url); }, {});
    HostileServer server([&](const std::string& target) { return goodReply(target, url); },
                         other.url().toUtf8());
    url = server.url();
    Home home(url);
    const QStringList outside = home.outside();
    const int seed = number("HOSTILE_SEED", 1);
    const int seconds = number("HOSTILE_SECONDS", 0);
    const QStringList commands = rows(QString(kCommands).trimmed().replace('\n', '|'))[0];
    std::map<std::string, std::map<int, int>> table;
    // Tests before this one may have had larger runs.
    const long most = std::max(kMostKiB, peakKiB(RUSAGE_CHILDREN));
    QElapsedTimer clock;
    clock.start();
    for (int run = number("HOSTILE_FIRST", 0);
         seconds > 0 ? clock.elapsed() < seconds * 1000LL : run < 2 * commands.size(); ++run) {
        const QString line = commands[run % commands.size()];
        SCOPED_TRACE("run " + std::to_string(run) + " of seed " + std::to_string(seed) + ": " +
                     line.toStdString());
        home.configure();
        if (run % 3 == 0) {
            QDir(home.box.path("apps")).removeRecursively();
        }
        server.reseed(static_cast<unsigned>(seed * 1'000'003 + run));
        other.reseed(0);
        QStringList words = QString(line).replace("%1", url).split(' ');
        if (run % 2 == 1) {
            words.append("--json");
        }
        QElapsedTimer time;
        time.start();
        const Outcome got = home.box.run(words);
        std::string deeds;
        for (const std::string& deed : server.deeds()) {
            deeds += deed + "; ";
            ++table[deed][got.code];
        }
        EXPECT_TRUE(got.code >= 0 && got.code <= 3)
            << got.code << " after " << deeds << got.err.right(3000).toStdString();
        EXPECT_LT(time.elapsed(), kLongestMs) << deeds;
        EXPECT_FALSE((got.out + got.err).contains(kSecret)) << deeds << got.out.toStdString();
        EXPECT_EQ(other.received().find(kOurs), std::string::npos) << deeds;
        EXPECT_EQ(home.outside(), outside) << deeds;
        // Until it is the program, a child counts what this process has.
        ASSERT_LE(peakKiB(RUSAGE_CHILDREN), std::max(most, peakKiB(RUSAGE_SELF))) << deeds;
        if (HasFailure() && seconds == 0) {
            break;
        }
    }
    EXPECT_FALSE(table.empty());
    for (const auto& [deed, codes] : table) {
        std::printf("%-24s", deed.c_str());
        for (const auto& [code, count] : codes) {
            std::printf("  exit %d: %d", code, count);
        }
        std::printf("\n");
    }
}

}  // namespace quorvelle::testing
