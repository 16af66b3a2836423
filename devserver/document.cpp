#include "document.h"

#include <QFileInfo>

#include "data_folder.h"

namespace quorvelle::devserver {

std::optional<QString> Document::load() {
    if (!QFileInfo::exists(file)) {
        return std::nullopt;
    }
    const auto stored = readJson(file);
    if (!stored) {
        return QStringLiteral("cannot read '%1'").arg(file);
    }
    object = *stored;
    return std::nullopt;
}

QJsonObject Document::read() const {
    const std::lock_guard lock(mutex);
    return object;
}

Reply Document::with(const std::function<Reply(QJsonObject&)>& work) {
    const std::lock_guard lock(mutex);
    QJsonObject changed = object;
    Reply reply = work(changed);
    if (std::holds_alternative<Refusal>(reply) || changed == object) {
        return reply;
    }
    if (!writeJson(file, changed, Readers::kOwner)) {
        return Refusal{500, QStringLiteral("cannot record the change")};
    }
    object = changed;
    return reply;
}

Reply Document::set(const QString& name, const QJsonObject& value, const QJsonObject& reply) {
    return with([&](QJsonObject& whole) -> Reply {
        whole[name] = value;
        return reply;
    });
}

Reply Document::remove(const QString& name) {
    return with([&](QJsonObject& whole) -> Reply {
        whole.remove(name);
        return QJsonObject();
    });
}

}  // namespace quorvelle::devserver
