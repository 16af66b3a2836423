#include "support/outcomes.h"

namespace quorvelle::testing {

Outcome runObeyingPermissions(const Sandbox& sandbox, const QStringList& words) {
    return sandbox.run(words);
}

}  // namespace quorvelle::testing
