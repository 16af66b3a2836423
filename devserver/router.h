#pragma once

#include <httplib.h>

#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

#include "reply.h"

namespace quorvelle::devserver {

/// The token every request to a closed endpoint has to carry.
inline constexpr char kToken[] = "dev";

/// Hands out a request's body piece by piece, so that its size costs no
/// memory. Lives no longer than the handling of the request.
class RequestBody {
public:
    using Taker = std::function<void(const char* data, size_t size)>;

    /// "reader" is null for a method that has no body.
    RequestBody(const httplib::Request& request, const httplib::ContentReader* reader);

    /// Whether the client said how the body ends; without that there is none.
    bool isAnnounced() const { return announced_; }

    /// Passes all of the body to "take", the first time it is called. False
    /// when the client went away or fell silent before the end.
    bool read(const Taker& take);

private:
    const httplib::Request& request_;
    const httplib::ContentReader* reader_;
    bool announced_;
    bool consumed_ = false;
};

/// One request as an endpoint sees it: the name that stands where its pattern
/// has a "*", and the query's items, all decoded; and the server's name and port
/// as the client wrote them, empty when it did not.
struct Call {
    QString name;
    QMap<QString, QString> query;
    QString host;
    RequestBody& body;
};

/// Finds the endpoint for a request, after checking its token. It goes by the
/// raw target, for the HTTP library decodes "%2F" before it splits the path.
class Router {
public:
    using Endpoint = std::function<Reply(const Call& call)>;
    enum class Access { kWithToken, kOpen };

    /// Adds an endpoint for a path such as "api/builds/*/files", where "*"
    /// stands for one name. Endpoints run on the server's threads, several at
    /// a time.
    void add(const std::string& method, const QString& pattern, Endpoint endpoint,
             Access access = Access::kWithToken);

    /// Makes the server answer everything through this router, which must
    /// outlive it.
    void attach(httplib::Server& server) const;

private:
    struct Route {
        std::string method;
        QStringList pattern;
        Endpoint endpoint;
        Access access;
    };

    Reply answer(const httplib::Request& request, RequestBody& body) const;

    std::vector<Route> routes_;
};

}  // namespace quorvelle::devserver
