#pragma once

#include <QJsonObject>
#include <QString>
#include <variant>

namespace quorvelle::devserver {

/// Why a request was turned down: the HTTP status to answer with, and a
/// sentence for the person at the other end.
struct Refusal {
    int status;
    QString message;
};

/// The refusal of a name that stands for nothing: "no <what> '<name>'".
inline Refusal unknown(const QString& what, const QString& name) {
    return {404, QStringLiteral("no %1 '%2'").arg(what, name)};
}

/// A file on disk whose bytes are the answer. It must no longer change.
struct FileBytes {
    QString path;
};

/// A page for a browser.
struct Page {
    QString html;
};

/// Sends a browser to another URL.
struct Redirect {
    QString url;
};

/// What a request is answered with; a JSON object goes out with status 200.
using Reply = std::variant<QJsonObject, FileBytes, Refusal, Page, Redirect>;

}  // namespace quorvelle::devserver
