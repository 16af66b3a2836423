#pragma once

#include <QJsonObject>
#include <QString>
#include <functional>
#include <mutex>
#include <optional>

#include "reply.h"

namespace quorvelle::devserver {

/// A JSON object in a file that its owner alone may read. Any thread may call any function.
class Document {
public:
    explicit Document(const QString& path) : file(path) {}

    /// Takes up the file of an earlier run. One that cannot be read comes back as a sentence.
    std::optional<QString> load();

    QJsonObject read() const;

    /// Lets `work` read or change the object. What it changed is kept unless it refuses.
    Reply with(const std::function<Reply(QJsonObject&)>& work);

    /// Sets one member, and answers with `reply` once that is kept.
    Reply set(const QString& name, const QJsonObject& value, const QJsonObject& reply);

    /// Takes one member out, if it is there; answers with an empty object.
    Reply remove(const QString& name);

private:
    const QString file;
    mutable std::mutex mutex;
    QJsonObject object;
};

}  // namespace quorvelle::devserver
