#pragma once

#include <httplib.h>

#include <QFile>
#include <QString>
#include <mutex>
#include <optional>

namespace quorvelle::devserver {

/// One line per answered request, appended to a file: method, path as sent (without the
/// query), status, and the reply's body in bytes, with blanks between.
class RequestLog {
public:
    /// Begins to append; why that is not possible comes back as a sentence.
    std::optional<QString> open(const QString& path);

    /// Makes the server write a line before each reply goes out, so that whoever has the
    /// reply finds its line in the file. The log must outlive the server.
    void attach(httplib::Server& server);

private:
    void add(const httplib::Request& request, const httplib::Response& response);

    std::mutex mutex_;
    QFile file_;
};

}  // namespace quorvelle::devserver
