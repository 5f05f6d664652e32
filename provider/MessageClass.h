// The kind of an item by its message class.
#pragma once

#include "platform/WideText.h"
#include "provider/ItemTypes.h"

// First a whole class of the known ones ("IPM.Note", "IPM.Post", "IPM.Task", "IPM.Appointment", "IPM.Contact",
// "IPM.StickyNote"), then a class beneath one ("IPM.Note.SMIME", but not "IPM.Noted"); the case of the letters A to Z
// does not count. eVxItemUnknown for every other class.
EVxItemType ItemTypeOfMessageClass(WideView messageClass) noexcept;
