// Writes the completions and the manual page: their texts in the folder SOURCE, with what the
// command table says in them. make_completions SOURCE FOLDER VERSION

#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>

#include "cli/command_table.h"
#include "manual_page.h"
#include "scripts.h"

namespace quorvelle {

namespace {

struct File {
    const char* source;
    const char* name;
    std::optional<Shell> shell;
};

constexpr File kFiles[] = {{"quorvelle.bash.in", "quorvelle.bash", Shell::kBash},
                           {"_quorvelle.in", "_quorvelle", Shell::kZsh},
                           {"quorvelle.fish.in", "quorvelle.fish", Shell::kFish},
                           {"quorvelle.ps1.in", "quorvelle.ps1", Shell::kPowerShell},
                           {"quorvelle.1.in", "quorvelle.1", std::nullopt}};

std::optional<QString> read(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    return stream.is_open() ? std::optional(QString::fromStdString(text)) : std::nullopt;
}

bool write(const std::string& path, const QString& text) {
    std::ofstream stream(path, std::ios::binary);
    stream << text.toStdString();
    stream.close();
    return !stream.fail();
}

bool make(const File& file, const std::string& source, const std::string& folder,
          const QString& version) {
    const std::optional<QString> text = read(source + '/' + file.source);
    const CommandTable table = commandTable();
    const bool made = text && write(folder + '/' + file.name,
                                    file.shell ? filledIn(*text, *file.shell, completionTree(table))
                                               : manualPage(*text, table, version));
    if (!made) {
        std::fprintf(stderr, "cannot make %s from %s in %s\n", file.name, file.source,
                     source.c_str());
    }
    return made;
}

}  // namespace

}  // namespace quorvelle

int main(int argc, char* argv[]) {
    if (argc != 4) {
        std::fputs("usage: make_completions SOURCE FOLDER VERSION\n", stderr);
        return 1;
    }
    for (const quorvelle::File& file : quorvelle::kFiles) {
        if (!quorvelle::make(file, argv[1], argv[2], QString::fromUtf8(argv[3]))) {
            return 1;
        }
    }
    return 0;
}
