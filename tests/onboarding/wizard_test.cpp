#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <map>

#include "onboarding/cloudflare_api.h"
#include "onboarding/interrupts.h"
#include "onboarding_fixture.h"
#include "support/raw_server.h"

namespace quorvelle::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

struct At {
    std::size_t number;
    Fault fault;
};

std::set<std::string> reported(const std::string& err) {
    const QString text = QString::fromStdString(err).section(
        "could not undo everything - delete this by hand in Cloudflare: ", 1);
    std::set<std::string> names;
    for (const QString& name : text.section('\n', 0, 0).split(", ", Qt::SkipEmptyParts)) {
        names.insert(name.toStdString());
    }
    return names;
}

constexpr Fault kFaults[] = {Fault::kRefuse, Fault::kGarbage, Fault::kLoseRequest,
                             Fault::kLoseAnswer, Fault::kInterrupt};

struct WizardTest : OnboardingTest {
    WizardTest() {
        cloudflare.interrupt = [] { ::kill(::getpid(), SIGINT); };
    }

    /// One run with these faults. Returns the lines of its requests.
    std::vector<std::string> check(bool single, bool shared, const std::vector<At>& faults) {
        std::string name = std::string(single ? "single" : "two") + (shared ? " shared" : "");
        cloudflare.reset(shared);
        for (const At& at : faults) {
            cloudflare.failAt(at.number, at.fault);
            name += " " + std::to_string(at.number) + ":" + std::to_string(int(at.fault));
        }
        SCOPED_TRACE(name);
        const Ran ran = run(usual + " --yes" + (single ? " --single-token" : ""));
        const std::set<std::string> left = cloudflare.left();
        EXPECT_THAT(ran.out + ran.err, Not(HasSubstr("operator-secret")));
        EXPECT_THAT(ran.out + ran.err, Not(HasSubstr("value-tok")));
        if (ran.code == 0) {
            EXPECT_EQ(left.size(), single ? 2U : 3U);
            EXPECT_EQ(left.count("bucket builds-1"), 1U);
            EXPECT_EQ(cloudflare.connected(), "builds-1");
            EXPECT_EQ(ran.err, "");
        } else {
            EXPECT_EQ(left, reported(ran.err)) << ran.err;
            EXPECT_THAT(ran.out, Not(HasSubstr("TIDE_S3_SECRET")));
            EXPECT_NE(ran.err, "");
        }
        ++endings[ran.code == 0 ? "connected" : left.empty() ? "undone" : "left behind"];
        return cloudflare.server.lines();
    }

    std::map<std::string, int> endings;
};

}  // namespace

/// Every fault at every request, and after it a refusal of every request that follows.
TEST_F(WizardTest, LeavesBehindWhatItSays) {
    for (const int mode : {0, 1, 2, 3}) {
        const bool single = mode % 2 == 1;
        const bool shared = mode >= 2;
        const std::size_t steps = check(single, shared, {}).size();
        EXPECT_EQ(steps, single ? 9U : 10U);
        for (std::size_t n = 1; n <= steps; ++n) {
            for (const Fault fault : kFaults) {
                if (fault == Fault::kInterrupt && n <= 2) {
                    continue;  // ends the process as ever, before anything was created
                }
                const auto lines = check(single, shared, {{n, fault}});
                for (std::size_t m = n + 1; m <= lines.size(); ++m) {
                    if (lines[m - 1] != lines[m - 2]) {
                        check(single, shared, {{n, fault}, {m, Fault::kRefuse}});
                    }
                }
            }
        }
    }
    EXPECT_GT(endings["connected"], 20);
    EXPECT_GT(endings["undone"], 100);
    EXPECT_GT(endings["left behind"], 50);
}

/// What a user reads when one request goes wrong, and which exit code a script sees.
TEST_F(WizardTest, SaysWhatWentWrong) {
    const std::string server = cloudflare.server.url().toStdString();
    const std::string no = "Cloudflare: no, (token)\n";
    const std::string byHand = "could not undo everything - delete this by hand in Cloudflare: ";
    const std::string hint =
        no +
        "\nThat token may not create credentials. Either add 'API Tokens - Edit' (user scope) to "
        "it and run this again, or create the bucket and its two keys yourself and connect them:\n"
        " https://quorvelle.example/docs/build-storage\n"
        " quorvelle storage set --endpoint <url> --bucket <b> --access-key <k> --secret-key <s>\n";
    struct Row {
        std::vector<At> faults;
        std::string err;
    };
    for (const Row& row : {
             Row{{{3, Fault::kRefuse}}, no},
             Row{{{3, Fault::kGarbage}}, "Cloudflare: Cloudflare refused the request\n"},
             Row{{{4, Fault::kLoseAnswer}}, "Cloudflare: Connection closed\n"},
             Row{{{5, Fault::kRefuse}}, hint},
             Row{{{5, Fault::kInterrupt}}, "interrupted\n"},
             Row{{{6, Fault::kRefuse}}, no},
             Row{{{8, Fault::kRefuse}}, hint},
             Row{{{9, Fault::kRefuse}, {11, Fault::kRefuse}},
                 [&] {
                     std::string text = hint;
                     return text.insert(no.size(), byHand + "bucket builds-1\n");
                 }()},
             Row{{{9, Fault::kLoseAnswer}, {10, Fault::kRefuse}},
                 "Cloudflare: Connection closed\n" + byHand +
                     "API token tok-1, API token builds-1-ci\n"},
             Row{{{10, Fault::kRefuse}}, server + " refused the storage settings: no\n"},
             Row{{{10, Fault::kLoseRequest}}, server + " did not answer: Connection closed\n"},
             Row{{{10, Fault::kInterrupt}}, ""},
         }) {
        cloudflare.reset(false);
        for (const At& at : row.faults) {
            cloudflare.failAt(at.number, at.fault);
        }
        const Ran ran = run(usual + " --yes");
        EXPECT_EQ(ran.err, row.err);
        EXPECT_EQ(ran.code, row.err.empty() ? 0 : 2);
    }
}

TEST_F(WizardTest, WaitsHalfAMinuteForTheCredential) {
    cloudflare.failAt(10, Fault::kRefuse);
    const Ran ran = run(usual + " --yes");
    EXPECT_THAT(ran.out,
                ::testing::EndsWith("Waiting for Cloudflare to activate the new credential\n"));
    const auto lines = cloudflare.server.lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "PUT /api/storage"), 16);
}

TEST_F(WizardTest, GivesUpACallThatTakesTooLong) {
    const RawServer silent({});
    api.set(silent.url().toUtf8());
    callLimit = 20;
    EXPECT_EQ(run(usual).err, "Cloudflare: Cloudflare did not answer within 0 seconds\n");
    EXPECT_EQ(onboarding::Surroundings{}.callLimit.count(), 30000);
}

TEST_F(WizardTest, SendsCreationsOnlyOnce) {
    const RawServer dead({"", "", ""});
    onboarding::Interrupts interrupts;
    onboarding::BoundedCalls calls(interrupts);
    onboarding::CloudflareApi direct(calls, dead.url(), "t");
    EXPECT_FALSE(direct.createBucket({"acc", "", "builds-1"}).done());
    EXPECT_EQ(dead.served(), 1);
}

/// The whole conversation: line, jurisdiction, body.
TEST_F(WizardTest, AsksForExactlyWhatItNeeds) {
    const auto policy = [](const char* name, const char* groups) {
        return std::string("POST /user/tokens|(none)|{'name':'builds-1-") + name +
               "','policies':[{'effect':'allow','permission_groups':[" + groups +
               "],'resources':{'com.cloudflare.edge.r2.bucket.acc_eu_builds-1':'*'}}]}";
    };
    EXPECT_EQ(run(usual + "/ --jurisdiction eu --yes").code, 0);
    std::vector<std::string> seen;
    for (const SeenRequest& request : cloudflare.server.requests()) {
        const bool isOurs = request.target.starts_with("/api/");
        EXPECT_EQ(request.header("Authorization"), isOurs ? "(none)" : "Bearer operator-secret");
        EXPECT_EQ(request.header("Content-Type"),
                  request.line() == "GET /api/backups" ? "(none)" : "application/json");
        seen.push_back(request.line() + '|' + request.header("cf-r2-jurisdiction") + '|' +
                       QByteArray::fromStdString(request.body).replace('"', '\'').toStdString());
    }
    EXPECT_THAT(
        seen,
        ElementsAre(
            "GET /accounts|(none)|", "GET /accounts/acc/r2/buckets|eu|", "GET /accounts|(none)|",
            "GET /accounts/acc/r2/buckets|eu|", "GET /user/tokens/permission_groups|(none)|",
            "POST /accounts/acc/r2/buckets|eu|{'name':'builds-1'}", "GET /api/backups|(none)|",
            policy("server", "{'id':'r'}"), policy("ci", "{'id':'r'},{'id':'w'}"),
            // SHA-256 of "value-tok-1", by sha256sum
            "PUT /api/storage|(none)|{'access_key':'tok-1','bucket':'builds-1',"
            "'endpoint':'https://acc.eu.r2.cloudflarestorage.com','region':'auto',"
            "'secret_key':'acd524554c37e60a3e8b854321e1006748567e151f2496cb5ae27cd358261ffd'}"));
    cloudflare.reset(false);
    cloudflare.failAt(10, Fault::kRefuse);
    run(usual + " --jurisdiction eu --yes");
    EXPECT_EQ(cloudflare.server.requests().back().line() + '|' +
                  cloudflare.server.requests().back().header("cf-r2-jurisdiction"),
              "DELETE /accounts/acc/r2/buckets/builds-1|eu");
}

}  // namespace quorvelle::testing
