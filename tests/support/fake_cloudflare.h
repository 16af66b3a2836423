#pragma once

#include <QJsonDocument>
#include <set>

#include "support/fake_server.h"

namespace quorvelle::testing {

/// What goes wrong with a request.
enum class ReplyFault {
    kNone,
    kRefuse,       ///< this one and every later one of the same line
    kGarbage,      ///< done, but for deletions, and answered with a page of text
    kLoseRequest,  ///< not done, and the connection breaks
    kLoseAnswer,   ///< done, but for deletions, and the connection breaks
    kInterrupt,    ///< the client is interrupted meanwhile
    kSay,          ///< not done, and answered as told
};

/// Cloudflare's API with the account "acc" and a bucket "old", and the server that a
/// bucket "builds-1" is made for, in one. Requests are counted from 1.
class FakeCloudflare {
public:
    FakeCloudflare() {
        for (const std::string page : {"", "?cursor=c%2F1", "?page=2"}) {
            on("GET", "/accounts" + page,
               [](const Body&) { return done(R"([{"id":"acc","name":"Acme"}])"); });
            on("GET", "/accounts/acc/r2/buckets" + page, [this](const Body&) {
                bucketInDoubt = false;
                return done(hasBucket ? R"({"buckets":[{"name":"old"},{"name":"builds-1"}]})"
                                      : R"({"buckets":[{"name":"old"}]})");
            });
        }
        on("GET", "/user/tokens/permission_groups", [](const Body&) {
            return done(R"([{"id":"r","name":"Workers R2 Storage Bucket Item Read"},
                            {"id":"x","name":"Something Else"},
                            {"id":"w","name":"Workers R2 Storage Bucket Item Write"}])");
        });
        on("POST", "/accounts/acc/r2/buckets", [this](const Body&) {
            hasBucket = true;
            return done("{}");
        });
        on("DELETE", "/accounts/acc/r2/buckets/builds-1", [this](const Body&) {
            hasBucket = false;
            return done("{}");
        });
        on("POST", "/user/tokens", [this](const Body&) {
            const std::string id = "tok-" + std::to_string(++tokensMade);
            tokens.insert("API token " + id);
            return done("{\"id\":\"" + id + "\",\"value\":\"value-" + id + "\"}");
        });
        for (const std::string id : {"tok-1", "tok-2"}) {
            on("DELETE", "/user/tokens/" + id, [this, id](const Body&) {
                tokens.erase("API token " + id);
                return done("{}");
            });
        }
        on("GET", "/api/backups", [this](const Body&) {
            return std::string(shared ? R"({"shared":true})" : R"({"shared":false})");
        });
        for (const char* method : {"PUT", "GET"}) {
            on(method, "/api/storage", [this](const Body& body) {
                hasStorage = hasStorage || body.isObject();
                return std::string(hasStorage ? R"({"bucket":"builds-1"})" : R"({"bucket":""})");
            });
        }
    }

    void reset(bool sharedBackups) {
        const std::lock_guard guard(mutex);
        faults.clear();
        refused.clear();
        count = 0;
        shared = sharedBackups;
        tokens.clear();
        tokensMade = 0;
        hasBucket = bucketInDoubt = hasStorage = false;
        server.forget();
    }

    /// `answer` is for kSay.
    void failAt(std::size_t number, ReplyFault fault, FakeServer::Answer answer = {}) {
        const std::lock_guard guard(mutex);
        faults[number] = {fault, std::move(answer)};
    }

    /// What stands at Cloudflare, as a report has to name it: a token by its id, or by its
    /// name where the client was never told of it. What the client asked for and could not
    /// find out about counts as standing.
    std::set<std::string> left() const {
        const std::lock_guard guard(mutex);
        std::set<std::string> result = tokens;
        if (hasBucket || bucketInDoubt) {
            result.insert("bucket builds-1");
        }
        return result;
    }

    /// Whether the server took the settings.
    bool isConnected() const {
        const std::lock_guard guard(mutex);
        return hasStorage;
    }

    std::function<void()> interrupt;
    FakeServer server;

private:
    using Body = QJsonDocument;
    using Work = std::function<std::string(const Body&)>;

    static std::string done(const std::string& result) {
        return R"({"success":true,"errors":[],"result":)" + result + '}';
    }

    void on(const std::string& method, const std::string& target, Work work) {
        server.on(method, target,
                  [work, this](const httplib::Request& request, httplib::Response& response) {
                      const std::lock_guard guard(mutex);
                      answer(work, request, response);
                  });
    }

    void answer(const Work& work, const httplib::Request& request, httplib::Response& response) {
        const std::string line = request.method + ' ' + request.path;
        const Body body = Body::fromJson(QByteArray::fromStdString(request.body));
        const auto& [fault, said] = faults[++count];
        if (fault == ReplyFault::kInterrupt) {
            interrupt();
        }
        if (fault == ReplyFault::kRefuse || refused.count(line) > 0) {
            refused.insert(line);
            answering(R"({"success":false,"errors":[{"code":9109,"message":"no, operator-secret"}],
                          "error":"no"})",
                      403)(request, response);
        } else if (fault == ReplyFault::kSay) {
            said(request, response);
        } else if (fault == ReplyFault::kNone || fault == ReplyFault::kInterrupt) {
            response.set_content(work(body), "application/json");
        } else {
            if (request.path == "/user/tokens") {
                tokens.insert("API token " + body["name"].toString().toStdString());
            } else if (request.method != "DELETE" && fault != ReplyFault::kLoseRequest) {
                work(body);
            }
            bucketInDoubt = bucketInDoubt || line == "POST /accounts/acc/r2/buckets";
            if (fault == ReplyFault::kGarbage) {
                response.set_content("<html>", "text/html");
            } else {
                const auto breakOff = [](size_t, size_t, httplib::DataSink&) { return false; };
                response.set_content_provider(10, "application/json", breakOff);
            }
        }
    }

    mutable std::mutex mutex;
    std::map<std::size_t, std::pair<ReplyFault, FakeServer::Answer>> faults;
    std::set<std::string> refused;
    std::size_t count = 0;
    bool shared = false;
    std::set<std::string> tokens;
    int tokensMade = 0;
    bool hasBucket = false;
    bool bucketInDoubt = false;
    bool hasStorage = false;
};

}  // namespace quorvelle::testing
