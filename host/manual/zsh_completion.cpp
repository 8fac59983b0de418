#include "host/manual/completions.h"

namespace ovno2::host {

namespace {

std::string functionOf(const CommandText& command) {
    return "_" + replaced(command.line, " ", "_");
}

// In an option between single quotes, whose parts are divided by colons.
std::string part(std::string text) {
    for (const char* special : {"\\", "[", "]", ":"})
        text = replaced(text, special, std::string("\\") + special);
    return replaced(text, "'", "'\\''");
}

std::string actionOf(const std::string& name, const CommandText& program) {
    switch (kindOfValue(name)) {
        case ValueKind::words:
            return "(" + joined(wordsOfValue(name), " ") + ")";
        case ValueKind::files:
            return "_files";
        case ValueKind::folders:
            return "_files -/";
        case ValueKind::commands:
            return functionOf(program) + "_commands";
        case ValueKind::nothing:
            break;
    }
    return " ";
}

std::string completionOf(const OptionText& option, const CommandText& program) {
    std::string completion = "'(" + joined(option.names, " ") + ")'";
    const bool hasValue = !option.value.empty();
    std::vector<std::string> names;
    for (const std::string& name : option.names)
        names.push_back(name + (!hasValue ? "" : name.starts_with("--") ? "=" : "+"));
    completion += names.size() == 1 ? "'" + names[0] : "{" + joined(names, ",") + "}'";
    completion += "[" + part(option.description) + "]";
    if (hasValue) completion += ":" + part(option.value) + ":" + actionOf(option.value, program);
    return completion + "'";
}

std::string commandsOf(const CommandText& command) {
    std::string text = functionOf(command) + "_commands() {\n    local -a commands=(\n";
    for (const CommandText& inner : command.commands)
        text += "        '" + part(inner.name) + ":" + replaced(inner.description, "'", "'\\''") + "'\n";
    return text + "    )\n    _describe -t commands command commands\n}\n";
}

std::string argumentsOf(const CommandText& command, const CommandText& program) {
    std::string text = functionOf(command) + "() {\n";
    if (!command.commands.empty())
        text += "    local curcontext=$curcontext state line ret=1\n    typeset -A opt_args\n";
    text += "    _arguments -s -S";
    if (!command.commands.empty()) text += " -C";
    for (const OptionText& option : command.options)
        text += " \\\n        " + completionOf(option, program);
    if (!command.commands.empty()) {
        text += " \\\n        '1:command:" + functionOf(command) +
                "_commands' \\\n        '*::argument:->arguments' && ret=0\n";
        text += "    [[ $state == arguments ]] || return ret\n    case $words[1] in\n";
        for (const CommandText& inner : command.commands)
            text += "        " + inner.name + ") " + functionOf(inner) + " && ret=0 ;;\n";
        return text + "    esac\n    return ret\n}\n" + commandsOf(command);
    }
    for (const OptionText& argument : command.arguments)
        text += std::string(" \\\n        '") + (argument.isRepeated ? "*" : "") + ":" +
                part(argument.names[0]) + ":" + actionOf(argument.names[0], program) + "'";
    return text + "\n}\n";
}

}  // namespace

std::string zshCompletion(const CommandText& program) {
    std::string text = "#compdef " + program.name + "\n# Completion of " + program.name + " for zsh.\n";
    for (const CommandText* command : allCommandsOf(program))
        text += "\n" + argumentsOf(*command, program);
    return text + "\n" + functionOf(program) + " \"$@\"\n";
}

}  // namespace ovno2::host
