#include "platform/portable/code_pages.h"

#include <array>
#include <cstring>
#include <iconv.h>
#include <map>

#include "base/utf8.h"
#include "base/values.h"

namespace ovno2::platform::portable {

namespace {

class Converter {
  public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Converter() {
        if (valid()) iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool valid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    // Converts `size` bytes as a whole; the number of bytes they became, 0 when they are not one valid text.
    std::size_t convert(const void* from, std::size_t size, void* to, std::size_t capacity) {
        std::array<char, 4> input{};
        std::memcpy(input.data(), from, size);
        char* in = input.data();
        char* out = static_cast<char*>(to);
        std::size_t left = capacity;
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        // Some converters hold a character back in case a combining one follows; the second call fetches it.
        if (iconv(handle_, &in, &size, &out, &left) == static_cast<std::size_t>(-1) || size > 0) return 0;
        if (iconv(handle_, nullptr, nullptr, &out, &left) == static_cast<std::size_t>(-1)) return 0;
        return capacity - left;
    }

  private:
    iconv_t handle_;
};

void defineSingleBytes(CodePageTable& table, Converter& decode) {
    for (unsigned code = 0x80; code <= 0xFF; ++code) {
        const auto byte = static_cast<std::uint8_t>(code);
        std::array<char16_t, 2> text{};
        if (decode.convert(&byte, 1, text.data(), sizeof text) == sizeof(char16_t))
            table.define(byte, text[0]);
    }
}

void definePairs(CodePageTable& table, Converter& decode, Converter& encode) {
    for (unsigned code = 0x8140; code <= 0xFEFE; ++code) {
        const std::array<std::uint8_t, 2> bytes = {static_cast<std::uint8_t>(code >> 8),
                                                   static_cast<std::uint8_t>(code)};
        std::array<char16_t, 2> text{};
        if (decode.convert(bytes.data(), bytes.size(), text.data(), sizeof text) != sizeof(char16_t))
            continue;
        table.defineLeadByte(bytes[0]);
        table.define(static_cast<std::uint16_t>(code), text[0]);
        // Where several codes stand for one character, the converter knows which of them is written.
        std::array<std::uint8_t, 4> preferred{};
        if (encode.convert(text.data(), sizeof text[0], preferred.data(), preferred.size()) == 2)
            table.encodeAs(text[0], static_cast<std::uint16_t>(preferred[0] << 8 | preferred[1]));
    }
}

bool isDoubleBytePage(std::uint32_t page) {
    return page == 932 || page == 936 || page == 949 || page == 950;
}

std::unique_ptr<CodePageTable> makeTable(std::uint32_t page) {
    const std::string name = "CP" + std::to_string(page);
    Converter decode("UTF-16LE", name.c_str());
    Converter encode(name.c_str(), "UTF-16LE");
    if (!decode.valid() || !encode.valid()) return nullptr;
    auto table = std::make_unique<CodePageTable>();
    defineSingleBytes(*table, decode);
    if (isDoubleBytePage(page)) definePairs(*table, decode, encode);
    table->addBestFits();
    return table;
}

}  // namespace

const CodePageTable* codePageTable(std::uint32_t page) {
    static std::mutex mutex;
    static std::map<std::uint32_t, std::unique_ptr<const CodePageTable>> tables;
    const std::lock_guard guard(mutex);
    const auto known = tables.find(page);
    if (known != tables.end()) return known->second.get();
    std::unique_ptr<const CodePageTable> made = makeTable(page);
    return made ? tables.emplace(page, std::move(made)).first->second.get() : nullptr;
}

const CodePageTable& usualCodePageTable() {
    static const CodePageTable latin1;
    const CodePageTable* table = codePageTable(usualCodePage);
    return table ? *table : latin1;
}

void PortableCodePages::choose() {
    std::unique_ptr<RegistryKey> key;
    RegistryValue value;
    if (machine_.registry().open(localMachine, u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage",
                                 /*view64=*/false, key) == registryOk &&
        key->read(u"ACP", value) == registryOk) {
        number_ = static_cast<std::uint32_t>(numericLong(value.text));
        table_ = number_ == utf8CodePage ? &usualCodePageTable() : codePageTable(number_);
    }
    if (table_) return;
    number_ = usualCodePage;
    table_ = &usualCodePageTable();
}

const CodePageTable& PortableCodePages::table() {
    std::call_once(chosen_, [this] { choose(); });
    return *table_;
}

bool PortableCodePages::isUtf8() {
    table();
    return utf8Users_ > 0 || number_ == utf8CodePage;
}

std::uint32_t PortableCodePages::ansi() {
    return isUtf8() ? utf8CodePage : number_;
}

Text PortableCodePages::fromAnsi(std::string_view bytes) {
    return isUtf8() ? fromUtf8(bytes) : table().fromAnsi(bytes);
}

std::string PortableCodePages::toAnsi(TextView text) {
    return isUtf8() ? toUtf8(text) : table().toAnsi(text);
}

const char16_t* PortableCodePages::singleByteTable() {
    return isUtf8() || table().isDoubleByte() ? nullptr : table().singleBytes();
}

std::unique_ptr<CodePages> makeCodePages(Machine& machine) {
    return std::make_unique<PortableCodePages>(machine);
}

}  // namespace ovno2::platform::portable
