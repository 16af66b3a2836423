#include "scripts.h"

namespace quorvelle {

namespace {

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

/// In single quotes, for bash and zsh.
std::string quoted(const std::string& text) {
    return '\'' + replaced(text, "'", R"('\'')") + '\'';
}

std::string quotedForPowerShell(const std::string& text) {
    return '\'' + replaced(text, "'", "''") + '\'';
}

constexpr char kBash[] =
    R"(# Completion of quorvelle's command line for bash, made from its command table.

declare -A _quorvelle_next=(
@)

_quorvelle() {
  local path=quorvelle word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [[ -z ${_quorvelle_next["$path $word"]+known} ]] || path+=" $word"
  done
  mapfile -t COMPREPLY < <(
    compgen -W "${_quorvelle_next[$path]}" -- "${COMP_WORDS[COMP_CWORD]}")
}

complete -o default -F _quorvelle quorvelle
)";

constexpr char kZsh[] = R"(#compdef quorvelle
# Completion of quorvelle's command line for zsh, made from its command table.

local -A next=(
@)
local -a candidates
local typed=quorvelle word
for word in ${words[2,CURRENT-1]}; do
  (( ${+next[$typed $word]} )) && typed+=" $word"
done
candidates=(${(f)next[$typed]})
_describe -t words 'next word' candidates || _files
)";

constexpr char kPowerShell[] =
    R"(# Completion of quorvelle's command line for PowerShell, made from its command table.

Register-ArgumentCompleter -Native -CommandName 'quorvelle', 'quorvelle.exe' -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    $next = @{
@    }
    $path = 'quorvelle'
    foreach ($element in $commandAst.CommandElements | Select-Object -Skip 1) {
        if ($element.Extent.EndOffset -ge $cursorPosition) { break }
        $longer = $path + ' ' + $element.Extent.Text
        if ($next.ContainsKey($longer)) { $path = $longer }
    }
    $next[$path].GetEnumerator() | Where-Object { $_.Key -like "$wordToComplete*" } | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new(
            $_.Key, $_.Key, 'ParameterValue', $_.Value)
    }
}
)";

std::string filledIn(const char* script, const std::string& table) {
    std::string text = script;
    return text.replace(text.find("\n@") + 1, 1, table);
}

std::string summaryOf(const NextWord& next) {
    return next.summary.empty() ? next.word : next.summary;
}

/// Text that the man formatter prints as it stands.
std::string forMan(const std::string& text) {
    return replaced(replaced(text, "\\", "\\e"), "-", "\\-");
}

constexpr char kManualEnd[] = R"(.SH GLOBAL OPTION
.TP
.B \-\-json
Machine\-readable output: one JSON object per outcome, with the same exit codes.
.SH EXIT STATUS
.TP
.B 0
Success, also when nothing had to change.
.TP
.B 1
Usage shown, unknown command, bad arguments, no server configured.
.TP
.B 2
A request failed, or the configuration could not be saved.
.TP
.B 3
.B sync
only: a build was downloaded but files in use kept it from being put in place; the next
sync tries again.
.SH ENVIRONMENT
.TP
.B QUORVELLE_CONFIG_DIR
Folder of the configuration file.
.TP
.B QUORVELLE_TOKEN
Bearer token for servers that have none stored.
.TP
.B QUORVELLE_TIDE_PUBLIC_KEY
Key that must have signed the manifests of tide channels.
)";

}  // namespace

std::string bashScript(const NextWords& words) {
    std::string table;
    for (const auto& [path, next] : words) {
        std::string line;
        for (const NextWord& word : next) {
            line += (line.empty() ? "" : " ") + word.word;
        }
        table += "  [" + quoted(path) + "]=" + quoted(line) + '\n';
    }
    return filledIn(kBash, table);
}

std::string zshScript(const NextWords& words) {
    std::string table;
    for (const auto& [path, next] : words) {
        std::string lines;
        for (const NextWord& word : next) {
            lines += (lines.empty() ? "" : "\n") + word.word + ':' + summaryOf(word);
        }
        table += "  " + quoted(path) + ' ' + quoted(lines) + '\n';
    }
    return filledIn(kZsh, table);
}

std::string powerShellScript(const NextWords& words) {
    std::string table;
    for (const auto& [path, next] : words) {
        table += "        " + quotedForPowerShell(path) + " = [ordered]@{\n";
        for (const NextWord& word : next) {
            table += "            " + quotedForPowerShell(word.word) + " = " +
                     quotedForPowerShell(summaryOf(word)) + '\n';
        }
        table += "        }\n";
    }
    return filledIn(kPowerShell, table);
}

std::string manualPage(CommandTable table, const std::string& version) {
    std::string text = ".TH QUORVELLE 1 \"\" \"Quorvelle " + version +
                       "\"\n.SH NAME\nquorvelle \\- client of a software\\-distribution service\n"
                       ".SH SYNOPSIS\n.B quorvelle\n.I command\n.RI [ arguments ]\n"
                       ".RB [ \\-\\-json ]\n.SH COMMANDS\n";
    for (const Command& command : table) {
        if (!command.usage.empty()) {
            text += ".SS " + forMan(std::string(command.words)) + '\n' +
                    forMan(std::string(command.summary)) + ".\n.PP\n.nf\n" +
                    forMan(std::string(command.usage)) + ".fi\n";
        }
    }
    return text + kManualEnd;
}

}  // namespace quorvelle
