#include "tide/replace_file.h"

#include <system_error>

#include "tide/disk.h"
#include "tide/error.h"
#include "tide/utf8_path.h"

namespace tide {

bool replaceFile(const std::filesystem::path& from, const std::filesystem::path& to, int attempts,
                 const InUseCallback& inUse, const Sleep& sleep, std::string* err) {
    std::error_code error = renameEntry(from, to);
    for (int attempt = 1; error && attempt <= attempts; ++attempt) {
        if (inUse) {
            inUse(utf8Text(to), attempt, attempts);
        }
        sleep(std::chrono::seconds(1));
        error = renameEntry(from, to, WhenInUse::kFail);
    }
    return !error || fail(err, "'", utf8Text(to), "' is in use - could not replace it (",
                          error.message(), ")");
}

}  // namespace tide
