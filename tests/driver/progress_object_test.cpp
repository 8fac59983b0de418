#include "driver/progress_object.h"

#include <gtest/gtest.h>
#include <vector>

namespace ovno2 {
namespace {

using platform::Variant;

TEST(ProgressObject, ItsValueIsAdvancedByPuttingASumBack) {
    std::vector<Long> heard;
    ProgressObject progress([&](Long value) { heard.push_back(value); });
    platform::AutomationObject& object = progress;
    EXPECT_EQ(Variant(Long{0}), object.get(u"value"));
    object.put(u"Value", Long{51});
    object.put(u"value", 52.5);
    EXPECT_EQ(Variant(Long{52}), object.get(u"VALUE"));
    EXPECT_EQ((std::vector<Long>{51, 52}), heard);
    const auto failureOf = [](auto&& step) {
        try {
            step();
        } catch (const RuntimeFailure& failure) {
            return failure.number();
        }
        return noFailure;
    };
    EXPECT_EQ(typeMismatch, failureOf([&] { object.put(u"value", Text(u"1")); }));
    EXPECT_EQ(overflowFailure, failureOf([&] { object.put(u"value", 1e10); }));
    EXPECT_EQ(memberNotSupported, failureOf([&] { object.get(u"max"); }));
    EXPECT_EQ(memberNotSupported, failureOf([&] { object.call(u"value"); }));
    EXPECT_EQ(52, progress.value());
}

}  // namespace
}  // namespace ovno2
