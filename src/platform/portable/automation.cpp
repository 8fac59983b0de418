#include "platform/portable/automation.h"

#include <limits>

#include "base/values.h"

namespace ovno2::platform::portable {

namespace {

constexpr Long nameTooLong = static_cast<Long>(0x800700CEu);  // the shell's own number
constexpr std::size_t longestPath = 260;

const Text& textArgument(std::span<const Variant> arguments) {
    if (arguments.size() != 1) throw RuntimeFailure(invalidProcedureCall);
    const Text* const text = std::get_if<Text>(&arguments[0]);
    if (!text) throw RuntimeFailure(typeMismatch);
    return *text;
}

Text joined(Text folder, TextView name) {
    if (!folder.empty() && folder.back() != u'\\') folder += u'\\';
    return folder.append(name);
}

// An object whose members answer to both ways of asking for them, as late binding does; nothing can be put.
class ReadOnlyObject : public AutomationObject {
  public:
    explicit ReadOnlyObject(Machine& owner) : machine(owner) {}
    Variant get(TextView property, std::span<const Variant> arguments) final {
        return member(lowerCase(property), arguments);
    }
    Variant call(TextView method, std::span<const Variant> arguments) final {
        return member(lowerCase(method), arguments);
    }
    void put(TextView, const Variant&, std::span<const Variant>) final {
        throw RuntimeFailure(memberNotSupported);
    }

  protected:
    virtual Variant member(const Text& name, std::span<const Variant> arguments) = 0;
    bool folderExists(TextView path) {
        const Long attributes = machine.files().attributes(path);
        return attributes != noAttributes && (attributes & attributeDirectory) != 0;
    }

    Machine& machine;
};

class FileObject : public ReadOnlyObject {
  public:
    FileObject(Machine& owner, Text path) : ReadOnlyObject(owner), path_(std::move(path)) {}

  protected:
    Variant member(const Text& name, std::span<const Variant>) override {
        if (name == u"path") return path_;
        if (name != u"size") throw RuntimeFailure(memberNotSupported);
        std::unique_ptr<OpenFile> file;
        std::uint64_t size = 0;
        FailureNumber failure = machine.files().openWide(path_, file);
        if (failure == noFailure) failure = file->size(size);
        if (failure != noFailure) throw RuntimeFailure(failure);
        if (size > static_cast<std::uint64_t>(std::numeric_limits<Long>::max()))
            return static_cast<double>(size);
        return static_cast<Long>(size);
    }

  private:
    Text path_;
};

class DriveObject : public ReadOnlyObject {
  public:
    DriveObject(Machine& owner, char16_t letter) : ReadOnlyObject(owner), letter_(letter) {}

  protected:
    Variant member(const Text& name, std::span<const Variant>) override {
        if (name == u"path") return Text{letter_, u':'};
        if (name == u"driveletter") return Text{letter_};
        throw RuntimeFailure(memberNotSupported);
    }

  private:
    char16_t letter_;
};

class DriveCollection : public ReadOnlyObject {
  public:
    using ReadOnlyObject::ReadOnlyObject;
    std::vector<Variant> elements() override {
        std::vector<Variant> drives;
        for (char16_t letter = u'A'; letter <= u'Z'; ++letter)
            if (!machine.processes().deviceName(Text{letter, u':'}).empty())
                drives.emplace_back(std::make_shared<DriveObject>(machine, letter));
        return drives;
    }

  protected:
    Variant member(const Text& name, std::span<const Variant>) override {
        if (name == u"count") return static_cast<Long>(elements().size());
        throw RuntimeFailure(memberNotSupported);
    }
};

// The path without its last part and the separators around it; the root of a drive keeps its own.
Text parentFolderName(TextView path) {
    constexpr TextView separators = u"\\/";
    const auto lastOther = [&](TextView text) { return text.find_last_not_of(separators) + 1; };
    path = path.substr(0, lastOther(path));
    const std::size_t separator = path.find_last_of(separators);
    if (separator == TextView::npos) return {};
    const TextView parent = path.substr(0, lastOther(path.substr(0, separator)));
    if (parent.size() == 2 && parent[1] == u':') return Text(path.substr(0, 3));
    return Text(parent);
}

class FileSystemObject : public ReadOnlyObject {
  public:
    using ReadOnlyObject::ReadOnlyObject;

  protected:
    Variant member(const Text& name, std::span<const Variant> arguments) override {
        if (name == u"getparentfoldername") return parentFolderName(textArgument(arguments));
        if (name == u"folderexists") return folderExists(textArgument(arguments));
        if (name == u"fileexists") return fileExists(textArgument(arguments));
        if (name == u"drives") return std::make_shared<DriveCollection>(machine);
        if (name != u"getfile") throw RuntimeFailure(memberNotSupported);
        const Text& path = textArgument(arguments);
        if (!fileExists(path)) throw RuntimeFailure(fileNotFound);
        return std::make_shared<FileObject>(machine, path);
    }

  private:
    bool fileExists(TextView path) {
        return machine.files().attributes(path) != noAttributes && !folderExists(path);
    }
};

class FolderObject : public ReadOnlyObject {
  public:
    FolderObject(Machine& owner, Text path) : ReadOnlyObject(owner), path_(std::move(path)) {}

  protected:
    Variant member(const Text& name, std::span<const Variant> arguments) override {
        if (name != u"newfolder") throw RuntimeFailure(memberNotSupported);
        const Text path = joined(path_, textArgument(arguments));
        if (path.size() >= longestPath) throw RuntimeFailure(nameTooLong);
        const FailureNumber failure = machine.files().makeFolder(path);
        if (failure != noFailure) throw RuntimeFailure(failure);
        return {};
    }

  private:
    Text path_;
};

class ShellApplication : public ReadOnlyObject {
  public:
    using ReadOnlyObject::ReadOnlyObject;

  protected:
    Variant member(const Text& name, std::span<const Variant> arguments) override {
        if (name != u"namespace") throw RuntimeFailure(memberNotSupported);
        const Text& path = textArgument(arguments);
        return folderExists(path) ? std::make_shared<FolderObject>(machine, path) : ObjectPointer();
    }
};

}  // namespace

ObjectPointer PortableAutomation::create(TextView name) {
    const Text wanted = lowerCase(name);
    if (const auto object = objects.find(wanted); object != objects.end()) return object->second;
    if (wanted == u"scripting.filesystemobject") return std::make_shared<FileSystemObject>(machine_);
    if (wanted == u"shell.application") return std::make_shared<ShellApplication>(machine_);
    return nullptr;
}

std::unique_ptr<Automation> makeAutomation(Machine& machine) {
    return std::make_unique<PortableAutomation>(machine);
}

}  // namespace ovno2::platform::portable
