#include "support/fake_bucket.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QCryptographicHash>
#include <QMessageAuthenticationCode>
#include <QString>
#include <algorithm>

namespace quorvelle::testing {

namespace {

constexpr const char* kPresigned = "/presigned/";

QByteArray sha256(const std::string& bytes) {
    return QCryptographicHash::hash(QByteArray::fromStdString(bytes), QCryptographicHash::Sha256)
        .toHex();
}

QByteArray hmac(const QByteArray& key, const QByteArray& message) {
    return QMessageAuthenticationCode::hash(message, key, QCryptographicHash::Sha256);
}

std::string encoded(const std::string& text, const char* unchanged = "") {
    return QByteArray::fromStdString(text).toPercentEncoding(unchanged).toStdString();
}

std::string decoded(const QByteArray& text) {
    return QByteArray::fromPercentEncoding(text).toStdString();
}

// The query as a store reads it: items decoded, encoded again and sorted.
QByteArray canonicalQuery(const QByteArray& query) {
    QByteArrayList items;
    for (const QByteArray& item : query.split('&')) {
        const qsizetype equals = item.indexOf('=');
        if (equals >= 0) {
            items << QByteArray::fromStdString(encoded(decoded(item.left(equals))) + '=' +
                                               encoded(decoded(item.mid(equals + 1))));
        }
    }
    std::sort(items.begin(), items.end());
    return items.join('&');
}

QByteArray header(const httplib::Request& request, const char* name) {
    return QByteArray::fromStdString(request.get_header_value(name));
}

void refuse(httplib::Response& response, int status, const std::string& code) {
    response.status = status;
    response.set_content("<Error><Code>" + code + "</Code></Error>", "application/xml");
}

void sendShort(const std::string& bytes, httplib::Response& response) {
    response.set_content_provider(
        bytes.size(), "application/octet-stream",
        [bytes](std::size_t offset, std::size_t, httplib::DataSink& sink) {
            return offset == 0 && sink.write(bytes.data(), bytes.size() - 1);
        });
}

void sendEndless(httplib::Response& response) {
    response.set_chunked_content_provider(
        "application/octet-stream",
        [block = std::string(1 << 20, 'x')](std::size_t, httplib::DataSink& sink) {
            return sink.write(block.data(), block.size());
        });
}

}  // namespace

FakeBucket::FakeBucket() {
    server.onAnythingElse([this](const httplib::Request& request, httplib::Response& response) {
        answer(request, response);
    });
}

std::string FakeBucket::presigned(const std::string& key) const {
    return endpoint() + kPresigned + encoded(key, "/") + "?X-Amz-Signature=made%20up";
}

void FakeBucket::store(const std::string& key, const std::string& bytes) {
    const std::lock_guard lock(mutex);
    stored[key] = bytes;
}

std::map<std::string, std::string> FakeBucket::objects() const {
    const std::lock_guard lock(mutex);
    return stored;
}

void FakeBucket::lieAbout(const std::string& key, Lie lie) {
    const std::lock_guard lock(mutex);
    lies[key] = lie;
}

void FakeBucket::expectRegion(const std::string& expected) {
    const std::lock_guard lock(mutex);
    region = expected;
}

std::vector<std::string> FakeBucket::log() const {
    const std::lock_guard lock(mutex);
    return seen;
}

std::size_t FakeBucket::connections() const {
    const std::lock_guard lock(mutex);
    return peers.size();
}

void FakeBucket::answer(const httplib::Request& request, httplib::Response& response) {
    const std::lock_guard lock(mutex);
    response.status = 200;
    answerUnlogged(request, response);
    peers.insert(request.remote_port);
    seen.push_back(request.method + ' ' + request.target + ' ' + std::to_string(response.status));
}

void FakeBucket::answerUnlogged(const httplib::Request& request, httplib::Response& response) {
    const std::string path =
        decoded(QByteArray::fromStdString(request.target.substr(0, request.target.find('?'))));
    if (path.starts_with(kPresigned)) {
        // A presigned URL is its own permission; stores refuse a second one.
        if (request.has_header("Authorization")) {
            return refuse(response, 400, "InvalidArgument");
        }
        return answerObject(path.substr(std::string(kPresigned).size()), response);
    }
    if (header(request, "x-amz-content-sha256") != sha256(request.body)) {
        return refuse(response, 400, "XAmzContentSHA256Mismatch");
    }
    if (request.get_header_value("Authorization") != expectedAuthorization(request)) {
        return refuse(response, 403, "SignatureDoesNotMatch");
    }
    const std::string bucket = std::string("/") + kName + '/';
    if (!path.starts_with(bucket)) {
        return refuse(response, 404, "NoSuchBucket");
    }
    answerObject(path.substr(bucket.size()), response);
}

void FakeBucket::answerObject(const std::string& key, httplib::Response& response) {
    if (answerLie(key, response)) {
        return;
    }
    const auto found = stored.find(key);
    if (found == stored.end()) {
        return refuse(response, 404, "NoSuchKey");
    }
    response.set_content(found->second, "application/octet-stream");
}

bool FakeBucket::answerLie(const std::string& key, httplib::Response& response) {
    const auto lie = lies.find(key);
    if (lie == lies.end()) {
        return false;
    }
    std::string bytes = stored[key];
    switch (lie->second) {
        case Lie::kRedirect:
            response.set_redirect("/elsewhere", 301);
            break;
        case Lie::kForbidden:
            refuse(response, 403, "AccessDenied");
            break;
        case Lie::kServerError:
            refuse(response, 500, "InternalError");
            break;
        case Lie::kShortBody:
            sendShort(bytes, response);
            break;
        case Lie::kWrongBytes:
            bytes.front() = static_cast<char>(bytes.front() ^ 1);
            response.set_content(bytes, "application/octet-stream");
            break;
        case Lie::kEndlessBody:
            sendEndless(response);
            break;
    }
    return true;
}

std::string FakeBucket::expectedAuthorization(const httplib::Request& request) const {
    const QByteArrayList target = QByteArray::fromStdString(request.target).split('?');
    const QByteArray date = header(request, "x-amz-date");
    const QByteArray day = date.left(8);
    const QByteArray payload = header(request, "x-amz-content-sha256");
    const QByteArray signedHeaders = "host;x-amz-content-sha256;x-amz-date";
    const QByteArray canonical =
        QByteArrayList{QByteArray::fromStdString(request.method),
                       QByteArray::fromStdString(encoded(decoded(target.value(0)), "/")),
                       canonicalQuery(target.value(1)),
                       "host:" + header(request, "Host"),
                       "x-amz-content-sha256:" + payload,
                       "x-amz-date:" + date,
                       "",
                       signedHeaders,
                       payload}
            .join('\n');
    const QByteArray scope = day + '/' + region.c_str() + "/s3/aws4_request";
    QByteArray key = QByteArray("AWS4") + kSecret;
    for (const QByteArray& part : scope.split('/')) {
        key = hmac(key, part);
    }
    const QByteArray signature = hmac(
        key, "AWS4-HMAC-SHA256\n" + date + '\n' + scope + '\n' + sha256(canonical.toStdString()));
    return (QByteArray("AWS4-HMAC-SHA256 Credential=") + kKeyId + '/' + scope +
            ", SignedHeaders=" + signedHeaders + ", Signature=" + signature.toHex())
        .toStdString();
}

}  // namespace quorvelle::testing
