// The manual pages and the completions, which are made of the texts of the help.
#include <CLI/CLI.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/all_commands.h"
#include "host/manual/completions.h"
#include "host/manual/man_page.h"

namespace ovno2::host {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

CommandText ovphone() {
    Context context;
    return describe(*makeCommandLine(context, allCommands));
}

std::string asInPage(const std::string& option) {
    return replaced(option, "-", "\\-");
}

TEST(Manual, TellsEveryCommandAndOptionOfTheHelp) {
    const CommandText program = ovphone();
    const std::string main = programPage(program, {"1.0", "2008-07-14"}, {});
    const std::string completions[] = {bashCompletion(program), zshCompletion(program),
                                       fishCompletion(program)};
    ASSERT_GE(program.commands.size(), 9u);
    for (const CommandText& top : program.commands) {
        EXPECT_THAT(main, HasSubstr(".BR " + asInPage(pageName(top)) + " (1)"));
        const std::string page = commandPage(top, program, {"1.0", "2008-07-14"});
        for (const CommandText* command : allCommandsOf(top)) {
            EXPECT_THAT(page, HasSubstr("\\fB" + command->line + "\\fR [\\fIoptions\\fR]"));
            EXPECT_THAT(completions, Each(HasSubstr(command->name)));
            for (const OptionText& option : command->options) {
                EXPECT_THAT(page, HasSubstr("\\fB" + asInPage(option.names.back()) + "\\fR"));
                // What shells offer is told by these names alone.
                EXPECT_THAT(option.value, MatchesRegex("[A-Z|,.]*|[a-z0-9.|-]+"))
                    << command->line << option.names.back();
            }
        }
    }
}

TEST(Manual, KeepsTextsFromBeingTakenForCommands) {
    CLI::App app("It's [a] tool: \"b\" \\ done.", "tool");
    std::string value;
    app.add_option("-x,--long-one", value, "it's [one]: \\n")->type_name("on|off");
    app.footer("Not a heading:\n  .dot  'quoted' ~/a-b\n\nExamples:\n  tool --long-one=on");
    const CommandText tool = describe(app);
    EXPECT_THAT(
        programPage(tool, {"1.0", "2008-07-14"}, {"other"}),
        AllOf(HasSubstr("tool \\- it\\(aqs [a] tool: \\(dqb\\(dq \\e done\n"),
              HasSubstr("\\fB\\-x\\fR, \\fB\\-\\-long\\-one\\fR \\fIon|off\\fR\nit\\(aqs [one]: \\en\n"),
              HasSubstr("Not a heading:\n.EX\n\\&.dot  \\(aqquoted\\(aq \\(ti/a\\-b\n.EE\n"),
              HasSubstr(".SH EXAMPLES\n.EX\ntool \\-\\-long\\-one=on\n.EE\n"), HasSubstr(".BR other (1)\n")));
    EXPECT_THAT(bashCompletion(tool), HasSubstr("-x | --long-one) kind=words words='on off' ;;"));
    EXPECT_THAT(zshCompletion(tool),
                HasSubstr(R"('(-x --long-one)'{-x+,--long-one=}'[it'\''s \[one\]\: \\n]:on|off:(on off)')"));
    EXPECT_THAT(fishCompletion(tool), HasSubstr(R"(-s x -l long-one -x -a 'on off' -d 'it\'s [one]: \\n')"));
}

}  // namespace
}  // namespace ovno2::host
