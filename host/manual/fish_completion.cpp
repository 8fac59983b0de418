#include <set>

#include "host/manual/completions.h"

namespace ovno2::host {

namespace {

// Which command the line has come to.
constexpr const char* commandFunction = R"(function __@PROGRAM@_is_at
    set -l command @PROGRAM@
    set -l words (commandline -opc)
    set -l isValue no
    for word in $words[2..-1]
        if test $isValue = yes
            set isValue no
        else if contains -- $word @VALUE_OPTIONS@
            set isValue yes
        else if contains -- "$command $word" @COMMANDS@
            set command "$command $word"
        end
    end
    test "$command" = "$argv"
end
)";

std::string quoted(const std::string& text) {
    return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

std::string valueOf(const std::string& name, const CommandText& program) {
    switch (kindOfValue(name)) {
        case ValueKind::words:
            return " -x -a " + quoted(joined(wordsOfValue(name), " "));
        case ValueKind::files:
            return " -r -F";
        case ValueKind::folders:
            return " -x -a '(__fish_complete_directories (commandline -ct))'";
        case ValueKind::commands: {
            std::vector<std::string> names;
            for (const CommandText& command : program.commands)
                names.push_back(command.name);
            return " -x -a " + quoted(joined(names, " "));
        }
        case ValueKind::nothing:
            break;
    }
    return " -x";
}

std::string linesOf(const CommandText& command, const CommandText& program) {
    const std::string begin =
        "complete -c " + program.name + " -n " + quoted("__" + program.name + "_is_at " + command.line);
    std::string text;
    for (const CommandText& inner : command.commands)
        text += begin + " -a " + quoted(inner.name) + " -d " + quoted(inner.description) + "\n";
    for (const OptionText& option : command.options) {
        text += begin;
        for (const std::string& name : option.names)
            text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
        text += (option.value.empty() ? "" : valueOf(option.value, program)) + " -d " +
                quoted(option.description) + "\n";
    }
    if (!command.arguments.empty() && kindOfValue(command.arguments[0].names[0]) != ValueKind::nothing)
        text += begin + replaced(valueOf(command.arguments[0].names[0], program), " -r", "") + "\n";
    return text;
}

}  // namespace

std::string fishCompletion(const CommandText& program) {
    std::set<std::string> valueOptions;
    std::vector<std::string> commands;
    std::string lines;
    for (const CommandText* command : allCommandsOf(program)) {
        for (const OptionText& option : command->options)
            if (!option.value.empty()) valueOptions.insert(option.names.begin(), option.names.end());
        if (command != &program) commands.push_back(quoted(command->line));
        lines += linesOf(*command, program);
    }
    std::string function = replaced(commandFunction, "@PROGRAM@", program.name);
    function = replaced(function, "@VALUE_OPTIONS@", joined({valueOptions.begin(), valueOptions.end()}, " "));
    function = replaced(function, "@COMMANDS@", joined(commands, " "));
    return "# Completion of " + program.name + " for fish.\n\n" + function + "\ncomplete -c " + program.name +
           " -f\n" + lines;
}

}  // namespace ovno2::host
