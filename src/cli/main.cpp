#include <QCoreApplication>
#include <QUrl>
#include <chrono>
#include <string>

#include "cli/command_table.h"
#include "cli/dispatch.h"
#include "console/console.h"
#include "console/out_of_memory.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/authorities.h"
#include "server/idle_watch.h"
#include "server/proxies.h"
#include "source_version.h"
#include "tide/engine.h"

namespace {

std::string pemOf(const QList<QSslCertificate>& certificates) {
    QByteArray pem;
    for (const QSslCertificate& certificate : certificates) {
        pem += certificate.toPem();
    }
    return pem.toStdString();
}

/// The proxy and the authorities that a request of the server's room would take.
tide::Route routeTo(const std::string& address) {
    const QUrl url(QString::fromStdString(address));
    const quorvelle::ProxyChoice choice = quorvelle::proxyFor(url);
    tide::Route route{.proxy = quorvelle::addressOf(choice.proxy).toStdString(),
                      .problem = choice.problem.toStdString()};
    if (url.scheme() == QStringLiteral("https")) {
        const quorvelle::Authorities& given = quorvelle::givenAuthorities();
        static const std::string all = pemOf(given.certificates);
        route.authorities = all;
        if (route.problem.empty()) {
            route.problem = given.problem.toStdString();
        }
    }
    return route;
}

/// What both ways to the network have in common.
tide::Network engineNetwork() {
    const quorvelle::IdleLimits limits = quorvelle::idleLimits();
    return {.connectLimit = std::chrono::duration_cast<std::chrono::seconds>(limits.connect),
            .idleLimit = std::chrono::duration_cast<std::chrono::seconds>(limits.idle),
            .routeTo = routeTo};
}

}  // namespace

int main(int argc, char* argv[]) {
    quorvelle::endWhenOutOfMemory();
    quorvelle::prepareConsole();
    tide::startEngine(engineNetwork());
    const QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Quorvelle"));
    QCoreApplication::setApplicationName(QStringLiteral("Quorvelle"));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(quorvelle::kSourceVersion));
    quorvelle::setUsageTable(quorvelle::commandTable());
    return quorvelle::endOutput(
        quorvelle::dispatch(QCoreApplication::arguments(), quorvelle::commandTable()));
}
