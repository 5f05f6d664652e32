// Comparing properties, and restrictions on bags of them.
#pragma once

#include "mapi/MapiRestrictions.h"
#include "testing/scripted_mapi/Values.h"

namespace scripted_mapi {

// Below 0, 0 or above 0: numbers, times, bytes and text in their order, the case of ASCII letters not counting in text.
// What is no value of the same kind, as a missing one, comes first.
int CompareValues(const Value& a, const Value& b);

// Whether an object satisfies a restriction; null is satisfied by all. AND, OR, NOT, PROPERTY, CONTENT, EXIST and
// BITMASK; every other kind is satisfied by none.
bool Satisfies(const Bag& bag, const SRestriction* restriction);

}  // namespace scripted_mapi
