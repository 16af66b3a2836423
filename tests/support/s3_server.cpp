#include "support/s3_server.h"

#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <regex>
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
    const std::regex listening("listening on 127\\.0\\.0\\.1:([0-9]+)\n");
    std::smatch match;
    char block[512];
    for (ssize_t n = 0; !std::regex_search(output, match, listening) &&
                        (n = ::read(connection, block, sizeof block)) > 0;) {
        output.append(block, static_cast<std::size_t>(n));
    }
    if (!match.empty()) {
        endpoint = "http://127.0.0.1:" + match[1].str();
    }
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
