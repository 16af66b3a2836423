#include "onboarding/cloudflare_api.h"

#include <QJsonDocument>
#include <utility>

#include "config/json_number.h"
#include "config/server_url.h"
#include "server/url.h"

namespace quorvelle::onboarding {

namespace {

using Outcome = CloudflareReply::Outcome;

/// Far above what an account can hold; a listing that never ends is given up.
constexpr int kMaxPages = 1000;

QString bucketsPath(const BucketPlace& place) {
    return apiPath(QStringLiteral("/accounts/%1/r2/buckets"), place.accountId);
}

Outcome outcomeOf(const CallResult& result) {
    const QJsonValue verdict = result.object.value(u"success");
    if (result.answered() && verdict.isBool()) {
        return verdict.toBool() ? Outcome::kDone : Outcome::kRefused;
    }
    // What stands between may have lost Cloudflare's answer, but not after a refusal of
    // its own.
    return result.status >= 300 && result.status < 500 ? Outcome::kRefused : Outcome::kNoAnswer;
}

/// The query of the page after this one, or nothing when it is the last.
std::optional<QString> nextPage(const QJsonObject& reply, int page) {
    const QJsonObject info = reply.value(u"result_info").toObject();
    const QString cursor = info.value(u"cursor").toString();
    if (!cursor.isEmpty()) {
        return apiPath(QStringLiteral("?cursor=%1"), cursor);
    }
    if (page < wholeNumberIn(info.value(u"total_pages"))) {
        return QStringLiteral("?page=%1").arg(page + 1);
    }
    return std::nullopt;
}

}  // namespace

CloudflareApi::CloudflareApi(BoundedCalls& caller, const QString& base,
                             const QString& operatorToken, std::chrono::milliseconds callLimit)
    : calls(caller),
      baseUrl(withoutTrailingSlashes(base)),
      token(operatorToken),
      limit{callLimit,
            QStringLiteral("Cloudflare did not answer within %1 seconds")
                .arg(std::chrono::duration_cast<std::chrono::seconds>(callLimit).count())} {}

CloudflareReply CloudflareApi::send(const Call& call) {
    HttpRequest request{.method = call.method,
                        .url = QUrl(baseUrl + call.path),
                        .token = token,
                        .contentType = "application/json"};
    if (!call.body.isEmpty()) {
        request.body = QJsonDocument(call.body).toJson(QJsonDocument::Compact);
    }
    if (!call.jurisdiction.isEmpty()) {
        request.headers.append({"cf-r2-jurisdiction", call.jurisdiction.toUtf8()});
    }
    const CallResult result = calls.send(std::move(request), limit, call.onInterrupt);
    CloudflareReply reply{
        .outcome = outcomeOf(result), .object = result.object, .status = result.status};
    if (!reply.done()) {
        const QJsonObject first = result.object.value(u"errors").toArray().at(0).toObject();
        reply.code = static_cast<int>(wholeNumberIn(first.value(u"code")));
        QString text = first.value(u"message").toString();
        if (text.isEmpty()) {
            text = result.answered() ? QStringLiteral("Cloudflare refused the request")
                                     : result.reason;
        }
        reply.message =
            QStringLiteral("Cloudflare: ") + text.replace(token, QStringLiteral("(token)"));
    }
    return reply;
}

template <typename Take>
CloudflareReply CloudflareApi::sendPages(Call call, Take take) {
    const QString firstPath = call.path;
    for (int page = 1;; ++page) {
        CloudflareReply reply = send(call);
        if (!reply.done()) {
            return reply;
        }
        take(reply.object.value(u"result"));
        const std::optional<QString> next = nextPage(reply.object, page);
        if (!next || page == kMaxPages) {
            return reply;
        }
        call.path = firstPath + *next;
    }
}

CloudflareReply CloudflareApi::listAccounts(QList<CloudflareAccount>& accounts) {
    return sendPages(
        {.method = "GET", .path = QStringLiteral("/accounts")},
        [&accounts](const QJsonValue& result) {
            for (const QJsonValue account : result.toArray()) {
                accounts.append({account[u"id"].toString(), account[u"name"].toString()});
            }
        });
}

CloudflareReply CloudflareApi::findBucket(const BucketPlace& place, bool& found,
                                          OnInterrupt onInterrupt) {
    found = false;
    return sendPages({.method = "GET",
                      .path = bucketsPath(place),
                      .jurisdiction = place.jurisdiction,
                      .onInterrupt = onInterrupt},
                     [&](const QJsonValue& result) {
                         for (const QJsonValue bucket : result[u"buckets"].toArray()) {
                             found = found || bucket[u"name"].toString() == place.name;
                         }
                     });
}

CloudflareReply CloudflareApi::createBucket(const BucketPlace& place) {
    return send({.method = "POST",
                 .path = bucketsPath(place),
                 .body = {{QStringLiteral("name"), place.name}},
                 .jurisdiction = place.jurisdiction,
                 .onInterrupt = OnInterrupt::kGiveUpSoon});
}

CloudflareReply CloudflareApi::deleteBucket(const BucketPlace& place) {
    return send({.method = "DELETE",
                 .path = bucketsPath(place) + apiPath(QStringLiteral("/%1"), place.name),
                 .jurisdiction = place.jurisdiction,
                 .onInterrupt = OnInterrupt::kGoOn});
}

CloudflareReply CloudflareApi::readGroups(BucketGroups& groups) {
    return sendPages({.method = "GET", .path = QStringLiteral("/user/tokens/permission_groups")},
                     [&groups](const QJsonValue& result) {
                         for (const QJsonValue group : result.toArray()) {
                             const QString name = group[u"name"].toString();
                             if (name == kReadGroup) {
                                 groups.read = group[u"id"].toString();
                             } else if (name == kWriteGroup) {
                                 groups.write = group[u"id"].toString();
                             }
                         }
                     });
}

CloudflareReply CloudflareApi::createToken(const QString& name, const BucketPlace& place,
                                           const BucketGroups& groups, BucketAccess access,
                                           QString& id, QString& value) {
    const CloudflareReply reply = send(
        {.method = "POST",
         .path = QStringLiteral("/user/tokens"),
         .body = {{QStringLiteral("name"), name},
                  {QStringLiteral("policies"), QJsonArray{tokenPolicy(place, groups, access)}}},
         .onInterrupt = OnInterrupt::kGiveUpSoon});
    id = reply.object.value(u"result")[u"id"].toString();
    value = reply.object.value(u"result")[u"value"].toString();
    return reply;
}

CloudflareReply CloudflareApi::deleteToken(const QString& id) {
    return send({.method = "DELETE",
                 .path = apiPath(QStringLiteral("/user/tokens/%1"), id),
                 .onInterrupt = OnInterrupt::kGoOn});
}

QJsonObject tokenPolicy(const BucketPlace& place, const BucketGroups& groups, BucketAccess access) {
    QJsonArray permissions{QJsonObject{{QStringLiteral("id"), groups.read}}};
    if (access == BucketAccess::kReadWrite) {
        permissions.append(QJsonObject{{QStringLiteral("id"), groups.write}});
    }
    const QString resource =
        QStringList{QStringLiteral("com.cloudflare.edge.r2.bucket.") + place.accountId,
                    place.jurisdiction.isEmpty() ? QStringLiteral("default") : place.jurisdiction,
                    place.name}
            .join(u'_');
    return {{QStringLiteral("effect"), QStringLiteral("allow")},
            {QStringLiteral("resources"), QJsonObject{{resource, QStringLiteral("*")}}},
            {QStringLiteral("permission_groups"), permissions}};
}

}  // namespace quorvelle::onboarding
