#include "send.h"

#include <QFile>
#include <QJsonDocument>
#include <algorithm>
#include <array>
#include <memory>

namespace quorvelle::devserver {

namespace {

constexpr size_t kChunkSize = 65536;
constexpr char kBytes[] = "application/octet-stream";

void sendJson(httplib::Response& response, int status, const QJsonObject& object) {
    response.status = status;
    response.set_content(QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString(),
                         "application/json");
}

void sendFile(httplib::Response& response, const QString& path) {
    const auto file = std::make_shared<QFile>(path);
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return sendJson(response, 500,
                        {{QStringLiteral("error"), QStringLiteral("cannot read the file")}});
    }
    const auto size = static_cast<size_t>(file->size());
    if (size == 0) {
        return response.set_content("", kBytes);
    }
    response.set_content_provider(
        size, kBytes, [file](size_t offset, size_t length, httplib::DataSink& sink) {
            std::array<char, kChunkSize> chunk;
            const auto wanted = static_cast<qint64>(std::min(length, chunk.size()));
            return file->seek(static_cast<qint64>(offset)) &&
                   file->read(chunk.data(), wanted) == wanted &&
                   sink.write(chunk.data(), static_cast<size_t>(wanted));
        });
}

}  // namespace

void send(httplib::Response& response, const Reply& reply) {
    if (const auto* file = std::get_if<FileBytes>(&reply)) {
        sendFile(response, file->path);
    } else if (const auto* refusal = std::get_if<Refusal>(&reply)) {
        sendJson(response, refusal->status, {{QStringLiteral("error"), refusal->message}});
    } else if (const auto* page = std::get_if<Page>(&reply)) {
        response.set_content(page->html.toStdString(), "text/html; charset=utf-8");
    } else if (const auto* redirect = std::get_if<Redirect>(&reply)) {
        response.set_redirect(redirect->url.toStdString(), 303);
    } else {
        sendJson(response, 200, std::get<QJsonObject>(reply));
    }
}

}  // namespace quorvelle::devserver
