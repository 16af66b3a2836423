#pragma once

#include <gtest/gtest.h>

#include <QDir>

#include "support/outcomes.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

inline constexpr char kJoined[] =
    R"({"schema_version":2,"servers":[{"server":"http://h","token":"old"}],
  "subscriptions":[{"name":"app","server":"http://h","channel":"stable","dir":"/app"}]})";

/// A command that saves, and what it says when it cannot. "{file}" stands for the
/// configuration's path.
struct Save {
    const char* line;
    const char* message;
    bool needsEntry;
};

inline constexpr Save kSaves[] = {
    {"config set server http://n", "Could not write {file}", false},
    {"server set-token http://h new", "could not save config", false},
    {"subscribe http://n c --dir x", "could not write {file}", false},
    {"server set-root http://h /n", "could not save config", true},
    {"unsubscribe app", "could not write {file}", true},
    {"subscription set-interval app 5", "could not write {file}", true},
    {"subscription set-self-heal app full", "could not write {file}", true},
};

using Runner = Outcome (*)(const Sandbox&, const QStringList&);

inline Outcome runPlainly(const Sandbox& box, const QStringList& words) {
    return box.run(words);
}

inline void expectSavesFail(const Sandbox& box, Runner run, bool readable) {
    const QStringList before = box.tree(".");
    for (const Save& save : kSaves) {
        if (save.needsEntry && !readable) {
            continue;
        }
        SCOPED_TRACE(save.line);
        const QString message =
            QString(save.message).replace("{file}", QDir::toNativeSeparators(box.configPath()));
        expectOutcome(run(box, args(save.line)), 2, {}, message + u'\n');
        const Outcome json = run(box, args(save.line) + QStringList("--json"));
        EXPECT_EQ(json.code, 2);
        EXPECT_EQ(json.err, QString());
        EXPECT_EQ(json.json(), (QJsonObject{{"error", message}}));
        EXPECT_EQ(box.tree("."), before);
    }
}

}  // namespace quorvelle::testing
