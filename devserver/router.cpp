#include "router.h"

#include <QJsonDocument>
#include <algorithm>
#include <utility>

#include "request_target.h"
#include "send.h"

namespace quorvelle::devserver {

namespace {

// Spelled so that it also takes in the line breaks QStringLiteral(".") leaves out.
constexpr char kAnyPath[] = "[\\s\\S]*";
constexpr qsizetype kMaxJsonBytes = 65536;

bool matches(const QStringList& pattern, const QStringList& segments) {
    return std::equal(pattern.begin(), pattern.end(), segments.begin(), segments.end(),
                      [](const QString& expected, const QString& segment) {
                          return expected == QStringLiteral("*") ? !segment.isEmpty()
                                                                 : expected == segment;
                      });
}

/// Gives what the library turns down by itself the form of every other error.
void explain(const httplib::Request&, httplib::Response& response) {
    if (response.body.empty()) {
        const QString text = QStringLiteral("the request cannot be handled (HTTP status %1)");
        send(response, Refusal{response.status, text.arg(response.status)});
    }
}

}  // namespace

RequestBody::RequestBody(const httplib::Request& request, const httplib::ContentReader* source)
    : head(request),
      reader(source),
      announced(source != nullptr &&
                (request.has_header("Content-Length") || request.has_header("Transfer-Encoding"))) {
}

bool RequestBody::read(const Taker& take) {
    if (!announced || std::exchange(consumed, true)) {
        return false;
    }
    const auto receiver = [&take](const char* data, size_t size) {
        take(data, size);
        return true;
    };
    if (head.is_multipart_form_data()) {
        return (*reader)([](const httplib::MultipartFormData&) { return true; }, receiver);
    }
    return (*reader)(receiver);
}

QJsonObject jsonBody(const Call& call) {
    QByteArray bytes;
    const bool complete = call.body.read([&bytes](const char* data, size_t size) {
        if (bytes.size() <= kMaxJsonBytes) {
            bytes.append(data, static_cast<qsizetype>(size));
        }
    });
    return complete && bytes.size() <= kMaxJsonBytes ? QJsonDocument::fromJson(bytes).object()
                                                     : QJsonObject();
}

std::optional<Refusal> takeTexts(const QJsonObject& given, const QStringList& names,
                                 const QString& what, QJsonObject& taken) {
    for (const QString& name : names) {
        const QString text = given[name].toString();
        if (text.isEmpty()) {
            return Refusal{400, QStringLiteral("%1 needs '%2'").arg(what, name)};
        }
        taken[name] = text;
    }
    return std::nullopt;
}

Reply withFlag(const Call& call, QStringView item, const std::function<Reply(bool)>& work,
               const QString& missing) {
    const QString value = call.item(item, missing);
    if (value != u"true" && value != u"false") {
        return Refusal{
            400,
            QStringLiteral("the query item '%1' is 'true' or 'false', not '%2'").arg(item, value)};
    }
    return work(value == u"true");
}

void Router::add(const std::string& method, QStringView pattern, Endpoint endpoint, Access access) {
    routes.push_back({method, pattern.toString().split('/'), std::move(endpoint), access});
}

std::optional<QString> Router::logTo(const QString& path) {
    log.setFileName(path);
    if (!path.isEmpty() && !log.open(QIODevice::Append | QIODevice::Unbuffered)) {
        return QStringLiteral("cannot write the log '%1': %2").arg(path, log.errorString());
    }
    return std::nullopt;
}

void Router::logReply(const httplib::Request& request, const httplib::Response& response) {
    const std::string path = request.target.substr(0, request.target.find('?'));
    const std::string line = request.method + ' ' + path + ' ' + std::to_string(response.status) +
                             ' ' + response.get_header_value("Content-Length") + '\n';
    const std::lock_guard lock(logging);
    log.write(line.data(), static_cast<qint64>(line.size()));
}

void Router::attach(httplib::Server& server) {
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
    if (log.isOpen()) {
        // Before the reply goes out, so that whoever has it finds its line in the file.
        server.set_post_routing_handler(
            [this](const httplib::Request& request, const httplib::Response& response) {
                logReply(request, response);
            });
    }
    server.set_error_handler(explain);
    server.set_exception_handler(
        [](const httplib::Request&, httplib::Response& response, const std::exception_ptr&) {
            send(response, Refusal{500, QStringLiteral("the server failed to handle the request")});
        });
}

std::optional<Caller> Router::callerOf(const httplib::Request& request) const {
    const QString header = QString::fromStdString(request.get_header_value("Authorization"));
    if (!header.startsWith(QStringLiteral("Bearer "))) {
        return std::nullopt;
    }
    const QString token = header.section(' ', 1);
    return token == kToken ? Caller{kAdministrator, true} : identify(token);
}

Reply Router::answer(const httplib::Request& request, RequestBody& body) const {
    const auto target = parseTarget(request.target);
    const auto route = std::find_if(routes.begin(), routes.end(), [&](const Route& candidate) {
        return target && candidate.method == request.method &&
               matches(candidate.pattern, target->segments);
    });
    const bool isOpen = route != routes.end() && route->access == Access::kOpen;
    const auto caller = callerOf(request);
    if (!isOpen && !caller) {
        return Refusal{401, QStringLiteral("a valid bearer token is required")};
    }
    if (!target) {
        return Refusal{400, QStringLiteral("the request target is malformed")};
    }
    if (route == routes.end()) {
        return Refusal{404, QStringLiteral("no such endpoint: %1 /%2")
                                .arg(request.method.c_str(), target->segments.join('/'))};
    }
    if (route->access == Access::kAdmin && !caller->isAdmin) {
        return Refusal{403, QStringLiteral("only an administrator may do this")};
    }
    const qsizetype star = route->pattern.indexOf(QStringLiteral("*"));
    const QString name = star < 0 ? QString() : target->segments[star];
    const QString host = QString::fromStdString(request.get_header_value("Host"));
    return route->endpoint({name, target->query, host, caller.value_or(Caller()), body});
}

}  // namespace quorvelle::devserver
