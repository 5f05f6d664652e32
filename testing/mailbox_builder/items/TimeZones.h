// Time zones with this century's rules, and the structures that appointments keep of them. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"
#include "testing/mailbox_builder/items/Dates.h"

#include <cstdint>
#include <string_view>

namespace mailbox_builder {

// When a zone changes its clocks: on a certain weekday of a month, at an hour of the time that holds before. Month 0:
// it never does.
struct ClockChange {
    unsigned month = 0;
    unsigned weekday = 0;  // 0 is Sunday
    unsigned nth = 0;      // 5 is the last
    int hour = 0;
};

struct Zone {
    std::string_view name;         // as Windows' registry has it
    std::string_view description;  // as users see it
    int bias = 0;                  // minutes that UTC is ahead of the zone's standard time
    ClockChange toStandard = {};
    ClockChange toDaylight = {};

    // UTC of a local time. An hour that a change skips or repeats is taken as what it was before the change.
    Time ToUtc(Time local) const;
    Time ToLocal(Time utc) const;
};

extern const Zone kBerlin;
extern const Zone kNewYork;
extern const Zone kTokyo;
extern const Zone kSydney;

// A PidLidTimeZoneStruct, [MS-OXOCAL] 2.2.1.39, and a TZDEFINITION of one rule, 2.2.1.41.
Bytes ZoneStructure(const Zone& zone);
Bytes ZoneDefinition(const Zone& zone);

}  // namespace mailbox_builder
