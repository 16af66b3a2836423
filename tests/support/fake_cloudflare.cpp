#include "support/fake_cloudflare.h"

#include <QJsonDocument>

namespace quorvelle::testing {

namespace {

constexpr char kRefusal[] =
    R"({"success":false,"errors":[{"code":9109,"message":"no, operator-secret"}],"error":"no"})";

std::string member(const httplib::Request& request, const char* key) {
    return QJsonDocument::fromJson(QByteArray::fromStdString(request.body))[key]
        .toString()
        .toStdString();
}

std::string success(const std::string& result) {
    return R"({"success":true,"errors":[],"result":)" + result + '}';
}

void cutShort(httplib::Response& response) {
    response.set_content_provider(10, "application/json",
                                  [](size_t, size_t, httplib::DataSink&) { return false; });
}

}  // namespace

FakeCloudflare::FakeCloudflare() {
    reset(false);
    const auto fixed = [](const std::string& reply) {
        return [reply](const httplib::Request&) { return reply; };
    };
    route("GET", "/accounts", fixed(success(R"([{"id":"acc","name":"Acme"}])")));
    route("GET", "/user/tokens/permission_groups",
          fixed(success(R"([{"id":"r","name":"Workers R2 Storage Bucket Item Read"},
                            {"id":"x","name":"Something Else"},
                            {"id":"w","name":"Workers R2 Storage Bucket Item Write"}])")));
    route("GET", "/accounts/acc/r2/buckets", [this](const httplib::Request&) {
        bucketInDoubt = false;
        std::string list;
        for (const std::string& name : buckets) {
            list += (list.empty() ? "" : ",") + ("{\"name\":\"" + name + "\"}");
        }
        return success("{\"buckets\":[" + list + "]}");
    });
    route("POST", "/accounts/acc/r2/buckets", [this](const httplib::Request& request) {
        buckets.insert(member(request, "name"));
        return success("{}");
    });
    route("DELETE", "/accounts/acc/r2/buckets/builds-1", [this](const httplib::Request&) {
        buckets.erase("builds-1");
        return success("{}");
    });
    route("POST", "/user/tokens", [this](const httplib::Request& request) {
        const std::string id = "tok-" + std::to_string(++tokensMade);
        tokens[id] = member(request, "name");
        return success("{\"id\":\"" + id + "\",\"value\":\"value-" + id + "\"}");
    });
    for (const std::string id : {"tok-1", "tok-2"}) {
        route("DELETE", "/user/tokens/" + id, [this, id](const httplib::Request&) {
            tokens.erase(id);
            return success("{}");
        });
    }
    route("GET", "/api/backups", [this](const httplib::Request&) {
        return std::string(shared ? R"({"shared":true})" : R"({"shared":false})");
    });
    route("PUT", "/api/storage", [this](const httplib::Request& request) {
        storage = member(request, "bucket");
        return "{\"bucket\":\"" + storage + "\"}";
    });
    route("GET", "/api/storage",
          [this](const httplib::Request&) { return "{\"bucket\":\"" + storage + "\"}"; });
}

void FakeCloudflare::reset(bool sharedBackups) {
    const std::lock_guard guard(mutex);
    faults.clear();
    refused.clear();
    count = 0;
    shared = sharedBackups;
    tokens.clear();
    tokensMade = 0;
    buckets = {"old"};
    bucketInDoubt = false;
    storage.clear();
    server.forget();
}

void FakeCloudflare::failAt(std::size_t number, ReplyFault fault) {
    const std::lock_guard guard(mutex);
    faults[number] = fault;
}

void FakeCloudflare::setPages(const std::string& path, const std::vector<std::string>& pages) {
    for (std::size_t i = 0; i < pages.size(); ++i) {
        server.on("GET", path + (i == 0 ? "" : "?cursor=c%2F" + std::to_string(i)),
                  answering(pages[i]));
    }
}

std::set<std::string> FakeCloudflare::left() const {
    const std::lock_guard guard(mutex);
    std::set<std::string> result;
    for (const auto& [id, name] : tokens) {
        result.insert("API token " + (id.starts_with("tok-") ? id : name));
    }
    for (const std::string& name : buckets) {
        result.insert("bucket " + name);
    }
    if (bucketInDoubt) {
        result.insert("bucket builds-1");
    }
    result.erase("bucket old");
    return result;
}

std::string FakeCloudflare::connected() const {
    const std::lock_guard guard(mutex);
    return storage;
}

void FakeCloudflare::route(const std::string& method, const std::string& path, Work work) {
    server.on(method, path,
              [work, this](const httplib::Request& request, httplib::Response& response) {
                  const std::lock_guard guard(mutex);
                  answer(work, request, response);
              });
}

void FakeCloudflare::answer(const Work& work, const httplib::Request& request,
                            httplib::Response& response) {
    const std::string line = request.method + ' ' + request.path;
    const auto found = faults.find(++count);
    const bool isRefused = refused.count(line) > 0;
    if (found != faults.end() && found->second == ReplyFault::kInterrupt) {
        interrupt();
    }
    if (!isRefused && (found == faults.end() || found->second == ReplyFault::kInterrupt)) {
        response.set_content(work(request), "application/json");
    } else if (isRefused || found->second == ReplyFault::kRefuse) {
        refused.insert(line);
        answering(kRefusal, 403)(request, response);
    } else {
        leaveInDoubt(found->second, work, request);
        found->second == ReplyFault::kGarbage ? response.set_content("<html>", "text/html")
                                              : cutShort(response);
    }
}

void FakeCloudflare::leaveInDoubt(ReplyFault fault, const Work& work,
                                  const httplib::Request& request) {
    if (request.path == "/user/tokens") {
        tokens["lost"] = member(request, "name");
    } else if (request.method != "DELETE" && fault != ReplyFault::kLoseRequest) {
        work(request);
    }
    bucketInDoubt = bucketInDoubt || (request.method == "POST" && request.path != "/user/tokens");
}

}  // namespace quorvelle::testing
