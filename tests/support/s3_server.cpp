#include "support/s3_server.h"

#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <vector>

extern char** environ;

namespace quorvelle::testing {

namespace {

pid_t spawn(const std::vector<std::string>& words, int streams) {
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        posix_spawn_file_actions_adddup2(&actions, streams, stream);
    }
    pid_t process = -1;
    if (posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
        process = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

// Reads the server's output until it names its address, or ends; then none is returned.
std::string readEndpoint(int connection, std::string& output) {
    const std::string words = "listening on ";
    for (;;) {
        const std::size_t begin = output.find(words);
        const std::size_t end = output.find('\n', begin);
        if (begin != std::string::npos && end != std::string::npos) {
            const std::size_t address = begin + words.size();
            return "http://" + output.substr(address, end - address);
        }
        char block[512];
        const ssize_t n = ::read(connection, block, sizeof block);
        if (n <= 0) {
            return {};
        }
        output.append(block, static_cast<std::size_t>(n));
    }
}

}  // namespace

S3Server::S3Server() {
    directory = (std::filesystem::temp_directory_path() / "quorvelle-s3-XXXXXX").string();
    int ends[2];
    if (mkdtemp(directory.data()) == nullptr ||
        ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return;
    }
    process = spawn({"node", "--openssl-legacy-provider", QUORVELLE_S3RVER_START, QUORVELLE_S3RVER,
                     directory, kBucket},
                    ends[1]);
    ::close(ends[1]);
    connection = ends[0];
    endpoint = readEndpoint(connection, output);
}

S3Server::~S3Server() {
    if (process > 0) {
        ::kill(process, SIGTERM);
        ::waitpid(process, nullptr, 0);
    }
    ::close(connection);
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
}

}  // namespace quorvelle::testing
