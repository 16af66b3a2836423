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
