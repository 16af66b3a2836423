#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace tide {

/// How one address is reached.
struct Route {
    /// "http://" or "socks5h://", with user and password where it asks for them; empty for
    /// directly.
    std::string proxy = {};
    /// PEM certificates of all authorities that count; empty for the system's.
    std::string authorities = {};
    /// Why the address must not be asked for, or an empty text.
    std::string problem = {};
};

/// How the transfers of this process reach the network. Texts are UTF-8.
struct Network {
    /// What a connection may take, its TLS handshake included.
    std::chrono::seconds connectLimit{60};
    /// How long an unsigned transfer may move no byte; zero means without end.
    std::chrono::seconds idleLimit{300};
    /// Asked for every address, those of redirects included, on the thread of the transfer;
    /// none reaches all directly. Variables of the environment are not looked at here.
    std::function<Route(const std::string& url)> routeTo = {};
};

/// Sets it for the transfers that begin from now on; before the first worker starts.
void useNetwork(const Network& settings);

const Network& network();

}  // namespace tide
