#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <map>
#include <set>

#include "support/notation.h"

namespace quorvelle::testing {

namespace {

/// A folder of src/ and the folders that its files may include, itself aside. The linker
/// does not mind any other: archives hand out what they hold to all.
const QString kRooms = R"(
console    |
files      |
config     | console files
server     | console files config
tide       | files
sync       | console files config server tide
account    | console files config server
publish    | console files config server
launch     | console files config server
admin      | console files config server launch/launch_target.h launch/target_list.h
onboarding | console files config server
cli        | console files config server account publish launch admin onboarding sync tide/engine.h)";

/// The headers that the text includes: "room/name.h", or "<name" where no room is named.
QStringList includesOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QStringList found;
    static const QRegularExpression line("^#include (?:\"([^\"]+)\"|(<[^>]+))",
                                         QRegularExpression::MultilineOption);
    for (const auto& match : line.globalMatch(QString::fromUtf8(file.readAll()))) {
        found.append(match.captured(1) + match.captured(2));
    }
    return found;
}

}  // namespace

TEST(Rooms, IncludeOnlyWhatLiesBelowThem) {
    const QString src = QStringLiteral(QUORVELLE_ROOMS "/");
    std::map<QString, QStringList> below;
    for (const QStringList& row : rows(kRooms)) {
        below[row[0]] = args(row[1]) << row[0];
    }
    std::set<QString> seen;
    QDirIterator files(src, {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next().mid(src.size());
        const QString room = path.section('/', 0, 0);
        seen.insert(room);
        for (const QString& header : includesOf(src + path)) {
            const bool isOwn = header.contains('/') && !header.startsWith('<');
            EXPECT_TRUE(!isOwn || below[room].contains(header.section('/', 0, 0)) ||
                        below[room].contains(header))
                << path.toStdString() << " includes " << header.toStdString();
            // The engine runs without Qt, and so does what it stands on.
            EXPECT_FALSE(room == "tide" && header.startsWith("<Q")) << path.toStdString();
            if (room == "tide" && header.startsWith("files/")) {
                EXPECT_TRUE(includesOf(src + header).filter(QRegularExpression("^<Q")).isEmpty())
                    << path.toStdString() << " includes " << header.toStdString();
            }
        }
    }
    for (const auto& [room, others] : below) {
        EXPECT_TRUE(seen.contains(room)) << room.toStdString();
    }
}

}  // namespace quorvelle::testing
