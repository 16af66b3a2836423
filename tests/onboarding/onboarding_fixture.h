#pragma once

#include <gmock/gmock.h>

#include <map>
#include <set>

#include "console/output.h"
#include "onboarding/storage_init_command.h"
#include "support/fake_cloudflare.h"
#include "support/notation.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

struct Ran {
    int code = 0;
    std::string out = {};
    std::string err = {};
};

/// Runs of `storage init` in this process against a fake Cloudflare, on a clock that only
/// its own waits move.
struct OnboardingTest : ::testing::Test {
    Ran run(const QString& line) {
        const bool json = line.contains("--json");
        QStringList words = args(line);
        words.removeAll("--json");
        qint64 time = 0;
        setJsonMode(json);
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int code = onboarding::storageInit(
            words, {.now = [&time] { return time; },
                    .sleep = [&time](int ms, const onboarding::Interrupts&) { time += ms; },
                    .random = [] { return 0xABCDEF00012FULL; },
                    .callLimit = std::chrono::milliseconds(callLimit)});
        setJsonMode(false);
        return {code, ::testing::internal::GetCapturedStdout(),
                ::testing::internal::GetCapturedStderr()};
    }

    int callLimit = 30000;
    TemporaryConfig config;
    FakeCloudflare cloudflare;
    ScopedVariable api{"QUORVELLE_CLOUDFLARE_API_URL", cloudflare.server.url().toUtf8()};
    ScopedVariable token{"CLOUDFLARE_API_TOKEN", " operator-secret\n"};
    /// The options of a run that names everything it has to.
    QString usual = "--bucket builds-1 --server " + cloudflare.server.url();
};

struct At {
    std::size_t number;
    ReplyFault fault;
};

/// Runs in which requests go wrong, each compared with what it leaves behind.
struct WizardTest : OnboardingTest {
    /// What a run says that it left at Cloudflare.
    static std::set<std::string> reported(const std::string& err) {
        const QString text = QString::fromStdString(err).section(
            "could not undo everything - delete this by hand in Cloudflare: ", 1);
        std::set<std::string> names;
        for (const QString& name : text.section('\n', 0, 0).split(", ", Qt::SkipEmptyParts)) {
            names.insert(name.toStdString());
        }
        return names;
    }

    Ran runWith(bool shared, const std::vector<At>& faults, const QString& line) {
        cloudflare.reset(shared);
        for (const At& at : faults) {
            cloudflare.failAt(at.number, at.fault);
        }
        return run(line);
    }

    /// One run with these faults. Returns the lines of its requests.
    std::vector<std::string> check(bool single, bool shared, const std::vector<At>& faults) {
        std::string name = std::string(single ? "single" : "two") + (shared ? " shared" : "");
        for (const At& at : faults) {
            name += " " + std::to_string(at.number) + ":" + std::to_string(int(at.fault));
        }
        SCOPED_TRACE(name);
        const Ran ran =
            runWith(shared, faults, usual + " --yes" + (single ? " --single-token" : ""));
        const std::set<std::string> left = cloudflare.left();
        EXPECT_THAT(ran.out + ran.err,
                    ::testing::Not(::testing::AnyOf(::testing::HasSubstr("operator-secret"),
                                                    ::testing::HasSubstr("value-tok"))));
        if (ran.code == 0) {
            EXPECT_EQ(left.size(), single ? 2U : 3U);
            EXPECT_EQ(left.count("bucket builds-1"), 1U);
            EXPECT_EQ(cloudflare.connected(), "builds-1");
            EXPECT_EQ(ran.err, "");
        } else {
            EXPECT_EQ(left, reported(ran.err)) << ran.err;
            EXPECT_THAT(ran.out, ::testing::Not(::testing::HasSubstr("TIDE_S3_SECRET")));
            EXPECT_NE(ran.err, "");
        }
        ++endings[ran.code == 0 ? "connected" : left.empty() ? "undone" : "left behind"];
        return cloudflare.server.lines();
    }

    /// The fault at every request from the `first` one on, and after it a refusal of every
    /// request that follows; with one token and two, backups shared or not.
    void checkEverywhere(ReplyFault fault, std::size_t first) {
        for (const int mode : {0, 1, 2, 3}) {
            const bool single = mode % 2 == 1;
            const bool shared = mode >= 2;
            const std::size_t steps = check(single, shared, {}).size();
            EXPECT_EQ(steps, single ? 9U : 10U);
            for (std::size_t n = first; n <= steps; ++n) {
                const auto lines = check(single, shared, {{n, fault}});
                for (std::size_t m = n + 1; m <= lines.size(); ++m) {
                    if (lines[m - 1] != lines[m - 2]) {
                        check(single, shared, {{n, fault}, {m, ReplyFault::kRefuse}});
                    }
                }
            }
        }
    }

    std::map<std::string, int> endings;
};

}  // namespace quorvelle::testing
