#pragma once

#include <httplib.h>

#include <QFile>
#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "reply.h"

namespace quorvelle::devserver {

/// The token of the administrator that every data folder knows, and his name.
inline constexpr char kToken[] = "dev";
inline constexpr char kAdministrator[] = "dev";

/// Who sent a request.
struct Caller {
    QString name;
    bool isAdmin = false;
};

/// Hands out a request's body piece by piece, so that its size costs no
/// memory. Lives no longer than the handling of the request.
class RequestBody {
public:
    using Taker = std::function<void(const char* data, size_t size)>;

    /// "source" is null for a method that has no body.
    RequestBody(const httplib::Request& request, const httplib::ContentReader* source);

    /// Whether the client said how the body ends; without that there is none.
    bool isAnnounced() const { return announced; }

    /// Passes all of the body to "take", the first time it is called. False
    /// when the client went away or fell silent before the end.
    bool read(const Taker& take);

private:
    const httplib::Request& head;
    const httplib::ContentReader* reader;
    bool announced;
    bool consumed = false;
};

/// One request as an endpoint sees it: the name that stands where its pattern
/// has a "*", and the query's items, all decoded; the server's name and port as the
/// client wrote them, empty when it did not; and who is asking.
struct Call {
    QString name;
    QMap<QString, QString> query;
    QString host;
    /// Of an open endpoint perhaps nobody: an empty name.
    Caller caller;
    RequestBody& body;

    /// A query item; `missing` when there is none.
    QString item(QStringView key, const QString& missing = {}) const {
        return query.value(key.toString(), missing);
    }
};

/// The JSON object in a request's body; empty when it holds none, or more than 64 KiB.
QJsonObject jsonBody(const Call& call);

/// Copies these texts from what was given into `taken`. The refusal "<what> needs '<name>'" where
/// one is missing or empty.
std::optional<Refusal> takeTexts(const QJsonObject& given, const QStringList& names,
                                 const QString& what, QJsonObject& taken);

/// Answers with what `work` makes of a query item that is "true" or "false". Any other text
/// is refused; where the item is missing, `missing` stands for it.
Reply withFlag(const Call& call, QStringView item, const std::function<Reply(bool)>& work,
               const QString& missing = {});

/// Finds the endpoint for a request, after checking its token. It goes by the
/// raw target, for the HTTP library decodes "%2F" before it splits the path.
class Router {
public:
    using Endpoint = std::function<Reply(const Call& call)>;
    /// Whose token a request has to carry: anybody's, an administrator's, or none.
    enum class Access { kWithToken, kAdmin, kOpen };
    /// Finds who a token other than kToken belongs to.
    using Identify = std::function<std::optional<Caller>(const QString& token)>;

    explicit Router(Identify how) : identify(std::move(how)) {}

    /// Adds an endpoint for a path such as "api/builds/*/files", where "*"
    /// stands for one name. Endpoints run on the server's threads, several at
    /// a time.
    void add(const std::string& method, QStringView pattern, Endpoint endpoint,
             Access access = Access::kWithToken);

    /// Adds one for administrators.
    void addForAdmins(const std::string& method, QStringView pattern, Endpoint endpoint) {
        add(method, pattern, std::move(endpoint), Access::kAdmin);
    }

    /// Begins to append one line per answered request to a file, or to none when the path is
    /// empty: method, path as sent (without the query), status, and the reply's body in
    /// bytes, with blanks between. Why that is not possible comes back as a sentence.
    std::optional<QString> logTo(const QString& path);

    /// Makes the server answer everything through this router, which must
    /// outlive it.
    void attach(httplib::Server& server);

private:
    struct Route {
        std::string method;
        QStringList pattern;
        Endpoint endpoint;
        Access access;
    };

    Reply answer(const httplib::Request& request, RequestBody& body) const;
    std::optional<Caller> callerOf(const httplib::Request& request) const;

    void logReply(const httplib::Request& request, const httplib::Response& response);

    const Identify identify;
    std::vector<Route> routes;
    std::mutex logging;
    QFile log;
};

}  // namespace quorvelle::devserver
