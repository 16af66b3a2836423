#include "support/hostile_server_posix.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace quorvelle::testing {

namespace {

/// What a reply on the wire may have at most, for the bound on memory speaks of that.
constexpr qsizetype kMostOnTheWire = 1 << 20;

// Lists to choose from, the choices between "|"; "~" stands for a line end.
constexpr char kCodes[] =
    "000 X|100 C|101 S|103 E|201 C|204 N|205 R|206 P|304 N|400 B|401 U|403 F|404 N|407 P|409 C|"
    "429 T|500 I|503 S|600 X|999 X|-1 X|20 OK|2000 X|abc|";
constexpr char kTargets[] = "/again?x=1|//||file:///etc/passwd|http://[::|ftp://127.0.0.1/|";
constexpr char kHeaders[] =
    "Content-Length: 3~|Content-Length: -1~|Content-Length: 99999999999999999999~|"
    "Content-Type: text/html~Content-Type: x~|No colon~|: no name~|X: a~  folded~|"
    "WWW-Authenticate: Basic realm=\"x\"~|Connection: upgrade~Upgrade: h2c~|"
    "Set-Cookie: a=b~Content-Disposition: attachment; filename=../x~|";
constexpr char kNoObjects[] = R"(|[]|null|{|<html>|{}|"|7|{"a":1}x|{"build":"7",}|)";
/// Where a list of values goes on with one of these, it becomes long.
constexpr char kUnits[] = R"(0,|{},|[],|"",|{"a":0},)";
constexpr char kValues[] = R"([null, true, -1, 0, 1.5, 1e300, 9.3e18, "", "7", "../../outside",
    "/outside", "a/../b", "\u001b[2J\r\nX: y", "http://127.0.0.1:1/", "file:///etc/passwd", [],
    [[], {}, 1, "../x", "x", "x"], {}, {"path": "../outside", "size": -5, "h": 1, "n": 1e19}])";

/// Compressed as zlib does, which servers call "deflate".
QByteArray deflated(const QByteArray& bytes) {
    return qCompress(bytes).mid(4);
}

QByteArray repeated(const QByteArray& unit, qsizetype bytes) {
    return unit.repeated(std::max<qsizetype>(1, bytes / unit.size()));
}

/// The object with one more member that is a long list, or ends otherwise.
QByteArray withMore(const QByteArray& object, const QByteArray& member) {
    return object.chopped(1) + ',' + member + '}';
}

/// Changes the value that is `at` in the order of a walk, and counts on.
QJsonValue withOneChanged(const QJsonValue& value, int& at, const QJsonValue& instead) {
    if (at-- == 0) {
        return instead;
    }
    if (value.isArray()) {
        QJsonArray array = value.toArray();
        for (qsizetype i = 0; i < array.size() && at >= 0; ++i) {
            array[i] = withOneChanged(array[i], at, instead);
        }
        return array;
    }
    QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end() && at >= 0; ++member) {
        member.value() = withOneChanged(member.value(), at, instead);
    }
    return value.isObject() ? QJsonValue(object) : value;
}

}  // namespace

HostileServer::HostileServer(Answer good, QByteArray other)
    : answer(std::move(good)),
      elsewhere(std::move(other)),
      server([this](const std::string& request) { return reply(request); }) {}

RawServer::Reply HostileServer::reply(const std::string& request) {
    const std::size_t begin = request.find(' ') + 1;
    const GoodReply good = answer(request.substr(begin, request.find(' ', begin) - begin));
    const std::lock_guard guard(mutex);
    seen += request;
    return spoilt(good, done.emplace_back());
}

qsizetype HostileServer::pick(qsizetype size) {
    return static_cast<qsizetype>(random() % static_cast<unsigned>(size));
}

QByteArray HostileServer::oneOf(const QByteArray& list) {
    const QByteArrayList choices = list.split('|');
    return QByteArray(choices[pick(choices.size())]).replace("~", "\r\n");
}

QByteArray HostileServer::spoiltJson(const QByteArray& body, std::string& deed) {
    const auto way = pick(8);
    if (way == 0) {
        deed = "json no object";
        return oneOf(kNoObjects + QByteArray("\xff|") + QByteArray(5000, '['));
    }
    if (way == 1) {
        deed = "json many values";
        return withMore(body, "\"x\":[" + repeated(oneOf(kUnits), 900'000) + "0]");
    }
    deed = "json value";
    QJsonArray instead = QJsonDocument::fromJson(kValues).array();
    for (const QString& text : {QString(300, u'x'), QString(100'000, u'y'), QString(u'\xD800')}) {
        instead.append(text);
    }
    QJsonValue changed(QJsonDocument::fromJson(body).object());
    for (qsizetype i = 0; i <= pick(3); ++i) {
        int at = 1 + static_cast<int>(pick(60));
        changed = withOneChanged(changed, at, instead[pick(instead.size())]);
    }
    return QJsonDocument(changed.toObject()).toJson(QJsonDocument::Compact);
}

RawServer::Reply HostileServer::spoilt(const GoodReply& good, std::string& deed) {
    QByteArray body = good.body;
    QByteArray status = "200 OK";
    QByteArray headers = good.isJson ? "Content-Type: application/json\r\n" : "";
    bool hasLength = true;
    deed = "good";
    const bool isGood = elsewhere.isEmpty() || pick(3) == 0;
    switch (isGood ? -1 : pick(good.isJson ? 9 : 7)) {
        case 0:
            deed = "status";
            status = oneOf(kCodes);
            headers += oneOf("Retry-After: 0~|");
            break;
        case 1:
            deed = "redirect";
            status = oneOf("301 M|302 F|303 S|307 T|308 P");
            headers += "Location: " + oneOf(kTargets + elsewhere + "/there|" + elsewhere) + "\r\n";
            break;
        case 2:
            deed = "headers";
            headers += oneOf(kHeaders + ("X: " + QByteArray(1, '\0')) + "\x1b~|X: " +
                             QByteArray(500'000, 'x') + "~|" + repeated("X: y~", 900'000));
            break;
        case 3:
            deed = "encoding";
            headers += "Content-Encoding: " + oneOf("gzip|deflate|br|x|gzip, gzip|") + "\r\n";
            body = pick(2) == 0 ? deflated(body) : body;
            break;
        case 4:
            deed = "chunked";
            hasLength = false;
            headers += "Transfer-Encoding: chunked\r\n";
            body = QByteArray::number(body.size(), 16) + "\r\n" + body +
                   oneOf("~0~~|~|~zz~|~ffffffffffffffff~||~0;" + QByteArray(9999, 'x') + "|~0~" +
                         repeated("X: y~", 900'000));
            break;
        case 5:
            deed = "length";
            hasLength = false;
            if (pick(3) > 0) {
                headers +=
                    "Content-Length: " + QByteArray::number(body.size() + pick(9) - 4) + "\r\n";
            }
            break;
        case 6:
            deed = "bytes";
            for (qsizetype i = 0; i <= pick(4) && !body.isEmpty(); ++i) {
                body[pick(body.size())] = static_cast<char>(pick(256));
            }
            break;
        case 7:
            body = spoiltJson(body, deed);
            break;
        case 8: {
            deed = "bomb";
            const qsizetype unfolded = qsizetype{1} << (20 + pick(5));
            const QByteArray list =
                "\"x\":[" + repeated(oneOf(kUnits + QByteArray("|        ")), unfolded) + "0]";
            const QByteArray error = "\"error\":\"" + QByteArray(unfolded, 'e') + '"';
            body = deflated(withMore(body, pick(2) == 0 ? list : error));
            headers += "Content-Encoding: deflate\r\n";
            status = oneOf("500 I|200 OK|200 OK|200 OK");
            break;
        }
        default:
            break;
    }
    if (hasLength) {
        headers += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    }
    QByteArray reply = "HTTP/1.1 " + status + "\r\n" + headers + "\r\n" + body;
    reply.truncate(kMostOnTheWire);
    auto ending = RawServer::Ending::kClose;
    if (!elsewhere.isEmpty() && pick(8) == 0) {
        reply.truncate(pick(reply.size() + 1));
        // Rarely silence: it takes as long as the client waits.
        ending = pick(6) == 0   ? RawServer::Ending::kSilence
                 : pick(2) == 0 ? RawServer::Ending::kReset
                                : RawServer::Ending::kClose;
        const char* const names[] = {", cut", ", reset", ", silence"};
        deed += names[static_cast<int>(ending)];
    }
    return {reply.toStdString(), ending};
}

void HostileServer::reseed(unsigned seed) {
    const std::lock_guard guard(mutex);
    random.seed(seed);
    done.clear();
    seen.clear();
}

std::vector<std::string> HostileServer::deeds() const {
    const std::lock_guard guard(mutex);
    return done;
}

std::string HostileServer::received() const {
    const std::lock_guard guard(mutex);
    return seen;
}

}  // namespace quorvelle::testing
