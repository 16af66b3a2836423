#include "tide/store/sigv4.h"

#include <sodium.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <string_view>

namespace tide {

namespace {

constexpr std::string_view kAlgorithm = "AWS4-HMAC-SHA256";
constexpr std::string_view kSignedHeaders = "host;x-amz-content-sha256;x-amz-date";

const unsigned char* bytesOf(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string hex(std::string_view bytes) {
    std::string digits(bytes.size() * 2 + 1, '\0');
    sodium_bin2hex(digits.data(), digits.size(), bytesOf(bytes), bytes.size());
    digits.pop_back();
    return digits;
}

std::string hmac(std::string_view key, std::string_view message) {
    crypto_auth_hmacsha256_state state;
    crypto_auth_hmacsha256_init(&state, bytesOf(key), key.size());
    crypto_auth_hmacsha256_update(&state, bytesOf(message), message.size());
    std::string digest(crypto_auth_hmacsha256_BYTES, '\0');
    crypto_auth_hmacsha256_final(&state, reinterpret_cast<unsigned char*>(digest.data()));
    return digest;
}

std::string formatted(std::time_t now, bool withTime) {
    using namespace std::chrono;
    const sys_seconds instant{seconds{now}};
    const sys_days day = floor<days>(instant);
    const year_month_day date{day};
    const hh_mm_ss time{instant - day};
    std::array<char, 64> text{};
    const int year = static_cast<int>(date.year());
    const auto month = static_cast<unsigned>(date.month());
    const auto dayOfMonth = static_cast<unsigned>(date.day());
    if (withTime) {
        std::snprintf(text.data(), text.size(), "%04d%02u%02uT%02d%02d%02dZ", year, month,
                      dayOfMonth, static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()),
                      static_cast<int>(time.seconds().count()));
    } else {
        std::snprintf(text.data(), text.size(), "%04d%02u%02u", year, month, dayOfMonth);
    }
    return text.data();
}

std::string canonicalRequest(const SigningInput& input, const std::string& date) {
    std::string text = input.method;
    text.append("\n").append(input.canonicalUri);
    text.append("\n").append(input.canonicalQuery);
    text.append("\nhost:").append(input.host);
    text.append("\nx-amz-content-sha256:").append(input.payloadHash);
    text.append("\nx-amz-date:").append(date);
    text.append("\n\n").append(kSignedHeaders);
    text.append("\n").append(input.payloadHash);
    return text;
}

}  // namespace

std::string amzDate(std::time_t now) {
    return formatted(now, true);
}

std::string dateStamp(std::time_t now) {
    return formatted(now, false);
}

std::string sha256Hex(const std::string& bytes) {
    std::string digest(crypto_hash_sha256_BYTES, '\0');
    crypto_hash_sha256(reinterpret_cast<unsigned char*>(digest.data()), bytesOf(bytes),
                       bytes.size());
    return hex(digest);
}

Signature signRequest(const SigningInput& input) {
    Signature result;
    result.amzDate = amzDate(input.now);
    result.canonicalRequest = canonicalRequest(input, result.amzDate);

    const std::string day = dateStamp(input.now);
    const std::string scope = day + '/' + input.region + "/s3/aws4_request";
    result.stringToSign = std::string(kAlgorithm) + '\n' + result.amzDate + '\n' + scope + '\n' +
                          sha256Hex(result.canonicalRequest);

    result.signingKey = hmac(
        hmac(hmac(hmac("AWS4" + input.secretAccessKey, day), input.region), "s3"), "aws4_request");
    result.authorization = std::string(kAlgorithm) + " Credential=" + input.accessKeyId + '/' +
                           scope + ", SignedHeaders=" + std::string(kSignedHeaders) +
                           ", Signature=" + hex(hmac(result.signingKey, result.stringToSign));
    return result;
}

}  // namespace tide
