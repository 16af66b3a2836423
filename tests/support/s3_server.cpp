#include "support/s3_server.h"

namespace quorvelle::testing {

S3Server::S3Server() {
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start("node", {"--openssl-legacy-provider", QUORVELLE_S3RVER_START, QUORVELLE_S3RVER,
                           directory.path(), kBucket});
    const std::string words = "listening on ";
    while (endpoint.empty() && process.waitForReadyRead()) {
        output += process.readAll().toStdString();
        const std::size_t begin = output.find(words);
        const std::size_t end = output.find('\n', begin);
        if (begin != std::string::npos && end != std::string::npos) {
            const std::size_t address = begin + words.size();
            endpoint = "http://" + output.substr(address, end - address);
        }
    }
}

S3Server::~S3Server() {
    process.kill();
    process.waitForFinished();
}

}  // namespace quorvelle::testing
