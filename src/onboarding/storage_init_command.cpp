#include "onboarding/storage_init_command.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QRandomGenerator>
#include <QTimer>

#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "files/secret_file.h"
#include "onboarding/bucket_rules.h"
#include "onboarding/interrupts.h"
#include "onboarding/operator_token.h"
#include "onboarding/report.h"
#include "server/addresses.h"
#include "server/server_option.h"

namespace quorvelle {

namespace onboarding {

namespace {

/// The command line, as far as it goes beyond what is to be made.
struct Request {
    Options options = {};
    QString token = {};
    bool yes = false;
    /// Null when the CI credential is to be shown.
    QString ciFile = {};
};

/// Takes the command line apart and checks it, without asking anyone. The exit code
/// when that ends the run.
std::optional<int> readRequest(QStringList args, quint64 random, Request& request) {
    if (const auto refusal = tokenOnCommandLine(args)) {
        return failWith(kExitUsage, *refusal);
    }
    Options& options = request.options;
    options.bucket = takeOption(args, QStringLiteral("--bucket"), defaultBucketName(random));
    options.jurisdiction =
        takeOption(args, QStringLiteral("--jurisdiction"), QStringLiteral("none")).trimmed();
    options.accountId = takeOption(args, QStringLiteral("--account-id"));
    const QString tokenFile = takeOption(args, QStringLiteral("--token-file"));
    request.ciFile = takeOption(args, QStringLiteral("--ci-secret-file"));
    options.singleToken = takeFlag(args, QStringLiteral("--single-token"));
    request.yes = takeFlag(args, QStringLiteral("--yes"));
    QStringList positionals = args;
    takeOption(positionals, QStringLiteral("--server"));
    if (!positionals.isEmpty()) {
        return printUsage();
    }
    if (const auto missing = readOperatorToken(tokenFile, request.token)) {
        return failWith(kExitUsage, *missing);
    }
    if (options.jurisdiction == QStringLiteral("none")) {
        options.jurisdiction.clear();
    } else if (options.jurisdiction != QStringLiteral("eu") &&
               options.jurisdiction != QStringLiteral("us")) {
        return failWith(kExitUsage, QStringLiteral("--jurisdiction takes eu, us or none"));
    }
    const QString problem = bucketNameProblem(options.bucket);
    if (!problem.isEmpty()) {
        return failWith(kExitUsage,
                        QStringLiteral("bucket name '%1': %2").arg(options.bucket, problem));
    }
    const auto server = resolveServer(args);
    if (!server) {
        return kExitUsage;
    }
    options.server = *server;
    return std::nullopt;
}

int report(const Failure& failure) {
    printError(Lines{failure.text} + failure.more);
    if (failure.mayNotCreateTokens) {
        printDiagnostic(tokenRightsHint());
    }
    return failure.exitCode;
}

/// Shows the CI credential or writes it to its file, the one time that it is known.
int handOver(const Request& request, const Preflight& found, const Onboarded& result,
             SecretFile& ciFile) {
    const Lines credential = ciLines(result.endpoint, request.options.bucket, result.ciCredential);
    const bool isInFile = !request.ciFile.isNull();
    printProgress(onboardedText(request.options, result));
    if (isInFile && !ciFile.write((credential.join(u'\n') + u'\n').toUtf8())) {
        return failWith(
            kExitFailed,
            QStringLiteral("storage is connected, but the CI credential could not be "
                           "written to %1 - it cannot be shown again; mint a new one with "
                           "'storage init' on a fresh bucket if you lose it")
                .arg(request.ciFile));
    }
    printResult(reportObject(request.options, found, &result, isInFile),
                isInFile
                    ? lines(QStringLiteral("\nCI credential written to %1 (owner-only). Quorvelle "
                                           "does not keep a copy."),
                            {request.ciFile})
                    : lines(QStringLiteral("\nCI credential - the ONLY time it is shown. Put these "
                                           "into your CI secrets:\n")) +
                          credential,
                isInFile ? Kept::kUsually : Kept::kAlways);
    return kExitSuccess;
}

/// The run that changes something, after everything was found to be in order.
int create(const Request& request, const Preflight& found, const Surroundings& surroundings,
           Interrupts& interrupts, BoundedCalls& calls, CloudflareApi& api) {
    interrupts.hold();
    SecretFile ciFile;
    if (!request.ciFile.isNull() && !ciFile.open(request.ciFile)) {
        return failWith(kExitFailed, QStringLiteral("cannot write %1").arg(request.ciFile));
    }
    Options options = request.options;
    options.accountId = found.account.id;
    const Clock clock{surroundings.now,
                      [&](int milliseconds) { surroundings.sleep(milliseconds, interrupts); }};
    Wizard wizard(api, calls, clock, options, [](const QString& line) { printProgress(line); });
    Onboarded result;
    if (const auto failure = wizard.run(result)) {
        return report(*failure);
    }
    return handOver(request, found, result, ciFile);
}

void sleepUnlessInterrupted(int milliseconds, const Interrupts& interrupts) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    QObject::connect(&interrupts, &Interrupts::arrived, &loop, &QEventLoop::quit);
    loop.exec();
}

}  // namespace

int storageInit(QStringList args, const Surroundings& surroundings) {
    Request request;
    if (const auto exitCode = readRequest(std::move(args), surroundings.random(), request)) {
        return *exitCode;
    }
    const Options& options = request.options;
    Interrupts interrupts;
    BoundedCalls calls(interrupts, surroundings.grace);
    CloudflareApi api(calls, cloudflareApi(), request.token, surroundings.callLimit);
    Preflight found;
    if (const auto failure = storageInitPreflight(api, options, found)) {
        return report(*failure);
    }
    printProgress(preflightText(options, found));
    if (found.bucketExists) {
        return report(bucketExists(options.bucket, QStringLiteral("account")));
    }
    if (!request.yes) {
        printResult(
            reportObject(options, found, nullptr, false),
            lines(QStringLiteral("\nNothing was created. Re-run with --yes to create the bucket, "
                                 "mint the credentials and save them to the server.")));
        return kExitSuccess;
    }
    return create(request, found, surroundings, interrupts, calls, api);
}

}  // namespace onboarding

int storageInitCommand(QStringList args) {
    QElapsedTimer timer;
    timer.start();
    return onboarding::storageInit(
        std::move(args), {.now = [&timer] { return timer.elapsed(); },
                          .sleep = onboarding::sleepUnlessInterrupted,
                          .random = [] { return QRandomGenerator::system()->generate64(); }});
}

}  // namespace quorvelle
