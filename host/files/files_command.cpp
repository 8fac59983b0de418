// `ovphone files` and its commands: browses the files of the chosen phone, copies and changes them.
#include <CLI/CLI.hpp>
#include <memory>

#include "host/files/commands.h"
#include "host/files/files_session.h"
#include "host/output/command_output.h"

namespace ovno2::host {

namespace {

using Action = void (*)(FilesSession&);

constexpr const char* paths =
    R"(Phone paths begin with a drive or its label: E:/Images, "Memory card/Images"; / is the phone itself. In every
part of a path * stands for any characters and ? for one; quote them, so that the shell leaves them alone.)";

// Adds the commands below `files`, which share their options: one line means one command.
class Registration {
  public:
    Registration(CLI::App& files, Context& context, std::shared_ptr<FilesOptions> options)
        : files_(files), context_(context), options_(std::move(options)) {}

    CLI::App& reading(const char* name, const char* description, Action action, const char* examples) {
        return add(name, description, action, Purpose::read, examples);
    }
    CLI::App& changing(const char* name, const char* description, Action action, const char* examples) {
        CLI::App& command = add(name, description, action, Purpose::change, examples);
        telling(command);
        return command;
    }
    void telling(CLI::App& command) {
        command.add_flag("-n,--dry-run", options_->dryRun, "only say what would be done");
        command.add_flag_callback(
            "-q,--quiet",
            [options = options_] {
                options->quiet = true;
                beQuiet();
            },
            "say nothing but what went wrong");
        command.add_flag("-v,--verbose", options_->verbose, "name every file");
    }

    void takesPaths(CLI::App& command, const char* name, const char* description, int fewest) {
        CLI::Option* option = command.add_option(name, options_->paths, description);
        option->expected(fewest, CLI::detail::expected_max_vector_size);
        option->type_name("");
        if (fewest > 0) option->required();
    }
    void recursive(CLI::App& command, const char* description) {
        command.add_flag("-r,--recursive", options_->recursive, description);
    }
    void force(CLI::App& command) {
        command.add_flag("-f,--force", options_->force, "overwrite files that are there and differ");
    }

  private:
    CLI::App& add(const char* name, const char* description, Action action, Purpose purpose,
                  const char* examples) {
        CLI::App& command = addCommand(files_, name, description, context_,
                                       [&context = context_, options = options_, action, purpose] {
                                           FilesSession(context, *options, purpose).carryOut(action);
                                       });
        command.footer(std::string(paths) + "\n\nExamples:\n" + examples);
        addCommonOptions(command, context_);
        addPhoneOption(command, context_);
        return command;
    }

    CLI::App& files_;
    Context& context_;
    std::shared_ptr<FilesOptions> options_;
};

}  // namespace

void registerFiles(CLI::App& app, Context& context) {
    const auto options = std::make_shared<FilesOptions>();
    CLI::App& files = addCommand(
        app, "files", "Browse the files of a phone, copy and change them; alone it shows the drives", context,
        [&context, options] { FilesSession(context, *options, Purpose::read).carryOut(listFiles); });
    files.require_subcommand(0, 1);
    files.footer(std::string(paths) + R"(

Examples:
  ovphone files                           the drives
  ovphone files --phone 6230i tree        all that lies on another phone)");
    addCommonOptions(files, context);
    addPhoneOption(files, context);
    Registration all(files, context, options);

    CLI::App& list = all.reading("ls", "List folders and files", listFiles,
                                 R"(  ovphone files ls                        the drives
  ovphone files ls -r E:/Images           all that is below a folder
  ovphone files ls "Memory card/*.jpg"    the pictures on a drive)");
    all.takesPaths(list, "PATH", "what to list (default: the drives)", 0);
    all.recursive(list, "with all that is in the folders");
    all.takesPaths(all.reading("tree", "Draw the tree of folders and files", drawTree,
                               "  ovphone files tree E:    what lies on the memory card"),
                   "PATH", "where to begin (default: the phone itself)", 0);
    all.takesPaths(all.reading("cat", "Write files to standard output", catFiles,
                               "  ovphone files cat E:/Documents/notes.txt | less"),
                   "PATH", "the files", 1);

    CLI::App& get = all.reading(
        "get", "Copy files from the phone; what is there already is skipped", getFiles,
        R"(  ovphone files get -r / backup                 the whole phone, a folder for each drive
  ovphone files get 'E:/Images/*.jpg' photos    pictures into a folder
  ovphone files get E:/Images/a.jpg beach.jpg   one picture, under a new name
  ovphone files get E:/notes.txt - | less       ... to standard output)");
    all.telling(get);
    all.takesPaths(
        get, "PATH",
        "what to get; the last of several is the folder here that it goes to, which is made when it is\n"
        "missing (default: the current folder), or the new name of one file, or - for standard output",
        1);
    all.recursive(get, "folders with all that is in them");
    all.force(get);
    CLI::App& put =
        all.changing("put", "Copy files to the phone; what is there already is skipped", putFiles,
                     R"(  ovphone files put -r photos "Memory card"      a folder with all that is in it
  ovphone files put beach.jpg E:/Images/          a file into a folder
  ovphone files put beach.jpg E:/Images/a.jpg     ... under a new name)");
    all.takesPaths(
        put, "FILE",
        "what to put; the last is the path of the phone's folder that it goes to, or of one file's copy", 2);
    all.recursive(put, "folders with all that is in them");
    all.force(put);

    CLI::App& rename = all.changing("mv", "Give a file or folder another name", renameFile,
                                    "  ovphone files mv E:/Images/a.jpg beach.jpg");
    rename.add_option("PATH", options->renamed, "what to rename")->type_name("")->required();
    rename.add_option("NAME", options->newName, "its new name in the same folder")->type_name("")->required();
    CLI::App& remove = all.changing("rm", "Delete files", removeFiles,
                                    R"(  ovphone files rm 'E:/Images/*.tmp'
  ovphone files rm -r --dry-run E:/Old    what would be deleted)");
    all.takesPaths(remove, "PATH", "what to delete", 1);
    all.recursive(remove, "folders with all that is in them");
    CLI::App& makeFolder =
        all.changing("mkdir", "Make folders", makeFolders, "  ovphone files mkdir -p E:/Images/2008/July");
    all.takesPaths(makeFolder, "PATH", "the new folders", 1);
    makeFolder.add_flag("-p,--parents", options->parents,
                        "make the folders above, too; a folder that is there is no failure");
    all.takesPaths(
        all.changing("rmdir", "Delete empty folders", removeFolders, "  ovphone files rmdir E:/Empty"),
        "PATH", "what to delete", 1);
}

}  // namespace ovno2::host
