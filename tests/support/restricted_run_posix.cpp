#include <unistd.h>

#include "support/outcomes.h"

namespace quorvelle::testing {

Outcome runObeyingPermissions(const Sandbox& sandbox, const QStringList& words) {
    if (::geteuid() != 0) {
        return sandbox.run(words);
    }
    return sandbox.runProgram(
        "setpriv",
        QStringList{"--bounding-set=-dac_override,-dac_read_search", "--", quorvelleProgram()} +
            words);
}

}  // namespace quorvelle::testing
