#pragma once

#include <ctime>
#include <string>

namespace tide {

/// AWS Signature Version 4 for the service "s3", as pure functions: what is signed and
/// the time come in, every intermediate text comes out.

/// The time in UTC as "20130524T000000Z".
std::string amzDate(std::time_t now = std::time(nullptr));
/// The day in UTC as "20130524".
std::string dateStamp(std::time_t now = std::time(nullptr));

/// Lower-case hexadecimal SHA-256 of the bytes.
std::string sha256Hex(const std::string& bytes);

struct SigningInput {
    std::string method;
    /// Host as sent in the Host header, with a port that the URL names.
    std::string host;
    /// Percent-encoded path, beginning with "/".
    std::string canonicalUri;
    /// Percent-encoded query with its items in sorted order, or empty.
    std::string canonicalQuery;
    /// sha256Hex of the body.
    std::string payloadHash;
    std::string region;
    std::string accessKeyId;
    std::string secretAccessKey;
    std::time_t now = 0;
};

struct Signature {
    std::string amzDate;
    std::string canonicalRequest;
    std::string stringToSign;
    /// 32 raw bytes.
    std::string signingKey;
    /// The value of the Authorization header.
    std::string authorization;
};

/// Signs a request whose signed headers are host, x-amz-content-sha256 and x-amz-date.
Signature signRequest(const SigningInput& input);

}  // namespace tide
