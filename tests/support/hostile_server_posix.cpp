#include "support/hostile_server_posix.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace quorvelle::testing {

namespace {

enum Ending { kClose, kReset, kSilence };

/// What a reply on the wire may have at most, for the bound on memory speaks of that.
constexpr qsizetype kMostOnTheWire = 1 << 20;

/// Compressed as zlib does, which servers call "deflate".
QByteArray deflated(const QByteArray& bytes) {
    return qCompress(bytes).mid(4);
}

QByteArray repeated(const QByteArray& unit, qsizetype bytes) {
    return unit.repeated(std::max<qsizetype>(1, bytes / unit.size()));
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

void sendAll(int connection, const QByteArray& bytes) {
    for (qsizetype sent = 0; sent < bytes.size();) {
        const auto more = ::send(connection, bytes.constData() + sent,
                                 static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (more <= 0) {
            return;
        }
        sent += more;
    }
}

}  // namespace

HostileServer::HostileServer(Answer good, QByteArray other)
    : answer(std::move(good)), elsewhere(std::move(other)) {
    listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(listener, reinterpret_cast<sockaddr*>(&address), length);
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
    ::listen(listener, 16);
    port = ntohs(address.sin_port);
    acceptor = std::thread([this] { accept(); });
}

HostileServer::~HostileServer() {
    ends = true;
    acceptor.join();
    while (connections > 0) {
        std::this_thread::yield();
    }
    ::close(listener);
}

void HostileServer::accept() {
    pollfd waiting{listener, POLLIN, 0};
    while (!ends) {
        if (::poll(&waiting, 1, 50) > 0) {
            const int connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            ++connections;
            std::thread([this, connection] {
                serve(connection);
                ::close(connection);
                --connections;
            }).detach();
        }
    }
}

void HostileServer::serve(int connection) {
    std::string head;
    pollfd waiting{connection, POLLIN, 0};
    const auto readSome = [&] {
        char buffer[4096];
        const auto count = ::recv(connection, buffer, sizeof buffer, 0);
        if (count > 0) {
            const std::lock_guard guard(mutex);
            head.append(buffer, static_cast<std::size_t>(count));
            seen.append(buffer, static_cast<std::size_t>(count));
        }
        return count > 0;
    };
    while (head.find("\r\n\r\n") == std::string::npos) {
        if (ends || (::poll(&waiting, 1, 50) > 0 && !readSome())) {
            return;
        }
    }
    // A body, as far as it comes at once.
    while (::poll(&waiting, 1, 5) > 0 && readSome()) {
    }
    const std::size_t begin = head.find(' ') + 1;
    const GoodReply good = answer(head.substr(begin, head.find(' ', begin) - begin));
    std::string deed;
    int ending = kClose;
    QByteArray reply;
    {
        const std::lock_guard guard(mutex);
        reply = spoilt(good, deed, ending);
        done.push_back(deed);
    }
    sendAll(connection, reply);
    while (ending == kSilence && !ends && (::poll(&waiting, 1, 50) <= 0 || readSome())) {
    }
    const linger hard{1, 0};
    if (ending == kReset) {
        ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    } else {
        ::shutdown(connection, SHUT_WR);
        for (int i = 0; i < 4 && ::poll(&waiting, 1, 50) > 0 && readSome(); ++i) {
        }
    }
}

QByteArray HostileServer::spoiltJson(const QByteArray& body, std::string& deed) {
    const QByteArray deep = repeated("[", 5000);
    static const QList<QJsonValue> instead{
        QJsonValue(),
        true,
        -1,
        0,
        1.5,
        1e300,
        9.3e18,
        "",
        "../../outside",
        "/outside",
        "a/../b",
        "\x1b[2J\r\nX: y",
        QString(300, u'x'),
        QString(100000, u'y'),
        QStringLiteral("7"),
        QString(QChar(0xD800)),
        QJsonArray(),
        QJsonArray{QJsonArray{}, QJsonObject{}, 1, "../x", "x", "x"},
        QJsonObject(),
        QJsonObject{{"path", "../outside"}, {"size", -5}, {"h", 1}, {"n", 1e19}},
        QStringLiteral("http://127.0.0.1:1/"),
        QStringLiteral("file:///etc/passwd")};
    const auto pick = [this](qsizetype size) {
        return static_cast<qsizetype>(random() % static_cast<unsigned>(size));
    };
    switch (pick(8)) {
        case 0: {
            deed = "json no object";
            const QByteArrayList others{"",       "[]",         "null", "{",
                                        "<html>", "{}",         "\xff", "\"",
                                        "7",      "{\"a\":1}x", deep,   "{\"build\":\"7\",}"};
            return others[pick(others.size())];
        }
        case 1: {
            deed = "json many values";
            const QByteArrayList units{"0,", "{},", "[],", "\"\",", "{\"a\":0},"};
            return body.chopped(1) + ",\"x\":[" + repeated(units[pick(units.size())], 900'000) +
                   "0]}";
        }
        default: {
            deed = "json value";
            QJsonValue changed(QJsonDocument::fromJson(body).object());
            for (qsizetype i = 0; i <= pick(3); ++i) {
                int at = 1 + static_cast<int>(pick(60));
                changed = withOneChanged(changed, at, instead[pick(instead.size())]);
            }
            return QJsonDocument(changed.toObject()).toJson(QJsonDocument::Compact);
        }
    }
}

QByteArray HostileServer::spoilt(const GoodReply& good, std::string& deed, int& ending) {
    const auto pick = [this](qsizetype size) {
        return static_cast<qsizetype>(random() % static_cast<unsigned>(size));
    };
    QByteArray body = good.body;
    QByteArray status = "200 OK";
    QByteArray headers = good.isJson ? "Content-Type: application/json\r\n" : "";
    bool hasLength = true;
    deed = "good";
    const auto kind =
        elsewhere.isEmpty() || pick(3) == 0 ? qsizetype(-1) : pick(good.isJson ? 9 : 7);
    if (kind == 0) {
        deed = "status";
        const QByteArrayList codes{"000 X", "100 C",  "101 S", "103 E", "201 C", "204 N", "205 R",
                                   "206 P", "304 N",  "400 B", "401 U", "403 F", "404 N", "407 P",
                                   "409 C", "429 T",  "500 I", "503 S", "600 X", "999 X", "-1 X",
                                   "20 OK", "2000 X", "abc",   ""};
        status = codes[pick(codes.size())];
        headers += pick(2) == 0 ? "Retry-After: 0\r\n" : "";
    } else if (kind == 1) {
        deed = "redirect";
        const QByteArrayList codes{"301 M", "302 F", "303 S", "307 T", "308 P"};
        const QByteArrayList targets{
            elsewhere + "/there", elsewhere,    "/again?x=1",      "//", "",
            "file:///etc/passwd", "http://[::", "ftp://127.0.0.1/"};
        status = codes[pick(codes.size())];
        headers += "Location: " + targets[pick(targets.size())] + "\r\n";
    } else if (kind == 2) {
        deed = "headers";
        const QByteArrayList more{
            "Content-Length: 3\r\n",
            "Content-Length: -1\r\n",
            "Content-Length: 99999999999999999999\r\n",
            "Content-Type: text/html\r\nContent-Type: x\r\n",
            "No colon\r\n",
            ": no name\r\n",
            "X: a\r\n  folded\r\n",
            "WWW-Authenticate: Basic realm=\"x\"\r\n",
            "Set-Cookie: a=b\r\nContent-Disposition: attachment; filename=../x\r\n",
            "Connection: upgrade\r\nUpgrade: h2c\r\n",
            "X: " + QByteArray(1, '\0') + "\x1b\r\n",
            "X: " + QByteArray(500'000, 'x') + "\r\n",
            repeated("X: y\r\n", 900'000)};
        headers += more[pick(more.size())];
    } else if (kind == 3) {
        deed = "encoding";
        const QByteArrayList names{"gzip", "deflate", "br", "x", "gzip, gzip", ""};
        headers += "Content-Encoding: " + names[pick(names.size())] + "\r\n";
        body = pick(2) == 0 ? deflated(body) : body;
    } else if (kind == 4) {
        deed = "chunked";
        hasLength = false;
        headers += "Transfer-Encoding: chunked\r\n";
        const QByteArrayList tails{"\r\n0\r\n\r\n",
                                   "\r\n",
                                   "\r\n0\r\n" + repeated("X: y\r\n", 900'000),
                                   "\r\nzz\r\n",
                                   "\r\nffffffffffffffff\r\n",
                                   "",
                                   "\r\n0;" + QByteArray(9999, 'x')};
        body = QByteArray::number(body.size(), 16) + "\r\n" + body + tails[pick(tails.size())];
    } else if (kind == 5) {
        deed = "length";
        hasLength = false;
        const qsizetype wrong = body.size() + pick(9) - 4;
        headers +=
            pick(3) == 0 ? QByteArray() : "Content-Length: " + QByteArray::number(wrong) + "\r\n";
    } else if (kind == 6) {
        deed = "bytes";
        for (qsizetype i = 0; i <= pick(4) && !body.isEmpty(); ++i) {
            body[pick(body.size())] = static_cast<char>(pick(256));
        }
    } else if (kind == 7) {
        body = spoiltJson(body, deed);
    } else if (kind == 8) {
        deed = "bomb";
        const QByteArrayList units{"0,", "{},", "\"\",", "{\"a\":0},", "        "};
        const qsizetype unfolded = qsizetype{1} << (20 + pick(5));
        const QByteArray unit = units[pick(units.size())];
        body = deflated(body.chopped(1) +
                        (pick(2) == 0 ? ",\"x\":[" + repeated(unit, unfolded) + "0]}"
                                      : ",\"error\":\"" + QByteArray(unfolded, 'e') + "\"}"));
        headers += "Content-Encoding: deflate\r\n";
        status = pick(4) == 0 ? "500 I" : "200 OK";
    }
    if (hasLength) {
        headers += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    }
    QByteArray reply = "HTTP/1.1 " + status + "\r\n" + headers + "\r\n" + body;
    reply.truncate(kMostOnTheWire);
    if (!elsewhere.isEmpty() && pick(8) == 0) {
        reply.truncate(pick(reply.size() + 1));
        // Rarely silence: it takes as long as the client waits.
        ending = pick(6) == 0 ? kSilence : static_cast<int>(pick(2));
        deed += ending == kSilence ? ", silence" : ending == kReset ? ", reset" : ", cut";
    }
    return reply;
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
