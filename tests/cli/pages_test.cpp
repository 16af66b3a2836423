#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFileInfo>
#include <set>

#include "support/server_api_page.h"

namespace quorvelle::testing {

namespace {

const QString kRoot = QStringLiteral(QUORVELLE_SOURCE_DIR "/../");

/// All texts that the pattern's first group finds in the sources of some rooms.
std::set<std::string> inSources(const QString& rooms, const QString& pattern) {
    std::set<std::string> found;
    for (const QString& room : rooms.split(u' ')) {
        QDirIterator files(kRoot + "src/" + room, {"*.cpp", "*.h"}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString text = DescribedRequest::page(files.next().mid(kRoot.size()));
            for (const auto& match : QRegularExpression(pattern).globalMatch(text)) {
                found.insert(match.captured(1).toStdString());
            }
        }
    }
    return found;
}

/// The headings of a page, as links name them.
QStringList anchorsOf(const QString& page) {
    static const QRegularExpression heading("^#+ (.*)$", QRegularExpression::MultilineOption);
    static const QRegularExpression dropped("[^\\w\\- ]");
    QStringList anchors;
    for (const auto& match : heading.globalMatch(DescribedRequest::page(page))) {
        anchors << match.captured(1).toLower().remove(dropped).replace(u' ', u'-');
    }
    return anchors;
}

}  // namespace

/// A request that no test makes would escape the fake servers.
TEST(Pages, DescribeTheRequestsOfTheSourcesAndNoOthers) {
    std::set<std::string> described;
    for (const DescribedRequest& request : DescribedRequest::all()) {
        // A bucket's own address is made of its listing's.
        if (!request.path.endsWith("/r2/buckets/%1")) {
            described.insert(request.path.toStdString());
        }
    }
    EXPECT_EQ(described, inSources(".", R"re("(/(?:api|accounts|user)(?:/[^"?]+)?)["?])re"));
    const QString page = DescribedRequest::page("docs/server-api.md");
    for (const std::string& key :
         inSources("admin publish onboarding", R"re((?:value\(|\[)u"(\w+)")re")) {
        EXPECT_TRUE(
            page.contains(QRegularExpression(QString::fromStdString("[`\".]" + key + "[`\"]"))))
            << key << " is read";
    }
}

TEST(Pages, QuoteMessagesThatTheSourcesHave) {
    // Texts that are longer than a line stand there in pieces.
    static const QRegularExpression seam("\"\\s*\"");
    QString sources;
    for (const std::string& literals : inSources(".", R"re(((?:"(?:[^"\\\n]|\\.)*"\s*)+))re")) {
        sources += QString::fromStdString(literals).remove(seam);
    }
    static const QRegularExpression cell("^\\| (`.*?) \\| ", QRegularExpression::MultilineOption);
    static const QRegularExpression quoted("`([^`]*)`");
    int messages = 0;
    for (const auto& row : cell.globalMatch(DescribedRequest::page("docs/operations.md"))) {
        for (const auto& match : quoted.globalMatch(row.captured(1))) {
            EXPECT_TRUE(sources.contains(match.captured(1))) << match.captured(1).toStdString();
            ++messages;
        }
    }
    EXPECT_GT(messages, 40);
}

TEST(Pages, LeadToPagesAndHeadingsThatAreThere) {
    static const QRegularExpression link(R"(\]\(([^)#\s]*)(?:#([^)\s]*))?\))");
    int links = 0;
    QStringList pages;
    for (const char* folder :
         {"", "docs", "docs/decisions", "tests", "bench", "packaging/windows"}) {
        for (const QFileInfo& page :
             QDir(kRoot + folder).entryInfoList({"*.md", "*.md.in"}, QDir::Files)) {
            pages << page.filePath();
        }
    }
    for (const QString& page : pages) {
        SCOPED_TRACE(page.toStdString());
        for (const auto& match : link.globalMatch(DescribedRequest::page(page.mid(kRoot.size())))) {
            const QString target = match.captured(1);
            if (target.contains("://") || target.startsWith("mailto:")) {
                continue;
            }
            // What is configured stands at the root of the zip for Windows.
            const QDir folder = page.endsWith(".in") ? QDir(kRoot) : QFileInfo(page).dir();
            const QString file = target.isEmpty() ? page : folder.filePath(target);
            EXPECT_TRUE(QFileInfo::exists(file)) << target.toStdString();
            if (!match.captured(2).isEmpty() && QFileInfo(file).isFile()) {
                EXPECT_TRUE(anchorsOf(file.mid(kRoot.size())).contains(match.captured(2)))
                    << match.captured(0).toStdString();
            }
            ++links;
        }
    }
    EXPECT_GT(links, 40);
}

}  // namespace quorvelle::testing
