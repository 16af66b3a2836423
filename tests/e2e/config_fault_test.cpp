#include <cerrno>

#include "support/faulty_run.h"

namespace quorvelle::testing {

namespace {

using ::testing::Combine;

constexpr char kMissing[] = "(missing)";
constexpr char kUnparsable[] = "{\"token\": \"precious";
constexpr char kGood[] = R"({"schema_version": 2, "server": "http://old", "token": "kept"})";

const QString kConfig = "config/config.json";
const QString kKeptAside = "config/config.json.corrupt";

struct ChangeCase {
    const char* name;
    /// The file before the command.
    QByteArray before;
    QStringList command;
};

void PrintTo(const ChangeCase& row, std::ostream* out) {
    *out << row.name;
}

std::vector<ChangeCase> changes() {
    const QStringList set = args("config set server http://new");
    const QStringList subscribe = args("subscribe http://new beta --dir /games/beta");
    return {{"SetInNewFile", kMissing, set},
            {"SetInOldFile", kGood, set},
            {"SetOverUnparsable", kUnparsable, set},
            {"Subscribe", kGood, subscribe}};
}

/// A change of the configuration with a fault in it; error 0 kills.
class FaultyConfigChange : public ::testing::TestWithParam<std::tuple<ChangeCase, int>> {
protected:
    const ChangeCase& row() const { return std::get<0>(GetParam()); }

    FaultyOutcome change(Sandbox& sandbox, int call) const {
        if (row().before != kMissing) {
            sandbox.write(kConfig, row().before);
        }
        return runFaulty(sandbox, row().command, {.call = call, .error = std::get<1>(GetParam())});
    }

    /// The file is the old or the new one, and nothing of an unparsable one is lost.
    void expectWhole(const Sandbox& sandbox, const QByteArray& after) const {
        const QByteArray now = sandbox.read(kConfig);
        EXPECT_THAT(now, AnyOf(row().before, after));
        if (now != row().before) {
            EXPECT_TRUE(isOwnersAlone(sandbox.configPath()));
        }
        if (now != row().before && row().before == kUnparsable) {
            EXPECT_EQ(sandbox.read(kKeptAside), QByteArray(kUnparsable));
        }
    }
};

}  // namespace

TEST_P(FaultyConfigChange, KeepsTheOldFileOrTheNewOneWhole) {
    Sandbox untroubled;
    const int calls = change(untroubled, 0).calls;
    const QByteArray after = untroubled.read(kConfig);
    ASSERT_GT(calls, 5);
    for (const int call : faultPoints(calls)) {
        Sandbox sandbox;
        const FaultyOutcome faulty = change(sandbox, call);
        SCOPED_TRACE("call " + std::to_string(call) + ": " + faulty.failed);
        expectWhole(sandbox, after);
        if (!faulty.wasKilled()) {
            ASSERT_NE(faulty.failed, "none");
            EXPECT_THAT(faulty.code, AnyOf(0, 2));
            // What cannot be printed has been saved.
            const bool saved = faulty.code == 0 || faulty.failed == "fflush";
            EXPECT_EQ(sandbox.read(kConfig), saved ? after : row().before);
        }
        if (faulty.failed == "fsync") {
            EXPECT_EQ(faulty.code, 2) << "bytes that may not be on the disk";
        }
        const Outcome next = sandbox.run(args("config set token later"));
        EXPECT_EQ(next.code, 0) << next.err.toStdString();
        EXPECT_EQ(sandbox.config().value(u"token").toString(), "later");
        EXPECT_THAT(
            QDir(sandbox.path("config")).entryList(QDir::Files | QDir::Hidden),
            AnyOf(QStringList("config.json"), QStringList({"config.json", "config.json.corrupt"})));
    }
}

INSTANTIATE_TEST_SUITE_P(Changes, FaultyConfigChange,
                         Combine(ValuesIn(changes()), Values(0, EIO, ENOSPC)), [](const auto& row) {
                             const int error = std::get<1>(row.param);
                             return std::string(std::get<0>(row.param).name) +
                                    (error == 0     ? "Killed"
                                     : error == EIO ? "ReadWriteError"
                                                    : "FullDisk");
                         });

}  // namespace quorvelle::testing
