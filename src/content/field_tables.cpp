#include "content/field_tables.h"

#include "content/host_fields.h"
#include "content/state.h"
#include "library/library.h"

namespace ovno2::Content {

namespace {

struct Row {
    std::uint16_t fieldId;
    Long code;
    Long alternativeCode;
};

using namespace HostField;

constexpr Row rowsOfAllVersions[] = {
    {1, formalName, none}, {2, firstName, none}, {4, lastName, none},         {5, title, none},
    {7, company, none},    {8, jobTitle, none},  {9, birthday, none},         {10, picture, none},
    {11, nickname, none},  {32, phone, none},    {33, homePhone, homePhone2}, {34, workPhone, workPhone2},
    {35, phone, none},     {36, phone2, none},
};

constexpr std::array<std::uint16_t, 4> shortIdBounds = {32, 65, 97, 257};
constexpr Row rowsOfShortIds[] = {
    {38, mobile, none}, {39, phone2, none}, {40, fax, none},  {41, pager, none},
    {68, email, none},  {69, web, none},    {97, note, none},
};

constexpr std::array<std::uint16_t, 4> longIdBounds = {32, 256, 512, 768};
constexpr Row rowsOfLongIds[] = {
    {36, none, none},        {32, phone, phone2}, {64, mobile, mobile2}, {65, mobile, mobile2},
    {66, mobile2, none},     {80, fax, fax2},     {81, fax, none},       {96, pager, none},
    {259, email, email2},    {260, email, none},  {261, email2, none},   {272, web, web2},
    {273, web, none},        {274, web2, none},   {512, note, note2},    {514, location, none},
    {520, categories, none},
};

template <std::size_t count>
void setRows(FieldTables& tables, const Row (&rows)[count]) {
    for (const Row& row : rows) {
        tables.FieldCodeTable[row.fieldId] = row.code;
        tables.AltFieldCodeTable[row.fieldId] = row.alternativeCode;
    }
}

}  // namespace

Long FieldTables::group(std::uint32_t fieldId) const {
    for (std::size_t k = 0; k < FieldGroupBounds.size(); ++k)
        if (fieldId < FieldGroupBounds[k]) return static_cast<Long>(k) + 1;
    return 0;
}

void InitFieldTables() {
    const RoutineLog log(u"InitFieldTables");
    FieldTables& tables = state().Fields;
    tables = {};
    tables.version = deviceManagementVersion();
    setRows(tables, rowsOfAllVersions);
    if (tables.version < firstVersionWithLongIds) {
        tables.FieldGroupBounds = shortIdBounds;
        setRows(tables, rowsOfShortIds);
    } else {
        tables.FieldGroupBounds = longIdBounds;
        setRows(tables, rowsOfLongIds);
    }
}

Long deviceManagementVersion() {
    Long& version = state().DmApiVersion;
    if (version == 0) version = library::DMAPI_GetAPIVersion.tried().valueOr(0);
    return version;
}

}  // namespace ovno2::Content
