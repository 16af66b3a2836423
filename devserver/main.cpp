#include <httplib.h>

#include <QCoreApplication>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>
#include <thread>

#include "build_endpoints.h"
#include "channel_endpoints.h"
#include "options.h"
#include "people_endpoints.h"
#include "router.h"
#include "service.h"
#include "settings_endpoints.h"
#include "sign_in.h"
#include "tide/engine.h"
#include "tide_endpoints.h"

namespace quorvelle::devserver {

namespace {

constexpr char kHost[] = "127.0.0.1";
constexpr int kCannotServe = 2;
// More than one client's connections: each one that is kept alive holds a thread.
constexpr size_t kWorkers = 32;
constexpr size_t kRequestsPerConnection = 1000;
// Kept short, for a stopping server waits for idle connections to run out.
constexpr std::time_t kIdleSeconds = 2;
constexpr std::time_t kStalledSeconds = 30;
constexpr std::chrono::milliseconds kPollInterval{20};

volatile std::sig_atomic_t stopRequested = 0;

/// A second signal ends the process at once, should a request not come to an end.
extern "C" void requestStop(int signal) {
    stopRequested = 1;
    std::signal(signal, SIG_DFL);
}

int fail(const QString& message) {
    std::fprintf(stderr, "quorvelle-devserver: %s\n", message.toLocal8Bit().constData());
    return kCannotServe;
}

void configure(httplib::Server& server) {
    server.new_task_queue = [] {
        return std::make_unique<httplib::ThreadPool>(kWorkers).release();
    };
    server.set_keep_alive_max_count(kRequestsPerConnection);
    server.set_keep_alive_timeout(kIdleSeconds);
    server.set_read_timeout(kStalledSeconds);
    server.set_write_timeout(kStalledSeconds);
    server.set_tcp_nodelay(true);
    // The library's own choice would let two servers share a port unnoticed.
    server.set_socket_options([](socket_t socket) {
        const int on = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&on), sizeof on);
    });
}

/// The port the server now listens on, or nothing when it cannot have it.
std::optional<int> bind(httplib::Server& server, int port) {
    if (port == 0) {
        port = server.bind_to_any_port(kHost);
        return port > 0 ? std::optional(port) : std::nullopt;
    }
    return server.bind_to_port(kHost, port) ? std::optional(port) : std::nullopt;
}

/// Serves until a signal asks for the end; false when the listener broke down.
bool serve(httplib::Server& server) {
    std::atomic<bool> ended = false;
    std::jthread listener([&] {
        server.listen_after_bind();
        ended = true;
    });
    // Stopping has no effect before the listener runs, so the signal waits.
    while (!ended && (stopRequested == 0 || !server.is_running())) {
        std::this_thread::sleep_for(kPollInterval);
    }
    const bool asked = !ended;
    server.stop();
    return asked;
}

/// The lines that tell a person, or a script, how to reach and to trust this server.
void announce(int port, const Service& service) {
    std::printf("Listening on http://%s:%d\n", kHost, port);
    std::printf("Token: %s, data: %s\n", kToken,
                service.folder.dir().path().toLocal8Bit().constData());
    std::printf("Public key (tide_public_key): %s\n", service.signer.publicKey().constData());
    std::fflush(stdout);
}

Reply showVersion(const Call&) {
    return QJsonObject{{QStringLiteral("name"), QStringLiteral("quorvelle-devserver")},
                       {QStringLiteral("version"), QStringLiteral(QUORVELLE_DEVSERVER_VERSION)},
                       {QStringLiteral("schema_version"), 1}};
}

int run(const Options& options) {
    Service service(options.dataDir);
    if (const auto error = service.open(options.tideChannels)) {
        return fail(*error);
    }
    Router router([&service](const QString& token) { return service.people.callerOf(token); });
    router.add("GET", u"api/version", showVersion, Router::Access::kOpen);
    addBuildEndpoints(router, service);
    addChannelEndpoints(router, service);
    addTideEndpoints(router, service);
    addPeopleEndpoints(router, service.people);
    addSignInEndpoints(router, service.people);
    addLicenseEndpoints(router, service);
    addBackupEndpoints(router, service);
    addStorageEndpoints(router, service);
    addSsoEndpoints(router, service);

    if (const auto error = router.logTo(options.logFile)) {
        return fail(*error);
    }
    httplib::Server server;
    configure(server);
    router.attach(server);
    const auto port = bind(server, options.port);
    if (!port) {
        return fail(QStringLiteral("cannot listen on port %1 of %2; is it taken?")
                        .arg(QString::number(options.port), kHost));
    }
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
    announce(*port, service);
    return serve(server) ? 0 : fail(QStringLiteral("the listener broke down"));
}

}  // namespace

}  // namespace quorvelle::devserver

int main(int argc, char** argv) {
    using namespace quorvelle::devserver;
    tide::startEngine();
    const QCoreApplication application(argc, argv);
    const auto parsed = parseOptions();
    if (const auto* ending = std::get_if<Ending>(&parsed)) {
        std::fputs(ending->text.toLocal8Bit().constData(), ending->exitCode == 0 ? stdout : stderr);
        return ending->exitCode;
    }
    return run(std::get<Options>(parsed));
}
