#include "tide/replace_file.h"

#include <system_error>

#include "files/disk.h"
#include "files/utf8_path.h"
#include "tide/error.h"

namespace tide {

bool replaceFile(const std::filesystem::path& from, const std::filesystem::path& to, int attempts,
                 const InUseCallback& inUse, const Sleep& sleep, std::string* err) {
    std::error_code error = files::renameEntry(from, to);
    for (int attempt = 1; error && attempt <= attempts; ++attempt) {
        if (inUse) {
            inUse(files::utf8Text(to), attempt, attempts);
        }
        // The rename itself no longer waits, so that each attempt stands for one second.
        sleep(std::chrono::seconds(1));
        error = files::renameEntry(from, to, files::WhenInUse::kFail);
    }
    return !error || fail(err, "'", files::utf8Text(to), "' is in use - could not replace it (",
                          error.message(), ")");
}

}  // namespace tide
