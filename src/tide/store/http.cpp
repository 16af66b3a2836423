#include "tide/store/http.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "tide/store/transfer.h"

namespace tide {

namespace {

using std::chrono::milliseconds;

constexpr int kAttempts = 3;
constexpr milliseconds kFirstPause(500);
/// In seconds as what is told: of any number of them, milliseconds might not fit.
constexpr std::chrono::seconds kLongestPause(10);

bool asksToComeBack(long status) {
    return status == 429 || status == 502 || status == 503 || status == 504;
}

/// How long to wait before another attempt; nothing when this one was the last.
std::optional<milliseconds> pauseAfter(const Transfer& transfer, bool completed, int attempt) {
    if (attempt == kAttempts) {
        return std::nullopt;
    }
    if (!completed) {
        return transfer.connectionBroke() ? std::optional(kFirstPause * attempt) : std::nullopt;
    }
    if (!asksToComeBack(transfer.status())) {
        return std::nullopt;
    }
    const auto told = transfer.retryAfter();
    return told ? std::optional(milliseconds(std::min(*told, kLongestPause))) : std::nullopt;
}

}  // namespace

bool httpGet(const std::string& url, std::string& body, long& status, std::string* err,
             const std::string& bearerToken, const HttpOptions& options) {
    for (int attempt = 1;; ++attempt) {
        Transfer transfer(url, options.maxBody, options.connections);
        transfer.followRedirects(options.httpsOnly);
        transfer.limitIdleTime();
        if (!bearerToken.empty()) {
            transfer.addHeader("Authorization: Bearer " + bearerToken);
        }
        const bool completed = transfer.perform(err);
        if (const auto pause = pauseAfter(transfer, completed, attempt)) {
            options.sleep(*pause);
            continue;
        }
        if (completed) {
            body = std::move(transfer.body);
            status = transfer.status();
        }
        return completed;
    }
}

}  // namespace tide
