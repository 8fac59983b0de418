// Code pages natively: tables made from the C library's converter.
#pragma once

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

// The machine's ANSI page is the one its registry names (ACP below the Nls\CodePage key) at the first use,
// and stays that from then on.
class PortableCodePages : public CodePages {
  public:
    explicit PortableCodePages(Machine& machine) : machine_(machine) {}

    std::uint32_t ansi() override;
    Text fromAnsi(std::string_view bytes) override { return table().fromAnsi(bytes); }
    std::string toAnsi(TextView text) override { return table().toAnsi(text); }
    const char16_t* singleByteTable() override;

  private:
    void choose();
    const CodePageTable& table();

    Machine& machine_;
    std::once_flag chosen_;
    std::uint32_t number_ = usualCodePage;
    const CodePageTable* table_ = nullptr;
};

}  // namespace ovno2::platform::portable
