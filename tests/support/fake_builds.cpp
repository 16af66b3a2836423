#include "support/fake_builds.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QUrl>

namespace quorvelle::testing {

namespace {

std::string encoded(const QString& text) {
    return QUrl::toPercentEncoding(text).toStdString();
}

}  // namespace

std::string fileTarget(const QString& build, const QString& path) {
    return "/api/builds/" + encoded(build) + "/files?path=" + encoded(path);
}

void publish(FakeServer& server, const QString& channel, const QString& build,
             const std::vector<BuildFile>& files) {
    QJsonArray entries;
    for (const BuildFile& file : files) {
        entries.append(QJsonObject{{"path", file.path}, {"size", file.bytes.size()}});
        server.onBytes("GET", fileTarget(build, file.path), file.bytes.toStdString());
    }
    server.onJson("GET", "/api/builds/" + encoded(build), {{"files", entries}});
    server.onJson("GET", "/api/channels/" + encoded(channel),
                  {{"build", build}, {"engine", "cargo"}});
}

FakeServer::Answer truncatedAnswer() {
    return [](const httplib::Request&, httplib::Response& response) {
        response.set_content_provider(8, "application/octet-stream",
                                      [](std::size_t at, std::size_t, httplib::DataSink& sink) {
                                          return at == 0 && sink.write("half", 4);
                                      });
    };
}

}  // namespace quorvelle::testing
