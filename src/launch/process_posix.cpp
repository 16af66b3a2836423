#include <QProcess>
#include <csignal>

#include "launch/process.h"

namespace quorvelle {

void configure(QProcess& process, const ProcessStart& start) {
    process.setProgram(start.program);
    process.setArguments(start.arguments);
    process.setWorkingDirectory(start.workingDir);
    // Ignored here, it would be ignored in the started program, too.
    std::signal(SIGXFSZ, SIG_DFL);
}

}  // namespace quorvelle
