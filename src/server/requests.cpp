#include "server/requests.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QPointer>

#include "console/output.h"
#include "server/await_exchange.h"
#include "server/http_exchange.h"
#include "server/next_step.h"

namespace quorvelle {

namespace {

const QByteArray kJson = "application/json";
const QByteArray kBytes = "application/octet-stream";

/// One manager for the run, so that requests to one server share a connection.
QNetworkAccessManager& networkManager() {
    static QPointer<QNetworkAccessManager> manager;
    if (manager.isNull()) {
        manager = new QNetworkAccessManager(QCoreApplication::instance());
        // As the application's child alone it would end after the application, too late
        // for the network layer's thread to give back all that it holds.
        qAddPostRoutine([] { delete manager; });
    }
    return *manager;
}

/// Prints nothing.
Reply attempt(const Server& server, HttpExchange& exchange, const QString& label) {
    await(exchange);
    if (!exchange.succeeded()) {
        return {.failure = exchange.failureText(label),
                .nextStep = nextStep(server.url, exchange.statusCode())};
    }
    return {exchange.object(), true, exchange.bytes()};
}

Reply call(const Server& server, const HttpRequest& request, const QString& label) {
    HttpExchange exchange(networkManager(), request);
    Reply reply = attempt(server, exchange, label);
    if (!reply.ok) {
        printFailure(reply);
    }
    return reply;
}

HttpRequest withJson(const QByteArray& method, const Server& server, const QString& path,
                     const QJsonObject& body) {
    return {.method = method,
            .url = apiUrl(server.url, path),
            .token = server.token,
            .contentType = kJson,
            .body = QJsonDocument(body).toJson(QJsonDocument::Compact)};
}

}  // namespace

void printFailure(const Reply& reply) {
    printError(reply.failure);
    printNote(reply.nextStep);
}

bool isObject(const Reply& reply) {
    return !reply.object.isEmpty() || QJsonDocument::fromJson(reply.body).isObject();
}

Reply getJson(const Server& server, const QString& path, const QString& label) {
    return call(server, {.method = "GET", .url = apiUrl(server.url, path), .token = server.token},
                label);
}

Reply postJson(const Server& server, const QString& path, const QString& label,
               const QJsonObject& body) {
    return call(server, withJson("POST", server, path, body), label);
}

Answer askJson(const Server& server, const QString& path, const QJsonObject& body) {
    HttpExchange exchange(networkManager(), withJson("POST", server, path, body));
    await(exchange);
    return {exchange.object(), exchange.statusCode(), exchange.succeeded()};
}

Reply postEmpty(const Server& server, const QString& path, const QString& label,
                const QueryItems& query) {
    return call(server,
                {.method = "POST",
                 .url = apiUrl(server.url, path, query),
                 .token = server.token,
                 .contentType = kBytes},
                label);
}

Reply putJson(const Server& server, const QString& path, const QString& label,
              const QJsonObject& body) {
    return call(server, withJson("PUT", server, path, body), label);
}

Reply putFile(const Server& server, const QString& path, const QString& label,
              const QueryItems& query, QIODevice& content, const SentCallback& onSent) {
    HttpExchange exchange(networkManager(), {.method = "PUT",
                                             .url = apiUrl(server.url, path, query),
                                             .token = server.token,
                                             .contentType = kBytes,
                                             .bodyDevice = &content});
    QObject::connect(&exchange, &HttpExchange::sent, &exchange, onSent);
    return attempt(server, exchange, label);
}

Reply deleteResource(const Server& server, const QString& path, const QString& label,
                     const QueryItems& query) {
    return call(server,
                {.method = "DELETE", .url = apiUrl(server.url, path, query), .token = server.token},
                label);
}

}  // namespace quorvelle
