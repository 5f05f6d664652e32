#include "testing/mailbox_builder/items/TimeZones.h"

#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/Wording.h"

namespace mailbox_builder {
namespace {

constexpr int kDaylightMinutes = 60;

Day DayOfChange(const ClockChange& change, int year) {
    const auto weekday = std::chrono::weekday{change.weekday};
    const auto month = std::chrono::year{year} / static_cast<int>(change.month);
    return change.nth >= 5 ? Day{month / weekday[std::chrono::last]} : Day{month / weekday[change.nth]};
}

// Whether a time, told in standard time, lies within the part of the year with daylight time.
bool IsDaylight(const Zone& zone, Time standard) {
    if (zone.toDaylight.month == 0) {
        return false;
    }
    const int year = static_cast<int>(std::chrono::year_month_day{DayOf(standard)}.year());
    const Time begin = At(DayOfChange(zone.toDaylight, year), zone.toDaylight.hour);
    const Time end = After(At(DayOfChange(zone.toStandard, year), zone.toStandard.hour), -kDaylightMinutes);
    const bool isSouthern = end < begin;
    return isSouthern ? standard < end || standard >= begin : standard >= begin && standard < end;
}

void AppendChange(ByteWriter& blob, const ClockChange& change) {
    blob.U16(0).U16(change.month).U16(change.weekday).U16(change.nth);
    blob.U16(static_cast<std::uint64_t>(change.hour)).U16(0).U16(0).U16(0);
}

int DaylightBias(const Zone& zone) {
    return zone.toDaylight.month == 0 ? 0 : -kDaylightMinutes;
}

}  // namespace

const Zone kBerlin = {"W. Europe Standard Time",
                      "(UTC+01:00) Amsterdam, Berlin, Bern, Rome, Stockholm, Vienna",
                      -60,
                      {10, 0, 5, 3},
                      {3, 0, 5, 2}};
const Zone kNewYork = {
    "Eastern Standard Time", "(UTC-05:00) Eastern Time (US & Canada)", 300, {11, 0, 1, 2}, {3, 0, 2, 2}};
const Zone kTokyo = {"Tokyo Standard Time", "(UTC+09:00) Osaka, Sapporo, Tokyo", -540};
const Zone kSydney = {
    "AUS Eastern Standard Time", "(UTC+10:00) Canberra, Melbourne, Sydney", -600, {4, 0, 1, 3}, {10, 0, 1, 2}};

Time Zone::ToUtc(Time local) const {
    const Time asDaylight = After(local, -kDaylightMinutes);
    return After(IsDaylight(*this, asDaylight) ? asDaylight : local, bias);
}

Time Zone::ToLocal(Time utc) const {
    const Time standard = After(utc, -bias);
    return IsDaylight(*this, standard) ? After(standard, kDaylightMinutes) : standard;
}

Bytes ZoneStructure(const Zone& zone) {
    ByteWriter blob;
    blob.U32(Signed(zone.bias)).U32(Signed(0)).U32(Signed(DaylightBias(zone))).U16(0);
    AppendChange(blob, zone.toStandard);
    blob.U16(0);
    AppendChange(blob, zone.toDaylight);
    return blob.Take();
}

Bytes ZoneDefinition(const Zone& zone) {
    constexpr std::uint32_t kHasKeyName = 0x0002;
    constexpr std::uint32_t kRuleIsCurrent = 0x0002;
    constexpr std::uint32_t kRuleIsForRecurrence = 0x0001;
    constexpr std::uint32_t kFirstYear = 2007;
    const CStringW name = Wide(zone.name);
    ByteWriter blob;
    blob.U8(2).U8(1).U16(6 + name.size() * 2).U16(kHasKeyName).U16(name.size()).Append(AsBytes(name)).U16(1);
    blob.U8(2).U8(1).U16(0x3E).U16(kRuleIsCurrent | kRuleIsForRecurrence).U16(kFirstYear).Fill(14, 0);
    blob.U32(Signed(zone.bias)).U32(Signed(0)).U32(Signed(DaylightBias(zone)));
    AppendChange(blob, zone.toStandard);
    AppendChange(blob, zone.toDaylight);
    return blob.Take();
}

}  // namespace mailbox_builder
