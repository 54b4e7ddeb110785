// The reserved doubles of the system.
#pragma once

namespace tellurix {

// A missing observation in every numeric array; compared with exact equality, shown as "*".
inline constexpr double MissingValue = 3e300;

// What the cell reader answers for an explicit mark ("*", "MISSING", "."); never stored in an array.
inline constexpr double TextMissingValue = 3e301;

// Marks of overflow from numerical routines. The signs go this way round: the negative one prints as "infinity".
inline constexpr double OverflowMarker = -2147483647.0;
inline constexpr double NegativeOverflowMarker = 2147483647.0;

}  // namespace tellurix
