#include "support/server_api_page.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>

namespace quorvelle::testing {

namespace {

std::vector<DescribedRequest> readPage() {
    static const QRegularExpression entry(
        "^- `([A-Z]+) (/[^`?\\[]*)([^`]*)`(.*?)(?=^[-#]|^$|\\z)",
        QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression name("<[^>]*>");
    std::vector<DescribedRequest> requests;
    for (const auto& match : entry.globalMatch(DescribedRequest::page("docs/server-api.md"))) {
        requests.push_back({match.captured(1), match.captured(2).replace(name, "%1"),
                            match.captured(3), match.captured(4)});
    }
    EXPECT_GT(requests.size(), 60U);
    return requests;
}

bool matchesPath(const QString& pattern, const QString& path) {
    const QString escaped = QRegularExpression::escape(pattern).replace("\\%1", "[^/]+");
    return QRegularExpression(QRegularExpression::anchoredPattern(escaped)).match(path).hasMatch();
}

/// Whether every item is described, and no item is missing that has to be there.
bool matchesQuery(const QString& pattern, const QString& query) {
    static const QRegularExpression item("(\\[)?[?&](\\w+)=([^&?\\[\\]]*)");
    QUrlQuery left(query);
    for (const auto& match : item.globalMatch(pattern)) {
        const QString key = match.captured(2);
        const QString value = match.captured(3);
        const bool known =
            value.startsWith(u'<') || value.split(u'|').contains(left.queryItemValue(key));
        if (left.hasQueryItem(key) ? !known : match.captured(1).isEmpty()) {
            return false;
        }
        left.removeQueryItem(key);
    }
    return left.isEmpty();
}

/// A body that is an object in the page has the keys that stand there, and no others.
bool matchesBody(const QString& text, const std::string& body) {
    static const QRegularExpression object("`(\\{[^`]*\\})`");
    const QString described = text.section("Body:", 1);
    if (described.isEmpty() || !object.match(described).hasMatch()) {
        return !described.isEmpty() || body.empty();
    }
    QString keys;
    for (const auto& match : object.globalMatch(described)) {
        keys += match.captured(1);
    }
    const QJsonObject sent = QJsonDocument::fromJson(QByteArray::fromStdString(body)).object();
    for (const QString& key : sent.keys()) {
        if (!keys.contains(u'"' + key + "\":")) {
            return false;
        }
    }
    return !sent.isEmpty();
}

}  // namespace

QString DescribedRequest::page(const QString& path) {
    QFile file(QStringLiteral(QUORVELLE_ROOT "/") + path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

const std::vector<DescribedRequest>& DescribedRequest::all() {
    static const std::vector<DescribedRequest> requests = readPage();
    return requests;
}

std::string DescribedRequest::complaint(const std::string& method, const std::string& target,
                                        const std::string& body) {
    const QString sent = QString::fromStdString(target);
    const QString path = sent.section(u'?', 0, 0);
    std::string reason = "has no such request";
    for (const DescribedRequest& request : all()) {
        if (request.method.toStdString() != method || !matchesPath(request.path, path)) {
            continue;
        }
        if (!matchesQuery(request.query, sent.section(u'?', 1))) {
            reason = "describes another query";
        } else if (!matchesBody(request.text, body)) {
            reason = "describes another body";
        } else {
            return {};
        }
    }
    return "docs/server-api.md " + reason + ": " + method + ' ' + target + ' ' + body;
}

}  // namespace quorvelle::testing
