#include "tide/store/http.h"

#include <utility>

#include "tide/store/transfer.h"

namespace tide {

bool httpGet(const std::string& url, std::string& body, long& status, std::string* err,
             const std::string& bearerToken, const HttpOptions& options) {
    Transfer transfer(url, options.maxBody, options.connections);
    transfer.followRedirects();
    if (!bearerToken.empty()) {
        transfer.addHeader("Authorization: Bearer " + bearerToken);
    }
    if (!transfer.perform(err)) {
        return false;
    }
    body = std::move(transfer.body);
    status = transfer.status();
    return true;
}

}  // namespace tide
