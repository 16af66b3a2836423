#include "support/outcomes.h"

namespace quorvelle::testing {

// There is no limit of file sizes, so tests that run on a full disk do not link.

Outcome runObeyingPermissions(const Sandbox& sandbox, const QStringList& words) {
    return sandbox.run(words);
}

}  // namespace quorvelle::testing
