// Code pages natively: tables made from the C library's converter.
#pragma once

#include <atomic>
#include <mutex>

#include "platform/code_page_table.h"
#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

// The page of a machine whose registry names none that is known.
inline constexpr std::uint32_t usualCodePage = 1252;

// The tables of a page such as 1252 or 932; null when the C library does not know it. Made at the first
// request and kept by the process.
const CodePageTable* codePageTable(std::uint32_t page);
// The usual page; Latin-1 where the C library does not even know that one.
const CodePageTable& usualCodePageTable();

inline constexpr std::uint32_t utf8CodePage = 65001;

// The machine's ANSI page is the one its registry names (ACP below the Nls\CodePage key) at the first use,
// and stays that from then on; it may be UTF-8, which counts as a double-byte page.
class PortableCodePages : public CodePages {
  public:
    explicit PortableCodePages(Machine& machine) : machine_(machine) {}

    std::uint32_t ansi() override;
    Text fromAnsi(std::string_view bytes) override;
    std::string toAnsi(TextView text) override;
    const char16_t* singleByteTable() override;

    // While one lives, the page is UTF-8, for a program that wants every character of a text.
    class Utf8 {
      public:
        explicit Utf8(PortableCodePages& pages) : pages_(pages) { ++pages_.utf8Users_; }
        ~Utf8() { --pages_.utf8Users_; }
        Utf8(const Utf8&) = delete;
        Utf8& operator=(const Utf8&) = delete;

      private:
        PortableCodePages& pages_;
    };

  private:
    void choose();
    const CodePageTable& table();
    bool isUtf8();

    Machine& machine_;
    std::once_flag chosen_;
    std::uint32_t number_ = usualCodePage;
    const CodePageTable* table_ = nullptr;  // also there for UTF-8, unused
    std::atomic<int> utf8Users_ = 0;
};

}  // namespace ovno2::platform::portable
