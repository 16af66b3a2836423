#include "server/reply_body.h"

#include <QCryptographicHash>
#include <algorithm>

#include "support/notation.h"

namespace quorvelle::testing {

namespace {

const ReplyHead kPacked{.status = 200, .coding = " Deflate "};

/// Compressed as zlib does, which servers call "deflate".
QByteArray deflated(const QByteArray& bytes) {
    return qCompress(bytes).mid(4);
}

/// Takes the body byte by byte at its ends and as one piece between. What it says at last.
std::string verdictOn(ReplyBody& body, const ReplyHead& head, const QByteArray& bytes) {
    body.begin();
    const QByteArray rest = bytes.mid(1);
    const qsizetype most = std::max<qsizetype>(rest.size() - 1, 0);
    for (const QByteArray& piece : {bytes.left(1), rest.first(most), rest.sliced(most)}) {
        const QString problem = piece.isEmpty() ? QString() : body.take(head, piece);
        if (!problem.isEmpty()) {
            return problem.toStdString();
        }
    }
    return body.isCutShort(head) ? "cut short" : "whole";
}

std::string verdictOn(const ReplyHead& head, const QByteArray& bytes) {
    ReplyBody body;
    return verdictOn(body, head, bytes);
}

}  // namespace

TEST(ReplyBody, IsWholeWhereNothingTellsOtherwise) {
    for (const QStringList& row : rows(R"(
        application/json | {"a":1  | cut short
        Application/JSON; charset=utf-8 | [1 | cut short
        application/json | {"a":1} | whole
        application/json | <html>  | whole
        text/plain       | {"a":1  | whole)")) {
        ReplyHead head{.status = 200, .type = row[0].toUtf8()};
        EXPECT_EQ(verdictOn(head, row[1].toUtf8()), row[2].toStdString());
        head.tellsLength = true;
        EXPECT_EQ(verdictOn(head, row[1].toUtf8()), "whole");
    }
}

/// Such a file would otherwise be installed as if it were whole: without a length only the
/// compressed stream itself knows where it ends.
TEST(ReplyBody, NoticesThatACompressedStreamIsCutShortOrDamaged) {
    const std::string broken = "the compressed reply is damaged";
    const QByteArray packed = deflated("{}");
    const QByteArray zeros(600, '\0');
    QByteArray damaged = packed;
    damaged.back() = char(damaged.back() ^ 1);  // the checksum
    QByteArray values = QByteArray("0,").repeated(4 << 20);
    for (int i = 0; i < 2000; ++i) {
        values += QCryptographicHash::hash(QByteArray::number(i), QCryptographicHash::Sha256);
    }
    const std::pair<QByteArray, std::string> table[] = {
        {packed, "whole"},
        {packed.left(packed.size() / 2), "cut short"},
        {packed.chopped(1), "cut short"},
        {{}, "cut short"},
        {damaged, broken},
        {"plain", broken},
        // Several streams, and padding behind them.
        {packed + zeros, "whole"},
        {deflated("{") + deflated("}") + zeros, "whole"},
        {packed + zeros + "xyz", broken},
        // A few bytes must not fill the memory.
        {deflated(QByteArray(1 << 20, ' ')), "whole"},
        {deflated(QByteArray(2 << 20, ' ')), broken},
        {deflated(values), broken},
    };
    for (const auto& [bytes, verdict] : table) {
        EXPECT_EQ(verdictOn(kPacked, bytes), verdict) << bytes.toHex().left(100).toStdString();
    }
    EXPECT_EQ(verdictOn({.status = 200, .coding = "br"}, "x"),
              "the reply has the unknown content coding \"br\"");
    EXPECT_EQ(verdictOn({.status = 200, .coding = "identity"}, "x"), "whole");
}

/// 11 MiB that compress well, but not as a bomb does.
TEST(ReplyBody, UnpacksWhatAServerPackedUnasked) {
    QByteArray large = "{\"a\":\"";
    for (int i = 0; large.size() < (11 << 20); ++i) {
        large += QByteArray::number(i) + QByteArray(99, 'x');
    }
    large += "\"}";
    ReplyBody kept;
    EXPECT_EQ(verdictOn(kept, kPacked, deflated(large)), "whole");
    EXPECT_TRUE(kept.bytes() == large) << kept.bytes().size();
    QByteArray got;
    kept.streamTo([&got](const QByteArray& bytes) {
        got += bytes;
        return got.size() <= (11 << 20) + 999;
    });
    EXPECT_EQ(verdictOn(kept, kPacked, deflated(large)), "whole");
    EXPECT_TRUE(got == large) << got.size();
    EXPECT_EQ(kept.bytes(), "");
    EXPECT_EQ(verdictOn(kept, kPacked, deflated(large)), "the reply could not be stored");
}

TEST(ReplyBody, OfAStreamIsComparedWithTheLengthThatIsKnown) {
    ReplyBody body;
    body.streamTo([](const QByteArray&) { return true; });
    EXPECT_EQ(verdictOn(body, {.status = 200}, "1234"), "whole");
    body.expectLength(5);
    EXPECT_EQ(verdictOn(body, {.status = 200}, "1234"), "cut short");
    EXPECT_EQ(verdictOn(body, {.status = 200}, "12345"), "whole");
    EXPECT_EQ(verdictOn(body, {.status = 200, .tellsLength = true}, "1234"), "whole");
}

TEST(ReplyBody, MayHoldAnObject) {
    for (const QStringList& row : rows(R"(
        {"a": [1]}     | {'a':[1]}
        hello          | {}
        [{"a":1}]      | {}
        {"a":1         | {})")) {
        ReplyBody body;
        EXPECT_EQ(verdictOn(body, {.status = 200}, row[0].toUtf8()), "whole");
        EXPECT_EQ(text(body.object()), row[1].toStdString());
        EXPECT_EQ(body.isOtherThanObject(), row[1] == "{}");
    }
    EXPECT_FALSE(ReplyBody().isOtherThanObject());
}

}  // namespace quorvelle::testing
