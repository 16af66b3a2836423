#include "router.h"

#include <QJsonDocument>
#include <algorithm>
#include <utility>

#include "names.h"
#include "send.h"

namespace quorvelle::devserver {
namespace {

// Spelled so that it also takes in the line breaks "." leaves out.
constexpr char kAnyPath[] = "[\\s\\S]*";
constexpr qsizetype kMostJsonBytes = 65536;

bool matches(const QStringList& pattern, const QStringList& segments) {
    return std::equal(pattern.begin(), pattern.end(), segments.begin(), segments.end(),
                      [](const QString& expected, const QString& segment) {
                          return expected == "*" ? !segment.isEmpty() : expected == segment;
                      });
}

/// Gives what the library turns down by itself the form of every other error.
void explain(const httplib::Request&, httplib::Response& response) {
    if (response.body.empty()) {
        const QString text = "the request cannot be handled (HTTP status %1)";
        send(response, Refusal{response.status, text.arg(response.status)});
    }
}

}  // namespace

RequestBody::RequestBody(const httplib::Request& request, const httplib::ContentReader* reader)
    : request_(request),
      reader_(reader),
      announced_(reader != nullptr && (request.has_header("Content-Length") ||
                                       request.has_header("Transfer-Encoding"))) {}

bool RequestBody::read(const Taker& take) {
    if (!announced_ || std::exchange(consumed_, true)) {
        return false;
    }
    const auto receiver = [&take](const char* data, size_t size) {
        take(data, size);
        return true;
    };
    if (request_.is_multipart_form_data()) {
        return (*reader_)([](const httplib::MultipartFormData&) { return true; }, receiver);
    }
    return (*reader_)(receiver);
}

QJsonObject jsonBody(const Call& call) {
    QByteArray bytes;
    const bool complete = call.body.read([&bytes](const char* data, size_t size) {
        if (bytes.size() <= kMostJsonBytes) {
            bytes.append(data, static_cast<qsizetype>(size));
        }
    });
    return complete && bytes.size() <= kMostJsonBytes ? QJsonDocument::fromJson(bytes).object()
                                                      : QJsonObject();
}

void Router::add(const std::string& method, const QString& pattern, Endpoint endpoint,
                 Access access) {
    routes_.push_back({method, pattern.split('/'), std::move(endpoint), access});
}

void Router::attach(httplib::Server& server) const {
    const auto handle = [this](const httplib::Request& request, httplib::Response& response,
                               const httplib::ContentReader* reader) {
        RequestBody body(request, reader);
        send(response, answer(request, body));
        // The rest of an unread body would be taken for the next request.
        body.read([](const char*, size_t) {});
    };
    const auto plain = [handle](const httplib::Request& request, httplib::Response& response) {
        handle(request, response, nullptr);
    };
    const auto withBody = [handle](const httplib::Request& request, httplib::Response& response,
                                   const httplib::ContentReader& reader) {
        handle(request, response, &reader);
    };
    server.Get(kAnyPath, plain).Options(kAnyPath, plain);
    server.Post(kAnyPath, withBody).Put(kAnyPath, withBody);
    server.Patch(kAnyPath, withBody).Delete(kAnyPath, withBody);
    server.set_error_handler(explain);
    server.set_exception_handler(
        [](const httplib::Request&, httplib::Response& response, const std::exception_ptr&) {
            send(response, Refusal{500, "the server failed to handle the request"});
        });
}

std::optional<Caller> Router::callerOf(const httplib::Request& request) const {
    const QString header = QString::fromStdString(request.get_header_value("Authorization"));
    if (!header.startsWith("Bearer ")) {
        return std::nullopt;
    }
    const QString token = header.section(' ', 1);
    return token == kToken ? Caller{kAdministrator, true} : identify_(token);
}

Reply Router::answer(const httplib::Request& request, RequestBody& body) const {
    const auto target = parseTarget(request.target);
    const auto route = std::find_if(routes_.begin(), routes_.end(), [&](const Route& candidate) {
        return target && candidate.method == request.method &&
               matches(candidate.pattern, target->segments);
    });
    const bool isOpen = route != routes_.end() && route->access == Access::kOpen;
    const auto caller = callerOf(request);
    if (!isOpen && !caller) {
        return Refusal{401, "a valid bearer token is required"};
    }
    if (!target) {
        return Refusal{400, "the request target is malformed"};
    }
    if (route == routes_.end()) {
        return Refusal{404, QString("no such endpoint: %1 /%2")
                                .arg(request.method.c_str(), target->segments.join('/'))};
    }
    if (route->access == Access::kAdmin && !caller->isAdmin) {
        return Refusal{403, "only an administrator may do this"};
    }
    const qsizetype star = route->pattern.indexOf("*");
    const QString name = star < 0 ? QString() : target->segments[star];
    const QString host = QString::fromStdString(request.get_header_value("Host"));
    return route->endpoint({name, target->query, host, caller.value_or(Caller()), body});
}

}  // namespace quorvelle::devserver
