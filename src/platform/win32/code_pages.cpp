// The ANSI code page on Windows: single-byte pages in tables, made once from the system's own conversions.
#include <windows.h>

#include "platform/code_page_table.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows_platform.h"

namespace ovno2::platform::win32 {

namespace {

constexpr char16_t firstSurrogate = 0xD800;
constexpr char16_t lastSurrogate = 0xDFFF;

class WindowsCodePages : public CodePages {
  public:
    WindowsCodePages() {
        CPINFO info;
        if (!GetCPInfo(CP_ACP, &info) || info.MaxCharSize != 1) return;
        auto table = std::make_unique<CodePageTable>();
        for (unsigned code = 0x80; code <= 0xFF; ++code) {
            const char byte = static_cast<char>(code);
            wchar_t character = 0;
            if (MultiByteToWideChar(CP_ACP, 0, &byte, 1, &character, 1) == 1)
                table->define(static_cast<std::uint16_t>(code), static_cast<char16_t>(character));
        }
        for (unsigned c = 0x80; c <= 0xFFFF; ++c) {
            if (c >= firstSurrogate && c <= lastSurrogate) continue;
            const auto character = static_cast<wchar_t>(c);
            char byte = 0;
            if (WideCharToMultiByte(CP_ACP, 0, &character, 1, &byte, 1, nullptr, nullptr) == 1)
                table->encodeAs(static_cast<char16_t>(c), static_cast<unsigned char>(byte));
        }
        table_ = std::move(table);
    }

    std::uint32_t ansi() override { return GetACP(); }

    Text fromAnsi(std::string_view bytes) override {
        if (table_) return table_->fromAnsi(bytes);
        Text text(bytes.size(), u'\0');
        text.resize(bytes.empty() ? 0
                                  : static_cast<std::size_t>(MultiByteToWideChar(
                                        CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()), wide(text),
                                        static_cast<int>(text.size()))));
        return text;
    }

    std::string toAnsi(TextView text) override {
        if (table_) return table_->toAnsi(text);
        if (text.empty()) return {};
        constexpr std::size_t mostBytesPerUnit = 4;
        const auto* from = reinterpret_cast<const wchar_t*>(text.data());
        std::string bytes(text.size() * mostBytesPerUnit, '\0');
        bytes.resize(static_cast<std::size_t>(
            WideCharToMultiByte(CP_ACP, 0, from, static_cast<int>(text.size()), bytes.data(),
                                static_cast<int>(bytes.size()), nullptr, nullptr)));
        return bytes;
    }

    const char16_t* singleByteTable() override { return table_ ? table_->singleBytes() : nullptr; }

  private:
    std::unique_ptr<CodePageTable> table_;  // null on pages with characters of several bytes
};

}  // namespace

std::unique_ptr<CodePages> makeCodePages() {
    return std::make_unique<WindowsCodePages>();
}

}  // namespace ovno2::platform::win32
