#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QString>

#include "support/fake_server.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

/// An environment variable with another value, or none (a null array), until the end of
/// the scope.
class ScopedVariable {
public:
    ScopedVariable(const char* variable, const QByteArray& value)
        : name(variable), before(qgetenv(variable)), wasSet(qEnvironmentVariableIsSet(variable)) {
        set(value);
    }
    ~ScopedVariable() { wasSet ? void(qputenv(name, before)) : void(qunsetenv(name)); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

    void set(const QByteArray& value) {
        value.isNull() ? void(qunsetenv(name)) : void(qputenv(name, value));
    }

private:
    const char* name;
    QByteArray before;
    bool wasSet;
};

/// Makes this process use the configuration of a sandbox of its own, which is still
/// missing, and no token of the developer's.
struct TemporaryConfig {
    Sandbox sandbox = {};
    ScopedVariable folder{"QUORVELLE_CONFIG_DIR", sandbox.path("config").toUtf8()};
    ScopedVariable token{"QUORVELLE_TOKEN", {}};
};

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
