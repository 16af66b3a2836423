#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <string>

namespace quorvelle::testing {

/// An S3 server written by others, which verifies signatures, as a process of its own on
/// a free loopback port: a package of npm that install_s3rver puts below the build
/// directory. It has one empty bucket in a directory of its own; the directory and the
/// process end with the object.
class S3Server {
public:
    static constexpr const char* kBucket = "tide-test";
    /// The server's built-in account, as key id and as secret.
    static constexpr const char* kAccount = "S3RVER";

    S3Server();
    ~S3Server();

    /// Base URL without a trailing slash; empty when the server did not start, whose
    /// output then stands in `output`.
    std::string endpoint;
    std::string output;

private:
    QTemporaryDir directory;
    QProcess process;
};

}  // namespace quorvelle::testing
