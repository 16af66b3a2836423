#include "account/handoff_request.h"

#include <QList>
#include <QUrl>
#include <QUrlQuery>
#include <algorithm>

namespace quorvelle {

namespace {

constexpr char kAddress[] = "127.0.0.1";

/// A page of another site that made its name lead to this machine would ask under that
/// name, which has a dot. Names without one ("localhost") are of this machine's network.
bool isAcceptableHost(const QByteArray& host, quint16 port) {
    const bool isNamedSite = host.contains('.') || host.startsWith('[');
    return !isNamedSite || host == kAddress || host == kAddress + (':' + QByteArray::number(port));
}

bool isAcceptable(const QByteArray& headerLine, quint16 port) {
    const qsizetype colon = headerLine.indexOf(':');
    const QByteArray name = headerLine.left(colon).trimmed().toLower();
    const QByteArray value = headerLine.mid(colon + 1).trimmed();
    if (name == "host") {
        return isAcceptableHost(value, port);
    }
    return name != "sec-fetch-dest" || value == "document";
}

/// The lines of the head that begin at `at`, without their ends; what follows the last end
/// is no line yet.
QList<QByteArray> completeLines(const QByteArray& request, qsizetype at) {
    QList<QByteArray> lines;
    for (qsizetype end = 0; (end = request.indexOf("\r\n", at)) > at; at = end + 2) {
        lines.append(request.mid(at, end - at));
    }
    return lines;
}

}  // namespace

QString handoffIn(const QByteArray& request, quint16 port) {
    const qsizetype firstEnd = request.indexOf("\r\n");
    const QList<QByteArray> words =
        request.left(firstEnd < 0 ? request.size() : firstEnd).split(' ');
    const QList<QByteArray> headers =
        firstEnd < 0 ? QList<QByteArray>() : completeLines(request, firstEnd + 2);
    if (words.size() < 3 || words.at(0) != "GET" ||
        !std::all_of(headers.begin(), headers.end(),
                     [port](const QByteArray& line) { return isAcceptable(line, port); })) {
        return {};
    }
    const QUrl url = QUrl::fromEncoded(QByteArray("http://") + kAddress + words.at(1));
    return QUrlQuery(url).queryItemValue(QStringLiteral("handoff"), QUrl::FullyDecoded);
}

}  // namespace quorvelle
