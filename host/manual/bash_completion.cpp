#include <set>

#include "host/manual/completions.h"

namespace ovno2::host {

namespace {

// Begins the function: finds out which command the line has come to, and what the word before means.
constexpr const char* functionBegins = R"({
    local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=@PROGRAM@
    local word kind='' words='' commands='' options='' arguments='' i
    COMPREPLY=()
    # "--option=value" comes as three words.
    if [ "$cur" = = ]; then
        cur=
    elif [ "$previous" = = ] && [ "$COMP_CWORD" -ge 2 ]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        case "$word" in
            @VALUE_OPTIONS@)
                [ "${COMP_WORDS[i + 1]}" != = ] || ((i++))
                ((i++))
                continue
                ;;
        esac
        case "$command $word" in
            @COMMANDS@) command="$command $word" ;;
        esac
    done
    case "$command" in
)";

constexpr const char* functionEnds = R"(    esac
    if [ -z "$kind" ]; then
        case "$cur" in
            -*) kind=words words=$options ;;
            *) if [ -n "$commands" ]; then kind=words words=$commands; else kind=$arguments; fi ;;
        esac
    fi
    case "$kind" in
        words) mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur") ;;
        files | folders)
            if declare -F _filedir >/dev/null; then
                if [ "$kind" = folders ]; then _filedir -d; else _filedir; fi
            else
                compopt -o filenames 2>/dev/null
                if [ "$kind" = folders ]; then i=-d; else i=-f; fi
                mapfile -t COMPREPLY < <(compgen "$i" -- "$cur")
            fi
            ;;
    esac
}
)";

std::string quoted(const std::string& text) {
    return "'" + replaced(text, "'", "'\\''") + "'";
}

// What sets `kind` and `words` for a value of that name.
std::string valueOf(const std::string& name, const std::string& kindVariable, const CommandText& program) {
    switch (kindOfValue(name)) {
        case ValueKind::words:
            return kindVariable + "=words words=" + quoted(joined(wordsOfValue(name), " "));
        case ValueKind::files:
            return kindVariable + "=files";
        case ValueKind::folders:
            return kindVariable + "=folders";
        case ValueKind::commands: {
            std::vector<std::string> names;
            for (const CommandText& command : program.commands)
                names.push_back(command.name);
            return kindVariable + "=words words=" + quoted(joined(names, " "));
        }
        case ValueKind::nothing:
            break;
    }
    return kindVariable + "=nothing";
}

std::string caseOf(const CommandText& command, const CommandText& program) {
    std::string text = "        " + quoted(command.line) + ")\n";
    std::vector<std::string> options, commands;
    std::string values;
    for (const OptionText& option : command.options) {
        options.insert(options.end(), option.names.begin(), option.names.end());
        if (!option.value.empty())
            values += "                " + joined(option.names, " | ") + ") " +
                      valueOf(option.value, "kind", program) + " ;;\n";
    }
    for (const CommandText& inner : command.commands)
        commands.push_back(inner.name);
    text += "            options=" + quoted(joined(options, " ")) + "\n";
    if (!commands.empty()) text += "            commands=" + quoted(joined(commands, " ")) + "\n";
    if (!command.arguments.empty())
        text += "            " + valueOf(command.arguments[0].names[0], "arguments", program) + "\n";
    if (!values.empty()) text += "            case \"$previous\" in\n" + values + "            esac\n";
    return text + "            ;;\n";
}

}  // namespace

std::string bashCompletion(const CommandText& program) {
    std::set<std::string> valueOptions;
    std::vector<std::string> commands;
    std::string cases;
    for (const CommandText* command : allCommandsOf(program)) {
        for (const OptionText& option : command->options)
            if (!option.value.empty()) valueOptions.insert(option.names.begin(), option.names.end());
        if (command != &program) commands.push_back(quoted(command->line));
        cases += caseOf(*command, program);
    }
    std::string begin = replaced(functionBegins, "@PROGRAM@", program.name);
    begin = replaced(begin, "@VALUE_OPTIONS@", joined({valueOptions.begin(), valueOptions.end()}, " | "));
    begin = replaced(begin, "@COMMANDS@", commands.empty() ? "''" : joined(commands, " | "));
    return "# Completion of " + program.name + " for bash.\n\n_" + program.name + "() " + begin + cases +
           functionEnds + "complete -F _" + program.name + " " + program.name + "\n";
}

}  // namespace ovno2::host
