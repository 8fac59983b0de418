// A command line as its help describes it: what the manual pages and the shells' completions are made of.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace ovno2::host {

// What a shell offers where a value is typed.
enum class ValueKind { nothing, words, files, folders, commands };

// An option or an argument.
struct OptionText {
    std::vector<std::string> names;  // "-f" and "--force"; an argument's name
    std::string value;               // what follows an option, such as "DIR" or "table|json"; empty = nothing
    std::string defaultValue;        // empty = none, or the description tells it
    std::string description;         // one line
    bool isRequired = false;
    bool isRepeated = false;

    bool operator==(const OptionText&) const = default;
};

struct CommandText {
    std::string line;  // with the commands above, such as "ovphone contacts show"
    std::string name;
    std::string description;
    std::vector<OptionText> arguments;
    std::vector<OptionText> options;
    std::vector<CommandText> commands;
    std::string footer;  // what the help ends with, unless it is that of the command above
};

CommandText describe(const CLI::App& command);

// Told by the value's name: DIR is a folder of this computer, FILE a file, SOURCE either, COMMAND one of the
// program's, "a|b" one of these words.
ValueKind kindOfValue(const std::string& name);
// Of "a|b".
std::vector<std::string> wordsOfValue(const std::string& name);

// The command and all below it, each before its own.
std::vector<const CommandText*> allCommandsOf(const CommandText& command);

std::string replaced(std::string text, const std::string& what, const std::string& with);
std::string joined(const std::vector<std::string>& parts, const std::string& between);

}  // namespace ovno2::host
