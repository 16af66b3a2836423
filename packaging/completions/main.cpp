// Writes the completions for bash, zsh and PowerShell and the manual page from the command
// table: make_completions FOLDER VERSION

#include <cstdio>
#include <fstream>

#include "cli/command_table.h"
#include "scripts.h"

namespace {

bool write(const std::string& path, const std::string& text) {
    std::ofstream stream(path, std::ios::binary);
    stream << text;
    stream.close();
    if (stream.fail()) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
    }
    return !stream.fail();
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 3) {
        std::fputs("usage: make_completions FOLDER VERSION\n", stderr);
        return 1;
    }
    const std::string folder = argv[1];
    const quorvelle::NextWords words = quorvelle::nextWords(quorvelle::commandTable());
    const bool written =
        write(folder + "/quorvelle.bash", quorvelle::bashScript(words)) &&
        write(folder + "/_quorvelle", quorvelle::zshScript(words)) &&
        write(folder + "/quorvelle.ps1", quorvelle::powerShellScript(words)) &&
        write(folder + "/quorvelle.1", quorvelle::manualPage(quorvelle::commandTable(), argv[2]));
    return written ? 0 : 1;
}
