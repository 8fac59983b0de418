#include "content/field_tables.h"

#include "content/state.h"
#include "library/library.h"

namespace ovno2::Content {

namespace {

// From this device-management version on the library numbers contact fields the new way.
constexpr Long firstVersionWithLongIds = 30;

struct Row {
    std::uint16_t fieldId;
    Long code;
    Long alternativeCode;
};

constexpr Row rowsOfAllVersions[] = {
    {1, 3, 0},   {2, 1, 0},  {4, 2, 0},   {5, 5, 0},    {7, 16, 0},   {8, 19, 0},  {9, 17, 0},
    {10, 80, 0}, {11, 4, 0}, {32, 20, 0}, {33, 21, 22}, {34, 24, 25}, {35, 20, 0}, {36, 30, 0},
};

constexpr std::array<std::uint16_t, 4> shortIdBounds = {32, 65, 97, 257};
constexpr Row rowsOfShortIds[] = {
    {38, 23, 0}, {39, 30, 0}, {40, 28, 0}, {41, 27, 0}, {68, 50, 0}, {69, 60, 0}, {97, 15, 0},
};

constexpr std::array<std::uint16_t, 4> longIdBounds = {32, 256, 512, 768};
constexpr Row rowsOfLongIds[] = {
    {36, 0, 0},   {32, 20, 30}, {64, 23, 35},  {65, 23, 35}, {66, 35, 0},  {80, 28, 29},
    {81, 28, 0},  {96, 27, 0},  {259, 50, 51}, {260, 50, 0}, {261, 51, 0}, {272, 60, 61},
    {273, 60, 0}, {274, 61, 0}, {512, 15, 67}, {514, 79, 0}, {520, 18, 0},
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
    setRows(tables, rowsOfAllVersions);
    if (deviceManagementVersion() < firstVersionWithLongIds) {
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
