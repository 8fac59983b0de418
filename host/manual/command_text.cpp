#include "host/manual/command_text.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace ovno2::host {

namespace {

std::string inOneLine(const std::string& text) {
    return replaced(text, "\n", " ");
}

OptionText textOf(const CLI::Option& option) {
    OptionText text;
    if (option.get_positional()) {
        text.names = {option.get_name(/*positional=*/true)};
    } else {
        for (const std::string& name : option.get_snames())
            text.names.push_back("-" + name);
        for (const std::string& name : option.get_lnames())
            text.names.push_back("--" + name);
        if (option.get_type_size() != 0) {
            text.value = option.get_type_name();
            text.defaultValue = option.get_default_str();
        }
    }
    text.description = inOneLine(option.get_description());
    text.isRequired = option.get_required();
    text.isRepeated = option.get_items_expected_max() >= CLI::detail::expected_max_vector_size;
    return text;
}

bool isWord(const std::string& text) {
    return !text.empty() && std::ranges::none_of(text, [](char c) { return c >= 'A' && c <= 'Z'; });
}

}  // namespace

CommandText describe(const CLI::App& command) {
    CommandText text;
    const CLI::App* const parent = command.get_parent();
    text.name = command.get_name();
    text.line = text.name;
    for (const CLI::App* above = parent; above; above = above->get_parent())
        text.line = above->get_name() + " " + text.line;
    text.description = inOneLine(command.get_description());
    for (const CLI::Option* option : command.get_options())
        if (!option->get_group().empty())
            (option->get_positional() ? text.arguments : text.options).push_back(textOf(*option));
    for (const CLI::App* inner : command.get_subcommands([](const CLI::App*) { return true; }))
        if (!inner->get_group().empty()) text.commands.push_back(describe(*inner));
    if (!parent || parent->get_footer() != command.get_footer()) text.footer = command.get_footer();
    return text;
}

std::vector<std::string> wordsOfValue(const std::string& name) {
    std::vector<std::string> words;
    for (std::size_t at = 0; at <= name.size();) {
        const std::size_t end = std::min(name.find('|', at), name.size());
        words.push_back(name.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

ValueKind kindOfValue(const std::string& name) {
    const std::vector<std::string> alternatives = wordsOfValue(name);
    const auto has = [&](const char* one) { return std::ranges::count(alternatives, one) != 0; };
    if (has("FILE") || has("SOURCE")) return ValueKind::files;
    if (has("DIR")) return ValueKind::folders;
    if (has("COMMAND")) return ValueKind::commands;
    return std::ranges::all_of(alternatives, isWord) ? ValueKind::words : ValueKind::nothing;
}

std::vector<const CommandText*> allCommandsOf(const CommandText& command) {
    std::vector<const CommandText*> all = {&command};
    for (const CommandText& inner : command.commands) {
        const std::vector<const CommandText*> below = allCommandsOf(inner);
        all.insert(all.end(), below.begin(), below.end());
    }
    return all;
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

std::string joined(const std::vector<std::string>& parts, const std::string& between) {
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i)
        text.append(i == 0 ? "" : between).append(parts[i]);
    return text;
}

}  // namespace ovno2::host
