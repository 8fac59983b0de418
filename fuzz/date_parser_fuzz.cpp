// Any text as a date, in one of several locales (the first byte chooses): what is read is a date, reads back
// from every form in which it is rendered, and all conversions take it as it is.
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "core/current_platform.h"
#include "dates/date_parser.h"
#include "dates/date_text.h"
#include "dates/iso_date.h"
#include "platform/portable/machine.h"

using namespace ovno2;
using platform::portable::Machine;

namespace {

constexpr const char* locales[][3] = {
    // short date, time, separator
    {"dd.MM.yyyy", "HH:mm:ss", ":"},   {"M/d/yyyy", "h:mm:ss tt", ":"},  {"d. M. yyyy", "H:mm:ss", ":"},
    {"yyyy. MM. dd.", "H:mm:ss", ":"}, {"yyyy/M/d", "tt h:mm:ss", ":"},  {"dd/MM/yyyy", "H.mm.ss", "."},
    {"yyyyMMdd", "HH:mm", ":"},        {"ddd d MMMM yyyy", "H:mm", ":"}, {"d.M.yyyy 'x'", "HH'h'mm", "h"},
};

// One machine for each locale, on folders that the process leaves behind only when it dies.
class Machines {
  public:
    Machines() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ovno2-fuzz-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        for (std::size_t i = 0; i < machines_.size(); ++i) {
            const std::filesystem::path home = folder_ / std::to_string(i);
            std::filesystem::create_directory(home);
            const auto& [shortDate, time, separator] = locales[i];
            std::ofstream(home / "registry.reg")
                << "REGEDIT4\n[HKEY_CURRENT_USER\\Control Panel\\International]\n\"sShortDate\"=\""
                << shortDate << "\"\n\"sTimeFormat\"=\"" << time << "\"\n\"sTime\"=\"" << separator
                << "\"\n\"s1159\"=\"AM\"\n\"s2359\"=\"PM\"\n"
                << "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\TimeZoneInformation]\n"
                << "\"ActiveTimeBias\"=dword:ffffffc4\n";
            machines_[i] = std::make_unique<Machine>(home);
        }
    }
    ~Machines() { std::filesystem::remove_all(folder_); }
    Machines(const Machines&) = delete;
    Machines& operator=(const Machines&) = delete;

    void use(std::size_t choice) {
        choice %= machines_.size();
        if (choice == inUse_) return;
        inUse_ = choice;
        resetThreadState();
        usePlatform(*machines_[choice]);
        ISODate::DateTimeInit();
    }

  private:
    std::filesystem::path folder_;
    std::array<std::unique_ptr<Machine>, std::size(locales)> machines_;
    std::size_t inUse_ = machines_.size();
};

void check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Machines machines;
    if (size == 0) return 0;
    machines.use(data[0]);
    Text text((size - 1) / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), data + 1, text.size() * sizeof(char16_t));

    if (const std::optional<DateFields> read = readDateFields(text)) {
        check(isValid(*read));
        const DateValue date = dateOf(*read);
        const std::optional<DateFields> again = readDateFields(localDateText(date));
        check(again && dateOf(*again) == date);
        check(ISODate::ConvertToISO8601Date(text, /*dateOnly=*/false) ==
              ISODate::FormatISODate(date, /*dateOnly=*/false));
        check(!ISODate::DateAddText(u"d", 0, text).empty());
    }
    ISODate::ConvertToISO8601Date(text, /*dateOnly=*/true);
    ISODate::ISODashedToLocal(text);
    ISODate::DateDiffText(u"d", text, u"2008-01-05");
    ISODate::GetISO8601Date(text, /*initialiseFormats=*/true, /*convertUtc=*/true);
    return 0;
}
