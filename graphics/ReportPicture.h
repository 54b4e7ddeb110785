// A recorded picture as it goes into a report.
#pragma once

#include <string>
#include <string_view>

namespace tellurix {

// The picture group of rich text: the records as upper-case hexadecimal digits in lines of 39 bytes. Width and height
// in hundredths of a millimetre; the goal sizes are the same in twips.
std::string PictureGroupText(std::string_view records, int width, int height);

}  // namespace tellurix
