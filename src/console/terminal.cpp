#include "console/terminal.h"

#include <QtGlobal>

#include "console/console.h"
#include "console/output.h"

namespace quorvelle {

namespace {

Terminal (*answerOfTest)(std::FILE*) = nullptr;

}  // namespace

Terminal terminalOf(std::FILE* stream) {
    if (answerOfTest != nullptr) {
        return answerOfTest(stream);
    }
    if (jsonMode() || !isTerminal(stream)) {
        return {};
    }
    const bool redraws = obeysSequences(stream);
    return {.isThere = true,
            .width = columnsOf(stream),
            .redraws = redraws,
            .hasColors = redraws && qEnvironmentVariableIsEmpty("NO_COLOR")};
}

void setTerminals(Terminal (*answer)(std::FILE* stream)) {
    answerOfTest = answer;
}

}  // namespace quorvelle
