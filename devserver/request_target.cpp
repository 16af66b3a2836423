#include "request_target.h"

#include <QStringDecoder>

namespace quorvelle::devserver {

namespace {

std::optional<QString> decoded(const QByteArray& encoded) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(QByteArray::fromPercentEncoding(encoded));
    if (decoder.hasError()) {
        return std::nullopt;
    }
    return text;
}

}  // namespace

std::optional<Target> parseTarget(const std::string& raw) {
    const auto whole = QByteArray::fromStdString(raw);
    const qsizetype mark = whole.indexOf('?');
    const QByteArray path = mark < 0 ? whole : whole.first(mark);
    if (!path.startsWith('/')) {
        return std::nullopt;
    }
    Target target;
    for (const QByteArray& segment : path.sliced(1).split('/')) {
        const auto name = decoded(segment);
        if (!name) {
            return std::nullopt;
        }
        target.segments.append(*name);
    }
    const QByteArray query = mark < 0 ? QByteArray() : whole.sliced(mark + 1);
    for (const QByteArray& item : query.split('&')) {
        const qsizetype equals = item.indexOf('=');
        const auto key = decoded(equals < 0 ? item : item.first(equals));
        const auto value = decoded(equals < 0 ? QByteArray() : item.sliced(equals + 1));
        if (!key || !value) {
            return std::nullopt;
        }
        target.query.insert(*key, *value);
    }
    return target;
}

}  // namespace quorvelle::devserver
