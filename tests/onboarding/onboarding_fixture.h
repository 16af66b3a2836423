#pragma once

#include "console/output.h"
#include "onboarding/storage_init_command.h"
#include "support/fake_cloudflare.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

struct Ran {
    int code = 0;
    std::string out = {};
    std::string err = {};
};

/// A request by its number, and what goes wrong with it.
struct At {
    std::size_t number;
    ReplyFault fault;
    /// Of kSay, in the notation of json().
    std::string reply = {};
    int status = 200;
};

/// Runs of `storage init` in this process against a fake Cloudflare, on a clock that only
/// its own waits move.
struct StorageInitTest : ::testing::Test {
    Ran run(const QString& line) {
        QStringList words = args(line);
        qint64 time = 0;
        setJsonMode(words.removeAll("--json") > 0);
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

    /// A run that creates things, from the start, in which requests go wrong.
    Ran create(const std::vector<At>& faults, const QString& more = {}, bool shared = false) {
        cloudflare.reset(shared);
        for (const auto& [number, fault, reply, status] : faults) {
            const QByteArray said = QByteArray::fromStdString(reply).replace('\'', '"');
            cloudflare.failAt(number, fault, answering(said.toStdString(), status));
        }
        return run(usual + " --yes " + more);
    }

    /// One run with these faults, compared with what it leaves behind. Returns the lines of
    /// its requests.
    std::vector<std::string> check(bool single, bool shared, const std::vector<At>& faults) {
        std::string trace = std::string(single ? "single" : "two") + (shared ? " shared" : "");
        for (const At& at : faults) {
            trace += " " + std::to_string(at.number) + ":" + std::to_string(int(at.fault));
        }
        SCOPED_TRACE(trace);
        const Ran ran = create(faults, single ? "--single-token" : "", shared);
        const std::set<std::string> left = cloudflare.left();
        EXPECT_THAT(ran.out + ran.err,
                    ::testing::Not(::testing::AnyOf(::testing::HasSubstr("operator-secret"),
                                                    ::testing::HasSubstr("value-tok"))));
        EXPECT_EQ(ran.err.empty(), ran.code == 0);
        if (ran.code == 0) {
            EXPECT_EQ(left.size(), single ? 2U : 3U);
            EXPECT_EQ(left.count("bucket builds-1"), 1U);
            EXPECT_TRUE(cloudflare.isConnected());
        } else {
            const QString reported = QString::fromStdString(ran.err).section(kByHand, 1);
            std::set<std::string> names;
            for (const QString& name :
                 reported.section('\n', 0, 0).split(", ", Qt::SkipEmptyParts)) {
                names.insert(name.toStdString());
            }
            EXPECT_EQ(left, names) << ran.err;
            EXPECT_THAT(ran.out, ::testing::Not(::testing::HasSubstr("TIDE_S3_SECRET")));
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

    /// Stands before what a run left at Cloudflare.
    const QString kByHand = "could not undo everything - delete this by hand in Cloudflare: ";
    int callLimit = 30000;
    TemporaryConfig config;
    FakeCloudflare cloudflare;
    ScopedVariable api{"QUORVELLE_CLOUDFLARE_API_URL", cloudflare.server.url().toUtf8()};
    ScopedVariable token{"CLOUDFLARE_API_TOKEN", " operator-secret\n"};
    /// The options of a run that names everything it has to.
    const QString usual = "--bucket builds-1 --server " + cloudflare.server.url();
    std::map<std::string, int> endings;
};

}  // namespace quorvelle::testing
