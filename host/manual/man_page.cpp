#include "host/manual/man_page.h"

#include <algorithm>

namespace ovno2::host {

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Characters that roff takes for its own, or would turn into typographic ones.
std::string escaped(char c, bool beginsLine) {
    switch (c) {
        case '\\':
            return "\\e";
        case '\'':
            return "\\(aq";
        case '"':
            return "\\(dq";
        case '`':
            return "\\(ga";
        case '^':
            return "\\(ha";
        case '~':
            return "\\(ti";
        case '-':
            return "\\-";
        case '.':
            return beginsLine ? "\\&." : ".";
        default:
            return {c};
    }
}

std::string escaped(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        result += escaped(text[i], i == 0 || text[i - 1] == '\n');
    return result;
}

// The hyphen within a word is a hyphen; what people type has the sign of the keyboard.
std::string prose(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isInWord = i > 0 && isLetter(text[i - 1]) && i + 1 < text.size() && isLetter(text[i + 1]);
        result += isInWord && text[i] == '-' ? "-" : escaped(text[i], i == 0 || text[i - 1] == '\n');
    }
    return result;
}

std::string bold(const std::string& text) {
    return "\\fB" + escaped(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + escaped(text) + "\\fR";
}

std::string heading(const std::string& text) {
    return ".SH " + text + "\n";
}

std::vector<std::string> divided(const std::string& text, const std::string& by) {
    std::vector<std::string> parts;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(by, at), text.size());
        parts.push_back(text.substr(at, end - at));
        at = end + by.size();
    }
    return parts;
}

// The parts of what a help ends with.
struct Ending {
    std::vector<std::string> paragraphs;
    std::string examples, exitStatus;
};

Ending endingOf(const CommandText& command) {
    const std::string examplesBegin = "Examples:\n", statusBegins = "Exit status: ";
    Ending ending;
    for (const std::string& paragraph : divided(command.footer, "\n\n")) {
        if (paragraph.starts_with(examplesBegin))
            ending.examples = paragraph.substr(examplesBegin.size());
        else if (paragraph.starts_with(statusBegins))
            ending.exitStatus = paragraph.substr(statusBegins.size());
        else
            ending.paragraphs.push_back(paragraph);
    }
    return ending;
}

// Lines as they stand, without the indentation that they share.
std::string literal(const std::vector<std::string>& lines) {
    std::size_t indentation = std::string::npos;
    for (const std::string& line : lines)
        indentation = std::min(indentation, line.find_first_not_of(' '));
    std::string text = ".EX\n";
    for (const std::string& line : lines)
        text += escaped(line.substr(std::min(indentation, line.size()))) + "\n";
    return text + ".EE\n";
}

// Indented lines stand as they are, others are filled.
std::string asRoff(const std::string& paragraph) {
    std::string text;
    std::vector<std::string> indented;
    for (const std::string& line : divided(paragraph, "\n")) {
        if (line.starts_with(' ')) {
            indented.push_back(line);
            continue;
        }
        if (!indented.empty()) text += literal(indented) + ".PP\n";
        indented.clear();
        text += prose(line) + "\n";
    }
    return indented.empty() ? text : text + literal(indented);
}

std::string examples(const std::string& lines) {
    return literal(divided(lines, "\n"));
}

std::string described(const OptionText& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.names)
        names.push_back(option.names[0].starts_with('-') ? bold(name) : italic(name));
    return ".TP\n" + joined(names, ", ") + (option.value.empty() ? "" : " " + italic(option.value)) + "\n" +
           prose(option.description) +
           (option.defaultValue.empty() ? "" : " (default: " + escaped(option.defaultValue) + ")") + "\n";
}

std::string described(const std::vector<OptionText>& options) {
    std::string text;
    for (const OptionText& option : options)
        text += described(option);
    return text;
}

std::string synopsis(const CommandText& command) {
    std::string text = bold(command.line) + " [" + italic("options") + "]";
    for (const OptionText& argument : command.arguments) {
        const std::string name = italic(argument.names[0]) + (argument.isRepeated ? " ..." : "");
        text += " " + (argument.isRequired ? name : "[" + name + "]");
    }
    return text + "\n";
}

// In the middle of a line: without the capital letter and the full stop.
std::string inLine(std::string description) {
    if (description.size() > 1 && description[0] >= 'A' && description[0] <= 'Z' && description[1] >= 'a')
        description[0] = static_cast<char>(description[0] - 'A' + 'a');
    if (description.ends_with('.')) description.pop_back();
    return description;
}

std::string begin(const CommandText& command, const ManualEdition& edition) {
    std::string capitals = pageName(command);
    for (char& c : capitals)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return ".TH " + capitals + " 1 \"" + edition.date + "\" \"ovNo2 " + edition.version +
           "\" \"User Commands\"\n" + heading("NAME") + escaped(pageName(command)) + " \\- " +
           prose(inLine(command.description)) + "\n" + heading("SYNOPSIS");
}

std::string asSentence(const std::string& description) {
    return prose(description) + (description.ends_with('.') ? "\n" : ".\n");
}

std::string description(const CommandText& command, const Ending& ending) {
    std::string text = asSentence(command.description);
    for (const std::string& paragraph : ending.paragraphs)
        text += ".PP\n" + asRoff(paragraph);
    return text;
}

std::string end(const CommandText& program, const std::vector<std::string>& pages) {
    const std::string status = endingOf(program).exitStatus;
    std::string text;
    if (!status.empty()) text += heading("EXIT STATUS") + prose(status) + "\n";
    if (!pages.empty()) text += heading("SEE ALSO");
    for (std::size_t i = 0; i < pages.size(); ++i)
        text += ".BR " + escaped(pages[i]) + " (1)" + (i + 1 < pages.size() ? "," : "") + "\n";
    return text;
}

// Options that the command and all below it have in the same words.
std::vector<OptionText> commonOptions(const CommandText& command) {
    std::vector<OptionText> common = command.options;
    for (const CommandText& inner : command.commands)
        std::erase_if(
            common, [&](const OptionText& option) { return std::ranges::count(inner.options, option) == 0; });
    return common;
}

std::string innerCommand(const CommandText& command, const std::vector<OptionText>& common,
                         const std::vector<std::string>& paragraphsAbove) {
    Ending ending = endingOf(command);
    std::erase_if(ending.paragraphs, [&](const std::string& paragraph) {
        return std::ranges::count(paragraphsAbove, paragraph) != 0;
    });
    std::vector<OptionText> own = command.options;
    std::erase_if(own, [&](const OptionText& option) { return std::ranges::count(common, option) != 0; });
    std::string text = ".SS " + bold(command.line) + "\n" + synopsis(command) + ".PP\n" +
                       description(command, ending) + described(command.arguments) + described(own);
    if (!ending.examples.empty()) text += ".PP\nExamples:\n" + examples(ending.examples);
    return text;
}

}  // namespace

std::string pageName(const CommandText& command) {
    return replaced(command.line, " ", "-");
}

std::string programPage(const CommandText& program, const ManualEdition& edition,
                        const std::vector<std::string>& seeAlso) {
    const Ending ending = endingOf(program);
    std::string text = begin(program, edition) + synopsis(program);
    std::vector<std::string> pages;
    if (!program.commands.empty())
        text += ".br\n" + bold(program.line) + " " + italic("command") + " [" + italic("options") + "] ...\n";
    text += heading("DESCRIPTION") + description(program, ending) + described(program.arguments);
    if (!program.commands.empty())
        text += heading("COMMANDS") + "Each command has a manual page of its own.\n";
    for (const CommandText& command : program.commands) {
        text += ".TP\n" + bold(command.name) + "\n" + asSentence(command.description);
        pages.push_back(pageName(command));
    }
    pages.insert(pages.end(), seeAlso.begin(), seeAlso.end());
    text += heading("OPTIONS") + described(program.options);
    if (!ending.examples.empty()) text += heading("EXAMPLES") + examples(ending.examples);
    return text + end(program, pages);
}

std::string commandPage(const CommandText& command, const CommandText& program,
                        const ManualEdition& edition) {
    const Ending ending = endingOf(command);
    const std::vector<OptionText> common = commonOptions(command);
    std::string text = begin(command, edition);
    const std::vector<const CommandText*> all = allCommandsOf(command);
    for (const CommandText* one : all)
        text += (one == &command ? "" : ".br\n") + synopsis(*one);
    text += heading("DESCRIPTION") + description(command, ending) + described(command.arguments);
    if (common.size() < command.options.size()) {
        std::vector<OptionText> own = command.options;
        std::erase_if(own, [&](const OptionText& option) { return std::ranges::count(common, option) != 0; });
        text += described(own);
    }
    if (all.size() > 1) text += heading("COMMANDS");
    for (const CommandText* one : all)
        if (one != &command) text += innerCommand(*one, common, ending.paragraphs);
    text += heading("OPTIONS");
    if (all.size() > 1) text += "All of these commands take:\n";
    text += described(common);
    if (!ending.examples.empty()) text += heading("EXAMPLES") + examples(ending.examples);
    return text + end(program, {program.name});
}

}  // namespace ovno2::host
