#pragma once

#include <QCoreApplication>
#include <QNetworkAccessManager>

#include "support/fake_server.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

/// A server for the blocking request calls of this process, with a configuration of its
/// own. At its end it also ends the connections that those calls keep open, for which
/// the server would wait.
struct ApiServer {
    TemporaryConfig config = {};
    FakeServer server = {};

    ApiServer() = default;
    ~ApiServer() {
        qDeleteAll(QCoreApplication::instance()->findChildren<QNetworkAccessManager*>());
    }
    ApiServer(const ApiServer&) = delete;
    ApiServer& operator=(const ApiServer&) = delete;
};

}  // namespace quorvelle::testing
