// What the team configures: the program's name, version and addresses.
#pragma once

namespace tellurix {

inline constexpr const char* ProductName = "Tellurix";
inline constexpr const char* ProductVersion = TELLURIX_VERSION;  // major.minor.revision
inline constexpr const char* SupportAddress = TELLURIX_SUPPORT_ADDRESS;

}  // namespace tellurix
