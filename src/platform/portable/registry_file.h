// A .reg text file: what the registry editor exports and imports, read whole and edited in place.
//
// Reads "Windows Registry Editor Version 5.00" (UTF-16 with mark, or UTF-8) and "REGEDIT4" (ANSI). Later
// lines win over earlier ones, as on import. Edits change the lines concerned and leave everything else,
// comments and damaged lines included, as it stands. Holds no lock and touches no file; registry.cpp does
// both.
//
// Key paths are full paths ("HKEY_CURRENT_USER\Software\X"); keys and value names match without regard to
// case. What a file has below HKEY_CLASSES_ROOT stands below HKEY_LOCAL_MACHINE\Software\Classes here.
#pragma once

#include <unordered_map>
#include <vector>

#include "base/values.h"
#include "platform/code_page_table.h"
#include "platform/registry.h"

namespace ovno2::platform::portable {

class RegistryFile {
  public:
    // A line that could not be used; the rest of the file is.
    struct Damage {
        std::size_t line;  // from 1
        const char* reason;
    };

    RegistryFile() = default;
    // Whatever cannot be understood is listed in `damages`.
    explicit RegistryFile(std::string_view bytes);

    const std::vector<Damage>& damages() const { return damages_; }

    bool hasKey(TextView path) const;
    const RegistryValue* find(TextView path, TextView name) const;  // null when missing; valid until an edit

    void createKey(TextView path);
    // A text (type 1) is kept with one terminating NUL, whether it came with one or not, unless it holds
    // characters that only a list of bytes can carry.
    void set(TextView path, TextView name, const RegistryValue& value);
    bool remove(TextView path, TextView name);  // false when there is no such value

    // In the encoding it was read in. A new file and one that was ANSI are UTF-8.
    std::string bytes() const;

  private:
    enum class Encoding { utf8, markedUtf8, utf16 };
    struct Place {
        std::size_t begin = 0, end = 0;  // in text_, the line end included
    };
    struct Value {
        RegistryValue value;
        std::vector<Place> places;  // all lines that set it; the last one counts
    };
    // Names that differ in case only are one name. Look-ups build no text.
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(TextView name) const;
    };
    struct NameEqual {
        using is_transparent = void;
        bool operator()(TextView a, TextView b) const { return equalsIgnoringCase(a, b); }
    };
    template <class Entry>
    using Named = std::unordered_map<Text, Entry, NameHash, NameEqual>;
    struct Key {
        Named<Value> values;
        std::size_t insertAt = Text::npos;  // behind the last line of its latest section; npos = no section
    };
    class Reader;

    void readAnsi(std::string_view bytes);
    void reread();
    void upgradeToVersion5();
    const Key* findKey(TextView path) const;
    Key& addKey(TextView path);
    void deleteKey(TextView path);
    void insertLines(std::size_t at, Text lines);
    Text lineFor(TextView name, const RegistryValue& value) const;

    Text text_;
    Text lineEnd_ = u"\n";
    Encoding encoding_ = Encoding::utf8;
    bool version4_ = false;                               // texts given as bytes are ANSI
    const CodePageTable* ansiPage_ = nullptr;             // the page they are read with
    std::vector<std::pair<Place, Text>> version4Values_;  // their lines, and what they are in version 5
    Named<Key> keys_;                                     // by path
    std::vector<Damage> damages_;
};

}  // namespace ovno2::platform::portable
