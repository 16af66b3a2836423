#pragma once

#include <httplib.h>

#include <QJsonObject>
#include <QString>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quorvelle::testing {

/// A request as it came over the wire.
struct SeenRequest {
    std::string method;
    /// Path and query exactly as sent, percent-encoding included.
    std::string target;
    httplib::Headers headers;
    std::string body;
    /// The port that its connection came from.
    int from = 0;

    /// The header's value, or "(none)" when it was not sent.
    std::string header(const std::string& name) const;
    /// "METHOD target", for comparing whole conversations.
    std::string line() const { return method + ' ' + target; }
};

/// A server on a free loopback port that answers as told and remembers what it was
/// asked. Answers are found by method and raw target; anything else gets a 404 whose
/// "error" names the request. Answers may be given while it runs, from any thread. A request
/// that docs/server-api.md does not describe fails the test.
class FakeServer {
public:
    using Answer = std::function<void(const httplib::Request&, httplib::Response&)>;

    /// `listener` is another kind of server, for the scheme of its addresses.
    FakeServer(std::unique_ptr<httplib::Server> listener = std::make_unique<httplib::Server>(),
               const QString& scheme = QStringLiteral("http"));
    ~FakeServer();

    QString url() const { return begin + QString::number(port); }

    void on(const std::string& method, const std::string& target, Answer answer);
    void onJson(const std::string& method, const std::string& target, const QJsonObject& body,
                int status = 200);
    /// Answers what no other answer is for.
    void onAnythingElse(Answer answer) { on({}, {}, std::move(answer)); }
    void onBytes(const std::string& method, const std::string& target, const std::string& body);

    std::vector<SeenRequest> requests() const;
    std::vector<std::string> lines() const;
    /// How many connections the requests whose targets begin so came on.
    std::size_t connections(const std::string& beginning) const;
    void forget();

private:
    void answer(const httplib::Request& request, httplib::Response& response);

    std::unique_ptr<httplib::Server> server;
    QString begin;
    int port = 0;
    std::thread thread;
    mutable std::mutex mutex;
    std::map<std::pair<std::string, std::string>, Answer> answers;
    std::vector<SeenRequest> seen;
    /// Of the API, also those that were forgotten.
    std::vector<SeenRequest> asked;
};

/// Says this to everybody, as JSON, whatever it is.
FakeServer::Answer answering(const std::string& body, int status = 200);

FakeServer::Answer redirectTo(const QString& target, int status = 302);

}  // namespace quorvelle::testing
