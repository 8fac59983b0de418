#include <iconv.h>
#include <map>

#include "host/formats/code_page.h"

namespace ovno2::host {

namespace {

// What the converter calls a page.
std::string nameOf(std::uint32_t page) {
    constexpr std::uint32_t iso = 28590, lastIso = 28606, koi8r = 20866, koi8u = 21866, eucJp = 20932;
    if (page > iso && page <= lastIso) return "ISO-8859-" + std::to_string(page - iso);
    if (page == koi8r) return "KOI8-R";
    if (page == koi8u) return "KOI8-U";
    if (page == eucJp) return "EUC-JP";
    return "CP" + std::to_string(page);
}

const iconv_t noConverter = reinterpret_cast<iconv_t>(-1);

// The thread's converters to UTF-16, kept open: opening one takes longer than most texts.
class Converters {
  public:
    Converters() = default;
    Converters(const Converters&) = delete;
    Converters& operator=(const Converters&) = delete;
    ~Converters() {
        for (const auto& [page, converter] : byPage_)
            if (converter != noConverter) iconv_close(converter);
    }

    // As new; `noConverter` for a page that this machine does not have.
    iconv_t of(std::uint32_t page) {
        const auto [known, isNew] = byPage_.try_emplace(page, noConverter);
        if (isNew) known->second = iconv_open("UTF-16LE", nameOf(page).c_str());
        if (known->second != noConverter) iconv(known->second, nullptr, nullptr, nullptr, nullptr);
        return known->second;
    }

  private:
    std::map<std::uint32_t, iconv_t> byPage_;
};

}  // namespace

bool fromCodePage(std::string_view bytes, std::uint32_t page, Text& text) {
    static thread_local Converters converters;
    const iconv_t converter = converters.of(page);
    if (converter == noConverter) return false;
    // A byte becomes at most two characters; one held back in case a combining one follows comes last.
    constexpr std::size_t mostUnits = 4;
    std::string units((bytes.size() + 1) * mostUnits, '\0');
    std::string input(bytes);
    char *in = input.data(), *out = units.data();
    std::size_t inLeft = input.size(), outLeft = units.size();
    while (iconv(converter, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1) && inLeft > 0 &&
           outLeft >= 2) {
        ++in, --inLeft;
        *out++ = '\xFD', *out++ = '\xFF';
        outLeft -= 2;
    }
    iconv(converter, nullptr, nullptr, &out, &outLeft);
    units.resize(units.size() - outLeft);
    text = fromUtf16Bytes(units);
    return true;
}

}  // namespace ovno2::host
