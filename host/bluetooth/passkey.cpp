#include "host/bluetooth/passkey.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "base/secret.h"
#include "host/output/command_output.h"
#include "host/output/exit_status.h"
#include "host/output/secret_input.h"

namespace ovno2::host {

namespace {

constexpr std::size_t longest = 16;

// A line, and one byte that tells that it was longer.
struct Line {
    std::array<char, longest + 1> bytes{};
    ~Line() { wipe(bytes.data(), bytes.size()); }
};

bool isPrintable(char letter) {
    return letter > ' ' && letter < '\x7F';
}

}  // namespace

Passkey::Passkey(const std::string& prompt, bool fromInput) {
    if (!fromInput && !console::inputIsTerminal())
        throw CommandFailure{
            wrongUsage,
            "The passkey is asked for at a terminal. A program gives it in the first line of "
            "standard input, with --passkey-stdin."};
    Line line;
    const std::optional<std::size_t> size = console::readSecret(prompt, line.bytes);
    const std::span<const char> given(line.bytes.data(), size.value_or(0));
    if (given.empty())
        throw CommandFailure{
            failed,
            "There is no passkey. A phone is paired with one that is entered here and on the "
            "phone; one that is paired already is trusted with \"ovphone bluetooth trust\"."};
    if (given.size() > longest || !std::ranges::all_of(given, isPrintable))
        throw CommandFailure{failed, "A passkey has 1 to 16 letters, digits or signs, without blanks."};
    text_.reserve(2 * longest);  // more than a text holds in itself, and enough to stay where it is
    for (const char letter : given)
        text_.push_back(static_cast<char16_t>(letter));
}

Passkey::~Passkey() {
    wipe(text_.data(), text_.size());
}

}  // namespace ovno2::host
