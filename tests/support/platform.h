#pragma once

#include <httplib.h>

#include <QString>
#include <memory>
#include <string>
#include <thread>

/// What tests need of the platform.

namespace quorvelle::testing {

/// A TCP socket that programs which are started do not inherit.
socket_t newSocket();
void closeSocket(socket_t socket);
/// Ends an accept() that the thread waits in, and with it the thread and the socket.
void endListening(socket_t listener, std::thread& acceptor);
/// Sends some of the bytes and returns how many; 0 when the other side is gone.
std::size_t sendSome(socket_t socket, const std::string& bytes);

/// Whether a file is there that nobody but its owner may read.
bool isOwnersAlone(const QString& path);

/// The home folder of a program whose environment has HOME set to a folder.
QString homeFolder(const QString& home);

/// While it exists, others cannot do something with a file or directory.
class Held {
public:
    enum class From {
        kMoves,  ///< like a directory that a program works in
        kReads,
    };

    Held(const QString& path, From from);
    ~Held();
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    struct Hold;
    std::unique_ptr<Hold> hold;
};

}  // namespace quorvelle::testing
