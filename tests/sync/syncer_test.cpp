#include "sync/syncer.h"

#include <QEventLoop>

#include "support/fake_builds.h"
#include "support/process_runner.h"
#include "sync/markers.h"

namespace quorvelle::testing {

TEST(Syncer, GoesOnAsItWasStartedWhenStartedOnceMore) {
    FakeServer server;
    publishTide(server, "stable", "b1", {{"a", {"one"}}});
    for (const bool forced : {false, true}) {
        const Sandbox box;
        box.write("app/a", "changed");
        writeInstalledMarker(box.path("app"), {"b1", "stable"});
        box.follow(server.url());
        QJsonObject subscription = box.config()["subscriptions"][0].toObject();
        subscription["self_heal"] = 0;
        Syncer syncer;
        QStringList ends;
        QEventLoop loop;
        QObject::connect(&syncer, &Syncer::failed, &loop,
                         [&](const QString& message) { ends.append(message); });
        QObject::connect(&syncer, &Syncer::finished, &loop, [&](bool, const QString& message) {
            ends.append(message);
            loop.quit();
        });
        syncer.start(subscription, false);
        subscription["self_heal"] = 2;
        syncer.start(subscription, forced);
        loop.exec();
        EXPECT_EQ(ends, QStringList({"a sync is already running", "'app' is up to date"}));
    }
}

}  // namespace quorvelle::testing
