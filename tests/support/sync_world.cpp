#include "support/sync_world.h"

#include <QRegularExpression>
#include <vector>

#include "support/fake_builds.h"
#include "support/faulty_run.h"

namespace quorvelle::testing {

namespace {

using Files = std::vector<BuildFile>;

QByteArray twoMebibytes(const QByteArray& line) {
    return line.repeated(2 * 1024 * 1024 / int(line.size()));
}

const Files kBuild1{{"bin/same", "same"},
                    {"data/big", twoMebibytes("an old big line\n")},
                    {"data/deep/empty", ""},
                    {"data/gone/old", "removed"},
                    {"readme", "one"}};
const Files kBuild2{{"bin/new/added", "added"},
                    {"bin/same", "same"},
                    {"data/big", twoMebibytes("a newer big one\n")},
                    {"data/deep/empty", ""},
                    {"readme", "two"}};

const Files kTheirs{{".hidden", "theirs"}, {"thesis/text", "theirs too"}};

/// Each file in chunks of 640 KiB.
TideFiles inChunks(const Files& files) {
    constexpr qsizetype kChunk = 640 * 1024;
    TideFiles cut;
    for (const auto& [path, bytes] : files) {
        auto& [name, chunks] = cut.emplace_back(path.toStdString(), std::vector<std::string>());
        for (qsizetype at = 0; at < bytes.size(); at += kChunk) {
            chunks.push_back(bytes.mid(at, kChunk).toStdString());
        }
    }
    return cut;
}

void writeFiles(const Sandbox& sandbox, const QString& folder, const Files& files) {
    for (const auto& [path, bytes] : files) {
        sandbox.write(folder + u'/' + path, bytes);
    }
}

std::string holding(const Sandbox& sandbox, const QString& folder) {
    const QStringList tree = sandbox.tree(folder);
    for (const auto& [name, files] :
         {std::pair{"build 1", kBuild1}, {"build 2", kBuild2}, {"theirs", kTheirs}}) {
        QStringList lines;
        for (const auto& [path, bytes] : files) {
            lines.append(path + u'=' + QString::fromUtf8(bytes));
        }
        if (tree == lines) {
            return name;
        }
    }
    return tree == QStringList("(missing)")
               ? "nothing"
               : "a mixture: " + tree.join(' ').left(400).simplified().toStdString();
}

/// Names in a folder. A save that was killed just before its rename leaves a temporary
/// name with six random letters, which nothing reads; it is left out.
QStringList namesIn(const Sandbox& sandbox, const QString& folder) {
    static const QRegularExpression lasting("^(?!.*\\.(json|build|swap)\\.[A-Za-z]{6}$)");
    return QDir(sandbox.path(folder))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
        .filter(lasting);
}

}  // namespace

SyncWorld::SyncWorld(Engine syncEngine) : engine(syncEngine) {
    if (engine == Engine::kTide) {
        publishTide(server, "stable", "b2", inChunks(kBuild2), ChunkForm::kZstd);
    } else {
        publish(server, "stable", "b2", kBuild2);
    }
}

void SyncWorld::breakDownload() {
    const std::string target =
        engine == Engine::kTide ? chunkTarget("two") : fileTarget("b2", "readme");
    server.onJson("GET", target, {}, 500);
}

void SyncWorld::prepare(const Sandbox& sandbox, Start start) const {
    sandbox.follow(server.url(), "stable", "games/app");
    if (start == Start::kNothing) {
        return;
    }
    if (start == Start::kTheirs) {
        writeFiles(sandbox, "games/app", kTheirs);
        return;
    }
    const QString state = start == Start::kLegacy ? "games/app" : "games/.quorvelle/app";
    writeFiles(sandbox, "games/app", kBuild1);
    sandbox.write(state + ".installed.json", R"({"build": "b1", "channel": "stable"})");
    if (start == Start::kBuild1) {
        return;
    }
    writeFiles(sandbox, state + ".staging", kBuild2);
    sandbox.write(state + ".staged.json", R"({"build": "b2", "channel": "stable"})");
    writeFiles(sandbox, state + ".old", {{"sub/left", "over"}});
    if (engine == Engine::kTide) {
        sandbox.write(state + ".staging.build", "b2");
    }
}

std::string standing(const Sandbox& sandbox) {
    const std::string installed = holding(sandbox, "games/app");
    for (const std::string place : {"old", "replaced"}) {
        const std::string away =
            holding(sandbox, "games/.quorvelle/app." + QString::fromStdString(place));
        if (installed == "nothing" && away != "nothing") {
            return (place == "old" ? "old: " : "kept: ") + away +
                   ", staging: " + stagedFiles(sandbox);
        }
    }
    return installed;
}

std::string stagedFiles(const Sandbox& sandbox) {
    return holding(sandbox, "games/.quorvelle/app.staging");
}

void expectConvergence(Sandbox& sandbox, Engine engine, Start start, bool mayKeepOld) {
    const bool tide = engine == Engine::kTide;
    const Outcome sync = runFaulty(sandbox, {"sync"}, {});
    EXPECT_EQ(sync.code, 0) << sync.err.toStdString() << sync.out.toStdString();
    EXPECT_EQ(standing(sandbox), "build 2");
    const QJsonObject marker = json(sandbox.read("games/.quorvelle/app.installed.json"));
    EXPECT_EQ(marker["build"].toString(), "b2");
    EXPECT_EQ(namesIn(sandbox, "games"), QStringList({".quorvelle", "app"}));
    QStringList state = namesIn(sandbox, "games/.quorvelle");
    if (mayKeepOld) {
        state.removeAll("app.old");
        state.removeAll("app.swap");
    }
    if (tide) {
        state.removeAll("app.staging.build");
    }
    if (start == Start::kTheirs) {
        EXPECT_EQ(holding(sandbox, "games/.quorvelle/app.replaced"), "theirs");
        state.removeAll("app.replaced");
    }
    EXPECT_EQ(state, QStringList("app.installed.json"));

    const Outcome again = runFaulty(sandbox, {"sync"}, {});
    EXPECT_EQ(again.code, 0);
    EXPECT_TRUE(again.out.endsWith(tide ? "'app' is up to date (checked)\n"
                                        : "'app' is up to date (build b2)\n"))
        << again.out.toStdString();
}

}  // namespace quorvelle::testing
