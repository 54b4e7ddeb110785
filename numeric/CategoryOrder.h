// The order in which categories are listed.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "numeric/Regional.h"

namespace tellurix {

// The positions of the names in their alphanumeric order: those that state a number first, by its size, then the other
// texts without regard to case; equal ones in the order in which they stand. A number is read with "." for its decimal
// symbol, as a worksheet tells it, or else by the regional rule.
std::vector<std::size_t> CategoryOrder(std::span<const std::string> names, const Regional& regional);

// The number that a category states by the same rule, or nothing.
std::optional<double> CategoryNumber(std::string_view name, const Regional& regional);

}  // namespace tellurix
