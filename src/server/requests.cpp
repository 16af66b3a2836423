#include "server/requests.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QPointer>
#include <utility>

#include "console/output.h"
#include "server/http_exchange.h"
#include "server/server_option.h"

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

void await(HttpExchange& exchange) {
    QEventLoop loop;
    QObject::connect(&exchange, &HttpExchange::finished, &loop, &QEventLoop::quit);
    exchange.start();
    loop.exec();
}

Reply call(HttpRequest request, const QString& label, Bearer bearer = Bearer::kToken) {
    if (bearer == Bearer::kToken) {
        request.token = requestToken();
    }
    HttpExchange exchange(networkManager(), std::move(request));
    await(exchange);
    if (!exchange.succeeded()) {
        printError(exchange.failureText(label));
        return {};
    }
    return {exchange.object(), true};
}

QByteArray compact(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

}  // namespace

Reply getJson(const QString& server, const QString& path, const QString& label) {
    return call({.method = "GET", .url = apiUrl(server, path)}, label);
}

Reply postJson(const QString& server, const QString& path, const QString& label,
               const QJsonObject& body) {
    return call({.method = "POST",
                 .url = apiUrl(server, path),
                 .contentType = kJson,
                 .body = compact(body)},
                label);
}

Answer postJsonAs(const QString& token, const QString& server, const QString& path,
                  const QJsonObject& body) {
    HttpExchange exchange(networkManager(), {.method = "POST",
                                             .url = apiUrl(server, path),
                                             .token = token,
                                             .contentType = kJson,
                                             .body = compact(body)});
    await(exchange);
    return {exchange.object(), exchange.statusCode(), exchange.succeeded()};
}

Reply postEmpty(const QString& server, const QString& path, const QString& label,
                const QueryItems& query, Bearer bearer) {
    return call({.method = "POST", .url = apiUrl(server, path, query), .contentType = kBytes},
                label, bearer);
}

Reply putJson(const QString& server, const QString& path, const QString& label,
              const QJsonObject& body) {
    return call(
        {.method = "PUT", .url = apiUrl(server, path), .contentType = kJson, .body = compact(body)},
        label);
}

Reply putFile(const QString& server, const QString& path, const QString& label,
              const QueryItems& query, QIODevice& content) {
    return call({.method = "PUT",
                 .url = apiUrl(server, path, query),
                 .contentType = kBytes,
                 .bodyDevice = &content},
                label);
}

Reply deleteResource(const QString& server, const QString& path, const QString& label,
                     const QueryItems& query) {
    return call({.method = "DELETE", .url = apiUrl(server, path, query)}, label);
}

}  // namespace quorvelle
