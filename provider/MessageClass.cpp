#include "provider/MessageClass.h"

#include "provider/Common/StringHelpers.h"

#include <array>

namespace {

struct MessageClassRow {
    WideView name;
    EVxItemType type;
};

constexpr auto kMessageClasses = std::to_array<MessageClassRow>({
    {"IPM.Note"_w, eVxItemEmail},
    {"IPM.Post"_w, eVxItemEmail},
    {"IPM.Task"_w, eVxItemTask},
    {"IPM.Appointment"_w, eVxItemCalendar},
    {"IPM.Contact"_w, eVxItemContact},
    {"IPM.StickyNote"_w, eVxItemNote},
});

bool IsClassOrBeneath(WideView messageClass, WideView name) noexcept {
    if (!EqualIgnoringAsciiCase(messageClass.substr(0, name.size()), name)) {
        return false;
    }
    return messageClass.size() == name.size() || messageClass[name.size()] == '.';
}

}  // namespace

EVxItemType ItemTypeOfMessageClass(WideView messageClass) noexcept {
    // No known class is beneath another, so whole classes and beginnings need no two rounds.
    for (const MessageClassRow& row : kMessageClasses) {
        if (IsClassOrBeneath(messageClass, row.name)) {
            return row.type;
        }
    }
    return eVxItemUnknown;
}
