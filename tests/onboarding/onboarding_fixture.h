#pragma once

#include "cli/console/output.h"
#include "onboarding/storage_init_command.h"
#include "support/fake_cloudflare.h"
#include "support/notation.h"
#include "support/qt_printers.h"
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

}  // namespace quorvelle::testing
