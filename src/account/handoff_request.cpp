#include "account/handoff_request.h"

#include <QList>
#include <QUrl>
#include <QUrlQuery>
#include <algorithm>

namespace quorvelle {

namespace {

constexpr char kAddress[] = "127.0.0.1";

bool isAcceptable(const QByteArray& headerLine, quint16 port) {
    const qsizetype colon = headerLine.indexOf(':');
    const QByteArray name = headerLine.left(colon).trimmed().toLower();
    const QByteArray value = headerLine.mid(colon + 1).trimmed();
    if (name == "host") {
        // A page of another site that made its name lead to this machine would ask under
        // that name.
        return value == kAddress || value == kAddress + (':' + QByteArray::number(port));
    }
    return name != "sec-fetch-dest" || value == "document";
}

}  // namespace

QString handoffIn(const QByteArray& request, quint16 port) {
    const qsizetype headEnd = request.indexOf("\r\n\r\n");
    QList<QByteArray> headers;
    for (qsizetype at = 0, end = headEnd < 0 ? request.size() : headEnd; at < end;) {
        qsizetype next = request.indexOf("\r\n", at);
        next = next < 0 || next > end ? end : next;
        headers.append(request.mid(at, next - at));
        at = next + 2;
    }
    const QList<QByteArray> words =
        headers.isEmpty() ? QList<QByteArray>() : headers.takeFirst().split(' ');
    if (words.size() < 3 || words.at(0) != "GET" ||
        !std::all_of(headers.begin(), headers.end(),
                     [port](const QByteArray& line) { return isAcceptable(line, port); })) {
        return {};
    }
    const QUrl url = QUrl::fromEncoded(QByteArray("http://") + kAddress + words.at(1));
    return QUrlQuery(url).queryItemValue(QStringLiteral("handoff"), QUrl::FullyDecoded);
}

}  // namespace quorvelle
