// Every member of the interface, by its slot and late-bound, before a class that writes down what reaches it.
//
// The class stands in the driver's place in this program. What it hears and what it changes must be what the
// host passes and sees, argument by argument; which arguments there are is the type library's word.
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <optional>

#include "base/utf8.h"
#include "base/values.h"
#include "com/class_factory.h"
#include "com/member_table.h"
#include "com/records.h"
#include "com/script_arrays.h"
#include "common/failing_allocator.h"
#include "driver/cov_no2.h"
#include "host/driver/com_client.h"
#include "platform/win32/dispatch_object.h"
#include "platform_native/call.h"

namespace ovno2 {
namespace {

using com::Parameter;
using com::ParameterKind;
using platform::win32::OleVariant;

constexpr TextView membersInOrder =
    u"Init CleanUp SetPriorities_ SetStatuses_ Meeting_ Bithday_ Call_ Reminder_ Task_ Minute_ Hour_ Day_ "
    u"Note_ GetAllFields_ AddTimeOffset_ PhoneModel_ CheckIfNokiaSDKIsThere LaunchPCSuite2IfRequired "
    u"GetConnections Connect GetConnectedDevices NokiaGetAddressBookItems DeleteAddressBookItem "
    u"WriteAddressBookItem EndWriteSession GetAllUids GetApiVersion RenameCalender CreateCalender "
    u"DeleteCalender GetCalendarFolders NokiaGetCalendarItems DeleteCalendarItem WriteCalendarItem "
    u"NokiaGetDataItems WriteDataItem DeleteDataItem MediaSearchBT ChangeDeviceTrustedState DMApiTerminate_ "
    u"GetDirContents EndFS GetFile PutFile RenameFile DeleteFile RenameFolder CreateFolder DeleteFolder "
    u"GetPCSuiteVersion ";
constexpr DISPID lastMember = 50;

// What an optional argument is when it is left out.
const std::pair<const char*, std::vector<Text>> defaults[] = {
    {"CheckIfNokiaSDKIsThere", {u"True"}},
    {"Connect", {u"", u"", u"False"}},
    {"GetConnectedDevices", {u"-1"}},
    {"NokiaGetAddressBookItems", {u"", u"none", u"0"}},
    {"WriteAddressBookItem", {u"False", u"False", u"0", u"0"}},
    {"EndWriteSession", {u"False"}},
    {"NokiaGetDataItems", {u"none", u"0"}},
    {"MediaSearchBT", {u"200"}},
    {"ChangeDeviceTrustedState", {u"3", u""}},
    {"GetDirContents", {u"/"}},
};

// --- What the class hears --------------------------------------------------------------------------------

// The test's own allocations do not fail.
class Unharmed {
  public:
    Unharmed() : left_(std::exchange(allocationsLeft, -1)) {}
    ~Unharmed() { allocationsLeft = left_; }
    Unharmed(const Unharmed&) = delete;
    Unharmed& operator=(const Unharmed&) = delete;

  private:
    long left_;
};

struct Heard {
    std::string member;
    std::vector<Text> before, after;  // the arguments as the member got them and as it left them
};
Heard heard;
std::function<void()> whileRunning;  // what the host does in the middle of a call

Text shown(Long value) {
    return decimalText(value);
}
Text shown(bool value) {
    return value ? u"True" : u"False";
}
Text shown(const Text& value) {
    return value;
}
Text shown(const ObjectPointer& value) {
    return value ? u"object" : u"none";
}
Text shown(const TextTable& value) {
    return value.rows() == 0 ? u"" : value.at(0, 0) + u';' + value.at(1, 0) + u';';
}
Text shown(const AdrItem& record) {
    return record.Uid;
}
Text shown(const CalItem& record) {
    return record.ItemUid;
}
Text shown(const DirItem& record) {
    return record.Name;
}
template <class Element>
Text shown(const HostArray<Element>& array) {
    Text all;
    for (const Element& element : array.elements())
        all += shown(element) + u';';
    return all;
}

template <class Value>
void change(const Value&) {}  // what a member only reads
void change(Text& value) {
    value += u" changed";
}
void change(CalItem& value) {
    value.ItemUid += u" changed";
}
template <class Element>
void change(HostArray<Element>& array) {
    array.extendTo(array.upperBound() + 1);
}

template <class Result, class... Arguments>
Result hear(const char* member, Arguments&... arguments) {
    const Unharmed unharmed;
    heard = {member, {shown(arguments)...}, {}};
    (change(arguments), ...);
    heard.after = {shown(arguments)...};
    if (whileRunning) whileRunning();
    if constexpr (std::is_same_v<Result, Variant>)
        return Long{1};
    else if constexpr (!std::is_void_v<Result>)
        return Result(1);
}

// --- What the host passes and sees -----------------------------------------------------------------------

// One argument: a variable with something in it. Arrays of records begin without elements.
class HostArgument {
  public:
    HostArgument(const Parameter& parameter, Long position) : byReference_(parameter.byReference) {
        constexpr VARTYPE types[] = {VT_I4,
                                     VT_BOOL,
                                     VT_BSTR,
                                     VT_DISPATCH,
                                     VT_ARRAY | VT_I4,
                                     VT_ARRAY | VT_BSTR,
                                     VT_RECORD,
                                     VT_ARRAY | VT_RECORD};
        const Text text = u"wört " + shown(position);
        V_I4(&value()) = parameter.kind == ParameterKind::boolean ? VARIANT_TRUE : 100 + position;
        V_VT(&value()) = types[static_cast<std::size_t>(parameter.kind)];
        if (parameter.kind == ParameterKind::text) {
            V_BSTR(&value()) = com::newBstr(text);
        } else if (parameter.kind == ParameterKind::object) {
            V_DISPATCH(&value()) = new host::ProgressControl([](Long) {});
        } else if (parameter.kind == ParameterKind::record) {
            V_RECORDINFO(&value()) = com::recordInformation(com::guidOfCalItem);
            V_RECORD(&value()) = V_RECORDINFO(&value())->RecordCreate();
            record().ItemUid = com::newBstr(text);
        } else if (parameter.name.starts_with(u"Mobile")) {
            V_ARRAY(&value()) = host::newTable(TextTable({u"", text}, /*rows=*/2, /*columns=*/1));
        } else if (parameter.kind == ParameterKind::texts || parameter.kind == ParameterKind::numbers) {
            const auto element = static_cast<VARTYPE>(V_VT(&value()) & VT_TYPEMASK);
            V_ARRAY(&value()) = SafeArrayCreateVector(element, /*lLbound=*/-3, /*cElements=*/1);
            if (element == VT_I4)
                *static_cast<LONG*>(V_ARRAY(&value())->pvData) = 100 + position;
            else
                *static_cast<BSTR*>(V_ARRAY(&value())->pvData) = com::newBstr(text);
        } else if (parameter.kind == ParameterKind::records) {
            V_ARRAY(&value()) = nullptr;
        }
    }

    // The word on the stack of an early-bound call.
    std::uint32_t word() {
        if (V_VT(&value()) == VT_RECORD) return reinterpret_cast<std::uint32_t>(&record());
        return byReference_ ? reinterpret_cast<std::uint32_t>(&V_I4(&value()))
                            : static_cast<std::uint32_t>(V_I4(&value()));
    }
    // Makes it a script's variable, of the typed values that an earlier call left there.
    void becomeTypedVariable() { isScripts_ = true; }
    // Gives the variable what a script has in it: numbers as texts, arrays of VARIANT, nothing for records.
    void becomeScriptVariable() {
        isScripts_ = true;
        const VARTYPE type = V_VT(&value());
        if (type == VT_I4) {
            EXPECT_EQ(S_OK, VariantChangeType(&value(), &value(), 0, VT_BSTR));
        } else if (type == (VT_ARRAY | VT_RECORD)) {
            V_VT(&value()) = VT_EMPTY;
        } else if ((type & VT_ARRAY) != 0) {
            const com::OwnedSafeArray typed(V_ARRAY(&value()));
            V_ARRAY(&value()) = com::variantsFromTyped(typed.get());
            V_VT(&value()) = VT_ARRAY | VT_VARIANT;
        }
    }
    // Puts something there that the call cannot have known. False when nothing else may stand there.
    bool assignAnother() {
        const VARTYPE type = V_VT(&value());
        if (!isScripts_ && ((type & VT_ARRAY) == 0 || !byReference_)) return false;
        VariantClear(&value());
        if (isScripts_) {
            V_VT(&value()) = VT_I4;
            V_I4(&value()) = 7;
        } else {
            V_VT(&value()) = VT_ARRAY | VT_R8;
            V_ARRAY(&value()) = SafeArrayCreateVector(VT_R8, /*lLbound=*/0, /*cElements=*/2);
            std::memset(V_ARRAY(&value())->pvData, 7, 2 * sizeof(double));
        }
        return true;
    }
    // Without an owner.
    VARIANT variant() {
        VARIANT variant = value();
        if (isScripts_) {
            V_VT(&variant) = VT_BYREF | VT_VARIANT;
            V_VARIANTREF(&variant) = &value();
            return variant;
        }
        if (!byReference_ || V_VT(&variant) == VT_RECORD) return variant;
        V_VT(&variant) |= VT_BYREF;
        V_BYREF(&variant) = &V_I4(&value());
        return variant;
    }
    Text now() {
        const VARTYPE type = V_VT(&value());
        if (type == VT_DISPATCH) return u"object";
        if (type == VT_RECORD) return host::textOf(record().ItemUid);
        if ((type & VT_ARRAY) != 0) return elements();
        return textOf(value());
    }

  private:
    VARIANT& value() { return *value_.get(); }
    tCalItem& record() { return *static_cast<tCalItem*>(V_RECORD(&value())); }
    static Text textOf(VARIANT& value) {
        OleVariant text;
        EXPECT_EQ(S_OK, VariantChangeType(text.get(), &value, VARIANT_ALPHABOOL, VT_BSTR));
        return host::textOf(V_BSTR(text.get()));
    }
    Text elements() {
        SAFEARRAY* const array = V_ARRAY(&value());
        Text all;
        for (std::size_t i = 0; array && i < com::elementCount(array); ++i) {
            if (com::elementType(array) == VT_BSTR)
                all += host::textOf(static_cast<BSTR*>(array->pvData)[i]);
            else if (com::elementType(array) == VT_I4)
                all += shown(Long{static_cast<LONG*>(array->pvData)[i]});
            else if (com::elementType(array) == VT_VARIANT)
                all += textOf(static_cast<VARIANT*>(array->pvData)[i]);
            all += u';';
        }
        return all;
    }

    OleVariant value_;
    bool byReference_;
    bool isScripts_ = false;
};

// One call of a member with an argument for each of its parameters.
class Call {
  public:
    enum class Way { slot, name, script, typedScript };

    Call(const com::Member& member, Way way, bool withOptional = true) : member_(member), way_(way) {
        words_.push_back(0);
        for (const Parameter& parameter : member.parameters) {
            if (!withOptional && parameter.optional) continue;
            HostArgument& argument = arguments_.emplace_back(parameter, static_cast<Long>(arguments_.size()));
            if (way == Way::script) argument.becomeScriptVariable();
            if (way == Way::typedScript) argument.becomeTypedVariable();
            words_.push_back(argument.word());
            variants_.insert(variants_.begin(), argument.variant());
        }
        if (member.result != VT_EMPTY)
            words_.push_back(reinterpret_cast<std::uint32_t>(
                member.result == VT_VARIANT ? static_cast<void*>(result.get()) : &V_I4(result.get())));
    }
    HRESULT run(_covNo2& object) {
        if (way_ == Way::slot) {
            if (member_.result != VT_VARIANT) V_VT(result.get()) = member_.result;
            return callSlot(object, member_, words_);
        }
        DISPID newValue = DISPID_PROPERTYPUT;
        const bool put = member_.invokeKind == DISPATCH_PROPERTYPUT;
        DISPPARAMS parameters = {variants_.data(), put ? &newValue : nullptr,
                                 static_cast<UINT>(variants_.size()), put ? 1u : 0u};
        return object.Invoke(member_.id, IID_NULL, LOCALE_INVARIANT, member_.invokeKind, &parameters,
                             result.get(), nullptr, nullptr);
    }
    // The first word is the object's.
    static HRESULT callSlot(_covNo2& object, const com::Member& member, std::vector<std::uint32_t>& words) {
        words[0] = reinterpret_cast<std::uint32_t>(&object);
        void* const* const slots = *reinterpret_cast<void* const* const*>(&object);
        int mismatch = 0;
        const auto result = static_cast<HRESULT>(
            platform::callWithWords(slots[member.slot], words.data(), words.size(), mismatch));
        return mismatch == 0 ? result : E_UNEXPECTED;
    }
    std::vector<Text> now() {
        std::vector<Text> all;
        for (HostArgument& argument : arguments_)
            all.push_back(argument.now());
        return all;
    }
    // What the variables hold when the host gives each another value while the member runs: the script's get
    // what the member has changed. A record, and an array's place that holds other elements, stay.
    std::vector<Text> assignOthers() {
        std::vector<Text> expected = heard.after;
        for (std::size_t i = 0; i < arguments_.size(); ++i) {
            if (!arguments_[i].assignAnother()) continue;
            const bool changed = heard.before[i] != heard.after[i];
            const bool record = member_.parameters[i].kind == ParameterKind::record;
            if (way_ < Way::script || record || !changed) expected[i] = arguments_[i].now();
        }
        return expected;
    }

    OleVariant result;

  private:
    const com::Member& member_;
    Way way_;
    std::deque<HostArgument> arguments_;
    std::vector<std::uint32_t> words_;
    std::vector<VARIANT> variants_;
};

constexpr Call::Way everyWay[] = {Call::Way::slot, Call::Way::name, Call::Way::script,
                                  Call::Way::typedScript};

class Members : public ::testing::Test {
  protected:
    Members() { com::classFactory().CreateInstance(nullptr, __uuidof(_covNo2), object.outAny()); }

    template <class Visit>
    static void forEachMember(Visit&& visit) {
        for (DISPID id = 1; id <= lastMember; ++id) {
            const com::Member* const member = com::memberTable().find(id);
            ASSERT_TRUE(member) << id;
            SCOPED_TRACE(toUtf8(member->name));
            visit(*member);
        }
    }

    host::ComPointer<_covNo2> object;
};

TEST_F(Members, TakeEveryArgumentInAndOutInEveryWay) {
    Text order;
    forEachMember([&](const com::Member& member) {
        order += member.name + u' ';
        EXPECT_EQ(static_cast<std::size_t>(6 + member.id), member.slot);
        EXPECT_EQ(member.id >= 5 && member.id <= 16, member.invokeKind == DISPATCH_PROPERTYPUT);
        VARTYPE type = member.result;
        if (type == VT_VARIANT) type = member.name == u"SetStatuses_" ? VT_EMPTY : VT_I4;
        for (const Call::Way way : everyWay) {
            SCOPED_TRACE(static_cast<int>(way));
            Call call(member, way);
            const std::vector<Text> passed = call.now();
            heard = {};
            EXPECT_EQ(S_OK, call.run(*object.get()));
            EXPECT_EQ(toUtf8(member.name), heard.member);
            EXPECT_EQ(passed, heard.before);
            EXPECT_EQ(heard.after, call.now());
            EXPECT_EQ(type, V_VT(call.result.get()));
            EXPECT_TRUE(type == VT_EMPTY || (SUCCEEDED(VariantChangeType(call.result.get(), call.result.get(),
                                                                         VARIANT_LOCALBOOL, VT_I4)) &&
                                             std::abs(V_I4(call.result.get())) == 1));
        }
    });
    EXPECT_EQ(membersInOrder, order);
    EXPECT_FALSE(com::memberTable().find(lastMember + 1));
}

TEST_F(Members, LookAtTheHostsVariablesAnewAfterItHasRun) {
    forEachMember([&](const com::Member& member) {
        for (const Call::Way way : everyWay) {
            SCOPED_TRACE(static_cast<int>(way));
            Call call(member, way);
            std::vector<Text> expected;
            whileRunning = [&] { expected = call.assignOthers(); };
            EXPECT_EQ(S_OK, call.run(*object.get()));
            whileRunning = nullptr;
            EXPECT_EQ(expected, call.now());
        }
    });
}

TEST_F(Members, TakeTheirDefaultsForWhatIsLeftOut) {
    std::size_t withDefaults = 0;
    forEachMember([&](const com::Member& member) {
        Call call(member, Call::Way::name, /*withOptional=*/false);
        const auto required = std::ssize(call.now());
        if (required == std::ssize(member.parameters)) return;
        EXPECT_EQ(S_OK, call.run(*object.get()));
        ASSERT_LT(withDefaults, std::size(defaults));
        const auto& [name, expected] = defaults[withDefaults++];
        EXPECT_EQ(name, heard.member);
        heard.before.erase(heard.before.begin(), heard.before.begin() + required);
        EXPECT_EQ(expected, heard.before);
    });
    EXPECT_EQ(std::size(defaults), withDefaults);
}

TEST_F(Members, AnswerAHostThatPassesNothing) {
    forEachMember([&](const com::Member& member) {
        const std::size_t result = member.result == VT_EMPTY ? 0 : 1;
        std::vector<std::uint32_t> words(1 + member.parameters.size() + result, 0);
        heard = {};
        EXPECT_EQ(S_OK, Call::callSlot(*object.get(), member, words));
        // Without its record a calendar entry cannot be written.
        EXPECT_EQ(member.name != u"WriteCalendarItem", !heard.member.empty());
    });
}

TEST_F(Members, LeaveTheHostsVariablesWholeWithoutMemory) {
    forEachMember([&](const com::Member& member) {
        for (const Call::Way way : everyWay) {
            std::optional<Call> call;
            std::vector<Text> passed;
            HRESULT result = S_OK;
            const auto run = [&] {
                {
                    const Unharmed unharmed;
                    call.emplace(member, way);
                    passed = call->now();
                    heard = {};
                }
                result = call->run(*object.get());
            };
            failEveryAllocation(run, [&](long n) {
                EXPECT_EQ(S_OK, result) << "allocation " << n;
                const std::vector<Text> seen = call->now();
                EXPECT_TRUE(seen == passed || seen == heard.after) << "allocation " << n;
            });
            EXPECT_EQ(heard.after, call->now());
        }
    });
}

TEST(Factory, GivesAWholeObjectOrOutOfMemory) {
    host::ComPointer<_covNo2> object;
    HRESULT result = S_OK;
    long refused = 0;
    failEveryAllocation(
        [&] { result = com::classFactory().CreateInstance(nullptr, __uuidof(_covNo2), object.outAny()); },
        [&](long n) {
            EXPECT_EQ(result == S_OK, static_cast<bool>(object)) << "allocation " << n;
            EXPECT_TRUE(result == S_OK || result == E_OUTOFMEMORY);
            if (result != S_OK) ++refused;
            object.reset();
            resetThreadState();
        });
    EXPECT_LT(0, refused);
}

}  // namespace

// --- The class -------------------------------------------------------------------------------------------

// clang-format off
using In = const Text&; using InOut = Text&; using Texts = TextArray&; using Numbers = LongArray&;
using Table = const TextTable&; using Object = const ObjectPointer&;

#define MEMBER(Result, name, parameters, ...) \
    Result covNo2::name parameters noexcept { return hear<Result>(#name __VA_OPT__(,) __VA_ARGS__); }
#define PLAIN(name) MEMBER(Long, name, ())
#define PUT(name) MEMBER(void, name, (In a), a)
#define ONE_TEXT(name) MEMBER(Long, name, (InOut a), a)
#define TWO_TEXTS(name) MEMBER(Long, name, (InOut a, InOut b), a, b)

PLAIN(Init) PLAIN(CleanUp)
MEMBER(void, SetPriorities_, (const TextArray& a), a)
MEMBER(Variant, SetStatuses_, (const TextArray& a), a)
PUT(Meeting_) PUT(Bithday_) PUT(Call_) PUT(Reminder_) PUT(Task_) PUT(Minute_) PUT(Hour_) PUT(Day_)
PUT(Note_)
MEMBER(void, GetAllFields_, (Long a), a)
MEMBER(void, AddTimeOffset_, (Long a), a)
PUT(PhoneModel_)
MEMBER(bool, CheckIfNokiaSDKIsThere, (bool a), a)
MEMBER(Long, LaunchPCSuite2IfRequired, (Long a), a)
PLAIN(GetConnections)
MEMBER(Long, Connect, (Long a, Long b, In c, In d, bool e), a, b, c, d, e)
MEMBER(Long, GetConnectedDevices, (Texts a, Numbers b, Texts c, Texts d, Texts e, Numbers f, Long g), a, b, c, d, e, f, g)
MEMBER(Long, NokiaGetAddressBookItems, (InOut a, InOut b, InOut c, HostArray<AdrItem>& d, Table e, Texts f, In g, Object h, Long i), a, b, c, d, e, f, g, h, i)
MEMBER(Long, DeleteAddressBookItem, (InOut a, InOut b, In c), a, b, c)
MEMBER(Long, WriteAddressBookItem, (InOut a, InOut b, InOut c, InOut d, Table e, bool f, bool g, Long h, Long i), a, b, c, d, e, f, g, h, i)
MEMBER(Long, EndWriteSession, (Long a, Texts b, Texts c, bool d), a, b, c, d)
MEMBER(Long, GetAllUids, (Long a, Texts b), a, b)
MEMBER(Single, GetApiVersion, ())
MEMBER(Variant, RenameCalender, (InOut a, In b, In c, In d), a, b, c, d)
MEMBER(Variant, CreateCalender, (InOut a, In b, In c), a, b, c)
MEMBER(Variant, DeleteCalender, (InOut a, In b, In c), a, b, c)
MEMBER(Long, GetCalendarFolders, (InOut a, InOut b, Texts c, Texts d), a, b, c, d)
MEMBER(Long, NokiaGetCalendarItems, (InOut a, InOut b, HostArray<CalItem>& c, Table d, Object e), a, b, c, d, e)
MEMBER(Long, DeleteCalendarItem, (InOut a, InOut b, In c), a, b, c)
MEMBER(Long, WriteCalendarItem, (InOut a, InOut b, CalItem& c, Object d, Long e, Table f), a, b, c, d, e, f)
MEMBER(Long, NokiaGetDataItems, (InOut a, InOut b, Long c, Texts d, Object e, Long f), a, b, c, d, e, f)
MEMBER(Long, WriteDataItem, (InOut a, InOut b, InOut c), a, b, c)
MEMBER(Long, DeleteDataItem, (InOut a, InOut b, In c), a, b, c)
MEMBER(Long, MediaSearchBT, (Texts a, Texts b, Texts c, Numbers d, Long e), a, b, c, d, e)
MEMBER(Long, ChangeDeviceTrustedState, (InOut a, Long b, In c), a, b, c)
MEMBER(void, DMApiTerminate_, ())
MEMBER(Long, GetDirContents, (InOut a, HostArray<DirItem>& b, In c), a, b, c)
PLAIN(EndFS) TWO_TEXTS(GetFile) TWO_TEXTS(PutFile) TWO_TEXTS(RenameFile) ONE_TEXT(DeleteFile)
TWO_TEXTS(RenameFolder) ONE_TEXT(CreateFolder) ONE_TEXT(DeleteFolder)
MEMBER(Single, GetPCSuiteVersion, ())
    // clang-format on

    covNo2::covNo2() noexcept = default;
covNo2::~covNo2() = default;

}  // namespace ovno2
