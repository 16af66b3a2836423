#pragma once

#include <chrono>
#include <string>

namespace tide {

/// How the transfers of this process reach the network. Texts are UTF-8; an empty one says
/// nothing.
struct Network {
    /// What a connection may take, its TLS handshake included.
    std::chrono::seconds connectLimit{60};
    /// How long an unsigned transfer may move no byte; zero means without end.
    std::chrono::seconds idleLimit{300};
    /// Addresses of proxies by the scheme of what is asked for, and the hosts, separated by
    /// commas, that are asked directly.
    std::string httpProxy = {};
    std::string httpsProxy = {};
    std::string noProxy = {};
    /// Certificates of authorities beside the system's: a file, and a folder of them.
    std::string authorityFile = {};
    std::string authorityFolder = {};
};

/// Sets it for the transfers that begin from now on; before the first worker starts.
void useNetwork(const Network& settings);

const Network& network();

}  // namespace tide
