#include "support/fake_server.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <set>

#include "support/server_api_page.h"

namespace quorvelle::testing {

namespace {

/// What the page has to describe; tests of the transfers ask for anything else.
bool isApi(const std::string& target) {
    return target.starts_with("/api/") || target.starts_with("/accounts") ||
           target.starts_with("/user/");
}

}  // namespace

std::string SeenRequest::header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? "(none)" : found->second;
}

FakeServer::FakeServer(std::unique_ptr<httplib::Server> listener, const QString& scheme)
    : server(std::move(listener)), begin(scheme + "://127.0.0.1:") {
    const auto all = [this](const httplib::Request& request, httplib::Response& response) {
        answer(request, response);
    };
    server->Get(".*", all).Post(".*", all).Put(".*", all).Delete(".*", all);
    // Two waits of 40 ms otherwise stand in every exchange on loopback.
    server->set_tcp_nodelay(true);
    server->set_keep_alive_max_count(100);
    onAnythingElse([](const httplib::Request& request, httplib::Response& response) {
        response.status = 404;
        const QJsonObject body{{"error", QString::fromStdString("nothing at " + request.target)}};
        response.set_content(QJsonDocument(body).toJson().toStdString(), "application/json");
    });
    port = server->bind_to_any_port("127.0.0.1");
    thread = std::thread([this] { server->listen_after_bind(); });
    while (!server->is_running()) {
        std::this_thread::yield();
    }
}

FakeServer::~FakeServer() {
    server->stop();
    thread.join();
    // Not where they are answered: the end of a thread that matched expressions is a crash
    // with the compiler for Windows.
    std::set<std::string> complaints;
    for (const SeenRequest& request : asked) {
        complaints.insert(
            DescribedRequest::complaint(request.method, request.target, request.body));
    }
    complaints.erase(std::string());
    for (const std::string& complaint : complaints) {
        ADD_FAILURE() << complaint;
    }
}

void FakeServer::on(const std::string& method, const std::string& target, Answer answer) {
    const std::lock_guard guard(mutex);
    answers[{method, target}] = std::move(answer);
}

void FakeServer::onJson(const std::string& method, const std::string& target,
                        const QJsonObject& body, int status) {
    on(method, target,
       answering(QJsonDocument(body).toJson(QJsonDocument::Compact).toStdString(), status));
}

void FakeServer::onBytes(const std::string& method, const std::string& target,
                         const std::string& body) {
    on(method, target, [body](const httplib::Request&, httplib::Response& response) {
        response.set_content(body, "application/octet-stream");
    });
}

std::vector<SeenRequest> FakeServer::requests() const {
    const std::lock_guard guard(mutex);
    return seen;
}

std::vector<std::string> FakeServer::lines() const {
    std::vector<std::string> result;
    for (const SeenRequest& request : requests()) {
        result.push_back(request.line());
    }
    return result;
}

std::size_t FakeServer::connections(const std::string& beginning) const {
    std::set<int> ports;
    for (const SeenRequest& request : requests()) {
        if (request.target.starts_with(beginning)) {
            ports.insert(request.from);
        }
    }
    return ports.size();
}

void FakeServer::forget() {
    const std::lock_guard guard(mutex);
    seen.clear();
}

void FakeServer::answer(const httplib::Request& request, httplib::Response& response) {
    Answer found;
    {
        const std::lock_guard guard(mutex);
        seen.push_back(
            {request.method, request.target, request.headers, request.body, request.remote_port});
        if (isApi(request.target)) {
            asked.push_back({request.method, request.target, {}, request.body});
        }
        const auto at = answers.find({request.method, request.target});
        found = at == answers.end() ? answers[{}] : at->second;
    }
    found(request, response);
}

FakeServer::Answer answering(const std::string& body, int status) {
    return [=](const httplib::Request&, httplib::Response& response) {
        response.status = status;
        response.set_content(body, "application/json");
    };
}

FakeServer::Answer redirectTo(const QString& target, int status) {
    return [=](const httplib::Request&, httplib::Response& response) {
        response.status = status;
        response.set_header("Location", target.toStdString());
        response.set_content("{\"from\":\"redirect\"}", "application/json");
    };
}

}  // namespace quorvelle::testing
