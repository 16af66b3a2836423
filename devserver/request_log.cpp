#include "request_log.h"

namespace quorvelle::devserver {

std::optional<QString> RequestLog::open(const QString& path) {
    file_.setFileName(path);
    if (!file_.open(QIODevice::Append | QIODevice::Unbuffered)) {
        return QString("cannot write the log '%1': %2").arg(path, file_.errorString());
    }
    return std::nullopt;
}

void RequestLog::attach(httplib::Server& server) {
    server.set_post_routing_handler(
        [this](const httplib::Request& request, const httplib::Response& response) {
            add(request, response);
        });
}

void RequestLog::add(const httplib::Request& request, const httplib::Response& response) {
    const std::string path = request.target.substr(0, request.target.find('?'));
    const std::string line = request.method + ' ' + path + ' ' + std::to_string(response.status) +
                             ' ' + response.get_header_value("Content-Length") + '\n';
    const std::lock_guard lock(mutex_);
    file_.write(line.data(), static_cast<qint64>(line.size()));
}

}  // namespace quorvelle::devserver
