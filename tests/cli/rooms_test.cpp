#include <QDirIterator>
#include <map>
#include <set>

#include "support/notation.h"
#include "support/server_api_page.h"

namespace quorvelle::testing {

namespace {

/// A folder of src/ and the folders that its files may include, itself aside. The linker
/// does not mind any other: archives hand out what they hold to all.
const QString kRooms = R"(
console    |
files      |
config     | console files
server     | console files config
tide       | files/disk.h files/raw_file.h files/safe_path.h files/share_file.h files/utf8_path.h files/win32.h
sync       | console files config server tide
account    | console files config server
publish    | console files config server
launch     | console files config server
admin      | console files config server launch/launch_target.h launch/target_list.h
onboarding | console files config server
cli        | console files config server account publish launch admin onboarding sync tide/engine.h)";

/// The engine runs without Qt, and so does the part of the files that it stands on.
const QRegularExpression kWithoutQt(
    "^tide/|^files/(disk|raw_file|safe_path|share_file|utf8_path|path_rules|win32|owner_only)[_.]");

}  // namespace

TEST(Rooms, IncludeOnlyWhatLiesBelowThem) {
    static const QRegularExpression include("^#include (?:\"([^\"]+)\"|(<[^>]+))",
                                            QRegularExpression::MultilineOption);
    std::map<QString, QStringList> below;
    for (const QStringList& row : rows(kRooms)) {
        below[row[0]] = args(row[1]) << row[0];
    }
    std::set<QString> seen;
    const QString src = QStringLiteral(QUORVELLE_SOURCE_DIR "/");
    QDirIterator files(src, {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next().mid(src.size());
        const QString room = path.section('/', 0, 0);
        seen.insert(room);
        for (const auto& match : include.globalMatch(DescribedRequest::page("src/" + path))) {
            // "room/name.h", or "<name" where no room is named.
            const QString header = match.captured(1) + match.captured(2);
            EXPECT_TRUE(!header.contains('/') || header.startsWith('<') ||
                        below[room].contains(header.section('/', 0, 0)) ||
                        below[room].contains(header))
                << path.toStdString() << " includes " << header.toStdString();
            EXPECT_FALSE(header.startsWith("<Q") && kWithoutQt.match(path).hasMatch())
                << path.toStdString() << " includes " << header.toStdString();
        }
    }
    EXPECT_EQ(seen.size(), below.size()) << "a room is gone";
}

}  // namespace quorvelle::testing
