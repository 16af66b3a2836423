#include "server/proxies.h"

#include <map>

#include "support/notation.h"

namespace quorvelle::testing {

/// Variables, the address that is asked for, and what libcurl is told of the choice.
TEST(Proxies, AreChosenByScheme) {
    for (const QStringList& row : rows(R"(
                                                     | http://h  |
        http_proxy=http://p                          | http://h  | http://p:80
        http_proxy=http://p                          | https://h |
        HTTP_PROXY=p:1                               | http://h  | http://p:1
        http_proxy=q:2 HTTP_PROXY=p:1                | http://h  | http://q:2
        http_proxy= HTTP_PROXY=p:1                   | http://h  | http://p:1
        HTTP_PROXY=p:1 REQUEST_METHOD=GET            | http://h  |
        http_proxy=p:1 REQUEST_METHOD=GET            | http://h  | http://p:1
        HTTPS_PROXY=p:1 https_proxy=q:2              | https://h | http://q:2
        all_proxy=p:1                                | https://h | http://p:1
        ALL_PROXY=p:1 http_proxy=q:2                 | http://h  | http://q:2
        ALL_PROXY=socks5://p                         | http://h  | socks5h://p:1080
        all_proxy=socks5h://u:w@[::1]:9              | https://h | socks5h://u:w@[::1]:9
        http_proxy=http://u%40x:p%3Aw%2F@p:3128/     | http://h  | http://u%40x:p:w%2F@p:3128
        https_proxy=https://p                        | https://h | https_proxy is no address of an http or socks5 proxy
        ALL_PROXY=socks4://u:secret@p                | http://h  | ALL_PROXY is no address of an http or socks5 proxy
        http_proxy=http://:80                        | http://h  | http_proxy is no address of an http or socks5 proxy)")) {
        std::map<QString, QString> variables;
        for (const QString& setting : args(row[0])) {
            variables[setting.section('=', 0, 0)] = setting.section('=', 1);
        }
        const ProxyRules rules([&](const char* name) { return variables[name]; });
        const ProxyChoice choice = rules.choose(QUrl(row[1]));
        EXPECT_EQ(choice.problem.isEmpty() ? addressOf(choice.proxy) : choice.problem.toUtf8(),
                  row[2].toUtf8())
            << row[0].toStdString();
    }
}

TEST(Proxies, AreNotAskedForWhatIsNear) {
    for (const QStringList& row : rows(R"(
                                   | localhost a.localhost LOCALHOST. 127.0.0.1 127.9.9.9 [::1]    | h.test 128.0.0.1
        *                          | h.test 10.0.0.1                                               |
        h.test, .i.test *.j.test   | h.test a.h.test H.test. i.test a.i.test b.a.j.test            | ah.test h.test.x x
        10.1.0.0/16,192.168.7.7    | 10.1.255.255 192.168.7.7                                      | 10.2.0.0 192.168.7.8
        [fe80::1],2001:db8::/32    | [fe80::1] [2001:db8:1::2]                                     | [fe80::2] [2001:db9::])")) {
        const ProxyRules rules([&](const char* name) {
            return qstrcmp(name, "NO_PROXY") == 0    ? row[0]
                   : qstrcmp(name, "all_proxy") == 0 ? QStringLiteral("p:1")
                                                     : QString();
        });
        for (const bool direct : {true, false}) {
            for (const QString& host : args(row[direct ? 1 : 2])) {
                EXPECT_EQ(addressOf(rules.choose(QUrl("https://" + host + ":8443/x")).proxy),
                          direct ? "" : "http://p:1")
                    << host.toStdString();
            }
        }
    }
}

}  // namespace quorvelle::testing
