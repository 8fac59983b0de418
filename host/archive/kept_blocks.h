// What an earlier run saved and the phone no longer has, of the files that consist of blocks: address cards
// and the components of calendars.
//
// A block is the same when its text is. What of the earlier blocks none of now equals goes to the file of
// what is no longer on the phone, as it stands.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace ovno2::host {

// The outermost blocks of any of these kinds ("VCARD"), each from its BEGIN to the line break behind its END.
// Views into `text`.
std::vector<std::string_view> blocksOf(std::string_view text, std::span<const std::string_view> kinds);

// The line with a property as it stands in a block; empty without one.
std::string_view lineOf(std::string_view block, std::string_view property);

// What the phone has now.
class PresentBlocks {
  public:
    void add(std::string_view block);
    bool holds(std::string_view block) const;
    bool holdsUidOf(std::string_view block) const;

  private:
    std::unordered_set<std::string> blocks_;  // by their digests
    std::unordered_set<std::string> uids_;    // the lines
};

struct KeptBlocks {
    std::vector<std::string_view>
        gone;                   // the phone no longer has them: first those that were known to be gone
    std::size_t newlyGone = 0;  // of them, the last
    std::vector<std::string_view> stays;  // nobody knows: the phone did not hand out everything
};

// `before` are the blocks of the last run, `goneBefore` those that were gone then. Of a phone that did not
// hand out everything (`isWhole` is false) only what it has otherwise now is gone.
KeptBlocks keptBlocks(std::span<const std::string_view> before, std::span<const std::string_view> goneBefore,
                      const PresentBlocks& now, bool isWhole);

}  // namespace ovno2::host
